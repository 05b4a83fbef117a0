#include "vt_emulator.hpp"

#include <algorithm>
#include <charconv>
#include <vector>

#include "app/tui/utf8.hpp"
#include "app/tui/width.hpp"

namespace vx::test {
namespace {

std::vector<int> numbers(std::string_view text) {
    std::vector<int> values;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = std::min(text.find(';', start), text.size());
        int value = 0;
        std::from_chars(text.data() + start, text.data() + end, value);
        values.push_back(value);
        start = end + 1;
    }
    return values;
}

}  // namespace

void VtEmulator::feed(std::string_view bytes) {
    size_t i = 0;
    while (i < bytes.size()) {
        if (bytes[i] == '\x1b' && i + 1 < bytes.size() && bytes[i + 1] == '[') {
            size_t end = i + 2;
            while (end < bytes.size() && !(bytes[end] >= 0x40 && bytes[end] <= 0x7e)) ++end;
            csi(bytes.substr(i + 2, end - i - 2), bytes[end]);
            i = end + 1;
            continue;
        }
        char32_t c = tui::decodeUtf8(bytes, i);
        int width = tui::codepointWidth(c);
        if (width > 0 && m_pendingWrap) {
            m_x = 0;
            m_y = std::min(m_y + 1, m_screen.height() - 1);
            m_pendingWrap = false;
        }
        if (width == 0) {
            // A combining mark joins the last character written, which is under the cursor
            // while a wrap is pending.
            m_screen.put(m_pendingWrap ? m_x + 1 : m_x, m_y, c, m_style);
            continue;
        }
        int after = m_screen.put(m_x, m_y, c, m_style);
        if (after >= m_screen.width()) {
            m_x = m_screen.width() - 1;
            m_pendingWrap = true;
        } else {
            m_x = after;
        }
    }
}

void VtEmulator::csi(std::string_view parameters, char final) {
    if (!parameters.empty() && (parameters[0] == '?' || parameters[0] == '>' || parameters[0] == '<')) {
        if (parameters == "?25l") m_cursorVisible = false;
        if (parameters == "?25h") m_cursorVisible = true;
        return;
    }
    auto values = numbers(parameters);
    switch (final) {
        case 'H':
            m_y = std::clamp(std::max(values[0], 1) - 1, 0, m_screen.height() - 1);
            m_x = std::clamp(std::max(values.size() > 1 ? values[1] : 1, 1) - 1, 0, m_screen.width() - 1);
            m_pendingWrap = false;
            break;
        case 'J':
            if (values[0] == 2) m_screen.clear(m_style);
            break;
        case 'm':
            sgr(parameters);
            break;
        default:
            break;
    }
}

void VtEmulator::sgr(std::string_view parameters) {
    auto values = numbers(parameters);
    for (size_t i = 0; i < values.size(); ++i) {
        int v = values[i];
        auto color = [&](tui::Color& target) {
            if (i + 1 < values.size() && values[i + 1] == 2 && i + 4 < values.size()) {
                target = tui::Color::rgb(static_cast<uint8_t>(values[i + 2]), static_cast<uint8_t>(values[i + 3]),
                                         static_cast<uint8_t>(values[i + 4]));
                i += 4;
            } else if (i + 2 < values.size() && values[i + 1] == 5) {
                target = tui::Color::indexed(static_cast<uint8_t>(values[i + 2]));
                i += 2;
            }
        };
        switch (v) {
            case 0: m_style = {}; break;
            case 1: m_style.attributes |= tui::kBold; break;
            case 2: m_style.attributes |= tui::kDim; break;
            case 3: m_style.attributes |= tui::kItalic; break;
            case 4: m_style.attributes |= tui::kUnderline; break;
            case 7: m_style.attributes |= tui::kReverse; break;
            case 9: m_style.attributes |= tui::kStrikethrough; break;
            case 38: color(m_style.foreground); break;
            case 48: color(m_style.background); break;
            default: break;
        }
    }
}

}  // namespace vx::test
