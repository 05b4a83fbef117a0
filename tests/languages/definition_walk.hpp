// Walks a definition file the way the loader reads it and collects what the checks look at:
// zones, patterns, regular expressions, includes and every scope name written.
#pragma once

#include <string>
#include <vector>

#include "languages/bundled_files.hpp"

namespace vx::test {

struct RegexUse {
    std::string where;        // "collection main / zone string.quoted.double / end"
    std::string expression;
    bool isEnd = false;
    std::string startExpression;  // for an end pattern: its zone's start expression
    std::vector<std::string> captureKeys;
};

struct IncludeUse {
    std::string where;
    std::vector<std::string> targets;  // the include's strings
};

struct DefinitionWalk {
    std::vector<std::string> problems;  // structural faults, one line each
    std::vector<RegexUse> regexes;
    std::vector<IncludeUse> includes;
    std::vector<std::string> collections;
    std::vector<std::string> scopes;  // zone names, capture scopes and inner scopes as written
    std::string rootScope;
    int zoneCount = 0;
    int zonesWithSubzones = 0;  // zones whose (subzones ...) holds at least one entry
};

DefinitionWalk walkDefinition(const BundledLanguage& language);

}  // namespace vx::test
