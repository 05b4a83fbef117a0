// The bundled truffle's language folders, read for the definition checks.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "selfml/sfonode.hpp"

namespace vx::test {

struct BundledLanguage {
    std::string name;  // the folder name, which is the language's identifier
    std::filesystem::path folder;
    SFONodePtr syntax;    // syntax.selfml, parsed
    SFONodePtr settings;  // language.selfml, parsed
};

std::filesystem::path bundledTruffle();

// Every folder under truffles/Base/Languages, in name order.
const std::vector<BundledLanguage>& bundledLanguages();
const BundledLanguage* findLanguage(const std::string& name);

// The list children and the string children of a node.
std::vector<SFONodePtr> lists(const SFONodePtr& node);
std::vector<std::string> strings(const SFONodePtr& node);

}  // namespace vx::test
