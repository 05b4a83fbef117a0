// The snippet session on a text view over a plain string: expansion, walking, mirrors, nested
// fields, variables, shell constants and the end of a session.
#include <gtest/gtest.h>

#include <chrono>

#include "editing/text_view.hpp"
#include "snippets/snippet_expansion.hpp"
#include "snippets/snippet_session.hpp"
#include "snippet_test_support.hpp"

namespace vx {
namespace {

class PlainHost final : public TextViewHost {
public:
    std::u16string breakText = u"\n";
    VXContext scopeContextAt(uint64_t) override { return {}; }
    std::u16string lineBreak() override { return breakText; }
};

class CellColumns final : public ColumnWidths {
public:
    uint64_t columnForOffset(std::u16string_view, uint64_t offset, int) const override { return offset; }
    uint64_t offsetForColumn(std::u16string_view line, uint64_t column, int, bool) const override {
        return std::min<uint64_t>(column, line.size());
    }
};

// An editor in miniature: "|" in the starting text marks carets; `shown` writes the text with
// each selection as [text] and each caret as |.
class SessionTest : public testing::Test {
protected:
    void open(std::string_view marked, int tabSize = 4, bool softTabs = true) {
        std::u16string text = utf16FromUtf8(marked);
        std::vector<Selection> carets;
        for (size_t at = text.find(u'|'); at != std::u16string::npos; at = text.find(u'|')) {
            text.erase(at, 1);
            carets.push_back(Selection::caretAt(at));
        }
        buffer.value = text;
        view.setIndentation(tabSize, softTabs);
        view.setSelections(carets);
    }
    void expand(std::string_view snippet, SnippetEnvironment environment = {}) {
        session = VXSnippetSession::expand(view, test::compile(snippet), environment);
        buffer.onReplace = [this](Range r, int64_t d) { session->textDidChange(r, d); };
    }
    void type(std::u16string_view text) {
        view.typeText(text);
        session->commandDidFinish();
    }
    std::string shown() const {
        std::u16string out = buffer.value;
        auto selections = view.selections();
        for (size_t i = selections.size(); i-- > 0;) {
            Range r = selections[i].range();
            if (r.length == 0) {
                out.insert(r.location, u"|");
            } else {
                out.insert(r.end(), u"]");
                out.insert(r.location, u"[");
            }
        }
        return utf8FromUtf16(out);
    }

