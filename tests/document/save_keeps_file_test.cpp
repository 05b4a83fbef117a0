// Saving keeps what the file is: every mode bit, owner and group, extended attributes, hard links
// and symbolic links; and a save that fails at any step leaves the file on disk byte for byte.
#include <gtest/gtest.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "document/single_file_document.hpp"
#include "platform/atomic_file.hpp"
#include "platform/file_cache.hpp"
#include "platform/scoped_home.hpp"

namespace vx {
namespace {

namespace fs = std::filesystem;
using Op = VXSingleFileDocument::SaveOperation;

struct stat statOf(const std::string& path) {
    struct stat info {};
    ::stat(path.c_str(), &info);
    return info;
}

bool save(VXSingleFileDocument& document, const std::string& path, std::string* error) {
    return document.saveToURL(path, "txt", Op::Save, error);
}

// Makes one system call of the save path fail with `error` for as long as it lives.
class InjectedFailure {
public:
    enum class Step { Write, Sync, Rename, Chown, Chmod };
    InjectedFailure(Step step, int error) : m_saved(fileSystemCalls()) {
        s_error = error;
        FileSystemCalls& calls = fileSystemCalls();
        switch (step) {
            case Step::Write: calls.write = [](int, const void*, size_t) -> ssize_t { return failing(); }; break;
            case Step::Sync: calls.fsync = [](int) { return static_cast<int>(failing()); }; break;
            case Step::Rename: calls.rename = [](const char*, const char*) { return static_cast<int>(failing()); }; break;
            case Step::Chown: calls.fchown = [](int, uid_t, gid_t) { return static_cast<int>(failing()); }; break;
            case Step::Chmod: calls.fchmod = [](int, mode_t) { return static_cast<int>(failing()); }; break;
        }
    }
    ~InjectedFailure() { fileSystemCalls() = m_saved; }
    InjectedFailure(const InjectedFailure&) = delete;
    InjectedFailure& operator=(const InjectedFailure&) = delete;

private:
    static ssize_t failing() {
        errno = s_error;
        return -1;
    }
    static inline int s_error = EIO;
    FileSystemCalls m_saved;
};

TEST(SavingKeepsTheFile, EveryModeBitAndExtendedAttributes) {
    test::ScopedHome home;
    std::string error;
    // Private files stay private; setuid, setgid and sticky bits survive (a write clears them,
    // so they must be put back after it).
    for (mode_t mode : {0600u, 0640u, 0444u, 0700u, 04755u, 02755u, 01644u}) {
        const std::string path = home.dir.write("f" + std::to_string(mode), "old\n");
        ASSERT_EQ(::chmod(path.c_str(), mode), 0);
        VXSingleFileDocument document;
        ASSERT_TRUE(document.readFromURL(path, "txt", &error)) << error;
        document.js_replaceTextInRange({0, 0}, u"new ");
        ASSERT_TRUE(save(document, path, &error)) << error;
        EXPECT_EQ(readWholeFile(path), "new old\n");
        EXPECT_EQ(statOf(path).st_mode & 07777, mode) << std::oct << mode;
    }

    const std::string tagged = home.dir.write("tagged.txt", "x");
    if (::setxattr(tagged.c_str(), "user.vellumex.test", "kept", 4, 0) != 0)
        GTEST_SKIP() << "the file system keeps no extended attributes: " << std::strerror(errno);
    VXSingleFileDocument document;
    ASSERT_TRUE(document.readFromURL(tagged, "txt", &error));
    document.js_setText(u"y");
    ASSERT_TRUE(save(document, tagged, &error)) << error;
    char value[16] = {};
    ASSERT_EQ(::getxattr(tagged.c_str(), "user.vellumex.test", value, sizeof value), 4);
    EXPECT_EQ(std::string(value, 4), "kept");
}

TEST(SavingKeepsTheFile, HardLinksSymbolicLinksAndNewFiles) {
    test::ScopedHome home;
    std::string error;
    const std::string path = home.dir.write("linked.txt", "one\n");
    const std::string twin = home.dir.path() + "/twin.txt";
    ASSERT_EQ(::link(path.c_str(), twin.c_str()), 0);
    const ino_t inode = statOf(path).st_ino;
    VXSingleFileDocument document;
    ASSERT_TRUE(document.readFromURL(path, "txt", &error));
    document.js_setText(u"two\n");
    ASSERT_TRUE(save(document, path, &error)) << error;
    // Rewritten where it stands: both names still show the one file.
    EXPECT_EQ(statOf(path).st_ino, inode);
    EXPECT_EQ(readWholeFile(twin), "two\n");
    EXPECT_TRUE(fs::is_empty(home.dir.path() + "/Backups"));  // the copy kept while writing is gone

    // A symbolic link stays a link; the file it points to gets the text.
    const std::string target = home.dir.write("target.txt", "a");
    const std::string link = home.dir.path() + "/link.txt";
    ASSERT_EQ(::symlink(target.c_str(), link.c_str()), 0);
    VXSingleFileDocument linked;
    ASSERT_TRUE(linked.readFromURL(link, "txt", &error));
    linked.js_setText(u"b");
    ASSERT_TRUE(save(linked, link, &error)) << error;
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(readWholeFile(target), "b");

    // A new UTF-8 file has no byte-order mark; a path that is not a file is refused.
    VXSingleFileDocument fresh;
    fresh.js_setText(u"é");
    ASSERT_TRUE(fresh.saveToURL(home.dir.path() + "/fresh.txt", "txt", Op::SaveAs, &error));
    EXPECT_EQ(readWholeFile(home.dir.path() + "/fresh.txt"), "\xC3\xA9");
    EXPECT_FALSE(fresh.saveToURL("/dev/null", "txt", Op::SaveAs, &error));
    EXPECT_NE(error.find("not a regular file"), std::string::npos) << error;
}

TEST(SavingKeepsTheFile, AFailureAtAnyStepLeavesTheFileAsItWas) {
    test::ScopedHome home;
    using Step = InjectedFailure::Step;
    const std::string original = "line one\nline two\n";
    struct Case {
        Step step;
        bool hardLinked;  // the in-place path instead of the atomic one
    };
    const Case cases[] = {{Step::Write, false}, {Step::Sync, false},  {Step::Rename, false}, {Step::Chown, false},
                          {Step::Chmod, false}, {Step::Write, true}, {Step::Sync, true}};
    int n = 0;
    for (const auto& c : cases) {
        const std::string name = "f" + std::to_string(n++) + ".txt";
        const std::string path = home.dir.write(name, original);
        ::chmod(path.c_str(), 0640);
        if (c.hardLinked) {
            ASSERT_EQ(::link(path.c_str(), (path + ".twin").c_str()), 0);
        }
        VXSingleFileDocument document;
        std::string error;
        ASSERT_TRUE(document.readFromURL(path, "txt", &error));
        document.js_replaceTextInRange({0, 0}, u"changed ");
        {
            InjectedFailure failure(c.step, EIO);
            EXPECT_FALSE(save(document, path, &error)) << name;
        }
        EXPECT_NE(error.find(std::strerror(EIO)), std::string::npos) << name << ": " << error;
        EXPECT_EQ(readWholeFile(path), original) << name;
        EXPECT_EQ(statOf(path).st_mode & 07777, 0640u) << name;
        EXPECT_TRUE(document.hasUnsavedChanges()) << name;
        EXPECT_EQ(document.contents().string(), u"changed line one\nline two\n");
        // Nothing is left behind: no temporary file beside it, no kept copy.
        for (const auto& entry : fs::directory_iterator(home.dir.path()))
            EXPECT_EQ(entry.path().filename().string().find(".vx-save-"), std::string::npos) << entry.path();
        EXPECT_TRUE(!fs::exists(home.dir.path() + "/Backups") || fs::is_empty(home.dir.path() + "/Backups")) << name;
        // And once the failure is gone, the same save goes through.
        EXPECT_TRUE(save(document, path, &error)) << error;
        EXPECT_EQ(readWholeFile(path), "changed " + original);
    }
}

TEST(SavingKeepsTheFile, AFolderThatCannotBeWrittenIsSavedInPlace) {
    test::ScopedHome home;
    const std::string folder = home.dir.path() + "/locked";
    fs::create_directory(folder);
    const std::string path = folder + "/f.txt";
    ASSERT_TRUE(writeFileAtomically(path, "old").ok);
    ::chmod(folder.c_str(), 0555);
    // What went wrong, or "" when the file was read and saved.
    auto saveNewText = [&]() -> std::string {
        std::string error;
        VXSingleFileDocument document;
        if (!document.readFromURL(path, "txt", &error)) return "read: " + error;
        document.js_setText(u"new");
        return save(document, path, &error) ? std::string() : "save: " + error;
    };
    if (::geteuid() != 0) {
        EXPECT_EQ(saveNewText(), "");
    } else {
        // Root writes into any folder, so the save runs in a child that has given root up
        // (as "nobody"), with the file writable by it and a data folder of its own.
        constexpr uid_t kNobody = 65534;
        ::chmod(home.dir.path().c_str(), 0755);
        ::chmod(path.c_str(), 0666);
        const std::string data = home.dir.path() + "/data";
        fs::create_directory(data);
        ASSERT_EQ(::chown(data.c_str(), kNobody, kNobody), 0);
        int report[2];
        ASSERT_EQ(::pipe(report), 0);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ::close(report[0]);
            ::setenv("VX_HOME", data.c_str(), 1);
            std::string outcome = ::setgroups(0, nullptr) == 0 && ::setresgid(kNobody, kNobody, kNobody) == 0 &&
                                          ::setresuid(kNobody, kNobody, kNobody) == 0
                                      ? saveNewText()
                                      : std::string("cannot become nobody: ") + std::strerror(errno);
            if (outcome.empty() && ::access(folder.c_str(), W_OK) == 0) outcome = "the folder is writable after all";
            (void)!::write(report[1], outcome.data(), outcome.size());
            ::_exit(outcome.empty() ? 0 : 1);
        }
        ::close(report[1]);
        std::string outcome;
        char buffer[512];
        for (ssize_t n; (n = ::read(report[0], buffer, sizeof buffer)) > 0;) outcome.append(buffer, static_cast<size_t>(n));
        ::close(report[0]);
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << outcome;
    }
    ::chmod(folder.c_str(), 0755);
    EXPECT_EQ(readWholeFile(path), "new");
}

}  // namespace
}  // namespace vx
