#include "app/commands/streamed_input.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "app/commands/command.hpp"
#include "platform/unicode.hpp"

namespace vx::cli {
namespace {

constexpr size_t kBlockSize = 1 << 16;

// Where bytes may be cut so that the part before decodes as it would within the whole text.
// Before a byte that is not a continuation byte, no sequence (valid or not) reaches over the
// cut; so the bytes from the last such byte on are held back only when it starts a sequence
// that the bytes after it do not complete. Looking back three bytes is enough, since a
// sequence has at most three continuation bytes.
size_t safeCut(const std::string& bytes) {
    const size_t lowest = bytes.size() >= 3 ? bytes.size() - 3 : 0;
    for (size_t i = bytes.size(); i > lowest; --i) {
        const auto lead = static_cast<unsigned char>(bytes[i - 1]);
        if ((lead & 0xC0) == 0x80) continue;
        const size_t needed = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
        return bytes.size() - (i - 1) >= needed ? bytes.size() : i - 1;
    }
    return bytes.size();
}

}  // namespace

StreamedInput::StreamedInput(const std::string& path) : m_path(path) {
    if (path == "-") {
        m_fd = STDIN_FILENO;
        return;
    }
    errno = 0;
    m_owned.reset(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat info {};
    if (m_owned && (::fstat(m_owned.get(), &info) != 0 || S_ISDIR(info.st_mode))) {
        errno = 0;
        m_owned.reset();
    }
    if (!m_owned) throw CommandFailure(path + ": " + (errno ? std::strerror(errno) : "not a readable file"));
    m_fd = m_owned.get();
}

bool StreamedInput::readInto(std::u16string& out) {
    if (m_ended) return false;
    std::string bytes = std::move(m_held);
    const size_t kept = bytes.size();
    bytes.resize(kept + kBlockSize);
    ssize_t n;
    do {
        n = ::read(m_fd, bytes.data() + kept, kBlockSize);
    } while (n < 0 && errno == EINTR);
    if (n < 0)
        throw CommandFailure((m_path == "-" ? std::string("standard input") : m_path) + ": " + std::strerror(errno));
    bytes.resize(kept + static_cast<size_t>(n));
    m_ended = n == 0;
    size_t from = 0;
    if (m_atStart) {
        if (bytes.size() < 3 && !m_ended && std::string_view("\xEF\xBB\xBF").starts_with(bytes)) {
            m_held = std::move(bytes);  // too short yet to tell whether it is a byte-order mark
            return true;
        }
        m_atStart = false;
        if (bytes.rfind("\xEF\xBB\xBF", 0) == 0) from = 3;
    }
    const size_t cut = m_ended ? bytes.size() : std::max(safeCut(bytes), from);
    const size_t before = out.size();
    out += utf16FromUtf8(std::string_view(bytes).substr(from, cut - from));
    m_held.assign(bytes, cut, std::string::npos);
    return !m_ended || out.size() > before;
}

}  // namespace vx::cli
