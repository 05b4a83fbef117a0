// JSON snippet collections of the dollar-sign family written as a truffle's snippets file.
#include <gtest/gtest.h>

#include "snippets/snippet_catalog.hpp"
#include "snippets/snippet_collection.hpp"
#include "support/temp_dir.hpp"
#include "snippet_test_support.hpp"

namespace vx {
namespace {

TEST(SnippetCollection, BecomesASnippetsFileTheCatalogReads) {
    const char* json = R"({
  // comments are allowed, as editors write them
  "For Loop": {
    "prefix": ["for", "fori"],
    "body": ["for (let ${1:i} = 0; $1 < ${2:array}.length; $1++) {", "\t$0", "}"],
    "description": "A for loop\nover an array"
  },
  "Log [x]": { "prefix": "log", "body": "console.log('${1:$TM_SELECTED_TEXT}');", "scope": "typescript,javascript,html" },
  "Choice": { "prefix": "ch", "body": "${1|a,b|}" },
  "Bang": { "prefix": "!", "body": "<!DOCTYPE html>$0" },
  "Ruby only": { "prefix": "def", "body": "def $1", "scope": "ruby" },
  "No body": { "prefix": "nb" },
  "Odd `quotes` ]": { "prefix": "odd", "body": "a ] `b` [" }
})";
    SnippetCollectionConversion result = convertSnippetCollection(json, "source.javascript");
    ASSERT_TRUE(result.error.empty()) << result.error;
    EXPECT_EQ(result.converted, 5u);
    EXPECT_EQ(result.skipped, (std::vector<std::string>{"Choice: choices cannot be written in this syntax at offset 3",
                                                         "Ruby only: for none of the languages here (ruby)", "No body: no body"}));
    EXPECT_EQ(result.notes, std::vector<std::string>{"Bang: the prefix \"!\" is not a word; inserted by name only"});
    EXPECT_NE(result.selfml.find("\n# A for loop over an array\n"), std::string::npos);

    test::TempDir dir;
    VXSnippetCatalog catalog;
    ASSERT_EQ(catalog.loadFile(dir.write("converted.selfml", result.selfml)), 5u);
    const auto& items = catalog.allSnippets();
    EXPECT_EQ(items[0].name, "For Loop");
    EXPECT_EQ(utf8FromUtf16(items[0].trigger), "for");
    EXPECT_EQ(utf8FromUtf16(items[1].trigger), "fori");
    EXPECT_EQ(items[0].scope, "source.javascript");
    EXPECT_EQ(utf8FromUtf16(items[0].text), "for (let %{1:\"i\"} = 0; %{1} < %{2:\"array\"}.length; %{1}++) {\n\t%{0}\n}");
    EXPECT_EQ(items[2].name, "Log [x]");
    EXPECT_EQ(items[2].scope, "source.javascript, text.html.basic");
    EXPECT_EQ(utf8FromUtf16(items[2].text), "console.log('%{1:\"%{VX_SELECTED_TEXT}\"}');");
    EXPECT_EQ(items[3].name, "Bang");
    EXPECT_TRUE(items[3].trigger.empty());
    EXPECT_EQ(items[4].name, "Odd `quotes` ]");
    EXPECT_EQ(utf8FromUtf16(items[4].text), "a ] %{`b`} [");  // a backquoted run is a shell command
    for (const auto& item : items) EXPECT_FALSE(VXNewSnippetParserCompile(item.text).failed) << item.name;
}

TEST(SnippetCollection, RefusesWhatIsNotACollection) {
    EXPECT_FALSE(convertSnippetCollection("[1, 2]", "").error.empty());
    EXPECT_FALSE(convertSnippetCollection("{\"a\": ", "").error.empty());
    SnippetCollectionConversion empty = convertSnippetCollection("{}", "");
    EXPECT_TRUE(empty.error.empty());
    EXPECT_EQ(empty.converted, 0u);
    test::TempDir dir;
    VXSnippetCatalog catalog;
    EXPECT_EQ(catalog.loadFile(dir.write("empty.selfml", empty.selfml)), 0u);
}

}  // namespace
}  // namespace vx
