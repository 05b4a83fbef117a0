#include "app/editor/file_location.hpp"

#include <charconv>

namespace vx::editor {
namespace {

// A positive decimal number making up all of `text`.
std::optional<uint64_t> number(std::string_view text) {
    uint64_t value = 0;
    if (text.empty()) return std::nullopt;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value == 0) return std::nullopt;
    return value;
}

// "name:L" or "name:L:C" split into its parts; nothing when the text has no such ending.
std::optional<FileLocation> splitLocation(const std::string& text) {
    const size_t last = text.rfind(':');
    if (last == std::string::npos || last == 0) return std::nullopt;
    auto lastNumber = number(std::string_view(text).substr(last + 1));
    if (!lastNumber) return std::nullopt;
    const size_t before = text.rfind(':', last - 1);
    if (before != std::string::npos && before > 0) {
        if (auto line = number(std::string_view(text).substr(before + 1, last - before - 1)))
            return FileLocation{text.substr(0, before), line, lastNumber};
    }
    return FileLocation{text.substr(0, last), lastNumber, std::nullopt};
}

}  // namespace

std::vector<FileLocation> fileLocationsFromArguments(const std::vector<std::string>& arguments,
                                                     const std::function<bool(const std::string&)>& exists) {
    std::vector<FileLocation> locations;
    std::optional<uint64_t> pendingLine;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument.size() > 1 && argument[0] == '+' && i + 1 < arguments.size() && !exists(argument)) {
            if (auto line = number(std::string_view(argument).substr(1))) {
                pendingLine = line;
                continue;
            }
        }
        FileLocation location{argument, std::nullopt, std::nullopt};
        if (!exists(argument))
            if (auto split = splitLocation(argument)) location = *split;
        if (pendingLine && !location.line) location.line = pendingLine;
        pendingLine.reset();
        locations.push_back(std::move(location));
    }
    return locations;
}

}  // namespace vx::editor
