#include "selectors/color.hpp"

#include <oniguruma.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "platform/unique_handle.hpp"

namespace vx {
namespace {

using OnigRegexHandle = UniqueHandle<OnigRegex, onig_free>;
inline void freeRegion(OnigRegion* region) { onig_region_free(region, 1); }
using OnigRegionHandle = UniqueHandle<OnigRegion*, freeRegion>;

// A UTF-8 pattern compiled once for the process; searched from any thread (Oniguruma regexes
// are read-only once compiled; each search has its own region).
class Pattern {
public:
    explicit Pattern(const char* pattern) {
        const auto* begin = reinterpret_cast<const OnigUChar*>(pattern);
        OnigRegex regex = nullptr;
        OnigErrorInfo info;
        if (onig_new(&regex, begin, begin + std::char_traits<char>::length(pattern), ONIG_OPTION_NONE,
                     ONIG_ENCODING_UTF8, ONIG_SYNTAX_RUBY, &info) == ONIG_NORMAL)
            m_regex.reset(regex);
    }

    // The captures of the first match anywhere in text (group 0 first), empty when none.
    std::vector<std::optional<std::string>> search(std::string_view text) const {
        std::vector<std::optional<std::string>> groups;
        if (!m_regex) return groups;
        OnigRegionHandle region(onig_region_new());
        const auto* start = reinterpret_cast<const OnigUChar*>(text.data());
        const auto* end = start + text.size();
        if (onig_search(m_regex.get(), start, end, start, end, region.get(), ONIG_OPTION_NONE) < 0) return groups;
        for (int i = 0; i < region.get()->num_regs; ++i) {
            if (region.get()->beg[i] < 0)
                groups.emplace_back(std::nullopt);
            else
                groups.emplace_back(std::string(text.substr(static_cast<size_t>(region.get()->beg[i]),
                                                            static_cast<size_t>(region.get()->end[i] - region.get()->beg[i]))));
        }
        return groups;
    }

