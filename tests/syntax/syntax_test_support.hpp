// Helpers for the highlighter tests: languages built from inline definitions, the checking
// formats of a text, and the literal (position-by-position) line loop the fast one must match.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "syntax/document_highlighter.hpp"
#include "syntax/language_catalog.hpp"
#include "syntax/zone_manager.hpp"

namespace vx::test {

// A private manager holding languages defined in the test; `others` are loaded when included.
class TestLanguages {
public:
    explicit TestLanguages(std::map<std::string, std::string> definitions);
    // The ruleset of a language named in the map (loaded on demand, as includes would).
    const VXSyntaxRuleset& ruleset(const std::string& name);
    VXSyntaxZoneManager& manager() { return m_manager; }

private:
    std::map<std::string, std::string> m_definitions;
    VXSyntaxZoneManager m_manager;
};

// The bundled truffles of the source tree, attached to a private manager.
struct BundledLanguages {
    BundledLanguages();
    // tests/data/syntax: one folder of samples per language.
    static std::string samplesDirectory();
    // Each sample with stored scopes beside it (<sample>.scopes), with its text and the ruleset
    // of the language its folder names, or of the one chosen for the file (null when none loads).
    struct Sample {
        std::string path;
        std::u16string text;
        const VXLanguage* language = nullptr;
        VXSyntaxRuleset* ruleset = nullptr;
    };
    std::vector<Sample> samples();
    VXLanguageCatalog catalog;
    VXSyntaxZoneManager manager;
};

// One language from one definition text, named "t" (so zone scopes end in ".t").
const VXSyntaxRuleset& languageFrom(const std::string& definition);

std::string scopesOf(const std::string& utf8Text, const VXSyntaxRuleset& ruleset);
std::string eventsOf(const std::string& utf8Text, const VXSyntaxRuleset& ruleset);

// The line loop exactly as defined: every position tried in turn with the anchored tests.
VXContext literalParseLine(const VXContext& incoming, const VXSyntaxLine& line, std::vector<VXSyntaxZone>& events,
                           const VXSyntaxRuleset& ruleset);
std::vector<VXHighlightedLine> highlightLiterally(std::u16string_view text, const VXSyntaxRuleset& ruleset);

}  // namespace vx::test
