// The bundled themes: every colour they write reads, and every scope the bundled languages
// produce is styled by a zone of its own rather than falling through to the default.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include <fstream>

#include "selectors/theme.hpp"

using namespace vx;

namespace {

const std::string kBase = std::string(VX_SOURCE_DIR) + "/truffles/Base";

std::vector<std::string> bundledScopes() {
    std::vector<std::string> scopes;
    std::ifstream list(kBase + "/scopes.txt");
    for (std::string line; std::getline(list, line);)
        if (!line.empty() && line[0] != '#') scopes.push_back(line);
    return scopes;
}

TEST(BundledThemes, ColoursReadAndScopesAreCovered) {
    const auto scopes = bundledScopes();
    ASSERT_GT(scopes.size(), 50u);
    for (const char* name : {"Nightfall", "Daybreak"}) {
        SCOPED_TRACE(name);
        const std::string path = kBase + "/Themes/" + name + ".selfml";
        auto theme = VXTheme::initWithThemePath(path);
        ASSERT_TRUE(theme->caretColor.has_value());
        ASSERT_TRUE(theme->defaultZone->foregroundColor && theme->defaultZone->backgroundColor);

        // A colour child that does not read would silently become the clear colour.
        auto root = SFONode::nodeWithContentsOfFile(path);
        for (const auto& apply : root->extract("apply")) {
            for (const char* key : {"color", "background"}) {
                if (auto node = apply->nodeForKey(key)) {
                    EXPECT_TRUE(theme->handleSFOColor(node)) << apply->selfmlRepresentation();
                }
            }
        }

        for (const auto& scope : scopes) {
            const std::vector<VXScope> stack{VXScope("source.c"), VXScope(scope + ".c")};
            EXPECT_NE(theme->zoneForContext(VXContext::fromScopes(stack)), theme->defaultZone) << scope;
        }
    }
}

}  // namespace
