// Reading files in legacy encodings, files that are valid in none, and paths that are not files.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "document/encodings.hpp"
#include "document/single_file_document.hpp"
#include "platform/file_cache.hpp"
#include "platform/scoped_home.hpp"

namespace vx {
namespace {

using Op = VXSingleFileDocument::SaveOperation;

// Every charset name the detector can answer has an encoding that reads and writes text.
TEST(LegacyEncodings, EveryNameTheDetectorAnswersHasAConverter) {
    const char* names[] = {
        "ASCII", "UTF-8", "UTF-16", "UTF-16BE", "UTF-16LE", "UTF-32", "UTF-32BE", "UTF-32LE",
        "ISO-2022-CN", "BIG5", "EUC-TW", "GB18030", "HZ-GB-2312", "ISO-2022-JP", "SHIFT_JIS", "EUC-JP",
        "ISO-2022-KR", "EUC-KR", "UHC", "ISO-8859-1", "ISO-8859-2", "ISO-8859-3", "ISO-8859-4", "ISO-8859-5",
        "ISO-8859-6", "ISO-8859-7", "ISO-8859-8", "ISO-8859-9", "ISO-8859-10", "ISO-8859-11", "ISO-8859-13",
        "ISO-8859-15", "ISO-8859-16", "WINDOWS-1250", "WINDOWS-1251", "WINDOWS-1252", "WINDOWS-1253",
        "WINDOWS-1254", "WINDOWS-1255", "WINDOWS-1256", "WINDOWS-1257", "WINDOWS-1258", "IBM852", "IBM855",
        "IBM866", "KOI8-R", "MAC-CENTRALEUROPE", "MAC-CYRILLIC", "TIS-620", "VISCII"};
    for (const char* name : names) {
        auto number = encodingForCharsetName(name);
        ASSERT_TRUE(number) << name;
        EXPECT_FALSE(localizedNameOfStringEncoding(*number).empty()) << name;
        auto bytes = encodeStrictly(u"plain text 42", *number);
        ASSERT_TRUE(bytes) << name;
        EXPECT_EQ(decodeStrictly(*bytes, *number), std::optional<std::u16string>(u"plain text 42")) << name;
    }
    // The encodings ICU lacks go through the C library, strictly too.
    const uint64_t romanian = *encodingForCharsetName("ISO-8859-16");
    EXPECT_EQ(decodeStrictly(*encodeStrictly(u"Știință", romanian), romanian), std::optional<std::u16string>(u"Știință"));
    EXPECT_FALSE(encodeStrictly(u"日本", romanian));
}

// Real texts in their own encodings open as the text they are and save back to the same bytes.
TEST(LegacyEncodings, RealTextsOpenAsWrittenAndSaveUnchanged) {
    test::ScopedHome home;
    struct Case {
        const char* charset;
        std::u16string text;
    };
    const Case cases[] = {
        {"EUC-KR", u"대한민국의 수도는 서울이며, 많은 사람들이 지하철을 타고 출근합니다. 오늘은 날씨가 맑고 바람이 "
                   u"시원해서 공원에 산책하러 가기 좋은 날입니다. 저녁에는 친구들과 함께 식당에서 김치찌개와 "
                   u"불고기를 먹었습니다. 한국어는 아름다운 언어입니다.\n"},
        {"TIS-620", u"ภาษาไทยเป็นภาษาราชการของประเทศไทย วันนี้อากาศดีมาก เราจึงไปเดินเล่นที่สวนสาธารณะใกล้บ้าน "
                    u"ตอนเย็นเราไปทานอาหารกับเพื่อนที่ร้านอาหารริมแม่น้ำ และคุยกันเรื่องหนังสือและดนตรี\n"},
        {"SHIFT_JIS", u"日本語の文章を書くのは楽しいです。今日は天気が良いので、公園へ散歩に行きました。"
                      u"夕方には友達と一緒に駅の近くの店でラーメンを食べました。明日は図書館で本を読むつもりです。\n"},
        {"EUC-JP", u"日本語の文章を書くのは楽しいです。今日は天気が良いので、公園へ散歩に行きました。"
                   u"夕方には友達と一緒に駅の近くの店でラーメンを食べました。明日は図書館で本を読むつもりです。\n"},
        {"GB18030", u"今天天气很好，我们一起去公园散步。晚上我们在饭店吃了北京烤鸭，大家都很高兴。"
                    u"中文是世界上使用人数最多的语言之一。明天我们打算去图书馆看书。\n"},
        {"BIG5", u"今天天氣很好，我們一起去公園散步。晚上我們在飯店吃了北京烤鴨，大家都很高興。"
                 u"中文是世界上使用人數最多的語言之一。明天我們打算去圖書館看書。\n"},
        {"WINDOWS-1251", u"Сегодня хорошая погода, и мы пошли гулять в парк. Вечером мы ужинали с друзьями в "
                         u"ресторане и долго разговаривали о книгах, музыке и путешествиях по России.\n"},
        {"KOI8-R", u"Сегодня хорошая погода, и мы пошли гулять в парк. Вечером мы ужинали с друзьями в "
                   u"ресторане и долго разговаривали о книгах, музыке и путешествиях по России.\n"},
        {"ISO-8859-7", u"Σήμερα ο καιρός είναι πολύ ωραίος και πήγαμε βόλτα στο πάρκο. Το βράδυ φάγαμε με τους "
                       u"φίλους μας σε μια ταβέρνα κοντά στη θάλασσα και μιλήσαμε για βιβλία και μουσική.\n"},
        {"WINDOWS-1255", u"היום מזג האוויר יפה מאוד והלכנו לטייל בפארק. בערב אכלנו ארוחת ערב עם חברים במסעדה ליד "
                         u"הים ודיברנו על ספרים, על מוזיקה ועל טיולים בארץ.\n"},
    };
    std::string error;
    for (const auto& c : cases) {
        const uint64_t number = *encodingForCharsetName(c.charset);
        const auto bytes = encodeStrictly(c.text, number);
        ASSERT_TRUE(bytes) << c.charset;
        const std::string path = home.dir.write(std::string("text-") + c.charset, *bytes);
        VXSingleFileDocument document;
        ASSERT_TRUE(document.readFromURL(path, "txt", &error)) << c.charset << ": " << error;
        EXPECT_EQ(document.contents().string(), c.text) << c.charset << " read as "
                                                        << localizedNameOfStringEncoding(document.fileEncoding());
        EXPECT_FALSE(document.wasValidInNoEncoding()) << c.charset;
        ASSERT_TRUE(document.saveToURL(path, "txt", Op::Save, &error)) << c.charset << ": " << error;
        EXPECT_EQ(readWholeFile(path), *bytes) << c.charset;
    }
}

// Bytes valid in no encoding are shown as Mac Roman (as the reading algorithm says), and are not
// written back as UTF-8 until the user agrees. Bytes that some legacy encoding reads exactly are
// written back unchanged instead: either way nothing changes without a word.
TEST(LegacyEncodings, TextsValidInNoEncodingAreNotRewrittenSilently) {
    test::ScopedHome home;
    const std::string cases[] = {
        std::string("\x81\x8D\x8F\x90\x9D"),      // bytes no encoding here gives a meaning
        std::string("\xFF\xFEh\0i\0!", 7),         // UTF-16 cut short
        std::string("\xFF\xFEh\0\x00\xD8i\0", 8),  // a lone surrogate
        std::string("\xFE\xFF\xDC\x00\0a", 6),     // a lone low surrogate, big-endian
    };
    std::string error;
    int n = 0;
    for (const auto& bytes : cases) {
        const std::string path = home.dir.write("bad" + std::to_string(n++), bytes);
        VXSingleFileDocument document;
        ASSERT_TRUE(document.readFromURL(path, "txt", &error)) << error;
        if (n == 1) {
            EXPECT_TRUE(document.wasValidInNoEncoding());
        }
        if (!document.wasValidInNoEncoding()) {
            ASSERT_TRUE(document.saveToURL(path, "txt", Op::Save, &error)) << error;
            EXPECT_EQ(readWholeFile(path), bytes) << n << " read as " << document.fileEncoding();
            continue;
        }
        EXPECT_TRUE(document.needsConfirmationToSave());
        EXPECT_FALSE(document.saveToURL(path, "txt", Op::Save, &error));
        EXPECT_NE(error.find("not valid text in any encoding"), std::string::npos) << error;
        EXPECT_EQ(readWholeFile(path), bytes);
        document.acceptSavingAsUTF8();
        ASSERT_TRUE(document.saveToURL(path, "txt", Op::Save, &error)) << error;
        EXPECT_EQ(decodeStrictly(*readWholeFile(path), encoding::kUTF8), document.contents().string());
    }
    // A valid file is never asked about.
    VXSingleFileDocument valid;
    ASSERT_TRUE(valid.readFromURL(home.dir.write("ok", "fine\n"), "txt", &error));
    EXPECT_FALSE(valid.needsConfirmationToSave());
}

TEST(LegacyEncodings, OnlyRegularFilesAreOpened) {
    test::ScopedHome home;
    const std::string fifo = home.dir.path() + "/fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    std::string error;
    VXSingleFileDocument document;
    // Neither may block: nothing is read from a pipe or a device.
    EXPECT_FALSE(document.readFromURL(fifo, "txt", &error));
    EXPECT_NE(error.find("named pipe"), std::string::npos) << error;
    EXPECT_FALSE(document.readFromURL("/dev/zero", "txt", &error));
    EXPECT_NE(error.find("character device"), std::string::npos) << error;
    EXPECT_FALSE(document.readFromURL(home.dir.path(), "txt", &error));
    EXPECT_NE(error.find("folder"), std::string::npos) << error;
    EXPECT_FALSE(document.fileURL());
}

}  // namespace
}  // namespace vx
