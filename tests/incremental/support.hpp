// Shared by the incremental tests: the bundled rulesets, and a document highlighted incrementally
// next to a fresh whole-text parse of the same text.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "document/single_file_document.hpp"
#include "syntax/incremental_highlighter.hpp"

namespace vx::test {

// A bundled language's ruleset (from the source tree's truffles).
const VXSyntaxRuleset& bundledRuleset(const std::string& language);

struct HighlightedDocument {
    explicit HighlightedDocument(const std::string& language, std::u16string_view text = {});
    void replace(uint64_t location, uint64_t length, std::u16string_view text) {
        document.js_replaceTextInRange({location, length}, text);
    }
    VXSingleFileDocument document;
    const VXSyntaxRuleset& ruleset;
    std::unique_ptr<VXIncrementalHighlighter> highlighter;
};

// Waits for the document to settle, then checks every line's zones and start context against
// a parse of the whole text from the top; answers the first difference, or "" when none.
std::string differenceFromFullParse(HighlightedDocument& doc);

}  // namespace vx::test
