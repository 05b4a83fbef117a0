#include "document/text_reader.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <uchardet.h>
#include <unicode/ucnv.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "platform/unique_handle.hpp"

namespace vx {
namespace {

constexpr size_t kReadBlock = 1 << 20;
using Detector = UniqueHandle<uchardet_t, uchardet_delete>;
using Converter = UniqueHandle<UConverter*, ucnv_close>;

std::unique_ptr<VXTextStorage> storageFrom(std::u16string_view text) {
    auto storage = std::make_unique<VXTextStorage>();
    TextStorageLoader(*storage).append(text);
    return storage;
}

bool isASCII(const char* bytes, size_t length) {
    // Eight bytes at a time: any byte with its top bit set shows in the mask.
    size_t i = 0;
    for (; i + 8 <= length; i += 8) {
        uint64_t word;
        std::memcpy(&word, bytes + i, 8);
        if (word & 0x8080808080808080ULL) return false;
    }
    for (; i < length; ++i)
        if (static_cast<unsigned char>(bytes[i]) & 0x80) return false;
    return true;
}

// Decodes ASCII or UTF-8 from a descriptor block by block into a storage. Answers false (and
// leaves the storage half-filled) at the first byte sequence that is not UTF-8.
class StreamingUTF8 {
public:
    explicit StreamingUTF8(VXTextStorage& storage) : m_loader(storage), m_wide(kReadBlock + 16, u'\0') {
        UErrorCode status = U_ZERO_ERROR;
        m_converter = Converter(ucnv_open("UTF-8", &status));
        ucnv_setToUCallBack(m_converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        m_ok = U_SUCCESS(status);
    }

    bool feed(const char* bytes, size_t length, bool last) {
        if (!m_ok) return false;
        if (m_allASCII && isASCII(bytes, length)) {
            for (size_t i = 0; i < length; ++i) m_wide[i] = static_cast<unsigned char>(bytes[i]);
            m_loader.append(std::u16string_view(m_wide.data(), length));
            return true;  // the converter has seen nothing yet, so nothing can be pending in it
        }
        m_allASCII = false;
        const char* source = bytes;
        const char* limit = bytes + length;
        for (;;) {
            UChar* target = reinterpret_cast<UChar*>(m_wide.data());
            UErrorCode status = U_ZERO_ERROR;
            ucnv_toUnicode(m_converter.get(), &target, target + m_wide.size(), &source, limit, nullptr, last, &status);
            m_loader.append(std::u16string_view(m_wide.data(), static_cast<size_t>(target - reinterpret_cast<UChar*>(m_wide.data()))));
            if (status == U_BUFFER_OVERFLOW_ERROR) continue;
            return m_ok = U_SUCCESS(status);
        }
    }

    bool allASCII() const { return m_allASCII; }

private:
    TextStorageLoader m_loader;
    std::u16string m_wide;
    Converter m_converter;
    bool m_ok = false;
    bool m_allASCII = true;
};

struct OpenFile {
    UniqueFd fd;
    int error = 0;
    uint64_t size = 0;
    std::string notRegular;
};

// What a path that is not a regular file is, in words for the message that refuses it.
std::string kindOfFile(mode_t mode) {
    if (S_ISDIR(mode)) return "a folder";
    if (S_ISFIFO(mode)) return "a named pipe";
    if (S_ISCHR(mode)) return "a character device";
    if (S_ISBLK(mode)) return "a block device";
    if (S_ISSOCK(mode)) return "a socket";
    return "not a regular file";
}

OpenFile openForReading(const std::string& path) {
    OpenFile file;
    // Opened without blocking, so that a pipe that was put where the file was cannot hang the
    // open; anything but a regular file is then refused before a byte is read.
    file.fd = UniqueFd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.fd) {
        file.error = errno;
        return file;
    }
    struct stat info {};
    if (::fstat(file.fd.get(), &info) != 0) {
        file.error = errno;
        file.fd.reset();
    } else if (!S_ISREG(info.st_mode)) {
        file.error = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
        file.notRegular = kindOfFile(info.st_mode);
        file.fd.reset();
    } else {
        file.size = static_cast<uint64_t>(info.st_size);
        ::fcntl(file.fd.get(), F_SETFL, ::fcntl(file.fd.get(), F_GETFL) & ~O_NONBLOCK);
    }
    return file;
}

// Reads up to `length` bytes, retrying short reads; answers the count, or -1 on an error.
ssize_t readFully(int fd, char* buffer, size_t length) {
    size_t done = 0;
    while (done < length) {
        ssize_t n = ::read(fd, buffer + done, length - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        if (n == 0) break;
        done += static_cast<size_t>(n);
    }
    return static_cast<ssize_t>(done);
}

enum class StreamOutcome { Decoded, NotUTF8, ReadError };

// Streams the whole file through the UTF-8 decoder; `skip` bytes of a byte-order mark are dropped.
StreamOutcome streamUTF8(int fd, uint64_t sizeHint, size_t skip, VXTextStorage& storage, bool* allASCII, int* error) {
    if (::lseek(fd, static_cast<off_t>(skip), SEEK_SET) < 0) {
        *error = errno;
        return StreamOutcome::ReadError;
    }
    TextStorageLoader(storage).reserve(sizeHint);
    StreamingUTF8 decoder(storage);
    std::string block(kReadBlock, '\0');
    for (;;) {
        const ssize_t n = readFully(fd, block.data(), block.size());
        if (n < 0) {
            *error = errno;
            return StreamOutcome::ReadError;
        }
        const bool last = static_cast<size_t>(n) < block.size();
        if (!decoder.feed(block.data(), static_cast<size_t>(n), last)) return StreamOutcome::NotUTF8;
        if (last) break;
    }
    *allASCII = decoder.allASCII();
    return StreamOutcome::Decoded;
}

bool startsWith(std::string_view bytes, std::string_view prefix) { return bytes.substr(0, prefix.size()) == prefix; }

// What a charset detector makes of bytes that are neither ASCII nor UTF-8.
std::optional<uint64_t> detectCharset(std::string_view bytes) {
    Detector detector(uchardet_new());
    if (!detector) return std::nullopt;
    if (uchardet_handle_data(detector.get(), bytes.data(), bytes.size()) != 0) return std::nullopt;
    uchardet_data_end(detector.get());
    const char* name = uchardet_get_charset(detector.get());
    if (!name || !*name) return std::nullopt;
    return encodingForCharsetName(name);
}

// The text of bytes in an encoding, only when writing that text in the same encoding gives the
// very same bytes back (some legacy encodings read two byte sequences as one character).
std::optional<std::u16string> decodeRoundTripping(std::string_view bytes, uint64_t encoding) {
    auto text = decodeStrictly(bytes, encoding);
    if (!text) return std::nullopt;
    auto again = encodeStrictly(*text, encoding);
    if (!again || *again != bytes) return std::nullopt;
    return text;
}

// Encodings to try for what the detector names: UTF-16 and UTF-32 without a byte-order mark are
// tried in both orders, written back without a mark.
std::vector<uint64_t> candidatesFor(uint64_t detected) {
    if (detected == encoding::kUTF16) return {encoding::kUTF16LittleEndian, encoding::kUTF16BigEndian};
    if (detected == encoding::kUTF32) return {encoding::kUTF32LittleEndian, encoding::kUTF32BigEndian};
    return {detected};
}

}  // namespace

PlainText plainTextFromBytes(std::string_view bytes) {
    PlainText result;
    struct Mark {
        std::string_view bytes;
        uint64_t encoding;
        ByteOrder order;
    };
    // UTF-32 first: its little-endian mark begins like UTF-16's.
    const Mark marks[] = {
        {std::string_view("\xFF\xFE\0\0", 4), encoding::kUTF32, ByteOrder::Little},
        {std::string_view("\0\0\xFE\xFF", 4), encoding::kUTF32, ByteOrder::Big},
        {"\xEF\xBB\xBF", encoding::kUTF8, ByteOrder::Little},
        {"\xFF\xFE", encoding::kUTF16, ByteOrder::Little},
        {"\xFE\xFF", encoding::kUTF16, ByteOrder::Big},
    };
    for (const auto& mark : marks) {
        if (!startsWith(bytes, mark.bytes)) continue;
        auto text = mark.encoding == encoding::kUTF8 ? decodeStrictly(bytes.substr(3), encoding::kUTF8)
                                                     : decodeStrictly(bytes, mark.encoding);
        if (text) {
            result.storage = storageFrom(*text);
            result.detectedEncoding = mark.encoding;
            result.byteOrder = mark.order;
            result.byteOrderMark = true;
            return result;
        }
        break;  // a mark followed by text that does not decode: let the detector try
    }
    if (isASCII(bytes.data(), bytes.size())) {
        std::u16string wide(bytes.begin(), bytes.end());
        result.storage = storageFrom(wide);
        result.detectedEncoding = encoding::kASCII;
        return result;
    }
    if (auto text = decodeStrictly(bytes, encoding::kUTF8)) {
        result.storage = storageFrom(*text);
        result.detectedEncoding = encoding::kUTF8;
        return result;
    }
    if (auto detected = detectCharset(bytes)) {
        for (uint64_t candidate : candidatesFor(*detected)) {
            if (auto text = decodeRoundTripping(bytes, candidate)) {
                result.storage = storageFrom(*text);
                result.detectedEncoding = candidate;
                return result;
            }
        }
    }
    if (auto text = decodeStrictly(bytes, encoding::kMacRoman)) {
        result.storage = storageFrom(*text);
        result.detectedEncoding = encoding::kMacRoman;
    }
    return result;
}

PlainText readPlainText(const std::string& path) {
    PlainText result;
    OpenFile file = openForReading(path);
    if (!file.fd) {
        result.error = file.error;
        result.notRegular = file.notRegular;
        return result;
    }
    char head[4] = {};
    const ssize_t headLength = readFully(file.fd.get(), head, sizeof head);
    if (headLength < 0) {
        result.error = errno;
        return result;
    }
    const std::string_view start(head, static_cast<size_t>(headLength));
    const bool utf8Mark = startsWith(start, "\xEF\xBB\xBF");
    const bool otherMark = startsWith(start, "\xFF\xFE") || startsWith(start, "\xFE\xFF") ||
                           startsWith(start, std::string_view("\0\0\xFE\xFF", 4));
    if (!otherMark) {
        auto storage = std::make_unique<VXTextStorage>();
        bool allASCII = false;
        switch (streamUTF8(file.fd.get(), file.size, utf8Mark ? 3 : 0, *storage, &allASCII, &result.error)) {
        case StreamOutcome::Decoded:
            result.storage = std::move(storage);
            result.detectedEncoding = allASCII && !utf8Mark ? encoding::kASCII : encoding::kUTF8;
            result.byteOrderMark = utf8Mark;
            return result;
        case StreamOutcome::ReadError:
            return result;
        case StreamOutcome::NotUTF8:
            break;
        }
    }
    // Neither ASCII nor UTF-8: the detectors need the whole file, read from the file already open.
    std::string bytes;
    bytes.resize(file.size);
    if (::lseek(file.fd.get(), 0, SEEK_SET) < 0) {
        result.error = errno;
        return result;
    }
    const ssize_t got = readFully(file.fd.get(), bytes.data(), bytes.size());
    if (got < 0) {
        result.error = errno;
        return result;
    }
    bytes.resize(static_cast<size_t>(got));
    // The file may have grown since it was measured.
    char more[1 << 16];
    for (ssize_t n; (n = readFully(file.fd.get(), more, sizeof more)) > 0;) bytes.append(more, static_cast<size_t>(n));
    return plainTextFromBytes(bytes);
}

std::unique_ptr<VXTextStorage> readStrictUTF8(const std::string& path) {
    OpenFile file = openForReading(path);
    if (!file.fd) return nullptr;
    char head[3] = {};
    const ssize_t headLength = readFully(file.fd.get(), head, sizeof head);
    if (headLength < 0) return nullptr;
    const bool mark = startsWith(std::string_view(head, static_cast<size_t>(headLength)), "\xEF\xBB\xBF");
    auto storage = std::make_unique<VXTextStorage>();
    bool allASCII = false;
    int error = 0;
    if (streamUTF8(file.fd.get(), file.size, mark ? 3 : 0, *storage, &allASCII, &error) != StreamOutcome::Decoded)
        return nullptr;
    return storage;
}

ReadResult resolveRead(PlainText platform, const std::function<std::unique_ptr<VXTextStorage>()>& readUTF8) {
    ReadResult result;
    const uint64_t detected = platform.detectedEncoding;
    result.byteOrderMark = platform.byteOrderMark;
    if (platform.storage && detected != 0 && detected != encoding::kMacRoman) {
        result.storage = std::move(platform.storage);
        result.encoding = detected == encoding::kASCII ? encoding::kUTF8 : detected;
        result.byteOrder = platform.byteOrder;
        return result;
    }
    result.encoding = encoding::kUTF8;
    if (auto strict = readUTF8()) {
        result.storage = std::move(strict);
        return result;
    }
    // Deliberately still UTF-8: shown as the platform read it, saved as UTF-8 once the user agrees.
    result.storage = std::move(platform.storage);
    result.validInNoEncoding = result.storage != nullptr;
    return result;
}

}  // namespace vx
