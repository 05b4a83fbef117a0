#include "document/encodings.hpp"

#include <iconv.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <cctype>
#include <cerrno>

#include "platform/unique_handle.hpp"

namespace vx {
namespace {

using Converter = UniqueHandle<UConverter*, ucnv_close>;

struct EncodingInfo {
    uint64_t number;
    const char* name;     // shown in menus and by `vx info`
    const char* icuName;  // null: no ICU converter
    const char* aliases;  // further charset names that mean it, separated by '|'
    const char* iconvName = nullptr;  // the C library's converter, for the few ICU lacks
};

// The one table of encodings. Numbers are the platform's; encodings the platform numbers only
// through its lower-level layer carry 0x80000000 plus that layer's number. Number 8 is listed as
// Symbol, as the encoding menu has always labelled it; there is no Symbol converter here, so a
// document cannot be converted to it (setFileEncoding refuses).
//
// The aliases hold every charset name the detector (uchardet) can answer, so that a file it
// recognises is read in that encoding: UHC is Windows code page 949 (a superset of EUC-KR),
// TIS-620 is read as ISO 8859-11 (the same with a no-break space added).
constexpr EncodingInfo kEncodings[] = {
    {encoding::kASCII, "Western (ASCII)", "US-ASCII", "ASCII|US-ASCII|ANSI_X3.4-1968"},
    {3, "Japanese (EUC)", "EUC-JP", "EUC-JP"},
    {encoding::kUTF8, "Unicode (UTF-8)", "UTF-8", "UTF-8|UTF8"},
    {encoding::kISOLatin1, "Western (ISO Latin 1)", "ISO-8859-1", "ISO-8859-1|LATIN1"},
    {encoding::kSymbol, "Symbol", nullptr, ""},
    {9, "Central European (ISO Latin 2)", "ISO-8859-2", "ISO-8859-2"},
    {encoding::kUTF16, "Unicode (UTF-16)", "UTF-16", "UTF-16"},
    {11, "Cyrillic (Windows)", "windows-1251", "WINDOWS-1251"},
    {encoding::kWindowsLatin1, "Western (Windows Latin 1)", "windows-1252", "WINDOWS-1252|CP1252"},
    {13, "Greek (Windows)", "windows-1253", "WINDOWS-1253"},
    {14, "Turkish (Windows Latin 5)", "windows-1254", "WINDOWS-1254"},
    {15, "Central European (Windows Latin 2)", "windows-1250", "WINDOWS-1250"},
    {21, "Japanese (ISO 2022-JP)", "ISO-2022-JP", "ISO-2022-JP"},
    {encoding::kMacRoman, "Western (Mac OS Roman)", "macintosh", "MACINTOSH|MAC-ROMAN|MACROMAN|X-MAC-ROMAN"},
    {encoding::kUTF16BigEndian, "Unicode (UTF-16BE)", "UTF-16BE", "UTF-16BE"},
    {encoding::kUTF16LittleEndian, "Unicode (UTF-16LE)", "UTF-16LE", "UTF-16LE"},
    {encoding::kUTF32, "Unicode (UTF-32)", "UTF-32", "UTF-32"},
    {encoding::kUTF32BigEndian, "Unicode (UTF-32BE)", "UTF-32BE", "UTF-32BE"},
    {encoding::kUTF32LittleEndian, "Unicode (UTF-32LE)", "UTF-32LE", "UTF-32LE"},
    {0x80000007, "Cyrillic (Mac OS)", "x-mac-cyrillic", "MAC-CYRILLIC|X-MAC-CYRILLIC"},
    {0x8000001D, "Central European (Mac OS)", "x-mac-centraleurroman", "MAC-CENTRALEUROPE|X-MAC-CE"},
    {0x80000203, "Western (ISO Latin 3)", "ISO-8859-3", "ISO-8859-3"},
    {0x80000204, "Central European (ISO Latin 4)", "ISO-8859-4", "ISO-8859-4"},
    {0x80000205, "Cyrillic (ISO 8859-5)", "ISO-8859-5", "ISO-8859-5"},
    {0x80000206, "Arabic (ISO 8859-6)", "ISO-8859-6", "ISO-8859-6"},
    {0x80000207, "Greek (ISO 8859-7)", "ISO-8859-7", "ISO-8859-7"},
    {0x80000208, "Hebrew (ISO 8859-8)", "ISO-8859-8", "ISO-8859-8|ISO-8859-8-I"},
    {0x80000209, "Turkish (ISO Latin 5)", "ISO-8859-9", "ISO-8859-9"},
    {0x8000020A, "Nordic (ISO Latin 6)", "ISO-8859-10", "ISO-8859-10"},
    {0x8000020B, "Thai (ISO 8859-11)", "ISO-8859-11", "ISO-8859-11|TIS-620"},
    {0x8000020D, "Baltic (ISO Latin 7)", "ISO-8859-13", "ISO-8859-13"},
    {0x8000020F, "Western (ISO Latin 9)", "ISO-8859-15", "ISO-8859-15"},
    {0x80000210, "Romanian (ISO Latin 10)", nullptr, "ISO-8859-16", "ISO-8859-16"},
    {0x80000412, "Central European (DOS Latin 2)", "IBM852", "IBM852|CP852"},
    {0x80000413, "Cyrillic (DOS)", "IBM855", "IBM855|CP855"},
    {0x80000417, "Russian (DOS)", "IBM866", "IBM866|CP866"},
    {0x80000422, "Korean (Windows, DOS)", "windows-949", "UHC|CP949|WINDOWS-949"},
    {0x80000505, "Hebrew (Windows)", "windows-1255", "WINDOWS-1255"},
    {0x80000506, "Arabic (Windows)", "windows-1256", "WINDOWS-1256"},
    {0x80000507, "Baltic (Windows)", "windows-1257", "WINDOWS-1257"},
    {0x80000508, "Vietnamese (Windows)", "windows-1258", "WINDOWS-1258"},
    {0x80000632, "Chinese (GB 18030)", "GB18030", "GB18030"},
    {0x80000830, "Chinese (ISO 2022-CN)", "ISO-2022-CN", "ISO-2022-CN"},
    {0x80000840, "Korean (ISO 2022-KR)", "ISO-2022-KR", "ISO-2022-KR"},
    {0x80000931, "Traditional Chinese (EUC)", "EUC-TW", "EUC-TW"},
    {0x80000940, "Korean (EUC)", "EUC-KR", "EUC-KR"},
    {0x80000A01, "Japanese (Shift JIS)", "Shift_JIS", "SHIFT_JIS|SJIS"},
    {0x80000A02, "Cyrillic (KOI8-R)", "KOI8-R", "KOI8-R"},
    {0x80000A03, "Traditional Chinese (Big 5)", "Big5", "BIG5"},
    {0x80000A05, "Chinese (HZ GB 2312)", "HZ-GB-2312", "HZ-GB-2312|HZ"},
    {0x80000A07, "Vietnamese (VISCII)", nullptr, "VISCII", "VISCII"},
    {0x80000A08, "Ukrainian (KOI8-U)", "KOI8-U", "KOI8-U"},
};

const EncodingInfo* find(uint64_t number) {
    for (const auto& info : kEncodings)
        if (info.number == number) return &info;
    return nullptr;
}

std::string upper(std::string_view text) {
    std::string result(text);
    for (auto& c : result) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return result;
}

// A converter that stops at the first byte sequence or character it cannot convert.
Converter strictConverter(const char* icuName) {
    UErrorCode status = U_ZERO_ERROR;
    Converter converter(ucnv_open(icuName, &status));
    if (U_FAILURE(status) || !converter) return Converter();
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    return U_SUCCESS(status) ? std::move(converter) : Converter();
}

bool startsWith(std::string_view bytes, std::string_view prefix) { return bytes.substr(0, prefix.size()) == prefix; }

// An iconv conversion descriptor, closed once.
class Iconv {
public:
    Iconv(const char* to, const char* from) : m_handle(::iconv_open(to, from)) {}
    ~Iconv() {
        if (*this) ::iconv_close(m_handle);
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;
    explicit operator bool() const { return m_handle != reinterpret_cast<iconv_t>(-1); }
    iconv_t get() const { return m_handle; }

private:
    iconv_t m_handle;
};

// Converts strictly with the C library's converter: a sequence the source does not define or a
// character the target cannot hold fails the whole conversion.
std::optional<std::string> convertWithIconv(std::string_view input, const char* to, const char* from) {
    Iconv converter(to, from);
    if (!converter) return std::nullopt;
    std::string output;
    char buffer[1 << 14];
    char* in = const_cast<char*>(input.data());
    size_t inLeft = input.size();
    for (;;) {
        char* out = buffer;
        size_t outLeft = sizeof buffer;
        const size_t done = ::iconv(converter.get(), inLeft ? &in : nullptr, &inLeft, &out, &outLeft);
        output.append(buffer, sizeof buffer - outLeft);
        if (done != static_cast<size_t>(-1)) {
            if (inLeft == 0) break;
            continue;
        }
        if (errno != E2BIG) return std::nullopt;
    }
    return output;
}

}  // namespace

bool vx_isAllowedEncoding(uint64_t encoding) {
    return encoding == encoding::kASCII || encoding == encoding::kUTF8 || encoding == encoding::kISOLatin1 ||
           encoding == encoding::kUTF16 || encoding == encoding::kUTF32;
}

std::string localizedNameOfStringEncoding(uint64_t encoding) {
    const auto* info = find(encoding);
    return info ? info->name : std::string();
}

EncodingMenu fileEncodingLocalNames() {
    // Menu order; 8 is offered although vx_isAllowedEncoding does not accept it.
    static const uint64_t kMenu[] = {encoding::kASCII, encoding::kUTF8,      encoding::kUTF16,
                                     encoding::kUTF32, encoding::kISOLatin1, encoding::kSymbol};
    EncodingMenu menu;
    for (uint64_t number : kMenu) {
        menu.encodings.push_back(number);
        menu.names.push_back(localizedNameOfStringEncoding(number));
    }
    return menu;
}

EncodingMenu encodingMenuForDocument(uint64_t current) {
    EncodingMenu menu = fileEncodingLocalNames();
    if (current == 0) current = encoding::kUTF8;
    if (!vx_isAllowedEncoding(current)) {
        menu.encodings.push_back(current);
        menu.names.push_back(localizedNameOfStringEncoding(current));
    }
    return menu;
}

std::vector<uint64_t> availableEncodings() {
    std::vector<uint64_t> numbers;
    for (const auto& info : kEncodings)
        if ((info.icuName && strictConverter(info.icuName)) || info.iconvName) numbers.push_back(info.number);
    return numbers;
}

std::optional<uint64_t> encodingForCharsetName(std::string_view name) {
    const std::string wanted = upper(name);
    for (const auto& info : kEncodings) {
        std::string_view aliases = info.aliases;
        while (!aliases.empty()) {
            const auto bar = aliases.find('|');
            if (aliases.substr(0, bar) == wanted) return info.number;
            if (bar == std::string_view::npos) break;
            aliases.remove_prefix(bar + 1);
        }
    }
    return std::nullopt;
}

std::optional<std::u16string> decodeStrictly(std::string_view bytes, uint64_t encoding) {
    const char* icuName = nullptr;
    if (encoding == encoding::kUTF16 || encoding == encoding::kUTF32) {
        // The mark decides the order; without one the text is taken as big-endian.
        const bool wide = encoding == encoding::kUTF32;
        if (wide && startsWith(bytes, std::string_view("\xFF\xFE\0\0", 4))) {
            bytes.remove_prefix(4), icuName = "UTF-32LE";
        } else if (wide && startsWith(bytes, std::string_view("\0\0\xFE\xFF", 4))) {
            bytes.remove_prefix(4), icuName = "UTF-32BE";
        } else if (!wide && startsWith(bytes, "\xFF\xFE")) {
            bytes.remove_prefix(2), icuName = "UTF-16LE";
        } else if (!wide && startsWith(bytes, "\xFE\xFF")) {
            bytes.remove_prefix(2), icuName = "UTF-16BE";
        } else {
            icuName = wide ? "UTF-32BE" : "UTF-16BE";
        }
    } else if (const auto* info = find(encoding)) {
        icuName = info->icuName;
        if (!icuName && info->iconvName) {
            auto wide = convertWithIconv(bytes, "UTF-16LE", info->iconvName);
            if (!wide) return std::nullopt;
            std::u16string result(wide->size() / 2, u'\0');
            for (size_t i = 0; i < result.size(); ++i)
                result[i] = static_cast<char16_t>(static_cast<uint8_t>((*wide)[2 * i]) |
                                                  static_cast<uint8_t>((*wide)[2 * i + 1]) << 8);
            return result;
        }
    }
    if (!icuName) return std::nullopt;
    Converter converter = strictConverter(icuName);
    if (!converter) return std::nullopt;

    std::u16string result(bytes.size() + 1, u'\0');
    for (int attempt = 0; attempt < 2; ++attempt) {
        UErrorCode status = U_ZERO_ERROR;
        ucnv_reset(converter.get());
        const int32_t length = ucnv_toUChars(converter.get(), reinterpret_cast<UChar*>(result.data()),
                                             static_cast<int32_t>(result.size()), bytes.data(),
                                             static_cast<int32_t>(bytes.size()), &status);
        if (status == U_BUFFER_OVERFLOW_ERROR) {
            result.assign(static_cast<size_t>(length) + 1, u'\0');
            continue;
        }
        if (U_FAILURE(status)) return std::nullopt;
        result.resize(static_cast<size_t>(length));
        return result;
    }
    return std::nullopt;
}

std::optional<std::string> encodeStrictly(const std::function<std::optional<std::u16string_view>()>& next,
                                          uint64_t encoding, ByteOrder order) {
    std::string output;
    const char* icuName = nullptr;
    if (encoding == encoding::kUTF16) {
        icuName = order == ByteOrder::Little ? "UTF-16LE" : "UTF-16BE";
        output = order == ByteOrder::Little ? std::string("\xFF\xFE") : std::string("\xFE\xFF");
    } else if (encoding == encoding::kUTF32) {
        icuName = order == ByteOrder::Little ? "UTF-32LE" : "UTF-32BE";
        output = order == ByteOrder::Little ? std::string("\xFF\xFE\0\0", 4) : std::string("\0\0\xFE\xFF", 4);
    } else if (const auto* info = find(encoding)) {
        icuName = info->icuName;
        if (!icuName && info->iconvName) {
            // Only single-byte encodings go this way; their texts are small enough to gather.
            std::string wide;
            while (auto piece = next()) {
                if (piece->empty()) break;
                for (char16_t unit : *piece) {
                    wide += static_cast<char>(unit & 0xFF);
                    wide += static_cast<char>(unit >> 8);
                }
            }
            return convertWithIconv(wide, info->iconvName, "UTF-16LE");
        }
    }
    if (!icuName) return std::nullopt;
    Converter converter = strictConverter(icuName);
    if (!converter) return std::nullopt;

    char buffer[1 << 16];
    auto pump = [&](const UChar*& source, const UChar* limit, bool flush) {
        for (;;) {
            char* target = buffer;
            UErrorCode status = U_ZERO_ERROR;
            ucnv_fromUnicode(converter.get(), &target, buffer + sizeof buffer, &source, limit, nullptr, flush, &status);
            output.append(buffer, static_cast<size_t>(target - buffer));
            if (status == U_BUFFER_OVERFLOW_ERROR) continue;
            return U_SUCCESS(status);
        }
    };
    while (auto piece = next()) {
        if (piece->empty()) break;
        const UChar* source = reinterpret_cast<const UChar*>(piece->data());
        if (!pump(source, source + piece->size(), false)) return std::nullopt;
    }
    static const UChar kNothing[1] = {0};
    const UChar* none = kNothing;
    if (!pump(none, none, true)) return std::nullopt;
    return output;
}

std::optional<std::string> encodeStrictly(std::u16string_view text, uint64_t encoding, ByteOrder order) {
    bool given = false;
    return encodeStrictly(
        [&]() -> std::optional<std::u16string_view> {
            if (given) return std::nullopt;
            given = true;
            return text;
        },
        encoding, order);
}

}  // namespace vx
