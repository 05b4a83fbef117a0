// Quick open in the editor: Ctrl-P, typing, choosing and opening, folders, and a folder given on
// the command line.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "app/editor/files.hpp"
#include "app/editor/quick_open_panel.hpp"
#include "app/editor/session.hpp"
#include "platform/run_loop.hpp"
#include "platform/user_defaults.hpp"
#include "projects/project.hpp"
#include "support/temp_dir.hpp"

namespace vx::editor {
namespace {

class QuickOpen : public testing::Test {
protected:
    void SetUp() override {
        setenv("VX_HOME", m_home.path().c_str(), 1);
        m_root = std::filesystem::canonical(m_files.path()).string();
    }
    void TearDown() override { unsetenv("VX_HOME"); }

    static bool screenShows(Session& session, const std::string& text) {
        for (int y = 0; y < session.editor().size().y; ++y)
            if (session.row(y).find(text) != std::string::npos) return true;
        return false;
    }
    // Rows arrive from the index's queue through the main run loop.
    static bool waitFor(Session& session, const std::string& text) {
        return RunLoop::main().runUntil([&] { return screenShows(session, text); }, std::chrono::seconds(3));
    }

    test::TempDir m_home;
    test::TempDir m_files;
    std::string m_root;
};

TEST_F(QuickOpen, CtrlPFindsFilesOfTheActiveFilesProjectAndListsFolders) {
    m_files.write("repo/.git/HEAD", "x");
    m_files.write("repo/src/view.c", "int view;");
    m_files.write("repo/src/viewer.c", "int viewer;");
    m_files.write("repo/docs/guide.md", "guide");
    m_files.write("repo/docs/intro.md", "intro");
    m_files.write("outside/view.c", "no");
    Session session(80, 16);
    openStartupPaths(session.editor(), {m_root + "/repo/docs/guide.md"});
    session.send("<ctrl+p>");
    ASSERT_TRUE(session.editor().hasModal());
    EXPECT_EQ(currentProject()->directoryURL, m_root + "/repo");
    session.send("src/view");
    ASSERT_TRUE(waitFor(session, "src/viewer.c"));
    session.send("<enter>");
    EXPECT_EQ(session.editor().activeTab()->text().text(), u"int view;");  // the closest first

    session.send("<ctrl+p>docs/");
    ASSERT_TRUE(waitFor(session, "docs/intro.md"));
    session.send("<down><enter>");
    EXPECT_EQ(session.editor().activeTab()->text().text(), u"intro");

    session.send("<ctrl+p>guide<escape>");
    EXPECT_FALSE(session.editor().hasModal());
    EXPECT_EQ(session.editor().tabCount(), 3u);
}

TEST_F(QuickOpen, IgnoreFilesCountUnlessTheUserSaysOtherwise) {
    for (const char* folder : {"first", "second"}) {
        m_files.write(std::string(folder) + "/.gitignore", "*.log\n");
        m_files.write(std::string(folder) + "/noise.log", "x");
        m_files.write(std::string(folder) + "/kept.txt", "x");
    }
    Session session(80, 12);
    openStartupPaths(session.editor(), {m_root + "/first"});
    session.send("noise");
    ASSERT_TRUE(waitFor(session, "(no matches)"));
    session.send("<escape>");

    UserDefaults::standardUserDefaults().setBool(kVXQuickOpenHonorsIgnoreFiles, false);
    openStartupPaths(session.editor(), {m_root + "/second"});
    session.send("noise");
    EXPECT_TRUE(waitFor(session, "noise.log"));
    UserDefaults::standardUserDefaults().removeObjectForKey(kVXQuickOpenHonorsIgnoreFiles);
}

}  // namespace
}  // namespace vx::editor
