// Seeded random edits of every bundled language sample, re-highlighted incrementally after each
// one, must leave exactly what a parse of the whole text from the top gives.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "incremental/support.hpp"
#include "syntax/mapped_string.hpp"

namespace vx::test {
namespace {

// Pieces that open and close zones in the bundled languages, line breaks of every kind, and
// plain characters.
constexpr std::u16string_view kPieces[] = {u"/*", u"*/", u"\"", u"'", u"`", u"<!--", u"-->", u"#", u"\\",
                                           u"\n", u"\r\n", u"\r", u"x", u"{", u"}", u"(", u"<", u">",
                                           u"<<EOF\n", u"\"\"\"", u"//", u" ", u"é😀"};
constexpr int kEditsPerSample = 12;

TEST(RandomEdits, MatchAFullParseOnEverySample) {
    const auto root = std::filesystem::path(VX_SOURCE_DIR) / "tests" / "data" / "syntax";
    int samples = 0;
    for (const auto& folder : std::filesystem::directory_iterator(root)) {
        if (!folder.is_directory()) continue;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            if (entry.path().extension() == ".scopes") continue;
            std::ifstream in(entry.path(), std::ios::binary);
            std::ostringstream bytes;
            bytes << in.rdbuf();
            HighlightedDocument doc(folder.path().filename().string(), utf16FromUtf8(bytes.str()));
            ++samples;
            const unsigned seed = static_cast<unsigned>(std::hash<std::string>{}(entry.path().filename().string()));
            std::mt19937 random(seed);
            for (int edit = 0; edit < kEditsPerSample; ++edit) {
                const uint64_t length = doc.document.contents().length();
                const uint64_t at = std::uniform_int_distribution<uint64_t>(0, length)(random);
                std::string what;
                if (random() % 3 == 0 && at < length) {
                    const uint64_t count = std::min<uint64_t>(length - at, 1 + random() % 6);
                    doc.replace(at, count, u"");
                    what = "delete " + std::to_string(count);
                } else {
                    const std::u16string_view piece = kPieces[random() % std::size(kPieces)];
                    doc.replace(at, 0, piece);
                    what = "insert \"" + utf8FromUtf16(piece) + "\"";
                }
                const std::string difference = differenceFromFullParse(doc);
                ASSERT_EQ(difference, "") << entry.path().filename() << " seed " << seed << " edit " << edit << ": "
                                          << what << " at " << at;
            }
        }
    }
    EXPECT_GE(samples, 10);
}

}  // namespace
}  // namespace vx::test
