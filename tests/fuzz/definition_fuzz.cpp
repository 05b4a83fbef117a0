// Language definitions from any bytes, then a text highlighted with them. The input is the
// definition, a NUL byte, and the text; the definition is also what every other language name
// resolves to, so that includes across languages and `$base` are exercised. Besides memory safety
// under the sanitizers it checks that every event lies within the text, that the context
// handed to the next line holds only start/end zones, and that the searching line loop gives
// the events and contexts of the position-by-position one.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "syntax/document_highlighter.hpp"
#include "syntax/mapped_string.hpp"
#include "syntax/zone_manager.hpp"
#include "syntax_test_support.hpp"

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const size_t split = input.find('\0');
    const std::string definition = input.substr(0, split);
    const std::string sample = split == std::string::npos ? std::string("a \"b\" 1 // c\n/* d */ e") : input.substr(split + 1);

    vx::VXSyntaxZoneManager manager;
    manager.setLanguageLoader([&](const std::string& name, vx::VXSyntaxZoneManager& into) {
        return vx::VXSyntaxRuleset::rulesetFromString(definition, name, "", into);
    });
    vx::VXSyntaxRuleset* ruleset = manager.rulesetForLanguage("fuzz");
    if (!ruleset) return 0;
    ruleset->selfmlDebuggingRepresentation();

    const std::u16string text = vx::utf16FromUtf8(sample);
    const auto lines = vx::highlightText(text, *ruleset);
    for (const auto& line : lines) {
        for (const auto& zone : line.events) {
            check(zone.range.end() <= text.size());
            check(zone.semanticRange.end() <= text.size());
            check(zone.effectiveType <= 2 && zone.semanticType <= 3);
        }
        for (const auto& open : line.startContext)
            check(!open.definition || open.definition == ruleset->rootDefinition() || open.definition->isStartEnd());
    }
    vx::formatScopes(lines);

    const auto literal = vx::test::highlightLiterally(text, *ruleset);
    check(literal.size() == lines.size());
    check(vx::formatEvents(literal) == vx::formatEvents(lines));
    for (size_t n = 0; n < lines.size(); ++n) check(literal[n].startContext.toString() == lines[n].startContext.toString());
    return 0;
}
