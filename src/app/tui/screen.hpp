// The screen model: a grid of cells, each holding one character (with any combining marks) and
// its colours and attributes. The editor draws a whole frame into a Screen; the renderer sends
// the terminal only the cells that differ from the frame before, and the headless harness
// reads the grid back.
//
// A wide character takes two cells: the first holds it (width 2), the second is its
// continuation (width 0, no text). Overwriting either half blanks the other half, so the grid
// never holds half a character.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vx::tui {

struct Color {
    enum class Kind : uint8_t { Default, Rgb, Indexed };
    Kind kind = Kind::Default;
    uint8_t r = 0, g = 0, b = 0;  // an Indexed colour keeps its palette number in r

    static constexpr Color rgb(uint8_t r, uint8_t g, uint8_t b) { return {Kind::Rgb, r, g, b}; }
    static constexpr Color indexed(uint8_t index) { return {Kind::Indexed, index, 0, 0}; }
    bool isDefault() const { return kind == Kind::Default; }
    friend bool operator==(const Color&, const Color&) = default;
};

enum Attribute : uint8_t { kBold = 1, kItalic = 2, kUnderline = 4, kStrikethrough = 8, kReverse = 16, kDim = 32 };

struct Style {
    Color foreground, background;
    uint8_t attributes = 0;
    friend bool operator==(const Style&, const Style&) = default;
};

struct Cell {
    std::string text = " ";  // UTF-8: a base character and its combining marks; "" on a continuation
    Style style;
    uint8_t width = 1;       // 1 or 2; 0 on the right half of a wide character
    friend bool operator==(const Cell&, const Cell&) = default;
};

struct Point {
    int x = 0, y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

class Screen {
public:
    Screen(int width = 0, int height = 0) { resize(width, height); }

    // Resizing clears the grid.
    void resize(int width, int height);
    int width() const { return m_width; }
    int height() const { return m_height; }

    const Cell& at(int x, int y) const { return m_cells[static_cast<size_t>(y * m_width + x)]; }
    void clear(const Style& style = {});
    void fill(int x, int y, int width, const Style& style);

    // Puts one character at (x, y) and answers the column after it. A character of width 0
    // joins the cell before x; a wide character that would cross `limit` (the right edge by
    // default) is drawn as a space instead, so nothing spills past the limit.
    int put(int x, int y, char32_t codepoint, const Style& style, int limit = -1);
    // Puts UTF-8 text from (x, y); answers the column after the last character drawn.
    int print(int x, int y, std::string_view text, const Style& style, int limit = -1);
    // Changes the style of cells already drawn, keeping their text.
    void restyle(int x, int y, int width, const Style& style);
    void setAttributes(int x, int y, int width, uint8_t attributes);

    std::optional<Point> cursor() const { return m_cursor; }
    void setCursor(std::optional<Point> cursor) { m_cursor = cursor; }

    // The characters of a row as text (continuation cells skipped), for tests and tools.
    std::string rowText(int y) const;

    friend bool operator==(const Screen&, const Screen&) = default;

private:
    Cell& cell(int x, int y) { return m_cells[static_cast<size_t>(y * m_width + x)]; }
    // Blanks the other half of any wide character that (x, y) is part of.
    void splitWide(int x, int y);

    int m_width = 0, m_height = 0;
    std::vector<Cell> m_cells;
    std::optional<Point> m_cursor;
};

}  // namespace vx::tui
