#include <gtest/gtest.h>

#include "intelligence/ctags_runner.hpp"
#include "intelligence/kind_map.hpp"
#include "intelligence/project_indexer.hpp"

namespace vx {
namespace {

TEST(KindMap, CtagsKindsBecomeTheIndexKinds) {
    struct Case {
        const char* language;
        const char* kind;
        const char* scopeKind;
        bool signature;
        const char* want;
    };
    const Case cases[] = {
        {"C", "function", "", false, "function"},
        {"C++", "prototype", "class", false, "prototype"},
        {"C++", "member", "class", false, "field"},
        {"C", "typedef", "", false, "type"},
        {"C", "enumerator", "enum", false, "enum_constant"},
        {"Python", "member", "class", true, "method"},
        {"Python", "member", "class", false, "field"},
        {"ObjectiveC", "method", "interface", false, "method_interface"},
        {"ObjectiveC", "method", "protocol", false, "method_interface"},
        {"ObjectiveC", "method", "implementation", false, "method_implementation"},
        {"ObjectiveC", "class", "interface", false, "class_method_interface"},
        {"ObjectiveC", "class", "implementation", false, "class_method_implementation"},
        {"ObjectiveC", "implementation", "", false, "implementation"},
        {"ObjectiveC", "category", "implementation", false, "category_implementation"},
        // Outside Objective-C a class in an interface is a class, not a class method.
        {"Java", "class", "interface", false, "class"},
        {"Markdown", "chapter", "", false, "misc"},
        {"C", "local", "function", false, "local"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(VXTypeCodeForCtagsKind(c.language, c.kind, c.scopeKind, c.signature), c.want) << c.language << " " << c.kind;
    EXPECT_TRUE(VXTypeCodeIsHiddenFromSymbolList("local"));
    EXPECT_FALSE(VXTypeCodeIsHiddenFromSymbolList("misc"));
    EXPECT_TRUE(VXTypeCodeIsHiddenFromCompletion("method_implementation"));
    EXPECT_FALSE(VXTypeCodeIsHiddenFromCompletion("implementation"));
    EXPECT_TRUE(VXTypeCodeIsHiddenFromJumpToDefinition("category_implementation"));
    EXPECT_FALSE(VXTypeCodeIsHiddenFromJumpToDefinition("method_implementation"));
}

TEST(CtagsOutput, LinesBecomeTagsAndOthersAreSkipped) {
    auto tag = VXParseCtagsLine(
        R"json({"_type": "tag", "name": "bar", "path": "/p/a.cpp", "pattern": "/^int Foo::bar(int x) { return x; }$/", "language": "C++", "line": 7, "kind": "function", "signature": "(int x)", "scope": "ns::Foo", "scopeKind": "class"})json");
    ASSERT_TRUE(tag);
    EXPECT_EQ(tag->first, "/p/a.cpp");
    EXPECT_EQ(tag->second.name, "bar");
    EXPECT_EQ(tag->second.line, 7);
    EXPECT_EQ(tag->second.scope, "ns::Foo");
    EXPECT_EQ(tag->second.scopeKind, "class");
    EXPECT_EQ(tag->second.signature, "(int x)");
    // Fields in any order, escapes decoded, fields of other types and unknown fields passed over.
    auto escaped = VXParseCtagsLine(
        R"json({"line": 3, "extras": ["x"], "path": "/p/caf\u00e9.c", "_type": "tag", "pattern": "/^char *s = \"a\\\\b\";$/", "name": "s", "end": {"n": 1}})json");
    ASSERT_TRUE(escaped);
    EXPECT_EQ(escaped->first, "/p/caf\xc3\xa9.c");
    EXPECT_EQ(escaped->second.pattern, "/^char *s = \"a\\\\b\";$/");
    EXPECT_EQ(escaped->second.line, 3);
    EXPECT_EQ(escaped->second.kind, "");
    for (const char* line : {R"({"_type": "program", "name": "Universal Ctags"})", R"({"_type": "tag", "name": "x"})",
                             "{\"_type\": \"tag\", \"na", "", "not json", R"(["tag"])"})
        EXPECT_FALSE(VXParseCtagsLine(line)) << line;
}

TEST(CtagsOutput, PatternsBecomeAnchoredRegexes) {
    const std::pair<const char*, const char*> cases[] = {
        {"/^int main(void)$/", "^int main\\(void\\)$"},
        {"/^#define MAX(/", "^#define MAX\\("},  // cut short by ctags: no end anchor
        {"/^a \\/ b [x]*$/", "^a / b \\[x\\]\\*$"},
        {"/^path\\\\name$/", "^path\\\\name$"},
        {"42", ""},
    };
    for (auto [pattern, want] : cases) EXPECT_EQ(VXRegexFromCtagsPattern(pattern), want) << pattern;
}

}  // namespace
}  // namespace vx
