// Helpers shared by the selector tests.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "selectors/selector.hpp"

namespace vx::test {

inline VXContext contextOf(std::initializer_list<const char*> scopes) {
    std::vector<VXScope> built;
    for (const char* scope : scopes) built.emplace_back(scope);
    return VXContext::fromScopes(built);
}

// The decimal score that the selector text gives the scopes (outermost first).
inline std::string score(const char* selector, std::initializer_list<const char*> scopes) {
    return VXSelector::compileString(selector)->operateOnContext(contextOf(scopes)).str();
}

}  // namespace vx::test