    test::StringText buffer;
    UndoManager undo;
    PlainHost host;
    CellColumns columns;
    VXTextView view{buffer, undo, host, columns};
    std::unique_ptr<VXSnippetSession> session;
};

TEST_F(SessionTest, ExpandsIndentedLikeItsLineWithTheDocumentsTabsAndLineBreaks) {
    open("    |");
    expand("def %{1:\"foo\"}(%{2}):\n\t%{0:\"pass\"}");
    EXPECT_EQ(shown(), "    def [foo]():\n        pass");
    EXPECT_TRUE(session->isActive());

    open("\t|x", 4, false);
    host.breakText = u"\r\n";
    expand("if (%{1}) {\n\t%{0}\n}");
    EXPECT_EQ(shown(), "\tif (|) {\r\n\t\t\r\n\t}x");
}

TEST_F(SessionTest, WalksFieldsInNumberOrderWithZeroLastAndEndsThere) {
    open("|");
    expand("%{2:\"b\"} %{1:\"a\"} %{3} %{0:\"end\"}");
    EXPECT_EQ(shown(), "b [a]  end");
    EXPECT_FALSE(session->previousField());  // at the first field already
    EXPECT_TRUE(session->nextField());
    EXPECT_EQ(shown(), "[b] a  end");
    EXPECT_TRUE(session->nextField());
    EXPECT_EQ(shown(), "b a | end");
    EXPECT_TRUE(session->previousField());
    EXPECT_EQ(shown(), "[b] a  end");
    session->nextField();
    session->nextField();
    EXPECT_EQ(shown(), "b a  [end]");
    EXPECT_FALSE(session->isActive());
    EXPECT_FALSE(session->nextField());

    // Without a 0 the last Tab leaves the caret at the snippet's end.
    open("x|y");
    expand("(%{1:\"a\"})");
    EXPECT_EQ(shown(), "x([a])y");
    session->nextField();
    EXPECT_EQ(shown(), "x(a)|y");
    EXPECT_FALSE(session->isActive());

    // A snippet without fields is plain text with the caret after it.
    open("|");
    expand("plain %{VX_NO_SUCH_VARIABLE_ANYWHERE:\"text\"}");
    EXPECT_EQ(shown(), "plain text|");
    EXPECT_FALSE(session->isActive());
}

TEST_F(SessionTest, MirrorsFollowTheirTabStopThroughRegexFilters) {
    open("|");
    expand("class %{1:\"Foo\"} { %{1/(.+)/~$1/}(); %{1/a/X/gi} %{1/^(x)?.*$/(?1:has x:no x)/} %{1} }");
    EXPECT_EQ(shown(), "class [Foo] { ~Foo(); Foo no x Foo }");
    type(u"x");
    EXPECT_EQ(shown(), "class x| { ~x(); x has x x }");
    type(u"Aba");
    EXPECT_EQ(shown(), "class xAba| { ~xAba(); xXbX has x xAba }");
    view.deleteBackward();
    session->commandDidFinish();
    EXPECT_EQ(shown(), "class xAb| { ~xAb(); xXb has x xAb }");

    // A mirror written before its tab stop moves the fields and the caret after it along.
    open("|");
    expand("%{1/(.*)/<$1>/} = %{1:\"v\"};");
    EXPECT_EQ(shown(), "<v> = [v];");
    type(u"long");
    EXPECT_EQ(shown(), "<long> = long|;");
    session->nextField();
    EXPECT_EQ(shown(), "<long> = long;|");
}

TEST_F(SessionTest, MirrorWithoutAFieldOfItsOwnShowsItsDefault) {
    open("|");
    expand("%{1/x/y/:\"none\"}-%{2:\"two\"}");
    EXPECT_EQ(shown(), "none-[two]");
    type(u"z");
    EXPECT_EQ(shown(), "none-z|");
}

TEST_F(SessionTest, NestedFieldsGoWhenTheirParentsDefaultIsOverwritten) {
    open("|");
    expand("<a%{1:\" href=\\\"%{2:\"url\"}\\\"\"}>%{3}</a>");
    EXPECT_EQ(shown(), "<a[ href=\"url\"]></a>");
    session->nextField();
    EXPECT_EQ(shown(), "<a href=\"[url]\"></a>");
    type(u"x.org");
    session->nextField();
    EXPECT_EQ(shown(), "<a href=\"x.org\">|</a>");
    session->previousField();
    session->previousField();
    EXPECT_EQ(shown(), "<a[ href=\"x.org\"]></a>");

    open("|");
    expand("<a%{1:\" href=\\\"%{2:\"url\"}\\\"\"}>%{3}</a>");
    type(u" id");  // overwrites field 1: field 2 inside it is gone, Tab goes to 3
    session->nextField();
    EXPECT_EQ(shown(), "<a id>|</a>");
}

TEST_F(SessionTest, SeveralSelectionsExpandAndEditTogether) {
    open("|\n  |");
    expand("<%{1:\"div\"}>%{0}</%{1}>");
    EXPECT_EQ(shown(), "<[div]></div>\n  <[div]></div>");
    type(u"p");
    EXPECT_EQ(shown(), "<p|></p>\n  <p|></p>");
    session->nextField();
    EXPECT_EQ(shown(), "<p>|</p>\n  <p>|</p>");
}

TEST_F(SessionTest, ManyCopiesStayInStepThroughTypingMirrorsAndWalking) {
    std::string marked, want;
    for (int i = 0; i < 40; ++i) {
        marked += "x" + std::to_string(i) + "|\n";
        want += "x" + std::to_string(i) + "<longer.name>long-er:name</long-er>|\n";
    }
    open(marked);
    expand("<%{1/(\\w+)-?/$1/g}.%{2:\"n\"}>%{1:\"t\"}:%{2}</%{1}>%{0}");
    type(u"long-er");
    session->nextField();
    type(u"name");
    view.deleteBackward();  // a backspace at every copy, the mirrors following
    session->commandDidFinish();
    type(u"e");
    session->nextField();
    EXPECT_EQ(shown(), want);
    EXPECT_FALSE(session->isActive());
}

TEST_F(SessionTest, VariablesComeFromTheSelectionTheFileAndTheClipboard) {
    open("int value|;\nnext");
    SnippetEnvironment environment;
    environment.filePath = u"/tmp/project/main.cpp";
    environment.clipboard = u"clip";
    expand("%{TM_FILENAME_BASE} %{VX_FILENAME} %{TM_DIRECTORY} %{TM_LINE_INDEX}/%{TM_LINE_NUMBER} %{CLIPBOARD} "
           "[%{TM_CURRENT_WORD}] %{TM_SELECTED_TEXT:\"none\"} %{NO_SUCH_VARIABLE_HERE:\"default\"}",
           environment);
    EXPECT_EQ(shown(), "int valuemain main.cpp /tmp/project 0/1 clip [value] none default|;\nnext");

    open("a |b|");
    view.setSelections({Selection{2, 3}});
    expand("(%{TM_SELECTED_TEXT})");
    EXPECT_EQ(shown(), "a (b)|");
}

TEST_F(SessionTest, ShellConstantsRunInTheFilesFolderWithinTheTimeLimit) {
    open("|");
    SnippetEnvironment environment;
    environment.filePath = u"/tmp/some file.txt";
    environment.runShellCommands = true;
    expand("%{`pwd`} %{`echo $TM_FILENAME`} %{`printf 'two\\n\\n'`:\"none yet\"}.", environment);
    EXPECT_EQ(shown(), "  none yet.|");  // the snippet is in before the commands are done
    while (session->hasPendingShellCommands()) session->takeShellOutput(std::chrono::milliseconds(100));
    EXPECT_EQ(shown(), "/tmp some file.txt two\n.|");

    // A command that hangs: the snippet is there at once and can be edited; the command is
    // stopped at its limit and its or-else default stands. The output of the other comes into
    // its place though the text around it changed.
    open("|");
    environment.shellTimeout = 2.0;
    const auto started = std::chrono::steady_clock::now();
    expand("[%{`sleep 30`:\"late\"}] %{1:\"next\"} %{`sleep 0.2; echo done`}", environment);
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(500));
    EXPECT_EQ(shown(), "[late] [next] ");
    type(u"ok");
    EXPECT_EQ(shown(), "[late] ok| ");
    EXPECT_TRUE(session->hasPendingShellCommands());
    while (session->hasPendingShellCommands()) session->takeShellOutput(std::chrono::milliseconds(100));
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(5));
    EXPECT_EQ(shown(), "[late] ok| done");
    session->nextField();
    EXPECT_EQ(shown(), "[late] ok done|");
}

