// Which lines an edit re-parses, and that the result is what a parse from the top gives.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "incremental/support.hpp"
#include "support/temp_dir.hpp"
#include "syntax/document_highlighter.hpp"
#include "syntax/mapped_string.hpp"

namespace vx::test {
namespace {

using Wait = VXIncrementalHighlighter::Wait;

// Line 10 closes a comment opened above it, so a "/*" typed at line 2 comments out lines 2..10.
constexpr std::u16string_view kSource =
    u"#include <stdio.h>\n"                    // 0
    u"\n"                                      // 1
    u"static int counter = 0;\n"               // 2
    u"int add(int a, int b) {\n"               // 3
    u"    return a + b;\n"                     // 4
    u"}\n"                                     // 5
    u"char *name = \"vellum\";\n"              // 6
    u"int main(void) {\n"                      // 7
    u"    printf(\"%d\\n\", add(1, 2));\n"     // 8
    u"    counter++;\n"                        // 9
    u"    int z = 3; /* closing */ z++;\n"     // 10
    u"    return 0;\n"                         // 11
    u"}\n";                                    // 12

uint64_t offsetOfLine(HighlightedDocument& doc, uint64_t line) { return doc.highlighter->lineRange(line).location; }

std::vector<uint64_t> linesFrom(uint64_t first, uint64_t last) {
    std::vector<uint64_t> lines;
    for (uint64_t line = first; line <= last; ++line) lines.push_back(line);
    return lines;
}

TEST(Rehighlight, TypingInsideALineParsesThatLineOnly) {
    HighlightedDocument doc("c", kSource);
    doc.highlighter->takeParsedLines();
    doc.replace(offsetOfLine(doc, 4) + 11, 0, u"x");  // "return a + xb;"
    EXPECT_EQ(doc.highlighter->takeParsedLines(), std::vector<uint64_t>{4});
    EXPECT_EQ(differenceFromFullParse(doc), "");

    // A line break in the middle of a line: the two halves, nothing after them.
    doc.replace(offsetOfLine(doc, 9) + 4, 0, u"\n");
    EXPECT_EQ(doc.highlighter->takeParsedLines(), (std::vector<uint64_t>{9, 10}));
    EXPECT_EQ(differenceFromFullParse(doc), "");
    // Joining them again.
    doc.replace(offsetOfLine(doc, 10) - 1, 1, u"");
    EXPECT_EQ(doc.highlighter->takeParsedLines(), std::vector<uint64_t>{9});
    EXPECT_EQ(differenceFromFullParse(doc), "");
}

TEST(Rehighlight, OpeningACommentParsesUntilTheOldContextsReturn) {
    HighlightedDocument doc("c", kSource);
    doc.highlighter->takeParsedLines();
    const uint64_t at = offsetOfLine(doc, 2);
    doc.replace(at, 0, u"/*");
    // Lines 2..10 are inside the comment; line 11 starts where it always did.
    EXPECT_EQ(doc.highlighter->takeParsedLines(), linesFrom(2, 10));
    EXPECT_EQ(differenceFromFullParse(doc), "");

    doc.replace(at, 2, u"");
    EXPECT_EQ(doc.highlighter->takeParsedLines(), linesFrom(2, 10));
    EXPECT_EQ(differenceFromFullParse(doc), "");

    // With nothing to close it, the comment runs to the end of the document, and so does the walk;
    // deleting it stops as soon as the old contexts reappear (the next line).
    const uint64_t late = offsetOfLine(doc, 11);
    doc.replace(late, 0, u"/*");
    EXPECT_EQ(doc.highlighter->takeParsedLines(), linesFrom(11, 13));
    EXPECT_EQ(differenceFromFullParse(doc), "");
    doc.replace(late, 2, u"");
    EXPECT_EQ(doc.highlighter->takeParsedLines(), linesFrom(11, 13));
    doc.replace(offsetOfLine(doc, 12), 0, u"/*");
    doc.highlighter->takeParsedLines();
    doc.replace(offsetOfLine(doc, 12), 2, u"");
    EXPECT_EQ(doc.highlighter->takeParsedLines(), linesFrom(12, 13));
    EXPECT_EQ(differenceFromFullParse(doc), "");
}

TEST(Rehighlight, ContextsCompareByDefinitionNotPosition) {
    // The comment opened on line 0 stays open at its end wherever it started: moving its start
    // along the line changes no later line.
    HighlightedDocument doc("c", u"int a; /* one\n two\n three */ int b;\n");
    doc.highlighter->takeParsedLines();
    doc.replace(0, 0, u"    ");
    EXPECT_EQ(doc.highlighter->takeParsedLines(), std::vector<uint64_t>{0});
    EXPECT_EQ(differenceFromFullParse(doc), "");
}

TEST(Rehighlight, LineEndingsAndEdgesOfTheText) {
    // A line feed typed after a carriage return makes one CR LF break; deleting it splits again.
    HighlightedDocument doc("c", u"int a;\r/* x\rint b; */\r");
    EXPECT_EQ(differenceFromFullParse(doc), "");
    doc.replace(7, 0, u"\n");
    EXPECT_EQ(differenceFromFullParse(doc), "");
    doc.replace(6, 2, u"\r");
    EXPECT_EQ(differenceFromFullParse(doc), "");
    // Everything deleted, then typed again from nothing.
    doc.replace(0, doc.document.contents().length(), u"");
    EXPECT_EQ(differenceFromFullParse(doc), "");
    EXPECT_EQ(doc.highlighter->lineCount(), 1u);
    doc.replace(0, 0, u"/* a\nb */ int c;");
    EXPECT_EQ(differenceFromFullParse(doc), "");
    // An edit at the very end.
    doc.replace(doc.document.contents().length(), 0, u"\n\"open");
    EXPECT_EQ(differenceFromFullParse(doc), "");
}

TEST(Rehighlight, OpeningAFileHighlightsInTheBackground) {
    std::string text;
    for (int i = 0; i < 3000; ++i) text += i % 100 == 0 ? "/* block\n */\n" : "int v" + std::to_string(i) + " = " + std::to_string(i) + ";\n";
    TempDir dir;
    const std::string path = dir.write("big.c", text);
    HighlightedDocument doc("c");
    std::string error;
    ASSERT_TRUE(doc.document.readFromURL(path, "", &error)) << error;
    // Readers of a late line wait for it: a reader on another thread gets the confirmed zones.
    const uint64_t last = doc.highlighter->lineCount() - 2;
    std::optional<VXIncrementalHighlighter::LineZones> seen;
    std::thread reader([&] { seen = doc.highlighter->zonesForLine(last, Wait::Yes); });
    reader.join();
    ASSERT_TRUE(seen.has_value());
    EXPECT_TRUE(seen->settled);
    EXPECT_FALSE(seen->zones.empty());
    EXPECT_EQ(differenceFromFullParse(doc), "");
    // Edits while nothing is settled yet go through too.
    doc.document.js_setText(utf16FromUtf8(text));
    doc.replace(5, 0, u"/*");
    EXPECT_EQ(differenceFromFullParse(doc), "");
}

TEST(Rehighlight, VisibleLinesAreColouredAheadAndConfirmedLater) {
    // Lines far below the top shown first are parsed before the walk reaches them; the walk
    // confirms them, or parses them again where the guess was wrong (a comment open above).
    std::u16string text = u"/*\n";
    for (int i = 0; i < 5000; ++i) text += u"int x;\n";
    text += u"*/ int y;\n";
    VXTextStorage storage(text);
    const VXSyntaxRuleset& ruleset = bundledRuleset("c");
    VXIncrementalHighlighter highlighter(storage, ruleset);
    highlighter.setVisibleLines(4990, 20);
    highlighter.waitUntilSettled();
    const auto fresh = highlightText(text, ruleset);
    for (uint64_t line : {0u, 2500u, 4995u, 5001u}) {
        auto zones = highlighter.zonesForLine(line, Wait::No);
        ASSERT_TRUE(zones && zones->settled) << line;
        EXPECT_TRUE(zones->startContext.equalZoneDefinitions(fresh[line].startContext)) << line;
        EXPECT_EQ(formatEvents({{fresh[line].line, zones->startContext, zones->zones}}), formatEvents({fresh[line]})) << line;
    }
}

TEST(Rehighlight, ALongWalkGoesOnInTheBackgroundWithTheSameEarlyStop) {
    // "/*" typed at the top of a long file comments out everything down to the "*/" near its end:
    // the edit re-parses the shown lines and a few more, the background walks on to the "*/".
    std::u16string text;
    for (int i = 0; i < 4000; ++i) text += i == 3000 ? u"int z; */ int w;\n" : u"int x = 1;\n";
    HighlightedDocument doc("c", text);
    doc.highlighter->setVisibleLines(0, 40);
    doc.highlighter->waitUntilSettled();
    doc.highlighter->takeParsedLines();
    doc.replace(0, 0, u"/*");
    // (How much the edit itself parses is not checked here: the background may already have
    // walked on before the list is read; incremental_bench times the edit alone.)
    const std::vector<uint64_t> withTheEdit = doc.highlighter->takeParsedLines();
    ASSERT_FALSE(withTheEdit.empty());
    EXPECT_GE(withTheEdit.back(), 39u) << "the shown lines are coloured before the edit returns";
    // A reader that waits gets the line as the finished walk leaves it, inside the comment.
    const auto late = doc.highlighter->zonesForLine(2000, Wait::Yes);
    ASSERT_TRUE(late && late->settled);
    EXPECT_EQ(late->startContext.size(), 2u);
    EXPECT_EQ(differenceFromFullParse(doc), "");
    // The walk stopped where the old contexts came back: after the "*/" line.
    const std::vector<uint64_t> walked = doc.highlighter->takeParsedLines();
    ASSERT_FALSE(walked.empty());
    EXPECT_EQ(walked.back(), 3000u);

    // Asking for the scopes somewhere the walk has yet to pass does the walk up to there.
    doc.replace(0, 0, u"/*");
    const std::vector<std::string> scopes = doc.highlighter->scopesAtLocation(doc.highlighter->lineRange(2500).location);
    ASSERT_EQ(scopes.size(), 2u);
    EXPECT_NE(scopes.back().find("comment.block"), std::string::npos) << scopes.back();
    doc.replace(0, 2, u"");
    EXPECT_EQ(differenceFromFullParse(doc), "");

    // Typing further down while a walk is under way moves its break along; all settles right.
    doc.replace(0, 2, u"");
    doc.replace(doc.highlighter->lineRange(1000).location, 0, u"/*\n\n");
    doc.replace(doc.highlighter->lineRange(10).location, 0, u"x\n");
    EXPECT_EQ(differenceFromFullParse(doc), "");
}

TEST(Rehighlight, ScopesAtALocation) {
    HighlightedDocument doc("c", kSource);
    const uint64_t inString = offsetOfLine(doc, 6) + 15;
    const auto scopes = doc.highlighter->scopesAtLocation(inString);
    ASSERT_GE(scopes.size(), 2u);
    EXPECT_EQ(scopes.front(), doc.ruleset.scope.stringRepresentation());
    EXPECT_NE(scopes.back().find("string"), std::string::npos) << scopes.back();
    EXPECT_EQ(doc.highlighter->scopesAtLocation(offsetOfLine(doc, 1)), std::vector<std::string>{scopes.front()});
}

}  // namespace
}  // namespace vx::test
