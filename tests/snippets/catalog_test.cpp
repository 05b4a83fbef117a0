// Snippet files in truffles, the trigger before the caret, and the choice among snippets.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "editing/navigation.hpp"
#include "platform/paths.hpp"
#include "snippets/snippet_catalog.hpp"
#include "snippets/snippet_parser.hpp"
#include "snippets/snippet_trigger.hpp"
#include "support/temp_dir.hpp"
#include "snippet_test_support.hpp"

namespace vx {
namespace {

VXContext contextOf(std::initializer_list<const char*> scopes) {
    std::vector<VXScope> list;
    for (const char* scope : scopes) list.emplace_back(scope);
    return VXContext::fromScopes(list);
}

TEST(SnippetCatalog, BundledSnippetsCompileAndApplyToTheirLanguages) {
    VXSnippetCatalog catalog;
    catalog.loadTruffleDirectories({bundledTrufflesDirectory()});
    const std::map<std::string, const char*> roots = {
        {"c", "source.c"},           {"cpp", "source.c++"},      {"python", "source.python"},
        {"javascript", "source.javascript"}, {"html", "text.html.basic"}, {"css", "source.css"},
        {"shell", "source.shell"},   {"markdown", "text.html.markdown"}};
    std::map<std::string, size_t> perLanguage;
    for (const auto& item : catalog.allSnippets()) {
        SCOPED_TRACE(item.path + ": " + item.name);
        EXPECT_FALSE(VXNewSnippetParserCompile(item.text).failed);
        ASSERT_FALSE(item.trigger.empty());
        for (char16_t c : item.trigger) EXPECT_TRUE(isWordCharacter(c));
        const std::string stem = std::filesystem::path(item.path).stem().string();
        ASSERT_TRUE(roots.count(stem)) << "a file for no bundled language";
        EXPECT_TRUE(item.selector->matchesBasicContext(roots.at(stem)));
        EXPECT_FALSE(item.selector->matchesBasicContext(std::string(roots.at(stem)) + " comment.line"));
        ++perLanguage[stem];
    }
    for (const auto& [stem, root] : roots) EXPECT_GE(perLanguage[stem], 6u) << stem;
    // Each trigger picks one snippet in each language: no two with the same trigger tie there.
    for (const auto& [stem, root] : roots) {
        std::map<std::u16string, size_t> seen;
        for (const auto& item : catalog.allSnippets())
            if (item.selector->matchesBasicContext(root)) ++seen[item.trigger];
        for (const auto& [trigger, count] : seen) EXPECT_EQ(count, 1u) << stem << ": " << utf8FromUtf16(trigger);
    }
}

TEST(SnippetCatalog, TheBestMatchingSelectorChoosesAndTiesGoToTheFirstRead) {
    test::TempDir dir;
    dir.write("A/Snippets/one.selfml", R"(
(scope source.c)
(snippet (name [plain]) (trigger for) (text [plain]))
(snippet (name [in a string]) (trigger for) (scope [source.c string]) (text [string]))
(snippet (name [anywhere]) (trigger for) (scope []) (text [anywhere]))
(snippet (name [no text]) (trigger for))
(snippet (name [first tie]) (trigger tie) (text [1]))
(snippet (name [second tie]) (trigger tie) (text [2]))
(snippet (trigger untitled) (text [u]))
)");
    VXSnippetCatalog catalog;
    catalog.loadTruffleDirectories({dir.path()});
    ASSERT_EQ(catalog.allSnippets().size(), 6u);
    auto chosen = [&](std::u16string_view trigger, std::initializer_list<const char*> scopes) {
        const VXSnippetItem* item = catalog.snippetForTrigger(trigger, contextOf(scopes));
        return item ? item->name : std::string("(none)");
    };
    EXPECT_EQ(chosen(u"for", {"source.c"}), "plain");
    EXPECT_EQ(chosen(u"for", {"source.c", "string.quoted.double.c"}), "in a string");
    EXPECT_EQ(chosen(u"for", {"source.python"}), "anywhere");
    EXPECT_EQ(chosen(u"tie", {"source.c"}), "first tie");
    EXPECT_EQ(chosen(u"tie", {"source.python"}), "(none)");
    EXPECT_EQ(chosen(u"fo", {"source.c"}), "(none)");
    EXPECT_EQ(chosen(u"untitled", {"source.c"}), "untitled");  // the trigger names it

    std::vector<std::string> names;
    for (const auto* item : catalog.snippetsForContext(contextOf({"source.python"}))) names.push_back(item->name);
    EXPECT_EQ(names, std::vector<std::string>{"anywhere"});
}

TEST(SnippetCatalog, YourOwnSnippetReplacesABundledOneWithTheSameTriggerAndScope) {
    test::TempDir home;
    home.write("Truffles/Mine/Snippets/python.selfml",
               "(scope [source.python - comment - string])\n(snippet (name [my for]) (trigger for) (text [for mine]))\n");
    ::setenv("VX_HOME", home.path().c_str(), 1);
    const VXSnippetCatalog& shared = VXSnippetCatalog::sharedCatalog();
    const VXSnippetItem* item = shared.snippetForTrigger(u"for", contextOf({"source.python"}));
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->name, "my for");
    item = shared.snippetForTrigger(u"while", contextOf({"source.python"}));
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->name, "while loop");  // the bundled ones are there too
}

TEST(SnippetTrigger, IsTheWholeRunOfWordCharactersBeforeTheCaret) {
    test::StringText text(u"  for x.if xfor é_1");
    auto trigger = [&](uint64_t caret) { return utf8FromUtf16(text.substring(triggerBeforeCaret(text, caret))); };
    EXPECT_EQ(trigger(5), "for");
    EXPECT_EQ(trigger(4), "fo");
    EXPECT_EQ(trigger(10), "if");
    EXPECT_EQ(trigger(15), "xfor");
    EXPECT_EQ(trigger(19), "é_1");
    EXPECT_EQ(trigger(6), "");
    EXPECT_EQ(trigger(0), "");
}

}  // namespace
}  // namespace vx
