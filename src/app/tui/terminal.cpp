#include "app/tui/terminal.hpp"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace vx::tui {
namespace {

constexpr std::string_view kEnter =
    "\x1b[?1049h"           // alternate screen
    "\x1b[?2004h"           // bracketed paste
    "\x1b[?1002h\x1b[?1006h"  // mouse presses and drags, SGR coordinates
    "\x1b[>1u"              // keys with modifiers as CSI u (pushed; popped on the way out)
    "\x1b[>4;2m";           // xterm modifyOtherKeys
constexpr std::string_view kLeave =
    "\x1b[>4;0m\x1b[<u\x1b[?1006l\x1b[?1002l\x1b[?2004l\x1b[0m\x1b[?25h\x1b[?1049l";

// What a signal handler needs to put the terminal back. Written before raw mode starts, read only
// by restoreFromSignal; plain data so the handler touches nothing that may be half-updated.
struct SavedState {
    int output = -1;
    int input = -1;
    termios attributes{};
    std::atomic<bool> raw{false};
};
SavedState g_saved;

int g_signalPipe[2] = {-1, -1};
std::atomic<uint32_t> g_pendingSignals{0};

void restoreFromSignal() {
    if (!g_saved.raw.exchange(false)) return;
    ssize_t ignored = ::write(g_saved.output, kLeave.data(), kLeave.size());
    (void)ignored;
    ::tcsetattr(g_saved.input, TCSAFLUSH, &g_saved.attributes);
}

void onEventSignal(int signal) {
    int saved = errno;
    uint32_t flag = 0;
    switch (signal) {
        case SIGWINCH: flag = kSignalResize; break;
        case SIGHUP: flag = kSignalHangUp; break;
        case SIGTERM: flag = kSignalTerminate; break;
        case SIGINT: flag = kSignalInterrupt; break;
        case SIGTSTP: flag = kSignalStop; break;
        case SIGCONT: flag = kSignalContinue; break;
        default: break;
    }
    g_pendingSignals.fetch_or(flag);
    char byte = 1;
    ssize_t ignored = ::write(g_signalPipe[1], &byte, 1);
    (void)ignored;
    errno = saved;
}

void onFatalSignal(int signal) {
    restoreFromSignal();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void installHandlers() {
    if (g_signalPipe[0] < 0) {
        if (::pipe2(g_signalPipe, O_CLOEXEC | O_NONBLOCK) != 0) throw std::runtime_error("cannot create a pipe");
        std::atexit(restoreFromSignal);
    }
    struct sigaction action{};
    action.sa_handler = onEventSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int signal : {SIGWINCH, SIGHUP, SIGTERM, SIGINT, SIGTSTP, SIGCONT}) sigaction(signal, &action, nullptr);
    struct sigaction fatal{};
    fatal.sa_handler = onFatalSignal;
    sigemptyset(&fatal.sa_mask);
    fatal.sa_flags = SA_RESETHAND;
    for (int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGQUIT}) sigaction(signal, &fatal, nullptr);
    // A terminal that went away must not kill the process before its buffers are saved.
    std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace

Terminal::Terminal() {
    m_input = STDIN_FILENO;
    m_output = STDOUT_FILENO;
    if (!::isatty(m_input) || !::isatty(m_output)) {
        m_ownedTty = UniqueFd(::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY));
        if (!m_ownedTty) throw std::runtime_error("the editor needs a terminal (no /dev/tty)");
        if (!::isatty(m_input)) m_input = m_ownedTty.get();
        if (!::isatty(m_output)) m_output = m_ownedTty.get();
    }
    if (::tcgetattr(m_input, &m_saved) != 0) throw std::runtime_error("cannot read the terminal's settings");
    installHandlers();
}

Terminal::~Terminal() {
    restore();
}

void Terminal::enterRawMode() {
    g_saved.output = m_output;
    g_saved.input = m_input;
    g_saved.attributes = m_saved;
    termios raw = m_saved;
    raw.c_iflag &= ~static_cast<tcflag_t>(BRKINT | ICRNL | INPCK | ISTRIP | IXON);
    raw.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    raw.c_cflag |= CS8;
    raw.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON | IEXTEN | ISIG);
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    ::tcsetattr(m_input, TCSAFLUSH, &raw);
    g_saved.raw = true;
    m_raw = true;
    write(kEnter);
}

void Terminal::restore() {
    if (!m_raw) return;
    m_raw = false;
    restoreFromSignal();
}

void Terminal::suspend() {
    restore();
    std::signal(SIGTSTP, SIG_DFL);
    std::raise(SIGTSTP);
    // Execution resumes here after SIGCONT.
    installHandlers();
    enterRawMode();
}

Point Terminal::size() const {
    winsize size{};
    if (::ioctl(m_output, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) return {80, 24};
    return {size.ws_col, size.ws_row};
}

int Terminal::signalDescriptor() const {
    return g_signalPipe[0];
}

uint32_t Terminal::takeSignals() {
    char drain[64];
    while (::read(g_signalPipe[0], drain, sizeof drain) > 0) {
    }
    return g_pendingSignals.exchange(0);
}

std::string Terminal::readAvailable() {
    std::string bytes;
    char buffer[4096];
    int flags = ::fcntl(m_input, F_GETFL);
    ::fcntl(m_input, F_SETFL, flags | O_NONBLOCK);
    for (;;) {
        ssize_t count = ::read(m_input, buffer, sizeof buffer);
        if (count > 0) {
            bytes.append(buffer, static_cast<size_t>(count));
            continue;
        }
        if (count < 0 && errno == EINTR) continue;
        if (count == 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) m_closed = true;
        break;
    }
    ::fcntl(m_input, F_SETFL, flags);
    return bytes;
}

bool Terminal::write(std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t count = ::write(m_output, bytes.data(), bytes.size());
        if (count < 0) {
            if (errno == EINTR || errno == EAGAIN) continue;
            return false;
        }
        bytes.remove_prefix(static_cast<size_t>(count));
    }
    return true;
}

}  // namespace vx::tui
