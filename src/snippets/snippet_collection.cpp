#include "snippets/snippet_collection.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>

#include "editing/navigation.hpp"
#include "platform/unicode.hpp"
#include "selfml/sfwriter.hpp"
#include "snippets/dollar_converter.hpp"

namespace vx {
namespace {

using Json = nlohmann::ordered_json;

// The language identifiers of snippet collections and the root scopes of the languages here.
const std::map<std::string, std::string>& rootScopes() {
    static const std::map<std::string, std::string> scopes = {
        {"c", "source.c"},           {"cpp", "source.c++"},         {"python", "source.python"},
        {"javascript", "source.javascript"}, {"html", "text.html.basic"}, {"css", "source.css"},
        {"shellscript", "source.shell"}, {"markdown", "text.html.markdown"}, {"json", "source.json"},
        {"jsonc", "source.json"},    {"plaintext", "text.plain"}};
    return scopes;
}

std::string trimmed(std::string_view text) {
    const size_t start = text.find_first_not_of(" \t");
    if (start == std::string_view::npos) return {};
    return std::string(text.substr(start, text.find_last_not_of(" \t") + 1 - start));
}

// "javascript,typescript" -> "source.javascript"; nothing when no language is known here.
std::string selectorForLanguages(std::string_view languages) {
    std::string selector;
    while (!languages.empty()) {
        const size_t comma = languages.find(',');
        const auto known = rootScopes().find(trimmed(languages.substr(0, comma)));
        if (known != rootScopes().end()) selector += (selector.empty() ? "" : ", ") + known->second;
        languages = comma == std::string_view::npos ? std::string_view() : languages.substr(comma + 1);
    }
    return selector;
}

// A string, or the strings of a list joined with `separator`; nothing for anything else.
std::optional<std::string> textOf(const Json& value, std::string_view separator) {
    if (value.is_string()) return value.get<std::string>();
    if (!value.is_array()) return std::nullopt;
    std::string out;
    for (size_t i = 0; i < value.size(); ++i) {
        if (!value[i].is_string()) return std::nullopt;
        if (i) out += separator;
        out += value[i].get<std::string>();
    }
    return out;
}

std::string selfmlString(std::string_view text) {
    std::string out;
    SFWriteQuotedString(text, out);
    return out;
}

}  // namespace

SnippetCollectionConversion convertSnippetCollection(std::string_view json, std::string_view scope) {
    SnippetCollectionConversion result;
    const Json root = Json::parse(json, nullptr, false, true);
    if (root.is_discarded() || !root.is_object()) {
        result.error = "not a JSON object of snippets";
        return result;
    }
    std::string body;
    for (const auto& [name, entry] : root.items()) {
        if (!entry.is_object()) {
            result.skipped.push_back(name + ": not a snippet");
            continue;
        }
        std::optional<std::string> dollarBody = entry.contains("body") ? textOf(entry["body"], "\n") : std::nullopt;
        std::vector<std::string> prefixes;
        if (entry.contains("prefix") && entry["prefix"].is_string()) prefixes.push_back(entry["prefix"].get<std::string>());
        if (entry.contains("prefix") && entry["prefix"].is_array())
            for (const auto& prefix : entry["prefix"])
                if (prefix.is_string()) prefixes.push_back(prefix.get<std::string>());
        if (!dollarBody) {
            result.skipped.push_back(name + ": no body");
            continue;
        }
        // A self-ml file ends at a NUL byte, so no text of it can hold one.
        const auto hasNul = [](std::string_view text) { return text.find('\0') != std::string_view::npos; };
        if (hasNul(name) || hasNul(*dollarBody) || std::any_of(prefixes.begin(), prefixes.end(), hasNul)) {
            result.skipped.push_back(name.substr(0, name.find('\0')) + ": holds a NUL character");
            continue;
        }
        SnippetConversion converted = convertDollarSnippet(utf16FromUtf8(*dollarBody));
        if (!converted.ok) {
            result.skipped.push_back(name + ": " + converted.problem + " at offset " + std::to_string(converted.offset));
            continue;
        }
        std::string ownScope;
        if (entry.contains("scope") && entry["scope"].is_string()) {
            ownScope = selectorForLanguages(entry["scope"].get<std::string>());
            if (ownScope.empty()) {
                result.skipped.push_back(name + ": for none of the languages here (" + entry["scope"].get<std::string>() + ")");
                continue;
            }
        }
        // A trigger is a word; a prefix with other characters could never be typed as one, so
        // that snippet is kept for inserting by name.
        for (std::string& prefix : prefixes) {
            const std::u16string word = utf16FromUtf8(prefix);
            if (std::all_of(word.begin(), word.end(), [](char16_t c) { return isWordCharacter(c); })) continue;
            result.notes.push_back(name + ": the prefix \"" + prefix + "\" is not a word; inserted by name only");
            prefix.clear();
        }
        if (prefixes.empty()) prefixes.emplace_back();  // inserted by name only
        std::sort(prefixes.begin(), prefixes.end());
        prefixes.erase(std::unique(prefixes.begin(), prefixes.end()), prefixes.end());
        if (auto description = entry.contains("description") ? textOf(entry["description"], " ") : std::nullopt) {
            std::string line = *description;
            for (char& c : line)
                if (c == '\n' || c == '\r' || c == '\0') c = ' ';
            if (!line.empty()) body += "\n# " + line;
        }
        for (const std::string& prefix : prefixes) {
            body += "\n(snippet (name " + selfmlString(name) + ")";
            if (!prefix.empty()) body += " (trigger " + selfmlString(prefix) + ")";
            if (!ownScope.empty()) body += " (scope " + selfmlString(ownScope) + ")";
            body += " (text " + selfmlString(utf8FromUtf16(converted.text)) + "))";
            ++result.converted;
        }
    }
    result.selfml = "# Snippets converted from the dollar-sign syntax.\n(scope " + selfmlString(scope) + ")\n" + body + "\n";
    return result;
}

}  // namespace vx
