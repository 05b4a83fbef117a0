// The object layer over self-ml: keyed lookup, lazy loading, changes, and the writer.
#include <gtest/gtest.h>

#include <random>

#include "platform/file_cache.hpp"
#include "support/temp_dir.hpp"
#include "selfml/sfonode.hpp"

using vx::SFOChild;
using vx::SFONode;
using vx::SFONodePtr;

namespace {

// The first list of a parsed text; the root stays alive through a test-wide holder.
SFONodePtr firstList(const std::string& text) {
    static std::vector<SFONodePtr> roots;
    roots.push_back(SFONode::nodeFromString(text));
    return roots.back()->childAtIndex(0)->node();
}

TEST(SFONode, KeyedLookupAndAccessors) {
    auto r = firstList("(r (k 1) (k 2) (flag) (empty) s t)");
    EXPECT_EQ(r->head(), "r");
    EXPECT_EQ(r->nodeForKey("k")->firstIfString(), "1");  // later namesakes are never seen
    EXPECT_EQ(r->valueForKey("k"), "1");
    EXPECT_EQ(r->valueForKey("K"), std::nullopt);           // case-sensitive
    EXPECT_EQ(r->valueForKey("flag"), std::nullopt);
    EXPECT_EQ(r->extract("k").size(), 2u);
    EXPECT_EQ(r->extractStrings(), (std::vector<std::string>{"s", "t"}));
    EXPECT_EQ(r->extractLists().size(), 4u);
    ASSERT_EQ(r->extractSingletonNodes().size(), 2u);
    EXPECT_EQ(r->extractSingletonNodes()[1]->head(), "empty");
    EXPECT_TRUE(r->hasSingletonNodeWithHead("flag"));
    EXPECT_FALSE(r->hasSingletonNodeWithHead("k"));
    EXPECT_EQ(r->firstIfString(), std::nullopt);
    EXPECT_EQ(r->childCount(), 6u);
    EXPECT_EQ(r->indexOfChildNode(SFOChild("t")), 5u);
    EXPECT_EQ(r->indexOfChildNode(SFOChild(r->nodeForKey("flag"))), 2u);
    EXPECT_EQ(r->nodeForKey("k")->parent(), r);
    EXPECT_EQ(r->nodeForKey("k")->rootNode(), r->parent());

    // Strings and nodes answer the same three questions.
    SFOChild text("word");
    EXPECT_EQ(text.sfNodeType(), 1u);
    EXPECT_EQ(text.firstIfString(), "word");
    EXPECT_EQ(text.extractStrings(), std::vector<std::string>{"word"});
    SFOChild list(r->nodeForKey("k"));
    EXPECT_EQ(list.sfNodeType(), 0u);
    EXPECT_EQ(list.firstIfString(), "1");
}

TEST(SFONode, RestIsNothingBelowTwoChildren) {
    EXPECT_FALSE(firstList("(a)")->rest().has_value());
    EXPECT_FALSE(firstList("(a x)")->rest().has_value());
    auto rest = firstList("(a x y (z))")->rest();
    ASSERT_TRUE(rest.has_value());
    ASSERT_EQ(rest->size(), 2u);
    EXPECT_EQ((*rest)[0].string(), "y");
    EXPECT_EQ((*rest)[1].node()->head(), "z");
    EXPECT_FALSE(firstList("(a)")->first().has_value());
}

TEST(SFONode, SetValueReplaceAndAdd) {
    auto root = SFONode::nodeFromString("(s (k v) (m (x) y) (n a b))");
    auto s = root->childAtIndex(0)->node();
    s->setValue(SFOChild("w"), "k");  // (key value): the value is replaced
    EXPECT_EQ(s->valueForKey("k"), "w");
    auto m = s->nodeForKey("m");
    s->setValue(SFOChild("flat"), "m");  // any other shape: the keyed list is replaced
    EXPECT_EQ(s->nodeForKey("m"), nullptr);
    EXPECT_EQ(m->childCount(), 0u);  // the old wrapper lost its node
    EXPECT_EQ(m->head(), "");
    s->setValue(SFOChild("none"), "missing");  // no such key: nothing happens
    EXPECT_EQ(s->selfmlRepresentation(), "(s\n    (k w)\n    flat\n    (n a b))");

    s->replaceChildNodeAtIndex(-1, SFOChild("x"));
    s->replaceChildNodeAtIndex(9, SFOChild("end"));  // beyond the end: appended
    s->addChild(SFOChild(SFONode::nodeFromList({SFOChild("p"), SFOChild("q")})));
    EXPECT_EQ(s->selfmlRepresentation(), "(s\n    (k w)\n    flat\n    (n a b)\n    end\n    (p q))");
    EXPECT_EQ(s->nodeForKey("p")->parent(), s);
    // The tree written from the root matches the wrappers' view.
    EXPECT_EQ(SFONode::nodeFromString(root->selfmlRepresentation())->selfmlRepresentation(), root->selfmlRepresentation());

    EXPECT_EQ(SFONode::nodeFromList({SFOChild("h"), std::nullopt}), nullptr);
    auto copy = s->copy();
    copy->setHead("t");
    copy->setHead("");  // ignored
    EXPECT_EQ(copy->head(), "t");
    EXPECT_EQ(s->head(), "s");
    EXPECT_FALSE(s->isEqual(SFOChild(copy)));
    copy->setHead("s");
    EXPECT_TRUE(s->isEqual(SFOChild(copy)));
    EXPECT_FALSE(s->isEqual(SFOChild("s")));
}

TEST(SFONode, Writer) {
    const std::pair<const char*, const char*> cases[] = {
        {"(k a b)", "(k a b)"},
        {"(k (x) (y z))", "(k (x)\n    (y z))"},
        {"(k [a b] `a ] b` [] `x``y` [a\tb] `[x`)", "(k [a b] `a ] b` [] [x`y] [a\tb] `[x`)"},
        {"(k `x]``[`)", "(k `x]``[`)"},
        {"(k [a(b)] [#] [{}])", "(k [a(b)] [#] [{}])"},
        {"(k (a (b c) d) e)", "(k\n    (a\n        (b c)\n        d)\n    e)"},
        {"(k (a) (b c))", "(k (a)\n    (b c))"},
        {"(k s (l))", "(k s\n    (l))"},
        {"(a) (b)  x", "(a)\n\n(b)\n\nx"},
        {"(k `]`)", "(k `]`)"},
    };
    for (auto [text, want] : cases) EXPECT_EQ(SFONode::nodeFromString(text)->selfmlRepresentation(), want) << text;
}

// Random trees whose heads are plain words read back equal after writing.
TEST(SFONode, RoundTripOfRandomTrees) {
    std::mt19937 random(20261122);
    const std::string alphabet = "ab ()[]{}#`\t\n\\\"\xC3\xA9";
    auto randomString = [&] {
        std::string s;
        for (int n = std::uniform_int_distribution(0, 6)(random); n > 0; --n)
            s += alphabet[std::uniform_int_distribution<size_t>(0, alphabet.size() - 1)(random)];
        return s;
    };
    for (int trial = 0; trial < 300; ++trial) {
        auto root = SFONode::node();
        std::vector<SFONodePtr> lists{root};
        for (int i = 0; i < 20; ++i) {
            auto& parent = lists[std::uniform_int_distribution<size_t>(0, lists.size() - 1)(random)];
            if (random() % 3 == 0) {
                auto list = SFONode::nodeFromList({SFOChild("w" + std::to_string(i))});
                parent->addChild(SFOChild(list));
                lists.push_back(list);
            } else {
                parent->addChild(SFOChild(randomString()));
            }
        }
        const std::string written = root->selfmlRepresentation();
        auto reread = SFONode::nodeFromString(written);
        EXPECT_EQ(reread->selfmlRepresentation(), written);
        ASSERT_EQ(reread->childCount(), root->childCount()) << written;
        for (size_t i = 0; i < root->childCount(); ++i)
            EXPECT_EQ(*reread->childAtIndex(i), *root->childAtIndex(i)) << written;
    }
}

TEST(SFONode, LazyFileLoading) {
    vx::test::TempDir dir;
    const std::string path = dir.write("defs.selfml", "(lang (name C))");
    auto lazy = SFONode::nodeWithContentsOfFile(path);
    dir.write("defs.selfml", "(lang (name Changed))");  // nothing was read yet
    EXPECT_EQ(lazy->nodeForKey("lang")->valueForKey("name"), "Changed");

    auto missing = SFONode::nodeWithContentsOfFile(dir.path() + "/absent.selfml");
    EXPECT_EQ(missing->childCount(), 0u);
    EXPECT_EQ(missing->selfmlRepresentation(), "");

    EXPECT_EQ(SFONode::nodeFromData("(a \xFF)"), nullptr);  // not UTF-8
    EXPECT_NE(SFONode::nodeFromString("(a \xFF)"), nullptr);
}

TEST(SFONode, NodeRefWrapping) {
    auto wrapped = SFONode::nodeFromNodeRef(SFNodeCreateFromString("(a b)"));
    ASSERT_TRUE(wrapped && wrapped->isNode());
    EXPECT_EQ(wrapped->node()->nodeForKey("a")->valueForKey("missing"), std::nullopt);
    EXPECT_EQ(wrapped->node()->selfmlRepresentation(), "(a b)");

    SFNode* string = SFNodeCreate();
    string->type = SFNodeTypeString;
    string->value = SFStringDuplicate("text", 4);
    auto text = SFONode::lazyNodeFromNodeRef(string);
    ASSERT_TRUE(text && text->isString());
    EXPECT_EQ(text->string(), "text");
    EXPECT_FALSE(SFONode::nodeFromNodeRef(nullptr).has_value());
}

}  // namespace
