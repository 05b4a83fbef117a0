#include "app/editor/terminal_front_end.hpp"

#include <poll.h>

#include <chrono>
#include <map>

#include "app/editor/editor.hpp"
#include "app/editor/files.hpp"
#include "app/editor/theme_colors.hpp"
#include "app/tui/input_decoder.hpp"
#include "app/tui/renderer.hpp"
#include "app/tui/terminal.hpp"
#include "document/refresh_monitor.hpp"
#include "document/single_file_document.hpp"
#include "platform/file_cache.hpp"
#include "platform/file_stamp.hpp"
#include "platform/paths.hpp"
#include "platform/run_loop.hpp"

namespace vx::editor {
namespace {

// How long an ESC waits for the rest of a sequence before it counts as the Escape key. Terminals
// send a sequence in one write, so this only needs to cover a slow link.
constexpr std::chrono::milliseconds kEscapeTimeout{30};
// How often open files are compared with the disk, to notice changes other programs make.
constexpr std::chrono::milliseconds kDiskCheckInterval{2000};

class FrontEnd {
public:
    FrontEnd(Editor& editor, tui::Terminal& terminal)
        : m_editor(editor), m_terminal(terminal), m_renderer(tui::colorModeFromEnvironment()) {}

    int run() {
        RunLoop& loop = RunLoop::main();
        // While a question waits for its answer (a file changed on disk), input goes on being read
        // and drawn from inside the question.
        m_editor.setInputPump([this, &loop] {
            paint();
            loop.runOnce(std::chrono::milliseconds(1000));
            return !m_done;
        });
        VXRefreshMonitor::sharedMonitor().setAlertPresenter(&m_editor);
        auto diskCheck = loop.scheduleRepeatingTimer(kDiskCheckInterval, [this] { checkDisk(); });
        auto input = loop.watchDescriptor(m_terminal.inputDescriptor(), POLLIN, [this](short) { readInput(); });
        auto signals = loop.watchDescriptor(m_terminal.signalDescriptor(), POLLIN, [this](short) { handleSignals(); });
        paint();
        while (!m_done) {
            loop.runOnce(std::chrono::milliseconds(1000));
            if (!m_done) paint();
        }
        loop.unwatchDescriptor(input);
        loop.unwatchDescriptor(signals);
        loop.cancelTimer(diskCheck);
        VXRefreshMonitor::sharedMonitor().setAlertPresenter(nullptr);
        m_editor.setInputPump({});
        return m_status;
    }

private:
    void readInput() {
        std::string bytes = m_terminal.readAvailable();
        if (m_terminal.isClosed()) return hangUp();
        m_decoder.feed(bytes);
        dispatch();
        if (m_decoder.hasPendingSequence()) {
            if (m_escapeTimer) RunLoop::main().cancelTimer(m_escapeTimer);
            m_escapeTimer = RunLoop::main().performAfterDelay(kEscapeTimeout, [this] {
                m_escapeTimer = 0;
                m_decoder.flushPending();
                dispatch();
                paint();
            });
        }
    }

    // Asks the monitor to look at the files only when one of them changed on disk (any change of
    // modification time, size, inode or device):
    // a file whose change the user chose to ignore is not asked about again until it changes again,
    // and no question is stacked on one being shown.
    void checkDisk() {
        if (m_editor.hasModal()) return;
        bool changed = false;
        for (size_t i = 0; i < m_editor.tabCount(); ++i) {
            std::string path = m_editor.tab(i).path();
            if (path.empty()) continue;
            std::optional<FileStamp> stamp = fileStampForPath(path);
            // A file seen for the first time is checked too: it may have changed since it was read.
            auto [seen, added] = m_diskStamps.try_emplace(path, stamp);
            if (added || seen->second != stamp) changed = true;
            seen->second = stamp;
        }
        if (!changed) return;
        // Typing in progress is an unsaved change like any other: the check must see it.
        for (size_t i = 0; i < m_editor.tabCount(); ++i) m_editor.tab(i).endTyping();
        VXRefreshMonitor::sharedMonitor().promptInBackground();
    }

