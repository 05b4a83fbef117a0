// vx selector score SELECTOR [SCOPE ...] | vx selector best SCOPES -- SELECTOR...
#include <sstream>
#include <string>
#include <vector>

#include "app/commands/command.hpp"
#include "selectors/selector.hpp"

namespace vx::cli {
namespace {

VXContext contextOf(const std::vector<std::string>& scopes) {
    std::vector<VXScope> built;
    for (const std::string& scope : scopes) built.emplace_back(scope);
    return VXContext::fromScopes(built);
}

// One argument of scopes separated by blanks, outermost first.
std::vector<std::string> splitScopes(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> scopes;
    for (std::string scope; stream >> scope;) scopes.push_back(scope);
    return scopes;
}

void registerSelector(CLI::App& app) {
    auto* selector = app.add_subcommand("selector", "Compile scope selectors and score them against scope stacks");
    selector->require_subcommand(1);

    static std::string scoreSelector;
    static std::vector<std::string> scoreScopes;
    auto* score = selector->add_subcommand("score", "Print the score the selector gives the scope stack (0: no match)");
    score->add_option("SELECTOR", scoreSelector, "A scope selector")->required();
    score->add_option("SCOPE", scoreScopes, "The scopes of the stack, outermost first");
    score->callback([] {
        const VXSelector* compiled = VXSelector::compileString(scoreSelector);
        writeOutput(compiled->operateOnContext(contextOf(scoreScopes)).str() + "\n");
    });

    static std::string bestScopes;
    static std::vector<std::string> bestSelectors;
    auto* best = selector->add_subcommand(
        "best", "Print the 0-based index of the selector the best-match rule picks, or -1 when none matches");
    best->add_option("SCOPES", bestScopes, "One argument: the scopes of the stack separated by spaces, outermost first")
        ->required();
    best->add_option("SELECTOR", bestSelectors, "The candidate selectors, after --");
    best->callback([] {
        // Without "--" a selector is easily taken for part of the scopes; no candidates is a mistake.
        if (bestSelectors.empty())
            throw CommandFailure("selector best: no selectors given (write them after --: vx selector best SCOPES -- SELECTOR...)");
        std::vector<const VXSelector*> candidates;
        for (const std::string& text : bestSelectors) candidates.push_back(VXSelector::compileString(text));
        auto chosen = bestItemInArray(candidates, std::identity(), contextOf(splitScopes(bestScopes)));
        long index = chosen ? long(chosen - candidates.data()) : -1;
        writeOutput(std::to_string(index) + "\n");
    });
}

const CommandRegistration registration("selector", registerSelector);

}  // namespace
}  // namespace vx::cli
