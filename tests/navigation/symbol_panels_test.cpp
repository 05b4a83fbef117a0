// Go to symbol, go to definition and go to symbol in project, driven as a user drives them.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include <filesystem>

#include "app/editor/files.hpp"
#include "app/editor/session.hpp"
#include "intelligence/ctags_runner.hpp"
#include "platform/run_loop.hpp"
#include "platform/scoped_home.hpp"

namespace vx::editor {
namespace {

class SymbolPanels : public ::testing::Test {
protected:
    void SetUp() override {
        if (VXCtagsExecutable().empty()) GTEST_SKIP() << "universal-ctags is not installed";
        ::setenv("VX_BURROWER", VX_BURROWER_PATH, 1);
        std::filesystem::create_directories(project.path() + "/.git");
        root = std::filesystem::canonical(project.path()).string();
        project.write("lib.c", "int alpha(int x) {\n    return x;\n}\n\nint beta(void) {\n    return 2;\n}\n");
        project.write("main.c", "int beta(void);\n\nint main(void) {\n    return alpha(1) + beta();\n}\n");
    }

    std::string screenText() {
        std::string text;
        for (int y = 0; y < session.screen().height(); ++y) text += session.row(y) + "\n";
        return text;
    }
    // Runs the main loop (where the indexer's news arrives) until the screen shows the text.
    bool waitForScreen(const std::string& wanted) {
        return RunLoop::main().runUntil([&] { return screenText().find(wanted) != std::string::npos; },
                                        std::chrono::seconds(30));
    }

    test::ScopedHome home;
    test::TempDir project;
    std::string root;
    Session session{100, 20};
};

TEST_F(SymbolPanels, GoToSymbolListsRanksAndJumps) {
    ASSERT_TRUE(openFile(session.editor(), root + "/lib.c"));
    session.send("<ctrl+r>");
    // Rows of the panel, not the text behind it: "name  kind  line N".
    ASSERT_TRUE(waitForScreen("beta   function  line 5")) << screenText();
    EXPECT_NE(screenText().find("alpha  function  line 1"), std::string::npos) << screenText();
    session.send("bt");  // narrows to the names holding b, t in order
    EXPECT_EQ(screenText().find("alpha  function"), std::string::npos) << screenText();
    session.send("<enter>");
    EXPECT_FALSE(session.editor().hasModal());
    Tab* tab = session.editor().activeTab();
    EXPECT_EQ(tab->caretLine(), 4u);  // "int beta(void) {" is the fifth line
    EXPECT_EQ(tab->selectedText(), u"beta");
}

TEST_F(SymbolPanels, UnsavedTextShowsInTheList) {
    ASSERT_TRUE(openFile(session.editor(), root + "/lib.c"));
    session.send("<ctrl+end>int gamma_unsaved(void) { return 3; }<enter>");
    session.send("<ctrl+r>");
    ASSERT_TRUE(waitForScreen("gamma_unsaved  function  line 8")) << screenText();
    session.send("<escape>");
    EXPECT_TRUE(session.editor().activeTab()->isModified());
}

TEST_F(SymbolPanels, GoToDefinitionJumpsOrLists) {
    ASSERT_TRUE(openFile(session.editor(), root + "/main.c"));
    // Let the indexer read the project first.
    session.send("<ctrl+shift+r>alp");
    ASSERT_TRUE(waitForScreen("lib.c:1")) << screenText();
    session.send("<escape>");
    // The caret on "alpha" in main.c: one definition, so F12 goes straight there.
    Tab* tab = session.editor().activeTab();
    tab->setSelection(Selection::caretAt(tab->text().lineStart(3) + 12));
    session.send("<f12>");
    tab = session.editor().activeTab();
    EXPECT_EQ(tab->path(), root + "/lib.c");
    EXPECT_EQ(tab->selectedText(), u"alpha");
    // "beta" is declared in main.c and defined in lib.c: both are offered.
    ASSERT_TRUE(openFile(session.editor(), root + "/main.c"));
    tab = session.editor().activeTab();
    tab->setSelection(Selection::caretAt(tab->text().lineStart(3) + 24));
    session.send("<f12>");
    EXPECT_TRUE(session.editor().hasModal());
    const std::string shown = screenText();
    EXPECT_NE(shown.find("lib.c:5"), std::string::npos) << shown;
    EXPECT_NE(shown.find("main.c:1"), std::string::npos) << shown;
    // A word the index does not know says so.
    session.send("<escape>");
    tab->setSelection(Selection::caretAt(tab->text().lineStart(2) + 1));  // "int"
    session.send("<f12>");
    EXPECT_FALSE(session.editor().hasModal());
    EXPECT_NE(session.editor().message().find("int"), std::string::npos);
}

}  // namespace
}  // namespace vx::editor