TEST_F(SessionTest, EndsWhenTheCaretLeavesOrOnCancel) {
    open("before |after");
    expand("(%{1:\"a\"}, %{2:\"b\"})");
    view.setSelection(Selection::caretAt(0));
    session->commandDidFinish();
    EXPECT_FALSE(session->isActive());
    EXPECT_FALSE(session->nextField());

    open("|");
    expand("(%{1:\"a\"}, %{2:\"b\"})");
    view.move(Motion::Right, false, 10);  // still inside: the session goes on
    session->commandDidFinish();
    EXPECT_TRUE(session->isActive());
    session->cancel();
    EXPECT_FALSE(session->nextField());
}

TEST_F(SessionTest, ExpansionIsOneUndoStep) {
    open("x|");
    expand("(%{1:\"a\"}) %{1}");
    EXPECT_EQ(shown(), "x([a]) a");
    view.undo();
    EXPECT_EQ(utf8FromUtf16(buffer.value), "x");
}

TEST(SnippetFields, AdjacentFieldsAndEnclosingFieldsFollowAnEdit) {
    // root "ab" with field 1 = "a" (0+1) and field 2 = "b" (1+1), and field 3 inside field 2.
    std::vector<SnippetField> fields(4);
    fields[0].range = {0, 2};
    fields[1] = {SnippetField::Kind::TabStop, 1, {0, 1}, 0, true, nullptr};
    fields[2] = {SnippetField::Kind::TabStop, 2, {1, 1}, 0, true, nullptr};
    fields[3] = {SnippetField::Kind::TabStop, 3, {1, 1}, 2, true, nullptr};
    EXPECT_EQ(snippetFieldHolding(fields, {1, 0}, 2), 2);
    EXPECT_EQ(snippetFieldHolding(fields, {1, 0}, std::nullopt), 3);
    // Typing "xy" at the start of field 2: field 1 before it keeps its length.
    adjustSnippetFields(fields, {1, 0}, 2, 2);
    EXPECT_EQ(fields[0].range, (Range{0, 4}));
    EXPECT_EQ(fields[1].range, (Range{0, 1}));
    EXPECT_EQ(fields[2].range, (Range{1, 3}));
    EXPECT_EQ(fields[3].range, (Range{3, 1}));
    // Replacing all of field 2 takes field 3 with it.
    adjustSnippetFields(fields, {1, 3}, 1, 2);
    EXPECT_EQ(fields[2].range, (Range{1, 1}));
    EXPECT_FALSE(fields[3].alive);
    // An edit across the end of field 1 into field 2 takes both.
    adjustSnippetFields(fields, {0, 2}, 0, -1);
    EXPECT_FALSE(fields[1].alive);
    EXPECT_FALSE(fields[2].alive);
    EXPECT_EQ(fields[0].range, (Range{0, 0}));
}

}  // namespace
}  // namespace vx
