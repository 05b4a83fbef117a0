// How language names become identifiers, and how names from other sources are compared.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vx {

// A language's identifier from its name (the language folder's name): characters other than
// letters, digits and "_.+#-" separate pieces; the pieces are joined with "-".
//     "Objective-C++"  -> "Objective-C++"      "Ruby on Rails" -> "Ruby-on-Rails"
std::string languageIdentifierFromName(std::string_view name);

// Lower-cases a language name and maps the common aliases to the identifiers used here
// ("objective-c" -> "objc", "objective-c++" -> "objc++", "cpp" -> "c++", "py" -> "python").
// An empty name gives nothing.
std::optional<std::string> normalizeLanguageName(std::string_view name);

}  // namespace vx
