#include "app/tui/screen.hpp"

#include <algorithm>

#include "app/tui/utf8.hpp"
#include "app/tui/width.hpp"

namespace vx::tui {

void Screen::resize(int width, int height) {
    m_width = std::max(width, 0);
    m_height = std::max(height, 0);
    m_cells.assign(static_cast<size_t>(m_width) * static_cast<size_t>(m_height), Cell{});
    m_cursor.reset();
}

void Screen::clear(const Style& style) {
    Cell blank;
    blank.style = style;
    std::fill(m_cells.begin(), m_cells.end(), blank);
}

void Screen::fill(int x, int y, int width, const Style& style) {
    if (y < 0 || y >= m_height) return;
    int end = std::min(x + width, m_width);
    for (int i = std::max(x, 0); i < end; ++i) put(i, y, U' ', style);
}

void Screen::splitWide(int x, int y) {
    Cell& here = cell(x, y);
    if (here.width == 0 && x > 0) {
        Cell& lead = cell(x - 1, y);
        lead.text = " ";
        lead.width = 1;
    } else if (here.width == 2 && x + 1 < m_width) {
        Cell& rest = cell(x + 1, y);
        rest.text = " ";
        rest.width = 1;
    }
}

int Screen::put(int x, int y, char32_t codepoint, const Style& style, int limit) {
    if (limit < 0 || limit > m_width) limit = m_width;
    if (y < 0 || y >= m_height) return x;
    int width = codepointWidth(codepoint);
    if (width == 0) {
        // A combining mark belongs to the character before it; with none, it is not drawn.
        int base = x - 1;
        if (base >= 0 && base < m_width && cell(base, y).width == 0) --base;
        if (base >= 0 && base < m_width && codepoint >= 0x20) appendUtf8(cell(base, y).text, codepoint);
        return x;
    }
    if (x < 0 || x >= limit) return x + width;
    if (width == 2 && x + 1 >= limit) {
        codepoint = U' ';
        width = 1;
    }
    splitWide(x, y);
    Cell& target = cell(x, y);
    target.text = utf8(codepoint);
    target.style = style;
    target.width = static_cast<uint8_t>(width);
    if (width == 2) {
        splitWide(x + 1, y);
        Cell& rest = cell(x + 1, y);
        rest.text.clear();
        rest.style = style;
        rest.width = 0;
    }
    return x + width;
}

int Screen::print(int x, int y, std::string_view text, const Style& style, int limit) {
    for (size_t i = 0; i < text.size();) x = put(x, y, decodeUtf8(text, i), style, limit);
    return x;
}

void Screen::restyle(int x, int y, int width, const Style& style) {
    if (y < 0 || y >= m_height) return;
    for (int i = std::max(x, 0); i < std::min(x + width, m_width); ++i) cell(i, y).style = style;
}

void Screen::setAttributes(int x, int y, int width, uint8_t attributes) {
    if (y < 0 || y >= m_height) return;
    for (int i = std::max(x, 0); i < std::min(x + width, m_width); ++i) cell(i, y).style.attributes = attributes;
}

std::string Screen::rowText(int y) const {
    std::string text;
    for (int x = 0; x < m_width; ++x) text += at(x, y).text;
    return text;
}

}  // namespace vx::tui
