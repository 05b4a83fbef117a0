#include <gtest/gtest.h>
#include <poll.h>

#include <filesystem>
#include <fstream>

#include "intelligence/ctags_runner.hpp"
#include "intelligence/library_manager.hpp"
#include "platform/scoped_home.hpp"
#include "platform/user_defaults.hpp"
#include "process/taskit.hpp"

namespace vx {
namespace {

TEST(LibraryNames, FilesAndAddresses) {
    test::ScopedHome home;
    EXPECT_EQ(VXLibraryDBManager::diskifyLibraryName("c++/11"), "v2-c++-11.db");
    EXPECT_EQ(VXLibraryDBManager::localPathForLibrary("c++/11"), home.dir.path() + "/library-databases/v2-c++-11.db");
    EXPECT_TRUE(std::filesystem::is_directory(home.dir.path() + "/library-databases"));
    EXPECT_EQ(VXLibraryDBManager::urlForLibrary("c++/11"), "");  // no server: no downloads
    VXLibraryDBManager manager;
    EXPECT_FALSE(manager.downloadDB("c++/11"));
    EXPECT_EQ(manager.libraryForName("c++/11", true), nullptr);
    EXPECT_FALSE(manager.isDownloading("c++/11"));

    UserDefaults::standardUserDefaults().setObject("VXLibraryDataServer", PropertyValue(std::string("http://h.example:8/")));
    EXPECT_EQ(VXLibraryDBManager::urlForLibrary("c++/11"), "http://h.example:8/gathering/databases/v2/c++-11.db");
    EXPECT_EQ(VXLibraryDBManager::urlForLibrary("haskell/platform/2012.4.0.0"),
              "http://h.example:8/gathering/databases/v2/haskell-platform-2012.4.0.0.db");
    EXPECT_EQ(VXLibraryDBManager::urlForLibrary("objective-c/2"), "http://h.example:8/gathering/databases/v2/objective--c-2.db");
}

TEST(LibraryBuild, HeadersBecomeARowPerUsefulSymbol) {
    if (VXCtagsExecutable().empty()) GTEST_SKIP() << "universal-ctags is not installed";
    test::ScopedHome home;
    test::TempDir headers;
    headers.write("mylib.h", "int my_open(const char *path);\nint __my_internal(void);\nstruct my_file { int fd; };\n");
    headers.write("sub/more.hpp", "namespace lib {\nclass Box {\npublic:\n    int size() const;\n};\n}\n");
    headers.write("skipped/x.h", "int never_seen(void);\n");
    const std::string path = home.dir.path() + "/lib.db";
    const auto built = VXBuildLibraryDatabase(path, headers.path(), {headers.path() + "/skipped"});
    ASSERT_TRUE(built.ok) << built.error;
    EXPECT_EQ(built.files, 2u);
    VXXLibraryDatabase library(path);
    auto open = VXLibrarySymbolsNamed(library, "my_open");
    ASSERT_EQ(open.size(), 1u);
    EXPECT_EQ(open[0].typeCode, "prototype");
    EXPECT_EQ(open[0].declaration, "int my_open(const char *path);");
    EXPECT_EQ(open[0].sourcedecl, "mylib.h");
    auto size = VXLibrarySymbolsNamed(library, "size");
    ASSERT_EQ(size.size(), 1u);
    EXPECT_EQ(size[0].parents, "Box");
    EXPECT_EQ(size[0].nameSpace, "lib");
    EXPECT_EQ(size[0].originalNamespace, "lib::Box");
    EXPECT_EQ(VXLibrarySymbolsNamed(library, "Box").at(0).nameSpace, "lib");
    EXPECT_TRUE(VXLibrarySymbolsNamed(library, "__my_internal").empty());
    EXPECT_TRUE(VXLibrarySymbolsNamed(library, "never_seen").empty());
    // Read-only: nothing can change it.
    library.syncWithConnection([](SqliteConnection& db) { EXPECT_FALSE(db.execute("DELETE FROM symbols")); });
    EXPECT_FALSE(VXBuildLibraryDatabase(path, headers.path() + "/nowhere").ok);
}

// python3's HTTP server on 127.0.0.1, on a port of its choosing, serving one folder.
class LocalServer {
public:
    explicit LocalServer(const std::string& folder) {
        m_task->setLaunchPath("/usr/bin/python3");
        m_task->setArguments({"-u", "-m", "http.server", "0", "--bind", "127.0.0.1", "--directory", folder});
        if (!m_task->launch()) return;
        // "Serving HTTP on 127.0.0.1 port 41234 (http://127.0.0.1:41234/) ..."
        std::string seen;
        pollfd fd = {m_task->outPipe().readEnd.get(), POLLIN, 0};
        while (seen.find(") ...") == std::string::npos && ::poll(&fd, 1, 10'000) > 0) {
            char buffer[256];
            const ssize_t n = ::read(fd.fd, buffer, sizeof buffer);
            if (n <= 0) break;
            seen.append(buffer, static_cast<size_t>(n));
        }
        const size_t at = seen.find("port ");
        if (at != std::string::npos) m_url = "http://127.0.0.1:" + std::to_string(std::atoi(seen.c_str() + at + 5));
    }
    ~LocalServer() { m_task->kill(); }
    const std::string& url() const { return m_url; }

private:
    std::unique_ptr<Taskit> m_task = Taskit::task();
    std::string m_url;
};

TEST(LibraryDownload, FetchedFromTheServerOnceAndRetriedAfterAFailure) {
    if (VXCtagsExecutable().empty() || !std::filesystem::exists("/usr/bin/python3")) GTEST_SKIP() << "needs ctags and python3";
    test::ScopedHome home;
    test::TempDir served, headers;
    const std::string onServer = served.path() + "/gathering/databases/v2";
    std::filesystem::create_directories(onServer);
    headers.write("a.h", "int first_version(void);\n");
    ASSERT_TRUE(VXBuildLibraryDatabase(onServer + "/go-1.0.db", headers.path()).ok);

    LocalServer server(served.path());
    ASSERT_FALSE(server.url().empty());
    UserDefaults::standardUserDefaults().setObject("VXLibraryDataServer", PropertyValue(server.url()));
    VXLibraryDBManager manager;

    EXPECT_EQ(manager.libraryForName("go/1.0", true), nullptr);  // not here yet: fetched in the background
    manager.waitForDownloads();
    auto library = manager.libraryForName("go/1.0", false);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(VXLibrarySymbolsNamed(*library, "first_version").size(), 1u);
    EXPECT_EQ(manager.libraryForName("go/1.0", false), library);  // cached

    // A fresh download replaces the file; the open database reads the new one on its next use.
    headers.write("a.h", "int second_version(void);\n");
    ASSERT_TRUE(VXBuildLibraryDatabase(onServer + "/go-1.0.db", headers.path()).ok);
    ASSERT_TRUE(manager.downloadDB("go/1.0"));
    manager.waitForDownloads();
    EXPECT_EQ(VXLibrarySymbolsNamed(*library, "second_version").size(), 1u);

    // A library the server does not have: nothing is left behind and the next request tries again.
    EXPECT_EQ(manager.libraryForName("java/jdk/7", true), nullptr);
    manager.waitForDownloads();
    EXPECT_FALSE(manager.isDownloading("java/jdk/7"));
    EXPECT_FALSE(std::filesystem::exists(VXLibraryDBManager::localPathForLibrary("java/jdk/7")));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home.dir.path() + "/library-databases"), {}), 1);
    EXPECT_TRUE(manager.downloadDB("java/jdk/7"));
    manager.waitForDownloads();
}

}  // namespace
}  // namespace vx
