// The controlling terminal in raw mode, and putting it back the way it was on every way out.
//
// While a Terminal is active the terminal shows the alternate screen, reports bracketed pastes,
// mouse presses, drags and wheel turns (SGR encoding), and keys with all their modifiers where it
// can (the "CSI u" keyboard protocol and xterm's modifyOtherKeys; terminals that know neither
// ignore the requests). restore() undoes all of that and the termios settings; it is called by
// the destructor, at exit, and from the handlers of signals that end the process (a crash
// included), so a shell is never left in raw mode.
//
// Signals the editor must act on (resize, hang-up, termination, interrupt, stop and continue)
// are not handled inside the signal handler: they are recorded and wake the event loop through
// a pipe (signalDescriptor()), and takeSignals() tells which arrived.
#pragma once

#include <termios.h>

#include <cstdint>
#include <string_view>

#include "app/tui/screen.hpp"
#include "platform/unique_handle.hpp"

namespace vx::tui {

enum SignalFlag : uint32_t {
    kSignalResize = 1,
    kSignalHangUp = 2,
    kSignalTerminate = 4,
    kSignalInterrupt = 8,
    kSignalStop = 16,
    kSignalContinue = 32,
};

class Terminal {
public:
    // Opens the terminal on standard input and output, or /dev/tty when they are redirected.
    // Throws std::runtime_error when there is no terminal.
    Terminal();
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    void enterRawMode();
    void restore();
    // Suspends the process the way Ctrl-Z in a shell would, and takes the terminal back after.
    void suspend();

    Point size() const;
    int inputDescriptor() const { return m_input; }
    int signalDescriptor() const;
    // The signals seen since the last call, as SignalFlag bits.
    uint32_t takeSignals();

    // Reads what is available without blocking; empty when nothing is.
    std::string readAvailable();
    // True once a read found the terminal gone (end of file or an error other than "try again").
    bool isClosed() const { return m_closed; }
    // Writes everything, retrying on interruption; false when the terminal is gone.
    bool write(std::string_view bytes);

private:
    int m_input = -1;
    int m_output = -1;
    UniqueFd m_ownedTty;
    termios m_saved{};
    bool m_raw = false;
    bool m_closed = false;
};

}  // namespace vx::tui
