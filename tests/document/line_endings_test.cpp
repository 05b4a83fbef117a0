#include "document/line_endings.hpp"

#include <gtest/gtest.h>

#include "platform/unicode.hpp"

namespace vx {
namespace {

TEST(LineEndings, StyleFollowsWhatWasSeen) {
    using enum NewlineType;
    const std::pair<std::u16string_view, NewlineType> cases[] = {
        {u"", LF},         {u"abc", LF},          {u"a\nb\n", LF},        {u"a\r\nb\r\n", CRLF},
        {u"a\r\rb", CR},   {u"a\r\nb\nc", Mixed}, {u"a\rb\r\nc", Mixed},  {u"\r\n\r", Mixed},
        {u"a\n\r", Mixed}, {u"\r", CR},           {u"x\r\n", CRLF},
    };
    for (auto [text, want] : cases) EXPECT_EQ(detectNewlineType(text), want) << utf8FromUtf16(text);
}

TEST(LineEndings, CountersSurviveTextArrivingInPieces) {
    // A CR at the end of one piece and an LF at the start of the next are one CRLF.
    NewlineCounter counter;
    counter.add(u"one\r");
    counter.add(u"\ntwo\r");
    counter.add(u"\n");
    EXPECT_EQ(counter.crlf(), 2u);
    EXPECT_EQ(counter.cr(), 0u);
    EXPECT_EQ(counter.result(), NewlineType::CRLF);
    counter.add(u"\n");
    EXPECT_EQ(counter.lf(), 1u);
    EXPECT_EQ(counter.result(), NewlineType::Mixed);
}

TEST(LineEndings, ConversionRewritesEveryKindOfBreak) {
    const std::u16string mixed = u"a\r\nb\nc\rd\r\r\n";
    EXPECT_EQ(convertToLineEndings(mixed, NewlineType::LF), u"a\nb\nc\nd\n\n");
    EXPECT_EQ(convertToLineEndings(mixed, NewlineType::CRLF), u"a\r\nb\r\nc\r\nd\r\n\r\n");
    EXPECT_EQ(convertToLineEndings(mixed, NewlineType::CR), u"a\rb\rc\rd\r\r");
    EXPECT_EQ(detectNewlineType(convertToLineEndings(mixed, NewlineType::CRLF)), NewlineType::CRLF);
    EXPECT_EQ(convertToLineEndings(u"no breaks", NewlineType::CRLF), u"no breaks");
}

}  // namespace
}  // namespace vx
