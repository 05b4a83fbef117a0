// Colours as themes read them: RGBA components from 0.0 to 1.0, parsed from hexadecimal, CSS
// colour names and the rgb()/rgba()/hsl()/hsla() notations.
//
//     "#abc" = "#aabbcc"   "#aabbcc80" (alpha 0x80/255)   "navy"   "rgba(100%, 0%, 0%, 0.5)"
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vx {

struct VXColor {
    double red = 0, green = 0, blue = 0, alpha = 0;

    static VXColor clearColor() { return {0, 0, 0, 0}; }
    static VXColor blackColor() { return {0, 0, 0, 1}; }
    static VXColor grayColor() { return {0.5, 0.5, 0.5, 1}; }
    static VXColor lightGrayColor() { return {2.0 / 3.0, 2.0 / 3.0, 2.0 / 3.0, 1}; }
    // The selected-text background of a desktop: a light blue.
    static VXColor selectedTextBackgroundColor() { return {0xB5 / 255.0, 0xD5 / 255.0, 1.0, 1}; }

    // h in [0, 1); the standard HSL conversion.
    static VXColor colorWithCalibratedHue(double hue, double saturation, double lightness, double alpha);

    // "#RRGGBBAA", each channel rounded to the nearest of 0..255.
    std::string hexString() const;

    friend bool operator==(const VXColor&, const VXColor&) = default;
};

// "transparent" or "" → clear; "#..." → hexadecimal; a CSS colour name; rgb/rgba/hsl/hsla(...).
std::optional<VXColor> colorFromString(std::string_view text);
// An optional "#", then 3, 6 or 8 hexadecimal digits (RGB, RRGGBB, RRGGBBAA).
std::optional<VXColor> colorFromHexString(std::string_view text);
// A CSS colour name, without regard to case.
std::optional<VXColor> colorFromColorName(std::string_view name);
bool isValidColorName(std::string_view name);
// One component of the functional notations: "0.5" as it stands, "50%" over 100, "128" over 255,
// anything else 0.
double colorFloatValue(std::string_view text);
// The name table, CSS named colours to "#rrggbb", in alphabetical order.
const std::vector<std::pair<std::string_view, std::string_view>>& colorsAndNames();

// What a theme reads from a colour node whose first child is the string text: colorFromString,
// then, when the text holds a hexadecimal colour anywhere, colorFromHexString of the whole text.
std::optional<VXColor> colorFromThemeString(std::string_view text);
// The list forms (rgb|rgba|hsl|hsla c1 c2 c3 [alpha]) with components taken as they are.
std::optional<VXColor> colorFromComponents(std::string_view model, const std::vector<std::string>& components);

}  // namespace vx
