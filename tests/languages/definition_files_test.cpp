// The bundled definition files, checked as files: every one well formed, every regular
// expression accepted by the regex engine with the options the highlighter uses, every
// capture and back-reference pointing at a group that exists, every include naming
// something that exists, and the published scope list complete.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>

#include "languages/bundled_files.hpp"
#include "languages/definition_walk.hpp"
#include "languages/regex_check.hpp"

namespace vx::test {
namespace {

std::string joined(const std::vector<std::string>& lines) {
    std::string out;
    for (const auto& line : lines) out += "\n  " + line;
    return out;
}

// The back-references (backslash and a digit) of an expression, in order.
std::vector<int> backReferences(const std::string& expression) {
    std::vector<int> out;
    for (size_t i = 0; i + 1 < expression.size(); ++i) {
        if (expression[i] != '\\') continue;
        if (std::isdigit(static_cast<unsigned char>(expression[i + 1]))) out.push_back(expression[i + 1] - '0');
        ++i;
    }
    return out;
}

// An end pattern with back-references is compiled per zone from the start match's text;
// any plain word stands in for that text here.
std::string withBackReferencesFilled(const std::string& expression) {
    std::string out;
    for (size_t i = 0; i < expression.size(); ++i) {
        if (expression[i] == '\\' && i + 1 < expression.size()) {
            if (std::isdigit(static_cast<unsigned char>(expression[i + 1]))) out += "word";
            else out += expression.substr(i, 2);
            ++i;
        } else {
            out += expression[i];
        }
    }
    return out;
}

bool isInteger(const std::string& key) {
    return !key.empty() && key.find_first_not_of("0123456789") == std::string::npos;
}

std::string languageSuffix(const std::string& language) { return "." + language; }

bool endsWith(const std::string& text, const std::string& suffix) {
    return text.size() > suffix.size() && text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

class EachLanguage : public ::testing::TestWithParam<std::string> {
protected:
    const BundledLanguage& language() const { return *findLanguage(GetParam()); }
};

TEST_P(EachLanguage, DefinitionIsWellFormed) {
    const auto walk = walkDefinition(language());
    EXPECT_TRUE(walk.problems.empty()) << language().name << joined(walk.problems);
    EXPECT_GT(walk.zoneCount, 0);

    // Zone names are lower case (the loader lower-cases them); captures and inner scopes,
    // which are used as written, end with the language like the zones' own scopes do.
    std::vector<std::string> bad;
    for (const auto& scope : walk.scopes) {
        if (scope.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789._+-") != std::string::npos ||
            scope.front() == '.' || scope.back() == '.' || scope.find("..") != std::string::npos)
            bad.push_back(scope);
    }
    EXPECT_TRUE(bad.empty()) << "malformed scope names:" << joined(bad);
}

TEST_P(EachLanguage, CaptureAndInnerScopesCarryTheLanguage) {
    std::vector<std::string> bad;
    const auto& syntax = language().syntax;
    // Walk again, but keep only the scopes written out in full (not zone names).
    std::function<void(const SFONodePtr&)> visit = [&](const SFONodePtr& node) {
        for (const auto& child : lists(node)) {
            if (child->head() == "regex") {
                for (const auto& capture : lists(child)) {
                    const auto scope = capture->firstIfString().value_or("");
                    if (!endsWith(scope, languageSuffix(language().name))) bad.push_back(scope);
                }
            } else if (child->head() == "inner-identifier") {
                const auto scope = child->firstIfString().value_or("");
                if (!endsWith(scope, languageSuffix(language().name))) bad.push_back(scope);
            }
            visit(child);
        }
    };
    visit(syntax);
    EXPECT_TRUE(bad.empty()) << language().name << ":" << joined(bad);
}

TEST_P(EachLanguage, EveryRegexCompilesAndItsGroupsExist) {
    const auto walk = walkDefinition(language());
    std::vector<std::string> failures;
    for (const auto& use : walk.regexes) {
        const auto refs = backReferences(use.expression);
        if (use.isEnd && !refs.empty()) {
            // Compiled per zone after the start match fills the references in.
            const int startGroups = checkRegex(use.startExpression).groups;
            for (int ref : refs)
                if (ref > startGroups)
                    failures.push_back(use.where + ": \\" + std::to_string(ref) + " but the start has " +
                                       std::to_string(startGroups) + " groups");
            if (const auto filled = checkRegex(withBackReferencesFilled(use.expression)); !filled.compiles)
                failures.push_back(use.where + ": " + filled.error + " in " + use.expression);
            continue;
        }
        const auto regex = checkRegex(use.expression);
        if (!regex.compiles) {
            failures.push_back(use.where + ": " + regex.error + " in " + use.expression);
            continue;
        }
        for (const auto& key : use.captureKeys) {
            if (isInteger(key) ? std::stoi(key) > regex.groups
                               : std::find(regex.names.begin(), regex.names.end(), key) == regex.names.end())
                failures.push_back(use.where + ": capture " + key + " names no group");
        }
    }
    EXPECT_TRUE(failures.empty()) << language().name << joined(failures);
}

TEST_P(EachLanguage, IncludesNameWhatExists) {
    const auto walk = walkDefinition(language());
    std::vector<std::string> failures;
    for (const auto& include : walk.includes) {
        std::string target, other;
        if (include.targets.size() == 1) {
            const auto& text = include.targets.front();
            const auto at = text.find('@');
            if (text == "$base") continue;
            if (at == std::string::npos) {
                failures.push_back(include.where + ": include by zone scope \"" + text + "\" (use a collection)");
                continue;
            }
            other = text.substr(0, at);
            target = text.substr(at + 1);
        } else if (include.targets.size() == 2 && include.targets[1].front() == '@') {
            other = include.targets[0];
            target = include.targets[1].substr(1);
        } else {
            failures.push_back(include.where + ": include of an unexpected form");
            continue;
        }
        const BundledLanguage* in = other.empty() ? &language() : findLanguage(other);
        if (!in) {
            failures.push_back(include.where + ": no bundled language \"" + other + "\"");
            continue;
        }
        const auto collections = other.empty() ? walk.collections : walkDefinition(*in).collections;
        if (std::find(collections.begin(), collections.end(), target) == collections.end())
            failures.push_back(include.where + ": no collection \"" + target + "\" in " + in->name);
    }
    EXPECT_TRUE(failures.empty()) << language().name << joined(failures);
}

TEST_P(EachLanguage, SettingsFileHasKnownKeysAndSaneValues) {
    const auto& settings = language().settings;
    ASSERT_TRUE(settings) << "language.selfml cannot be read";
    const std::set<std::string> known = {"name", "name-glob", "content-regex", "tab-size",
                                         "soft-tabs", "comment", "pairs"};
    std::vector<std::string> failures;
    for (const auto& key : settings->extractLists())
        if (!known.count(key->head())) failures.push_back("unknown key (" + key->head() + ")");
    if (settings->valueForKey("name").value_or("").empty()) failures.push_back("no name");
    if (!settings->nodeForKey("name-glob") || strings(settings->nodeForKey("name-glob")).empty())
        failures.push_back("no name-glob");
    if (const auto tab = settings->valueForKey("tab-size")) {
        const int size = isInteger(*tab) ? std::stoi(*tab) : 0;
        if (size < 1 || size > 18) failures.push_back("tab-size " + *tab + " outside 1..18");
    }
    if (const auto soft = settings->valueForKey("soft-tabs"); soft && *soft != "yes" && *soft != "no")
        failures.push_back("soft-tabs is neither yes nor no");
    if (const auto regex = settings->valueForKey("content-regex")) {
        if (const auto check = checkRegex(*regex); !check.compiles)
            failures.push_back("content-regex: " + check.error);
    }
    if (const auto comment = settings->nodeForKey("comment")) {
        for (const auto& part : lists(comment))
            if (part->head() != "line" && part->head() != "start" && part->head() != "end")
                failures.push_back("comment: unknown (" + part->head() + ")");
        if (bool(comment->nodeForKey("start")) != bool(comment->nodeForKey("end")))
            failures.push_back("comment: start without end");
    }
    if (const auto pairs = settings->nodeForKey("pairs")) {
        for (const auto& pair : lists(pairs))
            if (pair->head() != "pair" || strings(pair).size() != 2)
                failures.push_back("pairs: expected (pair open close)");
    }
    EXPECT_TRUE(failures.empty()) << language().name << joined(failures);
}

std::vector<std::string> languageNames() {
    std::vector<std::string> names;
    for (const auto& language : bundledLanguages()) names.push_back(language.name);
    return names;
}

INSTANTIATE_TEST_SUITE_P(Bundled, EachLanguage, ::testing::ValuesIn(languageNames()),
                         [](const auto& info) {
                             std::string name;
                             for (char c : info.param) name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
                             return name;
                         });

TEST(BundledTruffle, HoldsTheLanguagesTheEditorPromises) {
    for (const char* name : {"c", "c++", "css", "html", "javascript", "json", "markdown", "python", "selfml",
                             "shell", "txt"})
        EXPECT_TRUE(findLanguage(name)) << name;
    // Other definitions embed a language through its collection "main" (the README says so).
    for (const auto& language : bundledLanguages()) {
        const auto collections = walkDefinition(language).collections;
        EXPECT_TRUE(std::find(collections.begin(), collections.end(), "main") != collections.end())
            << language.name << " has no collection main";
    }
    const auto info = SFONode::nodeFromString([] {
        std::ifstream in(bundledTruffle() / "info.selfml");
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }());
    EXPECT_FALSE(info->valueForKey("name").value_or("").empty());
    EXPECT_FALSE(info->valueForKey("scope").value_or("").empty());
}

// truffles/Base/scopes.txt lists every scope the bundled definitions give (without the
// language component), for theme authors. It must not fall behind the definitions.
TEST(BundledTruffle, ScopeListMatchesTheDefinitions) {
    std::set<std::string> used;
    for (const auto& language : bundledLanguages()) {
        for (auto scope : walkDefinition(language).scopes) {
            if (endsWith(scope, languageSuffix(language.name)))
                scope.resize(scope.size() - languageSuffix(language.name).size());
            used.insert(scope);
        }
    }
    std::set<std::string> listed;
    std::ifstream in(bundledTruffle() / "scopes.txt");
    ASSERT_TRUE(in) << "truffles/Base/scopes.txt is missing";
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && line.front() != '#') listed.insert(line);
    std::vector<std::string> missing, stale;
    std::set_difference(used.begin(), used.end(), listed.begin(), listed.end(), std::back_inserter(missing));
    std::set_difference(listed.begin(), listed.end(), used.begin(), used.end(), std::back_inserter(stale));
    EXPECT_TRUE(missing.empty()) << "used but not listed:" << joined(missing);
    EXPECT_TRUE(stale.empty()) << "listed but not used:" << joined(stale);
}

}  // namespace
}  // namespace vx::test
