#include "snippets/snippet_environment.hpp"

#include <cstdlib>
#include <ctime>
#include <iterator>

#include "platform/unicode.hpp"

namespace vx {
namespace {

using Value = std::optional<std::u16string>;

std::u16string_view lastComponent(std::u16string_view path) {
    size_t slash = path.rfind(u'/');
    return slash == std::u16string_view::npos ? path : path.substr(slash + 1);
}

Value parentDirectory(std::u16string_view path) {
    size_t slash = path.rfind(u'/');
    if (slash == std::u16string_view::npos) return std::nullopt;
    return std::u16string(slash == 0 ? path.substr(0, 1) : path.substr(0, slash));
}

// The local date or time formatted with strftime.
Value formatted(std::chrono::system_clock::time_point now, const char* format) {
    std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    localtime_r(&seconds, &local);
    char buffer[64];
    size_t length = std::strftime(buffer, sizeof buffer, format, &local);
    return utf16FromUtf8(std::string_view(buffer, length));
}

struct VariableEntry {
    std::u16string_view name;
    Value (*value)(const SnippetEnvironment&);
};

// Every variable a snippet can name; the README lists the same table.
const VariableEntry kVariables[] = {
    {u"VX_SELECTED_TEXT", [](const SnippetEnvironment& e) { return e.selectedText; }},
    {u"VX_CURRENT_LINE", [](const SnippetEnvironment& e) { return e.currentLine; }},
    {u"VX_CURRENT_WORD", [](const SnippetEnvironment& e) { return e.currentWord; }},
    {u"VX_FILENAME",
     [](const SnippetEnvironment& e) -> Value {
         if (!e.filePath) return std::nullopt;
         return std::u16string(lastComponent(*e.filePath));
     }},
    {u"VX_FILEPATH", [](const SnippetEnvironment& e) { return e.filePath; }},
    {u"VX_DIRECTORY", [](const SnippetEnvironment& e) { return e.filePath ? parentDirectory(*e.filePath) : std::nullopt; }},
    {u"VX_LINE_NUMBER",
     [](const SnippetEnvironment& e) -> Value {
         if (!e.lineNumber) return std::nullopt;
         return utf16FromUtf8(std::to_string(*e.lineNumber));
     }},
    {u"VX_DATE", [](const SnippetEnvironment& e) { return formatted(e.now, "%Y-%m-%d"); }},
    {u"VX_TIME", [](const SnippetEnvironment& e) { return formatted(e.now, "%H:%M:%S"); }},
    {u"VX_YEAR", [](const SnippetEnvironment& e) { return formatted(e.now, "%Y"); }},
};

}  // namespace

std::optional<std::u16string> SnippetEnvironment::variable(std::u16string_view name) const {
    for (const VariableEntry& entry : kVariables)
        if (entry.name == name) return entry.value(*this);
    std::string key = utf8FromUtf16(name);
    if (const char* value = std::getenv(key.c_str())) return utf16FromUtf8(value);
    return std::nullopt;
}

std::map<std::string, std::string> SnippetEnvironment::exportedVariables() const {
    std::map<std::string, std::string> result;
    for (const VariableEntry& entry : kVariables)
        if (Value value = entry.value(*this)) result[utf8FromUtf16(entry.name)] = utf8FromUtf16(*value);
    return result;
}

std::vector<std::u16string_view> snippetVariableNames() {
    std::vector<std::u16string_view> names;
    for (const VariableEntry& entry : kVariables) names.push_back(entry.name);
    return names;
}

}  // namespace vx