    void dispatch() {
        for (const auto& event : m_decoder.takeEvents()) {
            m_editor.handleEvent(event);
            if (m_editor.quitRequested()) {
                m_done = true;
                return;
            }
        }
    }

    void handleSignals() {
        uint32_t signals = m_terminal.takeSignals();
        if (signals & (kHangUpOrTerminate)) return hangUp();
        if (signals & tui::kSignalStop) {
            m_terminal.suspend();
            m_renderer.invalidate();
        }
        if (signals & (tui::kSignalResize | tui::kSignalContinue)) {
            tui::Point size = m_terminal.size();
            m_editor.setSize(size.x, size.y);
            m_renderer.invalidate();
        }
    }

    // The terminal is gone or the process is told to end: keep every unsaved text, then leave.
    void hangUp() {
        // A hang-up often arrives twice (the signal, then the end of input): the texts are kept once.
        if (m_hungUp) return;
        m_hungUp = true;
        writeRecoveryFiles(m_editor);
        m_terminal.restore();
        m_status = 1;
        m_done = true;
    }

    void paint() {
        if (m_done) return;
        // Colouring that a frame could not reach goes on in small steps, a frame after each.
        if (m_editor.hasBackgroundWork() && !m_backgroundStep) {
            m_backgroundStep = RunLoop::main().performAfterDelay(std::chrono::milliseconds(0), [this] {
                m_backgroundStep = 0;
                m_editor.doBackgroundWork(std::chrono::milliseconds(8));
                paint();
            });
        }
        m_editor.draw(m_screen);
        std::string out = m_renderer.render(m_screen);
        out += m_editor.takeTerminalRequests();
        if (!m_terminal.write(out)) hangUp();
    }

    static constexpr uint32_t kHangUpOrTerminate = tui::kSignalHangUp | tui::kSignalTerminate | tui::kSignalInterrupt;

    Editor& m_editor;
    tui::Terminal& m_terminal;
    tui::Renderer m_renderer;
    tui::InputDecoder m_decoder;
    tui::Screen m_screen;
    RunLoop::TimerId m_escapeTimer = 0;
    RunLoop::TimerId m_backgroundStep = 0;
    std::map<std::string, std::optional<FileStamp>> m_diskStamps;
    bool m_done = false;
    bool m_hungUp = false;
    int m_status = 0;
};

}  // namespace

std::string userKeyBindingsPath() {
    return userConfigDirectory() + "/keys.selfml";
}

void loadUserKeyBindings(Editor& editor) {
    auto text = readWholeFile(userKeyBindingsPath());
    if (!text) return;
    std::vector<std::string> problems;
    editor.keyBindings().apply(*text, problems, [&editor](std::string_view command) {
        return editor.hasCommand(std::string(command));
    });
    if (problems.empty()) return;
    // Every problem, on the message line, after the name of the file to fix.
    std::string message = abbreviatingWithTildeInPath(userKeyBindingsPath()) + ": ";
    for (size_t i = 0; i < problems.size(); ++i) message += (i ? "; " : "") + problems[i];
    editor.showError(message);
}

int runTerminalEditor(const std::vector<std::string>& paths) {
    Editor editor;
    editor.applyTheme(loadUserTheme());
    tui::Terminal terminal;
    terminal.enterRawMode();
    tui::Point size = terminal.size();
    editor.setSize(size.x, size.y);
    // A question about kept texts comes first; what the command line names opens once it is
    // answered, so that a folder's file list is not hidden behind it.
    offerRecoveredFiles(editor, [paths](Editor& e) {
        openStartupPaths(e, paths);
        loadUserKeyBindings(e);  // last, so that its problems stay on the message line
    });
    FrontEnd frontEnd(editor, terminal);
    int status = frontEnd.run();
    terminal.restore();
    return status;
}

}  // namespace vx::editor
