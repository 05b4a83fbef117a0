#include <gtest/gtest.h>

#include "document/encodings.hpp"
#include "document/text_reader.hpp"
#include "support/temp_dir.hpp"

namespace vx {
namespace {

std::unique_ptr<VXTextStorage> storageOf(std::u16string_view text) { return std::make_unique<VXTextStorage>(text); }

struct FileCase {
    const char* name;
    std::string bytes;
    uint64_t detected;      // what the platform read reports
    uint64_t encoding;      // what the reading algorithm settles on
    std::u16string text;
};

TEST(Reading, EncodingRulesForFilesOnDisk) {
    test::TempDir dir;
    const FileCase cases[] = {
        {"ascii", "int main() {}\n", encoding::kASCII, encoding::kUTF8, u"int main() {}\n"},
        {"empty", "", encoding::kASCII, encoding::kUTF8, u""},
        {"utf8", "na\xC3\xAFve \xE2\x82\xAC \xF0\x9F\x98\x80\n", encoding::kUTF8, encoding::kUTF8, u"naïve € 😀\n"},
        // Valid UTF-8 whose bytes would also read as Mac Roman ("Ã©" ...): UTF-8 wins.
        {"utf8-roman", "caf\xC3\xA9", encoding::kUTF8, encoding::kUTF8, u"café"},
        {"utf8-bom", "\xEF\xBB\xBFhi", encoding::kUTF8, encoding::kUTF8, u"hi"},
        {"utf16le-bom", std::string("\xFF\xFEh\0i\0", 6), encoding::kUTF16, encoding::kUTF16, u"hi"},
        {"utf16be-bom", std::string("\xFE\xFF\0h\0i", 6), encoding::kUTF16, encoding::kUTF16, u"hi"},
        {"utf32le-bom", std::string("\xFF\xFE\0\0h\0\0\0", 8), encoding::kUTF32, encoding::kUTF32, u"h"},
        {"utf32be-bom", std::string("\0\0\xFE\xFF\0\0\0h", 8), encoding::kUTF32, encoding::kUTF32, u"h"},
        {"latin1",
         "Le ma\xEEtre d'h\xF4tel a servi une cr\xE8me br\xFBl\xE9" "e tr\xE8s r\xE9ussie \xE0 la fin du d\xEEner, "
         "et la soci\xE9t\xE9 \xE9tait ravie de cette soir\xE9" "e \xE9l\xE9gante.\n",
         encoding::kISOLatin1, encoding::kISOLatin1,
         u"Le maître d'hôtel a servi une crème brûlée très réussie à la fin du dîner, et la société était ravie de "
         u"cette soirée élégante.\n"},
    };
    for (const auto& c : cases) {
        const std::string path = dir.write(c.name, c.bytes);
        PlainText platform = readPlainText(path);
        ASSERT_TRUE(platform.storage) << c.name;
        EXPECT_EQ(platform.detectedEncoding, c.detected) << c.name;
        ReadResult read = resolveRead(std::move(platform), [&] { return readStrictUTF8(path); });
        ASSERT_TRUE(read.storage) << c.name;
        EXPECT_EQ(read.encoding, c.encoding) << c.name;
        EXPECT_EQ(read.storage->string(), c.text) << c.name;
        // The same bytes from memory read the same way.
        EXPECT_EQ(plainTextFromBytes(c.bytes).detectedEncoding, c.detected) << c.name;
    }
    EXPECT_EQ(readPlainText(dir.write("be", std::string("\xFE\xFF\0h", 4))).byteOrder, ByteOrder::Big);
}

TEST(Reading, LargeASCIIFileStreamsAcrossReadBlocks) {
    // Several megabyte-sized read blocks, with a multi-byte character straddling a block boundary.
    test::TempDir dir;
    std::string bytes(3 << 20, 'x');
    for (size_t i = 79; i < bytes.size(); i += 80) bytes[i] = '\n';
    const std::string ascii = dir.write("ascii", bytes);
    PlainText platform = readPlainText(ascii);
    EXPECT_EQ(platform.detectedEncoding, encoding::kASCII);
    EXPECT_EQ(platform.storage->length(), bytes.size());
    EXPECT_EQ(platform.storage->lineCount(), bytes.size() / 80 + 1);

    bytes.replace((1 << 20) - 1, 3, "\xE2\x82\xAC");  // the euro sign across the first boundary
    const std::string utf8 = dir.write("utf8", bytes);
    platform = readPlainText(utf8);
    EXPECT_EQ(platform.detectedEncoding, encoding::kUTF8);
    EXPECT_EQ(platform.storage->length(), bytes.size() - 2);
    EXPECT_EQ(platform.storage->characterAtIndex((1 << 20) - 1), u'€');

    bytes.back() = '\xC3';  // a sequence cut short by the end of the file is not UTF-8
    EXPECT_NE(readPlainText(dir.write("cut", bytes)).detectedEncoding, encoding::kUTF8);
}

TEST(Reading, AlgorithmFallsBackToStrictUTF8AndKeepsUTF8Deliberately) {
    // The platform could only say Mac Roman, but the bytes are valid UTF-8: the strict read wins.
    PlainText roman{storageOf(u"cafÃ©"), encoding::kMacRoman};
    ReadResult read = resolveRead(std::move(roman), [] { return storageOf(u"café"); });
    EXPECT_EQ(read.encoding, encoding::kUTF8);
    EXPECT_EQ(read.storage->string(), u"café");

    // Not UTF-8 either: the platform's text stays, still reported as UTF-8.
    PlainText invalid{storageOf(u"\u00C6x"), encoding::kMacRoman};
    read = resolveRead(std::move(invalid), [] { return nullptr; });
    EXPECT_EQ(read.encoding, encoding::kUTF8);
    EXPECT_EQ(read.storage->string(), u"\u00C6x");

    // Nothing detected and nothing read: no text.
    read = resolveRead(PlainText{}, [] { return nullptr; });
    EXPECT_FALSE(read.storage);

    // An encoding the platform did detect is kept as it is (ASCII reads as UTF-8).
    read = resolveRead(PlainText{storageOf(u"x"), encoding::kWindowsLatin1}, [] { return storageOf(u"never"); });
    EXPECT_EQ(read.encoding, encoding::kWindowsLatin1);
    EXPECT_EQ(read.storage->string(), u"x");
}

TEST(Reading, BytesNoDetectorPlacesAreMacRomanAndUnreadableFilesFail) {
    // Windows-1252's curly quotes sit where ISO Latin 1 has control characters.
    const std::string quoted = "\x93Smart quotes\x94 and \x85 an ellipsis \x96 and a dash, \x93" "again\x94 and more "
                               "\x93quoted\x94 text\x85 for the detector\x97 to see\x85\n";
    EXPECT_EQ(plainTextFromBytes(quoted).detectedEncoding, encoding::kWindowsLatin1);
    PlainText unknown = plainTextFromBytes("\x81\x8D\x8F\x90\x9D");
    ASSERT_TRUE(unknown.storage);
    EXPECT_EQ(unknown.detectedEncoding, encoding::kMacRoman);

    test::TempDir dir;
    PlainText missing = readPlainText(dir.path() + "/missing");
    EXPECT_FALSE(missing.storage);
    EXPECT_EQ(missing.error, ENOENT);
    EXPECT_EQ(readPlainText(dir.path()).error, EISDIR);
}

TEST(Encodings, AllowedListsAndTheExtraMenuItem) {
    for (uint64_t allowed : {1ull, 4ull, 5ull, 10ull, 0x8C000100ull}) EXPECT_TRUE(vx_isAllowedEncoding(allowed));
    for (uint64_t other : {0ull, 8ull, 12ull, 30ull, 0x94000100ull}) EXPECT_FALSE(vx_isAllowedEncoding(other));

    const EncodingMenu menu = fileEncodingLocalNames();
    EXPECT_EQ(menu.encodings, (std::vector<uint64_t>{1, 4, 10, 0x8C000100, 5, 8}));
    ASSERT_EQ(menu.names.size(), menu.encodings.size());
    for (const auto& name : menu.names) EXPECT_FALSE(name.empty());

    EXPECT_EQ(encodingMenuForDocument(4).encodings.size(), 6u);
    EXPECT_EQ(encodingMenuForDocument(0).encodings.size(), 6u);  // 0 shows as UTF-8
    EXPECT_EQ(encodingMenuForDocument(30).encodings.back(), 30u);
    EXPECT_EQ(encodingMenuForDocument(30).names.back(), localizedNameOfStringEncoding(30));
    EXPECT_EQ(encodingMenuForDocument(8).encodings.size(), 7u);  // offered, yet flagged
}

TEST(Encodings, StrictConversionRefusesWhatCannotBeRepresented) {
    EXPECT_EQ(encodeStrictly(u"plain", encoding::kASCII), std::optional<std::string>("plain"));
    EXPECT_FALSE(encodeStrictly(u"café", encoding::kASCII));
    EXPECT_EQ(encodeStrictly(u"café", encoding::kISOLatin1), std::optional<std::string>("caf\xE9"));
    EXPECT_FALSE(encodeStrictly(u"€", encoding::kISOLatin1));
    EXPECT_FALSE(encodeStrictly(std::u16string(1, u'\xD800'), encoding::kUTF8));  // a lone surrogate
    EXPECT_FALSE(encodeStrictly(u"x", encoding::kSymbol));
    EXPECT_EQ(encodeStrictly(u"h", encoding::kUTF16, ByteOrder::Big), std::optional<std::string>(std::string("\xFE\xFF\0h", 4)));
    EXPECT_EQ(encodeStrictly(u"h", encoding::kUTF32, ByteOrder::Little),
              std::optional<std::string>(std::string("\xFF\xFE\0\0h\0\0\0", 8)));
    EXPECT_FALSE(decodeStrictly("\xC3", encoding::kUTF8));
    EXPECT_FALSE(decodeStrictly("\x80", encoding::kASCII));
    EXPECT_EQ(encodingForCharsetName("iso-8859-1"), std::optional<uint64_t>(5));
    EXPECT_EQ(encodingForCharsetName("WINDOWS-1252"), std::optional<uint64_t>(12));
    EXPECT_FALSE(encodingForCharsetName("no such charset"));
}

}  // namespace
}  // namespace vx
