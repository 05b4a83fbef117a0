#include "app/editor/session.hpp"

#include <charconv>

#include "document/refresh_monitor.hpp"
#include "document/single_file_document.hpp"
#include "app/tui/utf8.hpp"

namespace vx::editor {
namespace {

bool parsePair(std::string_view text, char separator, int& a, int& b) {
    size_t split = text.find(separator);
    if (split == std::string_view::npos) return false;
    auto first = std::from_chars(text.data(), text.data() + split, a);
    auto second = std::from_chars(text.data() + split + 1, text.data() + text.size(), b);
    return first.ec == std::errc() && first.ptr == text.data() + split && second.ec == std::errc() &&
           second.ptr == text.data() + text.size();
}

std::optional<tui::InputEvent> mouseEvent(std::string_view token) {
    size_t space = token.find(' ');
    if (space == std::string_view::npos) return std::nullopt;
    std::string_view name = token.substr(0, space);
    tui::MouseEvent mouse;
    if (name.starts_with("shift+")) {
        mouse.modifiers = tui::kShift;
        name.remove_prefix(6);
    }
    if (name == "click") mouse.action = tui::MouseAction::Press;
    else if (name == "drag") mouse.action = tui::MouseAction::Drag;
    else if (name == "release") mouse.action = tui::MouseAction::Release;
    else if (name == "wheelup") mouse.action = tui::MouseAction::WheelUp;
    else if (name == "wheeldown") mouse.action = tui::MouseAction::WheelDown;
    else return std::nullopt;
    if (!parsePair(token.substr(space + 1), ',', mouse.x, mouse.y)) return std::nullopt;
    return mouse;
}

}  // namespace

std::vector<tui::InputEvent> parseKeyScript(std::string_view script) {
    std::vector<tui::InputEvent> events;
    size_t i = 0;
    while (i < script.size()) {
        char c = script[i];
        if (c == '\n' || c == '\r') {
            ++i;
            continue;
        }
        if (c != '<') {
            events.push_back(tui::KeyEvent{tui::Key::Character, tui::decodeUtf8(script, i), 0});
            continue;
        }
        size_t close = script.find('>', i);
        if (close == std::string_view::npos) throw KeyScriptError("unclosed '<' in key script");
        std::string_view token = script.substr(i + 1, close - i - 1);
        i = close + 1;
        if (token == "paste") {
            size_t end = script.find("</paste>", i);
            if (end == std::string_view::npos) throw KeyScriptError("<paste> without </paste>");
            events.push_back(tui::PasteEvent{std::string(script.substr(i, end - i))});
            i = end + 8;
        } else if (token.starts_with("resize ")) {
            int width = 0, height = 0;
            if (!parsePair(token.substr(7), 'x', width, height)) throw KeyScriptError("bad <" + std::string(token) + ">");
            events.emplace_back(std::in_place_type<tui::ResizeEvent>, width, height);
        } else if (auto mouse = mouseEvent(token)) {
            events.push_back(*mouse);
        } else if (auto key = tui::parseKeyName(token)) {
            events.push_back(*key);
        } else {
            throw KeyScriptError("not a key: <" + std::string(token) + ">");
        }
    }
    return events;
}

Session::Session(int width, int height) {
    m_editor.setSize(width, height);
    m_editor.setInputPump([this] {
        if (m_pending.empty()) return false;
        auto event = std::move(m_pending.front());
        m_pending.pop_front();
        m_editor.handleEvent(event);
        return true;
    });
    VXRefreshMonitor::sharedMonitor().setAlertPresenter(&m_editor);
}

Session::~Session() {
    VXRefreshMonitor::sharedMonitor().setAlertPresenter(nullptr);
}

Tab& Session::openText(std::u16string_view text, Selection selection) {
    auto document = std::make_unique<VXSingleFileDocument>();
    document->contents().replaceCharactersInRange({0, 0}, text);
    document->recalculateLineEnding();
    Tab& tab = m_editor.openTab(std::make_unique<Tab>(std::move(document)));
    tab.setSelection(selection);
    m_editor.revealCaret();
    return tab;
}

void Session::send(std::string_view keyScript) {
    for (auto& event : parseKeyScript(keyScript)) m_pending.push_back(std::move(event));
    while (!m_pending.empty()) {
        auto event = std::move(m_pending.front());
        m_pending.pop_front();
        m_editor.handleEvent(event);
    }
}

const tui::Screen& Session::screen() {
    while (m_editor.hasBackgroundWork()) m_editor.doBackgroundWork(std::chrono::milliseconds(100));
    m_editor.draw(m_screen);
    return m_screen;
}

}  // namespace vx::editor
