#include "languages/definition_walk.hpp"

#include <set>

namespace vx::test {

namespace {

const std::set<std::string> kZoneKeys = {"start", "end", "match", "inner-identifier", "subzones"};
const std::set<std::string> kPatternKeys = {"regex",         "list",        "boundary.left",
                                            "boundary.right", "boundary.both", "anchor.left",
                                            "anchor.right",  "anchor.both", "ignore-case"};

class Walker {
public:
    explicit Walker(DefinitionWalk& out) : m_out(out) {}

    void entries(const SFONodePtr& parent, const std::string& where) {
        for (const auto& child : lists(parent)) {
            if (child->head() == "zone") zone(child, where);
            else if (child->head() == "include") m_out.includes.push_back({where, strings(child)});
            else problem(where, "unexpected (" + child->head() + ")");
        }
    }

private:
    void problem(const std::string& where, const std::string& what) {
        m_out.problems.push_back(where + ": " + what);
    }

    void zone(const SFONodePtr& node, const std::string& parent) {
        ++m_out.zoneCount;
        const auto names = strings(node);
        const std::string name = names.empty() ? "" : names.front();
        const std::string where = parent + " / zone " + name;
        if (name.empty()) problem(where, "zone without a name");
        else m_out.scopes.push_back(name);
        if (names.size() > 1) problem(where, "stray string \"" + names[1] + "\"");

        for (const auto& key : lists(node))
            if (!kZoneKeys.count(key->head())) problem(where, "unexpected (" + key->head() + ")");
        const auto start = node->nodeForKey("start"), end = node->nodeForKey("end");
        if (bool(start) != bool(end)) problem(where, "start without end, or end without start");
        if (start && node->nodeForKey("match")) problem(where, "both start/end and match");
        std::string startExpression;
        if (start) startExpression = pattern(start, where + " / start", false, "");
        if (end) pattern(end, where + " / end", true, startExpression);
        if (const auto match = node->nodeForKey("match")) pattern(match, where + " / match", false, "");
        if (const auto inner = node->nodeForKey("inner-identifier")) {
            const auto scope = inner->firstIfString();
            if (!scope || scope->empty()) problem(where, "inner-identifier without a scope");
            else m_out.scopes.push_back(*scope);
        }
        if (const auto subzones = node->nodeForKey("subzones")) {
            if (!lists(subzones).empty()) ++m_out.zonesWithSubzones;
            entries(subzones, where);
        }
    }

    // Returns the pattern's regular expression, if it is one.
    std::string pattern(const SFONodePtr& node, const std::string& where, bool isEnd,
                        const std::string& startExpression) {
        for (const auto& key : lists(node)) {
            if (!kPatternKeys.count(key->head())) problem(where, "unexpected (" + key->head() + ")");
            else if (key->head() != "regex" && key->head() != "list" && key->childCount() != 0)
                problem(where, "flag (" + key->head() + ") with children");
        }
        if (const auto list = node->nodeForKey("list")) {
            if (strings(list).empty()) problem(where, "empty list");
            return "";
        }
        if (const auto regex = node->nodeForKey("regex")) {
            const auto expression = regex->firstIfString();
            if (!expression || expression->empty()) {
                problem(where, "empty regex");
                return "";
            }
            RegexUse use{where, *expression, isEnd, startExpression, {}};
            for (const auto& capture : lists(regex)) {
                const auto scope = capture->firstIfString();
                if (!scope || scope->empty()) problem(where, "capture " + capture->head() + " without a scope");
                else m_out.scopes.push_back(*scope);
                use.captureKeys.push_back(capture->head());
            }
            m_out.regexes.push_back(std::move(use));
            return *expression;
        }
        if (!node->firstIfString() || node->firstIfString()->empty()) problem(where, "empty pattern");
        return "";
    }

    DefinitionWalk& m_out;
};

}  // namespace

DefinitionWalk walkDefinition(const BundledLanguage& language) {
    DefinitionWalk out;
    Walker walker(out);
    if (!language.syntax) {
        out.problems.push_back(language.name + ": syntax.selfml cannot be read");
        return out;
    }
    int roots = 0;
    for (const auto& child : language.syntax->children()) {
        if (child.isString()) {
            out.problems.push_back("top level: stray string \"" + child.string() + "\"");
            continue;
        }
        const auto& node = child.node();
        const auto name = node->firstIfString().value_or("");
        if (node->head() == "root") {
            ++roots;
            out.rootScope = name;
            walker.entries(node, "root");
        } else if (node->head() == "collection") {
            if (name.empty()) out.problems.push_back("top level: collection without a name");
            if (lists(node).empty()) out.problems.push_back("collection " + name + " is empty");
            out.collections.push_back(name);
            walker.entries(node, "collection " + name);
        } else {
            out.problems.push_back("top level: unexpected (" + node->head() + ")");
        }
    }
    if (roots != 1) out.problems.push_back("expected one (root ...), found " + std::to_string(roots));
    if (out.rootScope.empty()) out.problems.push_back("root without a scope");
    return out;
}

}  // namespace vx::test
