// The auto-pairing decision: each rule group with the cases that tell it from its neighbours.
#include <gtest/gtest.h>

#include "editing/autopair.hpp"

namespace vx {
namespace {

VXContext contextOf(std::initializer_list<std::string_view> scopes) {
    std::vector<VXScope> list;
    for (auto s : scopes) list.emplace_back(s);
    return VXContext::fromScopes(list);
}

struct Typing {
    std::u16string left, typed, right;
    VXContext context;
    VXAutopair::Pairs pairs = VXAutopair::defaultPairs();
};

VXAutopair make(const Typing& t) {
    VXAutopair a;
    a.pairs = t.pairs;
    a.insertString = t.typed;
    a.leftString = t.left;
    a.rightString = t.right;
    a.selection = {t.left.size(), 0};
    a.startContext = a.endContext = t.context;
    a.user_action = VXAutopair::TypingEmpty;
    a.setUp();
    return a;
}

int decide(const Typing& t) {
    VXAutopair a = make(t);
    return a.action();
}

const VXContext kC = contextOf({"source.c"});
const VXContext kCString = contextOf({"source.c", "string.quoted.double.c"});
const VXContext kPythonString = contextOf({"source.python", "string.quoted.double.block.python"});
const VXContext kHtml = contextOf({"text.html.basic"});

TEST(Autopair, OpenersPairBeforeWhitespaceClosersAndLineEnds) {
    EXPECT_EQ(decide({u"f", u"(", u"x", kC}), VXAutopair::PlainInsert);  // x is no closer
    EXPECT_EQ(decide({u"f", u"(", u"", kC}), VXAutopair::InsertPair);
    EXPECT_EQ(decide({u"f", u"(", u" x", kC}), VXAutopair::InsertPair);
    EXPECT_EQ(decide({u"f[", u"[", u"]", kC}), VXAutopair::InsertPair);  // one open already
    // With nothing open on the left, "(" before ")" has more closers around than openers.
    EXPECT_EQ(decide({u"f", u"(", u")", kC}), VXAutopair::PlainInsert);
    // Strings and comments never pair.
    EXPECT_EQ(decide({u"\"a", u"(", u"", kCString}), VXAutopair::PlainInsert);
    EXPECT_EQ(decide({u"", u"(", u"", contextOf({"source.c", "comment.line.c"})}), VXAutopair::PlainInsert);
    // The language's own pairs: "<" pairs in C++ only when the language says so.
    Typing angle{u"vector", u"<", u"", kC};
    EXPECT_EQ(decide(angle), VXAutopair::PlainInsert);
    angle.pairs.emplace_back(u"<", u">");
    EXPECT_EQ(decide(angle), VXAutopair::InsertPair);
}

TEST(Autopair, ClosersStepOverUnlessTheyAreNeeded) {
    EXPECT_EQ(decide({u"f(", u")", u")", kC}), VXAutopair::StepOver);
    // One more opener on the left than closers around: the typed closer is needed.
    EXPECT_EQ(decide({u"f((", u")", u")", kC}), VXAutopair::PlainInsert);
    EXPECT_EQ(decide({u"f(", u")", u"x", kC}), VXAutopair::PlainInsert);
    // A quote steps over the closing quote only inside a string, and not after a backslash.
    EXPECT_EQ(decide({u"\"ab", u"\"", u"\"", kCString}), VXAutopair::StepOver);
    EXPECT_EQ(decide({u"\"ab\\", u"\"", u"\"", kCString}), VXAutopair::PlainInsert);
    EXPECT_EQ(decide({u"x = ", u"\"", u"", kC}), VXAutopair::InsertPair);
    // Python: three quotes on each side of the caret are stepped over whole.
    VXAutopair triple = make({u"\"\"\"doc\"\"\"", u"\"", u"\"\"\"", kPythonString});
    EXPECT_EQ(triple.action(), VXAutopair::StepOver);
    EXPECT_EQ(triple.jumpLength, 3u);
    EXPECT_EQ(triple.shouldInsertText(VXAutopair::StepOver).newSelection, (Range{12, 0}));
}

TEST(Autopair, QuestionMarkAndPercentPairOnlyInHtmlBrackets) {
    // HTML's own pairs make ">" a closer, which the next-character rule lets through.
    VXAutopair::Pairs html = VXAutopair::defaultPairs();
    html.emplace_back(u"<", u">");
    VXAutopair question = make({u"<", u"?", u">", kHtml, html});
    EXPECT_EQ(question.action(), VXAutopair::InsertPair);
    EXPECT_EQ(question.shouldInsertText(VXAutopair::InsertPair).text, u"??");
    VXAutopair percent = make({u"<", u"%", u">", kHtml, html});
    ASSERT_EQ(percent.action(), VXAutopair::InsertPair);
    auto insertion = percent.shouldInsertText(VXAutopair::InsertPair);
    EXPECT_EQ(insertion.text, u"%  %");
    EXPECT_EQ(insertion.newSelection, (Range{3, 0}));  // "<%  %": between the two spaces
    EXPECT_EQ(decide({u"{", u"%", u"}", kHtml}), VXAutopair::InsertPair);
    EXPECT_EQ(decide({u"a", u"?", u"", kHtml, html}), VXAutopair::PlainInsert);
    EXPECT_EQ(decide({u"<", u"?", u">", kC, html}), VXAutopair::PlainInsert);
    EXPECT_EQ(decide({u"<", u"?", u">", kHtml}), VXAutopair::PlainInsert);  // ">" is no closer here
    Typing tag{u"", u"<", u"", kHtml, html};
    EXPECT_EQ(decide(tag), VXAutopair::PlainInsert);  // "<" never pairs in HTML
}

TEST(Autopair, TypingOverASelectionWrapsWhenBalanced) {
    auto over = [](std::u16string selected, std::u16string typed, const VXContext& context) {
        VXAutopair a;
        a.pairs = VXAutopair::defaultPairs();
        a.insertString = typed;
        a.selectionString = selected;
        a.selection = {0, selected.size()};
        a.startContext = a.endContext = context;
        a.user_action = VXAutopair::TypingOverSelection;
        a.setUp();
        int action = a.action();
        return std::pair(action, a.shouldInsertText(action));
    };
    auto [wrap, wrapped] = over(u"a(b)", u"(", kC);
    EXPECT_EQ(wrap, VXAutopair::Wrap);
    EXPECT_EQ(wrapped.text, u"(a(b))");
    EXPECT_EQ(wrapped.newSelection, (Range{0, 6}));
    EXPECT_EQ(over(u"a(b", u"(", kC).first, VXAutopair::PlainReplace);  // unbalanced
    EXPECT_EQ(over(u"ab", u")", kC).first, VXAutopair::PlainReplace);   // not an opener
    auto [escaped, quoted] = over(u"C:\\dir", u"\"", kC);
    EXPECT_EQ(escaped, VXAutopair::WrapEscaping);
    EXPECT_EQ(quoted.text, u"\"C:\\\\dir\"");
    EXPECT_EQ(over(u"say \"hi\"", u"\"", kC).first, VXAutopair::PlainReplace);  // holds the quote
    EXPECT_EQ(VXAutopair::escape(u"a\"b\\", u"\""), u"a\\\"b\\\\");
    EXPECT_EQ(over(u"ab", u"\"", kCString).first, VXAutopair::PlainReplace);  // inside a string
    EXPECT_EQ(over(u"ab", u"x", kC).first, VXAutopair::PlainReplace);
}

TEST(Autopair, BackspaceDeletesAnEmptyPairWhole) {
    auto deleting = [](std::u16string left, std::u16string right, const VXContext& context, uint64_t length = 0) {
        VXAutopair a;
        a.pairs = VXAutopair::defaultPairs();
        a.leftString = left;
        a.rightString = right;
        a.selection = {left.size(), length};
        a.startContext = a.endContext = context;
        a.user_action = VXAutopair::DeletingBackward;
        a.setUp();
        int action = a.action();
        return std::pair(action, a.shouldDelete(action));
    };
    auto [pair, range] = deleting(u"f(", u")", kC);
    EXPECT_EQ(pair, VXAutopair::DeletePair);
    EXPECT_EQ(range, (Range{1, 2}));
    EXPECT_EQ(deleting(u"f\\(", u")", kC).first, VXAutopair::PlainDelete);
    EXPECT_EQ(deleting(u"f(", u"x)", kC).first, VXAutopair::PlainDelete);
    EXPECT_EQ(deleting(u"f(", u")", kC, 1).first, VXAutopair::PlainDelete);  // a selection
    EXPECT_EQ(deleting(u"\"", u"\"", kCString).first, VXAutopair::DeletePair);
    EXPECT_EQ(deleting(u"\"", u"\"", kC).first, VXAutopair::PlainDelete);
    EXPECT_EQ(deleting(u"\"", u"\"", kC).second.location, kNotFound);
}

TEST(Autopair, OpennessCountsOccurrencesNotNesting) {
    EXPECT_EQ(VXAutopair::openness(u"(()", u"(", u")"), 1);
    EXPECT_EQ(VXAutopair::openness(u")(", u"(", u")"), 0);
    EXPECT_EQ(VXAutopair::openness(u"))", u"(", u")"), -2);
    EXPECT_EQ(VXAutopair::openness(u"\"\"\"", u"\"", u"\""), 0);
    EXPECT_EQ(VXAutopair::openness(u"<% %> <%", u"<%", u"%>"), 1);
}

}  // namespace
}  // namespace vx
