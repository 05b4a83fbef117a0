// How a document's tab size and soft tabs are chosen from three witnesses: the indentation
// detected in its text, the user's scoped settings and the language's defaults.
//
// Tab size, first that applies:
//   1. spaces detected with a confident width of 2, 3, 4, 6 or 8;
//   2. "VXTabSize" set for the file's extension or language (a specific stratum), when > 0;
//   3. the language's default tab size, when it has one;
//   4. "VXTabSize" from any stratum (the global value too), when > 0.
// Soft tabs, first that applies:
//   1. the detected character, when the text decided with more than 80% of its indented lines;
//   2. without a specific "VXUseSoftTabs": the language's default when it has one, else the global one;
//   3. the specific "VXUseSoftTabs".
// Whatever no rule decides keeps the value the document had.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "document/indentation_context.hpp"
#include "document/tabdetection.hpp"

namespace vx {

// The scoped settings "VXTabSize" and "VXUseSoftTabs" as the document found them, each with the
// level it came from (0 global, 1 language, 2 extension).
struct TabSettings {
    std::optional<int64_t> tabSize;
    int64_t tabSizeStratum = 0;
    std::optional<bool> useSoftTabs;
    int64_t useSoftTabsStratum = 0;
};

// `language` is the language the default detector gives the file's extension, if any.
VXIndentationContext resolveIndentation(const VXIndentationContext& current, const TabDetectionResult& detected,
                                        const TabSettings& settings, const std::optional<std::string>& language);

}  // namespace vx
