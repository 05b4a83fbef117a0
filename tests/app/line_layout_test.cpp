// Where characters fall on screen: the quick paths (runs of plain ASCII stepped over, a scrolled
// view's left part skipped) must give the columns a character-by-character walk gives, for lines
// mixing tabs, wide characters, combining marks, control characters and surrogate pairs.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "app/editor/line_layout.hpp"

namespace vx::editor {
namespace {

std::vector<LaidOutCharacter> walk(std::u16string_view line, int tabSize, uint64_t fromColumn = 0) {
    std::vector<LaidOutCharacter> out;
    layoutLine(line, tabSize, [&](const LaidOutCharacter& ch) {
        out.push_back(ch);
        return true;
    }, fromColumn);
    return out;
}

TEST(LineLayout, QuickPathsAgreeWithTheWholeWalk) {
    const std::u16string pieces[] = {u"a", u"xyz", u"\t", u"\u4e2d", u"e\u0301", u"\x01", u"\U0001F600", u" ", u"\u00e9"};
    std::mt19937 random(11);
    for (int round = 0; round < 400; ++round) {
        std::u16string line;
        const int count = std::uniform_int_distribution<int>(0, 30)(random);
        for (int i = 0; i < count; ++i) line += pieces[std::uniform_int_distribution<size_t>(0, std::size(pieces) - 1)(random)];
        const int tabSize = std::uniform_int_distribution<int>(1, 8)(random);
        const auto whole = walk(line, tabSize);
        const uint64_t width = whole.empty() ? 0 : whole.back().column + static_cast<uint64_t>(whole.back().width);

        for (uint64_t offset = 0; offset <= line.size() + 1; ++offset) {
            uint64_t expected = 0;  // the column of the character at the offset, or after the last before it
            for (const auto& ch : whole) {
                if (ch.offset >= offset) break;
                expected = ch.column + static_cast<uint64_t>(ch.width);
            }
            ASSERT_EQ(columnForOffset(line, offset, tabSize), expected) << "offset " << offset << " round " << round;
        }
        for (uint64_t from = 0; from <= width + 1; ++from) {
            std::vector<LaidOutCharacter> expected;
            for (const auto& ch : whole)
                if (ch.column + static_cast<uint64_t>(ch.width) > from || (!expected.empty())) expected.push_back(ch);
            const auto skipped = walk(line, tabSize, from);
            ASSERT_EQ(skipped.size(), expected.size()) << "from column " << from << " round " << round;
            for (size_t i = 0; i < skipped.size(); ++i) {
                EXPECT_EQ(skipped[i].offset, expected[i].offset);
                EXPECT_EQ(skipped[i].column, expected[i].column);
            }
            // The character under a column is the first one ending after it, marks passed over.
            uint64_t under = line.size();
            for (const auto& ch : whole)
                if (ch.width > 0 && ch.column + static_cast<uint64_t>(ch.width) > from) {
                    under = ch.offset;
                    break;
                }
            ASSERT_EQ(offsetForColumn(line, from, tabSize), under) << "column " << from << " round " << round;
        }
    }
}

}  // namespace
}  // namespace vx::editor
