// Colours from the line highlighter: right after edits, and for lines far from what was parsed.
#include <gtest/gtest.h>

#include <random>

#include "app/editor/highlighting.hpp"
#include "app/editor/session.hpp"
#include "editing/document_text_buffer.hpp"
#include "app/editor/theme_colors.hpp"
#include "syntax/language_catalog.hpp"

namespace vx::editor {
namespace {

const VXSyntaxRuleset& cRuleset() {
    auto& catalog = VXLanguageCatalog::sharedCatalog();
    const VXLanguage* c = catalog.languageNamed("c");
    EXPECT_NE(c, nullptr);
    return *catalog.rulesetForLanguage(*c);
}

// Every line's runs, as "start-end:colour" text, for comparing two highlighters.
std::string describeAll(TabHighlighter& highlighter, const TextBuffer& text) {
    BasicScopeStyler styler;
    std::string out;
    for (uint64_t line = 0; line < text.lineCount(); ++line) {
        highlighter.advance(text, line, std::chrono::hours(1));
        auto runs = highlighter.runsForLine(text, line, styler, {});
        if (!runs) return "line " + std::to_string(line) + " out of reach";
        for (const auto& run : *runs)
            out += std::to_string(run.start) + "-" + std::to_string(run.end) + ":" + std::to_string(run.style.foreground.r) + " ";
        out += "\n";
    }
    return out;
}

TEST(Highlighting, EditsRecolourTheLinesAfterThemLikeAFreshParse) {
    const VXSyntaxRuleset& ruleset = cRuleset();
    std::u16string source;
    for (int i = 0; i < 120; ++i) source += u"int f" + std::u16string(1, u'a' + i % 26) + u"(void) { return \"s\"; } // c\n";
    std::mt19937 random(11);
    const std::u16string pieces[] = {u"/*", u"*/", u"\"", u"x", u"\n", u"// ", u""};
    VXSingleFileDocument document;
    document.contents().replaceCharactersInRange({0, 0}, source);
    DocumentTextBuffer text(document);
    TabHighlighter incremental(ruleset);
    describeAll(incremental, text);
    for (int round = 0; round < 40; ++round) {
        uint64_t at = random() % (text.length() + 1);
        uint64_t length = std::min<uint64_t>(random() % 3, text.length() - at);
        text.replace({at, length}, pieces[random() % std::size(pieces)]);
        uint64_t line = text.lineForOffset(at);
        incremental.invalidateFrom(line > 0 ? line - 1 : 0);
        TabHighlighter fresh(ruleset);
        ASSERT_EQ(describeAll(incremental, text), describeAll(fresh, text)) << "round " << round;
    }
}

TEST(Highlighting, OpeningACommentColoursTheLinesBelowAndUndoTakesItBack) {
    Session session(60, 10);
    Tab& tab = session.openText(u"int a;\nint b;\nint c;\n");
    tab.setHighlighter(std::make_unique<TabHighlighter>(cRuleset()));
    const int left = 5;
    auto colorAt = [&](int x, int y) { return session.screen().at(x, y).style.foreground; };
    tui::Color keyword = colorAt(left, 2);
    EXPECT_NE(keyword, session.editor().colors().text.foreground);
    session.send("/*");
    tui::Color comment = colorAt(left + 2, 3);
    EXPECT_NE(comment, keyword);
    EXPECT_EQ(colorAt(left, 1), comment);
    session.send("<ctrl+z>");
    EXPECT_EQ(colorAt(left, 3), keyword);
}

TEST(Highlighting, FarLinesWaitForBackgroundStepsInsteadOfBlockingAFrame) {
    std::u16string source;
    for (int i = 0; i < 40000; ++i) source += u"/* a */ int x;\n";
    VXSingleFileDocument document;
    document.contents().replaceCharactersInRange({0, 0}, source);
    DocumentTextBuffer text(document);
    TabHighlighter highlighter(cRuleset());
    BasicScopeStyler styler;
    EXPECT_TRUE(highlighter.runsForLine(text, 10, styler, {}));
    EXPECT_FALSE(highlighter.runsForLine(text, 39000, styler, {}));
    while (!highlighter.advance(text, 39000, std::chrono::milliseconds(5))) {
    }
    auto runs = highlighter.runsForLine(text, 39000, styler, {});
    ASSERT_TRUE(runs);
    EXPECT_GT(runs->size(), 1u);
}

}  // namespace
}  // namespace vx::editor

namespace vx::editor {
namespace {

TEST(Highlighting, ThemeColoursTheZonesAndTheEditor) {
    auto theme = loadTheme(kDefaultThemeName);
    ASSERT_TRUE(theme);
    Session session(60, 8);
    session.editor().applyTheme(theme);
    Tab& tab = session.openText(u"// note\nint x;\n");
    tab.setHighlighter(std::make_unique<TabHighlighter>(cRuleset()));
    const auto& colors = session.editor().colors();
    const auto& screen = session.screen();
    // The comment's colour is what the theme gives a C comment, over the current line's background.
    VXContext comment = VXContext::fromScopes(std::vector<VXScope>{VXScope("source.c"), VXScope("comment.line.double-slash.c")});
    VXAttrDict attributes = theme->attributesForZone(theme->zoneForContext(comment));
    EXPECT_EQ(screen.at(5 + 3, 1).style.foreground, terminalColor(attributes.foreground, colors.text.foreground));
    EXPECT_EQ(screen.at(5 + 3, 2).style.background, colors.text.background);
    EXPECT_EQ(screen.at(5 + 3, 1).style.background, colors.currentLine);
    if (theme->selectionColor) {
        EXPECT_EQ(colors.selection, terminalColor(*theme->selectionColor, colors.text.background));
    }
}

}  // namespace
}  // namespace vx::editor
