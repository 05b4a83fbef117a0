// Seeded random edits of every bundled language sample, re-highlighted incrementally after each
// one, must leave exactly what a parse of the whole text from the top gives.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include <algorithm>
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

// A keystroke at many carets: edits made inside one batch, each after the one before, some out of
// order (which settles those before it), are highlighted at the batch's end. More touched lines
// than an edit waits for leave the rest to the background walk; the result must still be what a
// whole parse gives, and a scope asked for in the middle of the batch must already see the edits.
TEST(RandomEdits, BatchesAtManyCaretsMatchAFullParse) {
    const auto sample = std::filesystem::path(VX_SOURCE_DIR) / "tests" / "data" / "syntax" / "c" / "ringlog.c";
    std::ifstream in(sample, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    std::u16string text;
    while (std::count(text.begin(), text.end(), u'\n') < 3000) text += utf16FromUtf8(bytes.str());
    HighlightedDocument doc("c", text);
    std::mt19937 random(29);
    for (int keystroke = 0; keystroke < 6; ++keystroke) {
        doc.document.beginEditBatch();
        uint64_t at = 0;
        for (int caret = 0; caret < 1500; ++caret) {
            at += random() % 80;
            if (caret == 700 && keystroke % 2 == 1) at = 10;  // out of order
            if (at > doc.document.contents().length()) break;
            const std::u16string_view piece = kPieces[random() % std::size(kPieces)];
            doc.replace(at, 0, piece);
            at += piece.size();
        }
        // Asked from inside the batch: the answer reads the text as it is now.
        const std::vector<std::string> scopes = doc.highlighter->scopesAtLocation(at > 0 ? at - 1 : 0);
        EXPECT_FALSE(scopes.empty());
        doc.document.endEditBatch();
        ASSERT_EQ(differenceFromFullParse(doc), "") << "keystroke " << keystroke;
    }
}

}  // namespace
}  // namespace vx::test
