// VXDefaultDetector: what the editor assumes about a language before it has seen any text, and
// which language a file extension usually means. Detection over the text and the user's scoped
// settings take precedence over these (see the document's tab set-up).
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace vx {

class VXDefaultDetector {
public:
    static VXDefaultDetector& sharedDetector();

    // Answers -1 when the detector has no opinion about the language.
    static int64_t tabSizeForLanguage(const std::string& languageName);
    // Answers 0 or 1, or -1 for no opinion (today every language).
    static int64_t usesSpacesForLanguage(const std::string& languageName);

    // The language name usually meant by a file extension (compared without case); the caller
    // passes the whole file name when the file has no extension. Mappings recorded with
    // `recordLanguage` win over the built-in table.
    std::optional<std::string> languageForExtension(const std::string& extension) const;
    void recordLanguage(const std::string& languageName, const std::string& extension);
    // The language for a file's path, by its extension or (without one) its whole name.
    std::optional<std::string> languageForPath(const std::string& path) const;

private:
    mutable std::mutex m_mutex;
    std::map<std::string, std::string> m_recorded;
};

// The lower-cased extension of a path's file name, or the whole (lower-cased) file name when it
// has none ("Makefile", ".bashrc"); empty for an empty path.
std::string extensionOrFileName(const std::string& path);

}  // namespace vx
