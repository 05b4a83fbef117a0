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

Value number(std::optional<uint64_t> value) {
    if (!value) return std::nullopt;
    return utf16FromUtf8(std::to_string(*value));
}

Value fileName(const SnippetEnvironment& e) {
    if (!e.filePath) return std::nullopt;
    return std::u16string(lastComponent(*e.filePath));
}

// The file's name without its last extension ("main" for main.cpp, ".bashrc" stays whole).
Value fileNameBase(const SnippetEnvironment& e) {
    Value name = fileName(e);
    if (!name) return name;
    size_t dot = name->rfind(u'.');
    if (dot != std::u16string::npos && dot > 0) name->resize(dot);
    return name;
}

struct VariableEntry {
    std::u16string_view name;   // the program's own
    std::u16string_view alias;  // the name other editors' snippets use, or empty
    Value (*value)(const SnippetEnvironment&);
};

// Every variable a snippet can name; the README lists the same table.
const VariableEntry kVariables[] = {
    {u"VX_SELECTED_TEXT", u"TM_SELECTED_TEXT", [](const SnippetEnvironment& e) { return e.selectedText; }},
    {u"VX_CURRENT_LINE", u"TM_CURRENT_LINE", [](const SnippetEnvironment& e) { return e.currentLine; }},
    {u"VX_CURRENT_WORD", u"TM_CURRENT_WORD", [](const SnippetEnvironment& e) { return e.currentWord; }},
    {u"VX_FILENAME", u"TM_FILENAME", fileName},
    {u"VX_FILENAME_BASE", u"TM_FILENAME_BASE", fileNameBase},
    {u"VX_FILEPATH", u"TM_FILEPATH", [](const SnippetEnvironment& e) { return e.filePath; }},
    {u"VX_DIRECTORY", u"TM_DIRECTORY", [](const SnippetEnvironment& e) { return e.filePath ? parentDirectory(*e.filePath) : std::nullopt; }},
    {u"VX_LINE_INDEX", u"TM_LINE_INDEX",
     [](const SnippetEnvironment& e) { return number(e.lineNumber ? std::optional<uint64_t>(*e.lineNumber - 1) : std::nullopt); }},
    {u"VX_LINE_NUMBER", u"TM_LINE_NUMBER", [](const SnippetEnvironment& e) { return number(e.lineNumber); }},
    {u"VX_CLIPBOARD", u"CLIPBOARD", [](const SnippetEnvironment& e) { return e.clipboard; }},
    {u"VX_DATE", u"", [](const SnippetEnvironment& e) { return formatted(e.now, "%Y-%m-%d"); }},
    {u"VX_TIME", u"", [](const SnippetEnvironment& e) { return formatted(e.now, "%H:%M:%S"); }},
    {u"VX_YEAR", u"CURRENT_YEAR", [](const SnippetEnvironment& e) { return formatted(e.now, "%Y"); }},
    {u"VX_YEAR_SHORT", u"CURRENT_YEAR_SHORT", [](const SnippetEnvironment& e) { return formatted(e.now, "%y"); }},
    {u"VX_MONTH", u"CURRENT_MONTH", [](const SnippetEnvironment& e) { return formatted(e.now, "%m"); }},
    {u"VX_MONTH_NAME", u"CURRENT_MONTH_NAME", [](const SnippetEnvironment& e) { return formatted(e.now, "%B"); }},
    {u"VX_MONTH_NAME_SHORT", u"CURRENT_MONTH_NAME_SHORT", [](const SnippetEnvironment& e) { return formatted(e.now, "%b"); }},
    {u"VX_DAY", u"CURRENT_DATE", [](const SnippetEnvironment& e) { return formatted(e.now, "%d"); }},
    {u"VX_DAY_NAME", u"CURRENT_DAY_NAME", [](const SnippetEnvironment& e) { return formatted(e.now, "%A"); }},
    {u"VX_DAY_NAME_SHORT", u"CURRENT_DAY_NAME_SHORT", [](const SnippetEnvironment& e) { return formatted(e.now, "%a"); }},
    {u"VX_HOUR", u"CURRENT_HOUR", [](const SnippetEnvironment& e) { return formatted(e.now, "%H"); }},
    {u"VX_MINUTE", u"CURRENT_MINUTE", [](const SnippetEnvironment& e) { return formatted(e.now, "%M"); }},
    {u"VX_SECOND", u"CURRENT_SECOND", [](const SnippetEnvironment& e) { return formatted(e.now, "%S"); }},
    {u"VX_SECONDS_UNIX", u"CURRENT_SECONDS_UNIX",
     [](const SnippetEnvironment& e) {
         return number(static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::seconds>(e.now.time_since_epoch()).count()));
     }},
};

}  // namespace

std::optional<std::u16string> SnippetEnvironment::variable(std::u16string_view name) const {
    for (const VariableEntry& entry : kVariables)
        if (entry.name == name || (!entry.alias.empty() && entry.alias == name)) return entry.value(*this);
    std::string key = utf8FromUtf16(name);
    if (const char* value = std::getenv(key.c_str())) return utf16FromUtf8(value);
    return std::nullopt;
}

std::map<std::string, std::string> SnippetEnvironment::exportedVariables() const {
    std::map<std::string, std::string> result;
    for (const VariableEntry& entry : kVariables)
        if (Value value = entry.value(*this)) {
            result[utf8FromUtf16(entry.name)] = utf8FromUtf16(*value);
            if (!entry.alias.empty()) result[utf8FromUtf16(entry.alias)] = utf8FromUtf16(*value);
        }
    return result;
}

std::vector<std::u16string_view> snippetVariableNames() {
    std::vector<std::u16string_view> names;
    for (const VariableEntry& entry : kVariables) names.push_back(entry.name);
    return names;
}

}  // namespace vx
