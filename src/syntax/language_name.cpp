#include "syntax/language_name.hpp"

#include <cctype>

namespace vx {
namespace {

// Non-ASCII bytes belong to letters of other scripts, which are kept.
bool isIdentifierByte(unsigned char c) {
    return c >= 0x80 || std::isalnum(c) || c == '_' || c == '.' || c == '+' || c == '#' || c == '-';
}

}  // namespace

std::string languageIdentifierFromName(std::string_view name) {
    std::string identifier;
    std::string piece;
    auto flush = [&] {
        if (piece.empty()) return;
        if (!identifier.empty()) identifier += '-';
        identifier += piece;
        piece.clear();
    };
    for (char c : name) {
        if (isIdentifierByte(static_cast<unsigned char>(c))) piece += c;
        else flush();
    }
    flush();
    return identifier;
}

std::optional<std::string> normalizeLanguageName(std::string_view name) {
    if (name.empty()) return std::nullopt;
    std::string lower(name);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (lower == "objective-c") return "objc";
    if (lower == "objective-c++") return "objc++";
    if (lower == "cpp") return "c++";
    if (lower == "py") return "python";
    return lower;
}

}  // namespace vx
