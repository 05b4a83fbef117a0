// Theme files: what is read, which zone a context gets, and the tie rules.
#include <gtest/gtest.h>

#include "selectors/theme.hpp"
#include "support/temp_dir.hpp"

using namespace vx;

namespace {

std::shared_ptr<VXTheme> themeFrom(const std::string& text) {
    auto theme = std::make_shared<VXTheme>();
    theme->parseSFONode(SFONode::nodeFromString(text));
    return theme;
}

VXContext contextOf(std::initializer_list<const char*> names) {
    std::vector<VXScope> scopes;
    for (const char* name : names) scopes.push_back(VXScope(name));
    return VXContext::fromScopes(scopes);
}

// A "#" would start a comment in self-ml: hexadecimal colours are bracketed or written without it.
const char* kTheme = R"(
    (author [A. Person]) (email a@example.org) (url https://example.org)
    (!default (color [#ddd]) (background 222222) (selection [#444]) (caret white) (line-highlight (rgba 1 1 1 0.1)))
    (apply [string] String (color [#0f0]))
    (apply [string] [String again] (color ff0000))
    (apply [invalid] Invalid (color [#f0f]))
    (apply [comment] Comment (color 888888) (italic) (strikethrough ignored-content))
    (apply [keyword.control, storage] Keyword (bold) (background (hsl 0 1 0.5)))
    (apply)
)";

TEST(Theme, ReadsMetadataEditorColoursAndZonesInOrder) {
    auto theme = themeFrom(kTheme);
    EXPECT_EQ(theme->themeAuthor, "A. Person");
    EXPECT_EQ(theme->themeAuthorEmail, "a@example.org");
    EXPECT_EQ(theme->themeAuthorWebsite, "https://example.org");
    EXPECT_EQ(theme->selectionColor->hexString(), "#444444FF");
    EXPECT_EQ(theme->caretColor->hexString(), "#FFFFFFFF");
    EXPECT_EQ(theme->currentLineColor->hexString(), "#FFFFFF1A");
    EXPECT_EQ(theme->invisiblesColor, VXColor::grayColor());  // missing: the fallback
    EXPECT_EQ(theme->allZone->caretColor, theme->caretColor);

    // !default first, apply zones in file order ("invalid" skipped), then bold, italic, underline.
    std::vector<std::string> selectors;
    for (const auto& zone : theme->zonesArray) selectors.push_back(zone->selectorString());
    EXPECT_EQ(selectors, (std::vector<std::string>{"", "string", "string", "comment", "keyword.control, storage", "",
                                                   "bold", "italic", "underline"}));
    EXPECT_EQ(theme->zonesArray.front(), theme->defaultZone);
    auto comment = theme->zonesArray[3];
    EXPECT_TRUE(comment->italic);
    EXPECT_TRUE(comment->strikethrough);
    EXPECT_FALSE(comment->bold);
    EXPECT_EQ(theme->zonesArray[4]->backgroundColor->hexString(), "#FF0000FF");
    EXPECT_FALSE(theme->zonesArray[4]->foregroundColor.has_value());
    EXPECT_EQ(theme->zoneForSelector(VXSelector::compileString("comment")), comment);
    EXPECT_EQ(theme->zoneForSelector(VXSelector::compileString("invalid")), nullptr);
}

TEST(Theme, ZoneForContextTiesGoToTheEarlierZone) {
    auto theme = themeFrom(kTheme);
    auto stringZone = theme->zoneForContext(contextOf({"source.c", "string.quoted"}));
    EXPECT_EQ(stringZone->name, "String");  // the later namesake scores the same and loses
    EXPECT_EQ(theme->zoneForContext(contextOf({"source.c", "storage.type"}))->name, "Keyword");
    // Nothing but the empty selectors match: the default zone, first in the list, wins.
    EXPECT_EQ(theme->zoneForContext(contextOf({"source.c", "entity.name"})), theme->defaultZone);
    // Cached by the context's scopes: the same object comes back.
    EXPECT_EQ(theme->zoneForContext(contextOf({"source.c", "string.quoted"})), stringZone);

    // The built-in zones apply unless an earlier zone scores at least as high.
    EXPECT_EQ(theme->zoneForContext(contextOf({"source.c", "markup.bold"}))->selectorString(), "bold");
    EXPECT_TRUE(theme->attributesForZone(theme->zoneForContext(contextOf({"markup.underline"}))).underline);
    EXPECT_EQ(theme->zoneForContext(contextOf({"comment.bold"}))->name, "Comment");
}

TEST(Theme, WithoutDefaultsNothingMatchesGivesTheEmptyDefaultZone) {
    auto theme = themeFrom("(apply [string] (color red))");
    EXPECT_FALSE(theme->selectionColor.has_value());
    EXPECT_EQ(theme->zonesArray.size(), 4u);
    EXPECT_EQ(theme->zoneForContext(contextOf({"source.c"})), theme->defaultZone);
    EXPECT_EQ(theme->zoneForContext(contextOf({})), theme->defaultZone);
    auto attributes = theme->attributesForZone(theme->zoneForContext(contextOf({"string"})));
    EXPECT_EQ(attributes.foreground.hexString(), "#FF0000FF");
    EXPECT_EQ(attributes.background, VXColor::clearColor());

    auto missing = VXTheme::initWithThemePath("/nonexistent/theme.selfml");
    EXPECT_EQ(missing->zonesArray.size(), 3u);  // only the built-in zones
}

TEST(Theme, ImportsPropertyListThemes) {
    test::TempDir dir;
    const auto path = dir.write("Imported.tmTheme", R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
  <key>name</key><string>Imported</string>
  <key>settings</key><array>
    <dict><key>settings</key><dict>
      <key>background</key><string>#101010</string><key>foreground</key><string>#E0E0E0</string>
      <key>caret</key><string>#FFCC00</string><key>selection</key><string>#33445580</string>
    </dict></dict>
    <dict><key>name</key><string>Comment</string><key>scope</key><string>comment, string.regexp</string>
      <key>settings</key><dict><key>foreground</key><string>#808080</string><key>fontStyle</key><string>italic bold</string></dict></dict>
  </array>
</dict></plist>)");
    auto theme = VXTheme::initWithTextmateThemePath(path);
    EXPECT_EQ(theme->themeName, "Imported");
    EXPECT_EQ(theme->caretColor->hexString(), "#FFCC00FF");
    EXPECT_EQ(theme->selectionColor->hexString(), "#33445580");
    EXPECT_EQ(theme->defaultZone->backgroundColor->hexString(), "#101010FF");
    auto zone = theme->zoneForContext(contextOf({"source.js", "string.regexp"}));
    EXPECT_EQ(zone->name, "Comment");
    EXPECT_TRUE(zone->italic && zone->bold);
    EXPECT_EQ(theme->zoneForContext(contextOf({"source.js"})), theme->defaultZone);
}

}  // namespace
