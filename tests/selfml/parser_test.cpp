// The self-ml grammar's corners, checked through the low-level tree.
#include <gtest/gtest.h>

#include <string>

#include "selfml/sfnode.hpp"
#include "selfml/sfwriter.hpp"

namespace {

// A compact picture of a tree: lists as (head children...), strings as "text".
std::string describe(const SFNode* node) {
    std::string out;
    for (const SFNode* child = node; child; child = child->next) {
        if (!out.empty()) out += ' ';
        if (child->type == SFNodeTypeString) {
            out += '"' + std::string(child->value) + '"';
        } else {
            out += '(' + std::string(child->value ? child->value : "");
            if (child->firstChild) out += ' ' + describe(child->firstChild);
            out += ')';
        }
    }
    return out;
}

std::string parse(const std::string& text) {
    SFNode* root = SFNodeCreateFromBytes(text.data(), text.size());
    std::string out = describe(root->firstChild);
    SFNodeFree(root);
    return out;
}

TEST(SelfmlParser, StringKinds) {
    const std::pair<const char*, const char*> cases[] = {
        {"(zone (name string) [a b])", R"((zone (name "string") "a b"))"},
        {"(a `x``y`)", R"((a "x`y"))"},
        // Two backticks at the start: an empty string, then a verbatim one.
        {"(a ``x``y`)", R"((a "" "x``y`"))"},
        {"(a [x [y] z])", R"((a "x [y] z"))"},
        {"(a b#c)", R"((a "b#c"))"},
        {"(a [])", R"((a ""))"},
        {"(a x`y)", R"((a "x`y"))"},
        {"(a [multi\nline])", "(a \"multi\nline\")"},
        {"(a b(c)d)", R"((a "b" (c) "d"))"},
        {"(a b[c]d)", R"((a "b" "c" "d"))"},
        {"(a \xC3\xA9t\xC3\xA9 \xFF\xFE)", "(a \"\xC3\xA9t\xC3\xA9\" \"\xFF\xFE\")"},
    };
    for (auto [text, want] : cases) EXPECT_EQ(parse(text), want) << text;
}

TEST(SelfmlParser, CommentsAndStrayClosers) {
    const std::pair<const char*, const char*> cases[] = {
        {"(a b)#c", R"((a "b"))"},
        {"(a # comment (x)\n b)", R"((a "b"))"},
        {"(a # comment\r b)", R"((a "b"))"},
        {"(a {comment (not a list)} b)", R"((a "b"))"},
        {"(a {outer {inner} still} b)", R"((a "b"))"},
        // {# is only a brace comment: it ends at the balancing }, not at #}.
        {"{# x { y #} z } (a)", "(a)"},
        {"{# x { y #} (a)", ""},
        {"(a ] } b)", R"((a "b"))"},
        {"] } (a)", "(a)"},
        // The head skips comments and stray closers before it.
        {"( # c\n {c} ] } head x)", R"((head "x"))"},
        {"([two words] x)", R"((two words "x"))"},
        {"(`q` x)", R"((q "x"))"},
    };
    for (auto [text, want] : cases) EXPECT_EQ(parse(text), want) << text;
}

TEST(SelfmlParser, ListsWithoutHeadsAndUnbalancedText) {
    const std::pair<const char*, const char*> cases[] = {
        {"()", ""},
        {"((x) y)", ""},
        {"(a () b)", R"((a "b"))"},
        {"(a ([] x (y)) b)", R"((a "b"))"},
        {"(", ""},
        {"( ", ""},
        {"(a (b", "(a (b))"},
        {"(a [unclosed", R"((a "unclosed"))"},
        {"(a `unclosed", R"((a "unclosed"))"},
        {"(a {unclosed b)", "(a)"},
        // An unmatched ')' at the top level ends the parse.
        {"(a) ) (b)", "(a)"},
        {")", ""},
        {"x (a) y", R"("x" (a) "y")"},
        {"", ""},
    };
    for (auto [text, want] : cases) EXPECT_EQ(parse(text), want) << text;
}

TEST(SelfmlParser, ParentLinksAndNulStopsTheText) {
    SFNode* root = SFNodeCreateFromString("(a (b c) d)");
    SFNode* a = SFNodeFirstChild(root);
    SFNode* b = SFNodeFirstChild(a);
    EXPECT_EQ(a->parent, root);
    EXPECT_EQ(b->parent, a);
    EXPECT_EQ(SFNodeFirstChild(b)->parent, nullptr);  // strings leave it unset
    EXPECT_EQ(SFNodeHead(root), nullptr);
    SFNodeFree(root);

    const std::string withNul("(a b)\0(c)", 9);
    EXPECT_EQ(parse(withNul), R"((a "b"))");
}

TEST(SelfmlNodeFunctions, AddReplaceCopyAndNullTolerance) {
    SFNode* list = SFNodeCreate();
    SFNodeSetHead(list, SFStringDuplicate("k", 1));
    SFNodeAddString(list, SFStringDuplicate("a", 1));
    SFNode* child = SFNodeCreate();
    SFNodeSetHead(child, SFStringDuplicate("x", 1));
    SFNodeAddChild(list, child);
    SFNodeAddChild(list, child);  // already there: ignored
    SFNodeAddChild(list, list);   // itself: ignored
    SFNodeAddString(list, SFStringDuplicate("b", 1));
    EXPECT_EQ(describe(list), R"((k "a" (x) "b"))");
    EXPECT_EQ(child->parent, list);

    SFNode* copy = SFNodeCopy(list);
    SFNodeReplaceChildAtIndexWithLast(list, 0);
    EXPECT_EQ(describe(list), R"((k "b" (x)))");
    SFNodeReplaceChildAtIndexWithLast(list, 1);  // the last one: nothing happens
    EXPECT_EQ(describe(list), R"((k "b" (x)))");
    EXPECT_EQ(describe(copy), R"((k "a" (x) "b"))");
    EXPECT_EQ(SFNodeFirstChild(copy)->next->parent, copy);

    SFNodeSetHead(SFNodeFirstChild(list), SFStringDuplicate("z", 1));  // a string: ignored
    EXPECT_STREQ(SFNodeStringValue(SFNodeFirstChild(list)), "b");
    EXPECT_EQ(SFNodeHead(SFNodeFirstChild(list)), nullptr);

    EXPECT_EQ(SFNodeGetType(nullptr), 0u);
    EXPECT_EQ(SFNodeFirstChild(nullptr), nullptr);
    EXPECT_EQ(SFNodeCopy(nullptr), nullptr);
    SFNodeAddChild(nullptr, nullptr);
    SFNodeFree(nullptr);
    SFNodeFree(list);
    SFNodeFree(copy);
}

TEST(SelfmlParser, DeepNestingDoesNotExhaustTheStack) {
    std::string text;
    for (int i = 0; i < 200000; ++i) text += "(a ";
    SFNode* root = SFNodeCreateFromBytes(text.data(), text.size());
    int depth = 0;
    for (SFNode* node = SFNodeFirstChild(root); node; node = SFNodeFirstChild(node)) ++depth;
    EXPECT_EQ(depth, 200000);
    SFNode* copy = SFNodeCopy(root);
    depth = 0;
    for (SFNode* node = SFNodeFirstChild(copy); node; node = SFNodeFirstChild(node)) ++depth;
    EXPECT_EQ(depth, 200000);
    SFNodeFree(copy);
    SFNodeFree(root);

    // Written text grows with the square of the depth (indentation), so write a shallower one.
    text.clear();
    for (int i = 0; i < 2000; ++i) text += "(a ";
    root = SFNodeCreateFromBytes(text.data(), text.size());
    const std::string written = vx::SFNodeSelfmlRepresentation(root);
    EXPECT_EQ(written.substr(0, 12), "(a\n    (a\n  ");
    EXPECT_EQ(written.substr(written.size() - 3), ")))");
    SFNodeFree(root);
}

}  // namespace
