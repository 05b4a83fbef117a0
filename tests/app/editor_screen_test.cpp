// The editor's frame: what each part of the screen shows and in which colours.
#include <gtest/gtest.h>

#include "app/editor/session.hpp"

namespace vx::editor {
namespace {

TEST(EditorScreen, BarsGutterAndCaretShowWhereTheTextIs) {
    Session session(70, 8);
    session.openText(u"first\r\nsecond\r\n", Selection::caretAt(10)).setIndentation(4, true);
    const auto& screen = session.screen();
    EXPECT_EQ(screen.rowText(0).substr(0, 12), " untitled   ");
    EXPECT_EQ(screen.rowText(1).substr(0, 10), "   1 first");
    EXPECT_EQ(screen.rowText(2).substr(0, 11), "   2 second");
    EXPECT_EQ(screen.rowText(3).substr(0, 6), "   3  ");
    EXPECT_EQ(screen.rowText(4).substr(0, 6), "      ");  // no line 4
    std::string status = screen.rowText(6);
    EXPECT_NE(status.find("Ln 2, Col 4"), std::string::npos) << status;
    EXPECT_NE(status.find("CRLF"), std::string::npos) << status;
    EXPECT_NE(status.find("Spaces: 4"), std::string::npos) << status;
    ASSERT_TRUE(screen.cursor());
    EXPECT_EQ(*screen.cursor(), (tui::Point{5 + 3, 2}));

    session.send("x");
    EXPECT_NE(session.row(0).find("\u25cf"), std::string::npos);  // modified mark in the tab bar
    EXPECT_NE(session.row(6).find("[+]"), std::string::npos);
}

TEST(EditorScreen, SelectionAndCurrentLineTakeTheirColours) {
    Session session(30, 6);
    session.openText(u"abcdef\nxyz", Selection{1, 3});
    const auto& colors = session.editor().colors();
    const auto& screen = session.screen();
    const int left = 5;  // the gutter: three digits and a space either side
    EXPECT_EQ(screen.at(left + 0, 1).style.background, colors.text.background);
    EXPECT_EQ(screen.at(left + 1, 1).style.background, colors.selection);
    EXPECT_EQ(screen.at(left + 2, 1).style.background, colors.selection);
    EXPECT_EQ(screen.at(left + 3, 1).style.background, colors.text.background);
    session.send("<escape>");
    EXPECT_EQ(session.screen().at(left + 3, 1).style.background, colors.currentLine);
    EXPECT_EQ(session.screen().at(left + 3, 2).style.background, colors.text.background);
}

TEST(EditorScreen, TabsWideCharactersAndControlsAreLaidOutInColumns) {
    Session session(30, 6);
    session.openText(u"a\tb\u4e2d|\x01|e\u0301|");
    const auto& screen = session.screen();
    // a, tab to column 4, b, a wide character over two cells, ^A, e with its accent in one cell
    std::string row = screen.rowText(1).substr(5);
    EXPECT_EQ(row.substr(0, row.find_last_not_of(' ') + 1), "a   b\u4e2d|^A|e\u0301|");
    EXPECT_EQ(screen.at(5 + 5, 1).width, 2);
    EXPECT_EQ(screen.at(5 + 8, 1).style.foreground, session.editor().colors().invisibles.foreground);
}

TEST(EditorScreen, LongLinesScrollSidewaysToKeepTheCaretInView) {
    Session session(20, 6);
    std::u16string line(100, u'x');
    line += u"END";
    session.openText(line);
    session.send("<end>");
    const auto& screen = session.screen();
    EXPECT_NE(screen.rowText(1).find("END"), std::string::npos) << screen.rowText(1);
    ASSERT_TRUE(screen.cursor());
    EXPECT_LT(screen.cursor()->x, 20);
    session.send("<home>");
    EXPECT_EQ(session.screen().rowText(1).substr(5, 3), "xxx");
    // A resize lays the frame out again at the new size.
    session.send("<resize 40x10>");
    EXPECT_EQ(session.screen().width(), 40);
    EXPECT_NE(session.row(8).find("Ln 1, Col 1"), std::string::npos);
}

TEST(EditorScreen, CopyAsksTheTerminalToSetItsClipboard) {
    Session session(30, 6);
    session.openText(u"hi there", Selection{0, 2});
    session.editor().takeTerminalRequests();
    session.send("<ctrl+c>");
    EXPECT_EQ(session.editor().clipboard(), u"hi");
    EXPECT_EQ(session.editor().takeTerminalRequests(), "\x1b]52;c;aGk=\x07");
}

TEST(EditorScreen, ClosingAnUnsavedTabAsksFirst) {
    Session session(60, 12);
    session.openText(u"keep");
    session.openText(u"");
    session.send("x<ctrl+w>");
    ASSERT_TRUE(session.editor().hasModal());
    bool asked = false;
    for (int y = 0; y < 12; ++y) asked |= session.row(y).find("Save changes to") != std::string::npos;
    EXPECT_TRUE(asked);
    session.send("<escape>");  // Cancel
    EXPECT_EQ(session.editor().tabCount(), 2u);
    session.send("<ctrl+w>d");  // Don't Save
    EXPECT_EQ(session.editor().tabCount(), 1u);
    EXPECT_EQ(session.editor().activeTab()->text().text(), u"keep");
    session.send("<ctrl+q>");
    EXPECT_TRUE(session.editor().quitRequested());
}

}  // namespace
}  // namespace vx::editor

namespace vx::editor {
namespace {

TEST(EditorScreen, FindPromptOffersThePreviousQuerySelectedAndSaysWhenNothingMatches) {
    Session session(60, 6);
    session.openText(u"alpha beta alpha", Selection::caretAt(0));
    session.send("<ctrl+f>beta<enter>");
    session.send("<ctrl+f>");
    EXPECT_EQ(session.row(5).substr(0, 10), "Find: beta");
    EXPECT_EQ(session.screen().at(6, 5).style.background, session.editor().colors().selection);
    session.send("zz");  // typing replaces the old query
    std::string row = session.row(5);
    EXPECT_EQ(row.substr(0, 9), "Find: zz ");
    EXPECT_NE(row.find("Not found"), std::string::npos) << row;
    session.send("<escape><ctrl+f><end>a<enter>");  // a movement keeps it: "betaa" is not there
    EXPECT_EQ(session.editor().findQuery(), u"betaa");
}

// Secondary carets show as inverted cells; the terminal's cursor stays on the primary.
TEST(EditorScreen, EverySelectionShows) {
    Session session(30, 6);
    Tab& tab = session.openText(u"abc\nabc");
    tab.view().setSelections({Selection::caretAt(5), Selection{0, 2}});
    const auto& screen = session.screen();
    const int left = 5;
    EXPECT_EQ(screen.at(left + 0, 1).style.background, session.editor().colors().selection);
    EXPECT_EQ(screen.at(left + 1, 1).style.background, session.editor().colors().selection);
    EXPECT_TRUE(screen.at(left + 2, 1).style.attributes & tui::kReverse);  // the secondary's caret end
    ASSERT_TRUE(screen.cursor());
    EXPECT_EQ(*screen.cursor(), (tui::Point{left + 1, 2}));
}

}  // namespace
}  // namespace vx::editor
