#include <gtest/gtest.h>

#include "syntax/context.hpp"
#include "syntax/pattern_definition.hpp"

namespace vx {
namespace {

// Definitions are opaque to contexts; any distinct addresses stand in for them here.
const auto* const kDefinitionA = reinterpret_cast<const VXSyntaxZoneDefinition*>(0x1000);
const auto* const kDefinitionB = reinterpret_cast<const VXSyntaxZoneDefinition*>(0x2000);

VXSyntaxZone zone(const char* scope, const VXSyntaxZoneDefinition* definition, Range range = {}) {
    return VXSyntaxZoneCreate(VXScope(scope), definition, VXSXZoneEffectiveTypeStart, VXSXZoneSemanticTypeStartEnd,
                              range, range);
}

TEST(Context, PushKeepsInnermostLastWithRoomForEight) {
    VXContext context = VXContext::basicContext();
    EXPECT_TRUE(context.empty());
    context.push(zone("source.js", kDefinitionA));
    EXPECT_GE(context.capacity(), VXContext::kInitialCapacity);
    context.push(zone("string.quoted", kDefinitionB));
    EXPECT_EQ(context.size(), 2u);
    EXPECT_EQ(context.innermost().scope, VXScope("string.quoted"));
    EXPECT_EQ(context[0].scope, VXScope("source.js"));
    context.pop();
    EXPECT_EQ(context.innermost().definition, kDefinitionA);
}

TEST(Context, StringFormsListScopesOutermostFirst) {
    const VXScope scopes[] = {VXScope("source.js"), VXScope("meta.function"), VXScope("string.quoted")};
    VXContext context = VXContext::fromScopes(scopes);
    EXPECT_EQ(context.environmentString(), "source.js meta.function string.quoted");
    EXPECT_EQ(context.toString(), "<source.js? > meta.function? > string.quoted?>");
    EXPECT_EQ(context[2].parent, 1u);
    EXPECT_EQ(context[0].parent, VXSyntaxZone::kNoParent);
    EXPECT_EQ(VXContext().environmentString(), "");
}

TEST(Context, DocumentContextStartsWithTheRootScope) {
    VXContext context = VXContext::defaultContextForDocument(VXScope("source.python"), kDefinitionA);
    ASSERT_EQ(context.size(), 1u);
    EXPECT_EQ(context[0].scope, VXScope("source.python"));
    EXPECT_EQ(context[0].definition, kDefinitionA);
    EXPECT_TRUE(VXContext::defaultContextForDocument(VXScope()).empty());
}

TEST(Context, ComparisonByDefinitionsIgnoresScopesAndRanges) {
    VXContext a, b;
    a.push(zone("source.js", kDefinitionA, {0, 3}));
    a.push(zone("string", kDefinitionB, {10, 1}));
    b.push(zone("source.js", kDefinitionA, {50, 0}));
    b.push(zone("string.other", kDefinitionB, {70, 1}));
    EXPECT_TRUE(a.equalZoneDefinitions(b));
    EXPECT_FALSE(a == b);  // full equality also compares scopes and ranges

    VXContext prefix = a;
    prefix.pop();
    EXPECT_FALSE(a.equalZoneDefinitions(prefix));
    EXPECT_FALSE(prefix.equalZoneDefinitions(a));
    VXContext swapped;
    swapped.push(zone("source.js", kDefinitionB));
    swapped.push(zone("string", kDefinitionA));
    EXPECT_FALSE(a.equalZoneDefinitions(swapped));
    EXPECT_TRUE(VXContext().equalZoneDefinitions(VXContext::basicContext()));
    EXPECT_EQ(a, VXContext(a));
}

TEST(Context, ComparisonTellsEndPatternsBuiltFromTheStartApart) {
    // Two heredocs open with the same definition but different delimiters end differently.
    auto eof = std::make_shared<const VXSyntaxEndPatternInstance>();
    auto end = std::make_shared<const VXSyntaxEndPatternInstance>();
    VXContext a, b, c;
    for (VXContext* context : {&a, &b, &c}) context->push(zone("source.sh", kDefinitionA));
    VXSyntaxZone heredoc = zone("string.unquoted.heredoc", kDefinitionB, {4, 0});
    heredoc.endPattern = eof;
    a.push(heredoc);
    heredoc.range = {90, 0};
    b.push(heredoc);  // the same delimiter opened elsewhere
    heredoc.endPattern = end;
    c.push(heredoc);
    EXPECT_TRUE(a.equalZoneDefinitions(b));
    EXPECT_FALSE(a.equalZoneDefinitions(c));
    heredoc.endPattern = nullptr;
    VXContext plain;
    plain.push(zone("source.sh", kDefinitionA));
    plain.push(heredoc);
    EXPECT_FALSE(plain.equalZoneDefinitions(a));
}

TEST(Zone, OffsetMovesBothRangesAndCaptures) {
    VXSyntaxZone z = VXSyntaxZoneCreate(VXScope("string"), nullptr, VXSXZoneEffectiveTypeEnd,
                                        VXSXZoneSemanticTypeStartEnd, {12, 0}, {11, 1});
    z.captures.push_back({VXScope("punctuation"), {11, 1}});
    EXPECT_EQ(z.effectiveRange(), (Range{11, 1}));
    z.offsetBy(100);
    EXPECT_EQ(z.range, (Range{112, 0}));
    EXPECT_EQ(z.semanticRange, (Range{111, 1}));
    EXPECT_EQ(z.captures[0].range, (Range{111, 1}));
    z.offsetBy(-111);
    EXPECT_EQ(z.startPoint(), 0u);
    EXPECT_EQ(z.endPoint(), 1u);
}

}  // namespace
}  // namespace vx
