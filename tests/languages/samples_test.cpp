// Every bundled language has a realistic sample under tests/data/syntax/<language>/ with its
// expected highlighting beside it (<sample>.scopes); the golden runner of the syntax tests
// compares them, but skips a sample that has no .scopes file, so a missing one is caught here.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include <filesystem>

#include "languages/bundled_files.hpp"

namespace vx::test {
namespace {

TEST(LanguageSamples, EveryLanguageHasSamplesWithExpectedScopes) {
    const auto root = std::filesystem::path(VX_SOURCE_DIR) / "tests" / "data" / "syntax";
    for (const auto& language : bundledLanguages()) {
        const auto folder = root / language.name;
        ASSERT_TRUE(std::filesystem::is_directory(folder)) << "no samples for " << language.name;
        int samples = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            const auto& sample = entry.path();
            if (sample.extension() == ".scopes" || sample.extension() == ".new") continue;
            ++samples;
            EXPECT_TRUE(std::filesystem::exists(sample.string() + ".scopes"))
                << sample << " has no .scopes file (scripts/regen-golden.sh " << language.name << ")";
        }
        EXPECT_GT(samples, 0) << language.name;
    }
}

}  // namespace
}  // namespace vx::test
