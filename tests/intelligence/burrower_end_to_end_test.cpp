// The indexer process end to end: a small project in several languages indexed through the
// editor's controller, changed, partly deleted and edited without saving.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <mutex>

#include "intelligence/ctags_runner.hpp"
#include "intelligence/indexing_controller.hpp"
#include "support/temp_dir.hpp"

namespace vx {
namespace {

class Replies {
public:
    explicit Replies(VXXIndexingController& controller) {
        controller.setReplyHandler([this](const VXBurrowerMessage& message) {
            std::lock_guard lock(m_mutex);
            m_kinds.push_back(message.value(burrower::kKind));
            m_arrived.notify_all();
        });
    }
    // Waits for the next answer of that kind.
    bool waitFor(const std::string& kind) {
        std::unique_lock lock(m_mutex);
        const bool ok = m_arrived.wait_for(lock, std::chrono::seconds(60), [&] {
            return std::find(m_kinds.begin(), m_kinds.end(), kind) != m_kinds.end();
        });
        if (ok) m_kinds.erase(std::find(m_kinds.begin(), m_kinds.end(), kind));
        return ok;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::vector<std::string> m_kinds;
};

std::vector<std::string> described(const std::vector<VXSymbol>& symbols, const std::string& root) {
    std::vector<std::string> out;
    for (const auto& s : symbols) {
        std::string path = s.path.rfind(root, 0) == 0 ? s.path.substr(root.size() + 1) : s.path;
        out.push_back(path + ":" + std::to_string(s.rangeLine) + ":" + std::to_string(s.rangeColumn) + " " + s.typeCode + " " +
                      s.name + (s.parentName.empty() ? "" : " in " + s.parentName));
    }
    std::sort(out.begin(), out.end());
    return out;
}

int64_t passOf(VXXMainDatabase& db, const std::string& path) {
    int64_t pass = -1;
    db.syncWithConnection([&](SqliteConnection& c) {
        pass = c.integerForQuery("SELECT passes.id FROM passes JOIN resources ON passes.resource = resources.id WHERE path = ?", {path})
                   .value_or(-1);
    });
    return pass;
}

void makeOlder(const std::string& path) {
    struct utimbuf times = {1'000'000'000, 1'000'000'000};  // 2001: before any pass
    ::utime(path.c_str(), &times);
}

TEST(BurrowerEndToEnd, IndexesChangesDeletionsAndUnsavedText) {
    if (VXCtagsExecutable().empty()) GTEST_SKIP() << "universal-ctags is not installed";
    ::setenv("VX_BURROWER", VX_BURROWER_PATH, 1);
    test::TempDir project;
    const std::string root = std::filesystem::canonical(project.path()).string();
    project.write("src/app.c", "#include <stdio.h>\nstatic int counter;\nint main(void) {\n    return helper();\n}\n");
    project.write("src/util.cpp", "namespace tools {\nclass Walker {\npublic:\n    int step(int n);\n};\n}\nint tools::Walker::step(int n) { return n; }\n");
    project.write("lib/tool.py", "class Tool:\n    def run(self):\n        pass\n\ndef helper():\n    return 1\n");
    project.write("web/app.js", "function greet(name) {\n  return name;\n}\n");
    project.write("ui/View.m", "@interface View : NSObject\n- (void)draw;\n@end\n@implementation View\n- (void)draw { }\n@end\n");
    project.write("node_modules/dep/index.js", "function hidden() {}\n");
    project.write(".git/hooks/x.c", "int hiddenToo(void) { return 0; }\n");
    project.write("README.md", "# Readme\n");
    // What quick open leaves out is not indexed either: ignored files and build output.
    project.write(".gitignore", "generated/\n");
    project.write("generated/out.c", "int generatedThing(void) { return 0; }\n");
    project.write("build/gen.c", "int builtThing(void) { return 0; }\n");
    for (auto& entry : std::filesystem::recursive_directory_iterator(root))
        if (entry.is_regular_file()) makeOlder(entry.path().string());

    VXXIndexingController controller(root, root + "/.index.vxindex");
    Replies replies(controller);
    ASSERT_TRUE(replies.waitFor(burrower::kProjectIndexed));
    VXXMainDatabase& db = controller.database();

    EXPECT_EQ(described(db.symbolsOfFile(root + "/src/util.cpp"), root),
              (std::vector<std::string>{"src/util.cpp:1:10 namespace tools", "src/util.cpp:2:6 class Walker in tools",
                                        "src/util.cpp:4:8 prototype step in Walker", "src/util.cpp:7:19 function step in Walker"}));
    EXPECT_EQ(described(db.symbolsNamed("helper"), root), (std::vector<std::string>{"lib/tool.py:5:4 function helper"}));
    EXPECT_EQ(described(db.symbolsNamed("draw"), root),
              (std::vector<std::string>{"ui/View.m:2:8 method_interface draw in View", "ui/View.m:5:8 method_implementation draw in View"}));
    EXPECT_EQ(described(db.symbolsNamed("greet"), root), (std::vector<std::string>{"web/app.js:1:9 function greet"}));
    EXPECT_TRUE(db.symbolsNamed("hidden").empty());
    EXPECT_TRUE(db.symbolsNamed("hiddenToo").empty());
    EXPECT_TRUE(db.symbolsNamed("generatedThing").empty());
    EXPECT_TRUE(db.symbolsNamed("builtThing").empty());
    // The regular expression finds the declaration's line again.
    auto step = db.symbolsNamed("step");
    ASSERT_FALSE(step.empty());
    EXPECT_EQ(db.symbolsNamed("main").at(0).regex, "^int main\\(void\\) \\{$");
    const int64_t appPass = passOf(db, root + "/src/app.c");
    ASSERT_GT(appPass, 0);

    // A change, a deletion and an untouched file; the untouched one keeps its pass.
    project.write("src/util.cpp", "int renamed(void) { return 2; }\n");
    std::filesystem::remove(root + "/lib/tool.py");
    controller.startScanning();
    ASSERT_TRUE(replies.waitFor(burrower::kProjectIndexed));
    EXPECT_EQ(passOf(db, root + "/src/app.c"), appPass);
    EXPECT_EQ(described(db.symbolsOfFile(root + "/src/util.cpp"), root),
              (std::vector<std::string>{"src/util.cpp:1:4 function renamed"}));
    EXPECT_TRUE(db.symbolsNamed("helper").empty());
    EXPECT_EQ(passOf(db, root + "/lib/tool.py"), -1);

    // Unsaved text: the symbols follow the buffer, not the file.
    controller.documentDidChange({root + "/src/app.c", "int fresh_from_buffer(void);\nint main(void) { return 0; }\n", "C"});
    ASSERT_TRUE(replies.waitFor(burrower::kFileIndexed));
    EXPECT_EQ(described(db.symbolsOfFile(root + "/src/app.c"), root),
              (std::vector<std::string>{"src/app.c:1:4 prototype fresh_from_buffer", "src/app.c:2:4 function main"}));
    // A text that has no file yet shows with every file's list.
    controller.documentDidChange({"", "def scratch():\n    pass\n", "Python"});
    ASSERT_TRUE(replies.waitFor(burrower::kFileIndexed));
    EXPECT_EQ(described(db.symbolsNamed("scratch"), root), (std::vector<std::string>{":1:4 function scratch"}));
    controller.close();
}

}  // namespace
}  // namespace vx