    int groupNumber(const char* name) const {
        const auto* begin = reinterpret_cast<const OnigUChar*>(name);
        return onig_name_to_backref_number(m_regex.get(), begin, begin + std::char_traits<char>::length(name), nullptr);
    }

private:
    OnigRegexHandle m_regex;
};

const Pattern& functionalPattern() {
    static const Pattern pattern(
        "(?<mode>rgb|rgba|hsl|hsla)\\s*\\((?<w>-?[0-9]+(\\.[0-9]+)?%?),\\s*(?<x>[0-9]+(\\.[0-9]+)?%?),\\s*"
        "(?<y>[0-9]+(\\.[0-9]+)?%?)(,\\s*(?<z>[0-9]+(\\.[0-9]+)?%?))?\\)");
    return pattern;
}

// Two more digits after three or six: the two-digit group is exact (it reads "{2}?" in the
// original notation, which means exactly two there).
const Pattern& hexPattern() {
    static const Pattern pattern("#?([a-fA-F0-9]{3}|[a-fA-F0-9]{6})([a-fA-F0-9]{2})");
    return pattern;
}

double parseNumber(std::string_view text) {
    std::string copy(text);
    return std::strtod(copy.c_str(), nullptr);
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

double normalisedHue(double degrees) {
    double hue = std::fmod(degrees, 360.0);
    if (hue < 0) hue += 360.0;
    return hue / 360.0;
}

}  // namespace

VXColor VXColor::colorWithCalibratedHue(double hue, double saturation, double lightness, double alpha) {
    const double chroma = (1 - std::fabs(2 * lightness - 1)) * saturation;
    const double h = 6 * hue;
    const double x = chroma * (1 - std::fabs(std::fmod(h, 2.0) - 1));
    double r, g, b;
    if (h < 1)
        r = chroma, g = x, b = 0;
    else if (h < 2)
        r = x, g = chroma, b = 0;
    else if (h < 3)
        r = 0, g = chroma, b = x;
    else if (h < 4)
        r = 0, g = x, b = chroma;
    else if (h < 5)
        r = x, g = 0, b = chroma;
    else
        r = chroma, g = 0, b = x;
    const double m = lightness - chroma / 2;
    return {r + m, g + m, b + m, alpha};
}

std::string VXColor::hexString() const {
    auto channel = [](double value) {
        return static_cast<unsigned>(std::lround(std::clamp(value, 0.0, 1.0) * 255.0));
    };
    char buffer[10];
    std::snprintf(buffer, sizeof buffer, "#%02X%02X%02X%02X", channel(red), channel(green), channel(blue), channel(alpha));
    return buffer;
}

const std::vector<std::pair<std::string_view, std::string_view>>& colorsAndNames() {
    static const std::vector<std::pair<std::string_view, std::string_view>> table = {
        {"aliceblue", "#f0f8ff"}, {"antiquewhite", "#faebd7"}, {"aqua", "#00ffff"},
        {"aquamarine", "#7fffd4"}, {"azure", "#f0ffff"}, {"beige", "#f5f5dc"}, {"bisque", "#ffe4c4"},
        {"black", "#000000"}, {"blanchedalmond", "#ffebcd"}, {"blue", "#0000ff"}, {"blueviolet", "#8a2be2"},
        {"brown", "#a52a2a"}, {"burlywood", "#deb887"}, {"cadetblue", "#5f9ea0"}, {"chartreuse", "#7fff00"},
        {"chocolate", "#d2691e"}, {"coral", "#ff7f50"}, {"cornflowerblue", "#6495ed"},
        {"cornsilk", "#fff8dc"}, {"crimson", "#dc143c"}, {"cyan", "#00ffff"}, {"darkblue", "#00008b"},
        {"darkcyan", "#008b8b"}, {"darkgoldenrod", "#b8860b"}, {"darkgray", "#a9a9a9"},
        {"darkgreen", "#006400"}, {"darkgrey", "#a9a9a9"}, {"darkkhaki", "#bdb76b"},
        {"darkmagenta", "#8b008b"}, {"darkolivegreen", "#556b2f"}, {"darkorange", "#ff8c00"},
        {"darkorchid", "#9932cc"}, {"darkred", "#8b0000"}, {"darksalmon", "#e9967a"},
        {"darkseagreen", "#8fbc8f"}, {"darkslateblue", "#483d8b"}, {"darkslategray", "#2f4f4f"},
        {"darkslategrey", "#2f4f4f"}, {"darkturquoise", "#00ced1"}, {"darkviolet", "#9400d3"},
        {"deeppink", "#ff1493"}, {"deepskyblue", "#00bfff"}, {"dimgray", "#696969"}, {"dimgrey", "#696969"},
        {"dodgerblue", "#1e90ff"}, {"firebrick", "#b22222"}, {"floralwhite", "#fffaf0"},
        {"forestgreen", "#228b22"}, {"fuchsia", "#ff00ff"}, {"gainsboro", "#dcdcdc"},
        {"ghostwhite", "#f8f8ff"}, {"gold", "#ffd700"}, {"goldenrod", "#daa520"}, {"gray", "#808080"},
        {"green", "#008000"}, {"greenyellow", "#adff2f"}, {"grey", "#808080"}, {"honeydew", "#f0fff0"},
        {"hotpink", "#ff69b4"}, {"indianred", "#cd5c5c"}, {"indigo", "#4b0082"}, {"ivory", "#fffff0"},
        {"khaki", "#f0e68c"}, {"lavender", "#e6e6fa"}, {"lavenderblush", "#fff0f5"},
        {"lawngreen", "#7cfc00"}, {"lemonchiffon", "#fffacd"}, {"lightblue", "#add8e6"},
        {"lightcoral", "#f08080"}, {"lightcyan", "#e0ffff"}, {"lightgoldenrodyellow", "#fafad2"},
        {"lightgray", "#d3d3d3"}, {"lightgreen", "#90ee90"}, {"lightgrey", "#d3d3d3"},
        {"lightpink", "#ffb6c1"}, {"lightsalmon", "#ffa07a"}, {"lightseagreen", "#20b2aa"},
        {"lightskyblue", "#87cefa"}, {"lightslategray", "#778899"}, {"lightslategrey", "#778899"},
        {"lightsteelblue", "#b0c4de"}, {"lightyellow", "#ffffe0"}, {"lime", "#00ff00"},
        {"limegreen", "#32cd32"}, {"linen", "#faf0e6"}, {"magenta", "#ff00ff"}, {"maroon", "#800000"},
        {"mediumaquamarine", "#66cdaa"}, {"mediumblue", "#0000cd"}, {"mediumorchid", "#ba55d3"},
        {"mediumpurple", "#9370db"}, {"mediumseagreen", "#3cb371"}, {"mediumslateblue", "#7b68ee"},
        {"mediumspringgreen", "#00fa9a"}, {"mediumturquoise", "#48d1cc"}, {"mediumvioletred", "#c71585"},
        {"midnightblue", "#191970"}, {"mintcream", "#f5fffa"}, {"mistyrose", "#ffe4e1"},
        {"moccasin", "#ffe4b5"}, {"navajowhite", "#ffdead"}, {"navy", "#000080"}, {"oldlace", "#fdf5e6"},
        {"olive", "#808000"}, {"olivedrab", "#6b8e23"}, {"orange", "#ffa500"}, {"orangered", "#ff4500"},
        {"orchid", "#da70d6"}, {"palegoldenrod", "#eee8aa"}, {"palegreen", "#98fb98"},
        {"paleturquoise", "#afeeee"}, {"palevioletred", "#db7093"}, {"papayawhip", "#ffefd5"},
        {"peachpuff", "#ffdab9"}, {"peru", "#cd853f"}, {"pink", "#ffc0cb"}, {"plum", "#dda0dd"},
        {"powderblue", "#b0e0e6"}, {"purple", "#800080"}, {"rebeccapurple", "#663399"}, {"red", "#ff0000"},
        {"rosybrown", "#bc8f8f"}, {"royalblue", "#4169e1"}, {"saddlebrown", "#8b4513"},
        {"salmon", "#fa8072"}, {"sandybrown", "#f4a460"}, {"seagreen", "#2e8b57"}, {"seashell", "#fff5ee"},
        {"sienna", "#a0522d"}, {"silver", "#c0c0c0"}, {"skyblue", "#87ceeb"}, {"slateblue", "#6a5acd"},
        {"slategray", "#708090"}, {"slategrey", "#708090"}, {"snow", "#fffafa"}, {"springgreen", "#00ff7f"},
        {"steelblue", "#4682b4"}, {"tan", "#d2b48c"}, {"teal", "#008080"}, {"thistle", "#d8bfd8"},
        {"tomato", "#ff6347"}, {"turquoise", "#40e0d0"}, {"violet", "#ee82ee"}, {"wheat", "#f5deb3"},
        {"white", "#ffffff"}, {"whitesmoke", "#f5f5f5"}, {"yellow", "#ffff00"}, {"yellowgreen", "#9acd32"},
    };
    return table;
}

bool isValidColorName(std::string_view name) { return colorFromColorName(name).has_value(); }

std::optional<VXColor> colorFromColorName(std::string_view name) {
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
    const auto& table = colorsAndNames();
    auto found = std::lower_bound(table.begin(), table.end(), lower,
                                  [](const auto& entry, const std::string& key) { return entry.first < key; });
    if (found == table.end() || found->first != lower) return std::nullopt;
    return colorFromHexString(found->second);
}

std::optional<VXColor> colorFromHexString(std::string_view text) {
    if (!text.empty() && text.front() == '#') text.remove_prefix(1);
    std::string digits(text);
    std::transform(digits.begin(), digits.end(), digits.begin(), [](unsigned char c) { return std::toupper(c); });
    if (digits.size() == 3) digits = {digits[0], digits[0], digits[1], digits[1], digits[2], digits[2]};
    if (digits.size() != 6 && digits.size() != 8) return std::nullopt;
    double channels[4] = {0, 0, 0, 1};
    for (size_t i = 0; i < digits.size(); i += 2) {
        const int high = hexDigit(digits[i]), low = hexDigit(digits[i + 1]);
        if (high < 0 || low < 0) return std::nullopt;
        channels[i / 2] = (high * 16 + low) / 255.0;
    }
    return VXColor{channels[0], channels[1], channels[2], channels[3]};
}

// Deliberately quirky, and kept so: a second character "." means the number is already a
// fraction ("0.5"), a "%" is over 100, a whole number from 0 to 255 (its fraction kept: "10.7"
// is 10.7/255) is over 255, and anything else (256 and above, negatives) is 0.
double colorFloatValue(std::string_view text) {
    if (text.size() >= 2 && text[1] == '.') return parseNumber(text);
    if (!text.empty() && text.back() == '%') return std::clamp(parseNumber(text.substr(0, text.size() - 1)), 0.0, 100.0) / 100.0;
    const double number = parseNumber(text);
    const long integer = std::strtol(std::string(text).c_str(), nullptr, 10);
    if (integer >= 0 && integer <= 255) return number / 255.0;
    return 0;
}

std::optional<VXColor> colorFromString(std::string_view text) {
    if (text.empty() || text == "transparent") return VXColor::clearColor();
    if (text.front() == '#') return colorFromHexString(text);
    if (isValidColorName(text)) return colorFromColorName(text);

    const Pattern& pattern = functionalPattern();
    auto groups = pattern.search(text);
    if (groups.empty()) return std::nullopt;
    auto group = [&](const char* name) -> std::optional<std::string> {
        const int number = pattern.groupNumber(name);
        if (number <= 0 || static_cast<size_t>(number) >= groups.size()) return std::nullopt;
        return groups[static_cast<size_t>(number)];
    };
    const auto mode = group("mode"), w = group("w"), x = group("x"), y = group("y"), z = group("z");
    if (!mode || !w || !x || !y) return std::nullopt;
    const double alpha = z ? colorFloatValue(*z) : 1.0;
    if (*mode == "rgb" || *mode == "rgba")
        return VXColor{colorFloatValue(*w), colorFloatValue(*x), colorFloatValue(*y), alpha};
    std::string_view hue = *w;
    if (!hue.empty() && hue.back() == '%') hue.remove_suffix(1);
    return VXColor::colorWithCalibratedHue(normalisedHue(parseNumber(hue)), colorFloatValue(*x), colorFloatValue(*y), alpha);
}

std::optional<VXColor> colorFromThemeString(std::string_view text) {
    if (auto color = colorFromString(text)) return color;
    if (!hexPattern().search(text).empty()) return colorFromHexString(text);
    return std::nullopt;
}

std::optional<VXColor> colorFromComponents(std::string_view model, const std::vector<std::string>& components) {
    if (components.size() != 3 && components.size() != 4) return std::nullopt;
    const double a = parseNumber(components[0]), b = parseNumber(components[1]), c = parseNumber(components[2]);
    const double alpha = components.size() == 4 ? parseNumber(components[3]) : 1.0;
    if (model == "rgb" || model == "rgba") return VXColor{a, b, c, alpha};
    if (model == "hsl" || model == "hsla") return VXColor::colorWithCalibratedHue(a, b, c, alpha);
    return std::nullopt;
}

}  // namespace vx
