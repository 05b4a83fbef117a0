#include "app/tui/renderer.hpp"

#include <cstdlib>
#include <string_view>

namespace vx::tui {
namespace {

void appendNumber(std::string& out, int value) {
    out += std::to_string(value);
}

void appendColor(std::string& out, const Color& color, bool foreground, ColorMode mode) {
    switch (color.kind) {
        case Color::Kind::Default:
            return;
        case Color::Kind::Indexed:
            out += foreground ? ";38;5;" : ";48;5;";
            appendNumber(out, color.r);
            return;
        case Color::Kind::Rgb:
            if (mode == ColorMode::Palette256) {
                out += foreground ? ";38;5;" : ";48;5;";
                appendNumber(out, paletteIndex(color.r, color.g, color.b));
            } else {
                out += foreground ? ";38;2;" : ";48;2;";
                appendNumber(out, color.r);
                out += ';';
                appendNumber(out, color.g);
                out += ';';
                appendNumber(out, color.b);
            }
            return;
    }
}

void moveTo(std::string& out, int x, int y) {
    out += "\x1b[";
    appendNumber(out, y + 1);
    out += ';';
    appendNumber(out, x + 1);
    out += 'H';
}

}  // namespace

ColorMode colorModeFromEnvironment() {
    const char* value = std::getenv("COLORTERM");
    std::string_view text = value ? value : "";
    return text == "truecolor" || text == "24bit" ? ColorMode::TrueColor : ColorMode::Palette256;
}

uint8_t paletteIndex(uint8_t r, uint8_t g, uint8_t b) {
    static constexpr int kLevels[] = {0, 95, 135, 175, 215, 255};
    auto nearestLevel = [](int value) {
        int best = 0;
        for (int i = 1; i < 6; ++i)
            if (std::abs(kLevels[i] - value) < std::abs(kLevels[best] - value)) best = i;
        return best;
    };
    auto distance = [&](int r2, int g2, int b2) {
        return (r - r2) * (r - r2) + (g - g2) * (g - g2) + (b - b2) * (b - b2);
    };
    int ri = nearestLevel(r), gi = nearestLevel(g), bi = nearestLevel(b);
    int cube = 16 + 36 * ri + 6 * gi + bi;
    int cubeDistance = distance(kLevels[ri], kLevels[gi], kLevels[bi]);
    // Greys 232..255 run from 8 to 238 in steps of 10.
    int average = (r + g + b) / 3;
    int grey = average < 8 ? 0 : std::min((average - 8 + 5) / 10, 23);
    int greyLevel = 8 + 10 * grey;
    int greyDistance = distance(greyLevel, greyLevel, greyLevel);
    return static_cast<uint8_t>(greyDistance < cubeDistance ? 232 + grey : cube);
}

std::string sgrSequence(const Style& style, ColorMode mode) {
    std::string out = "\x1b[0";
    if (style.attributes & kBold) out += ";1";
    if (style.attributes & kDim) out += ";2";
    if (style.attributes & kItalic) out += ";3";
    if (style.attributes & kUnderline) out += ";4";
    if (style.attributes & kReverse) out += ";7";
    if (style.attributes & kStrikethrough) out += ";9";
    appendColor(out, style.foreground, true, mode);
    appendColor(out, style.background, false, mode);
    out += 'm';
    return out;
}

std::string Renderer::render(const Screen& next) {
    bool full = !m_valid || m_previous.width() != next.width() || m_previous.height() != next.height();
    std::string out = "\x1b[?2026h\x1b[?25l";
    if (full) out += "\x1b[0m\x1b[2J";

    std::optional<Style> current;          // what the terminal's SGR state is, when known
    Point position{-1, -1};                // where the terminal's cursor is; x < 0 when unknown
    for (int y = 0; y < next.height(); ++y) {
        for (int x = 0; x < next.width(); ++x) {
            const Cell& cell = next.at(x, y);
            if (cell.width == 0) continue;  // drawn with the character on its left
            if (!full && cell == m_previous.at(x, y)) {
                // A wide character whose right half was overwritten on the terminal is not equal.
                if (cell.width != 2 || x + 1 >= next.width() || m_previous.at(x + 1, y) == next.at(x + 1, y)) continue;
            }
            if (position != Point{x, y}) moveTo(out, x, y);
            if (!current || *current != cell.style) {
                out += sgrSequence(cell.style, m_mode);
                current = cell.style;
            }
            out += cell.text.empty() ? std::string_view(" ") : std::string_view(cell.text);
            int after = x + cell.width;
            // After the last column the cursor waits to wrap; its position is not to be trusted.
            position = after >= next.width() ? Point{-1, -1} : Point{after, y};
        }
    }
    out += "\x1b[0m";
    if (auto cursor = next.cursor()) {
        moveTo(out, cursor->x, cursor->y);
        out += "\x1b[?25h";
    }
    out += "\x1b[?2026l";
    m_previous = next;
    m_valid = true;
    return out;
}

}  // namespace vx::tui
