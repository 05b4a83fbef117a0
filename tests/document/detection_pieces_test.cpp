#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "document/tabdetection.hpp"

namespace vx {
namespace {

// Detection over pieces that end at line feeds must equal detection over the whole text, including
// the limit on kept counts (more than 1,000 space lines) and a last line without a line feed.
TEST(DetectionInPieces, MatchesDetectionOverTheWholeText) {
    for (uint32_t seed = 1; seed <= 6; ++seed) {
        std::mt19937 random(seed);
        std::u16string text;
        const int lines = 200 + static_cast<int>(random() % 3000);
        for (int line = 0; line < lines; ++line) {
            switch (random() % 7) {
            case 0: text += u"\t"; break;
            case 1: text += u"# comment"; break;
            case 2: break;
            default: text.append(static_cast<size_t>(2 * (random() % 6) + (seed % 2)), u' ');
            }
            text += u"code\r\n";
        }
        text += u"   last";
        std::vector<size_t> cuts;
        for (size_t i = 0; i < text.size(); ++i)
            if (text[i] == u'\n' && random() % 50 == 0) cuts.push_back(i + 1);
        cuts.push_back(text.size());
        size_t next = 0, start = 0;
        const TabDetectionResult pieces = detectInPieces([&]() -> std::u16string_view {
            if (next == cuts.size()) return {};
            std::u16string_view piece(text.data() + start, cuts[next] - start);
            start = cuts[next++];
            return piece;
        });
        EXPECT_EQ(pieces, detect(text)) << "seed " << seed;
    }
    EXPECT_EQ(detectInPieces([] { return std::u16string_view(); }), detect(u""));
}

}  // namespace
}  // namespace vx
