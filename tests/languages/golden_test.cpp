// The samples under tests/data/syntax/<language>/ highlighted by vx, compared with the expected
// scopes kept beside them (<sample>.scopes, written by scripts/regen-golden.sh and checked by
// eye). A difference means a definition or the highlighter changed what users see.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "languages/bundled_files.hpp"
#include "support/run_command.hpp"

namespace vx::test {
namespace {

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The first line where two texts differ, with both versions, for the failure message.
std::string firstDifference(const std::string& want, const std::string& got) {
    std::istringstream a(want), b(got);
    std::string lineA, lineB;
    for (int number = 1;; ++number) {
        const bool moreA = bool(std::getline(a, lineA)), moreB = bool(std::getline(b, lineB));
        if (!moreA && !moreB) return "no difference";
        if (!moreA || !moreB || lineA != lineB)
            return "output line " + std::to_string(number) + ":\n  expected: " + (moreA ? lineA : "<end>") +
                   "\n  actual:   " + (moreB ? lineB : "<end>");
    }
}

TEST(LanguageSamples, HighlightAsRecorded) {
    setenv("VX_TRUFFLES", (std::filesystem::path(VX_SOURCE_DIR) / "truffles").c_str(), 1);
    const auto root = std::filesystem::path(VX_SOURCE_DIR) / "tests" / "data" / "syntax";
    int samples = 0;
    for (const auto& language : bundledLanguages()) {
        const auto folder = root / language.name;
        ASSERT_TRUE(std::filesystem::is_directory(folder)) << "no samples for " << language.name;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            const auto& sample = entry.path();
            if (sample.extension() == ".scopes") continue;
            ++samples;
            const auto expected = std::filesystem::path(sample.string() + ".scopes");
            ASSERT_TRUE(std::filesystem::exists(expected)) << expected << " is missing (scripts/regen-golden.sh)";
            const auto result =
                runCommand({VX_BINARY, "highlight", "--format", "scopes", "--language", language.name, sample.string()});
            ASSERT_EQ(result.status, 0) << sample << ": " << result.err;
            const std::string want = readFile(expected);
            EXPECT_TRUE(result.out == want) << sample << " highlights differently from its .scopes file, first at "
                                            << firstDifference(want, result.out);
        }
    }
    EXPECT_GE(samples, int(bundledLanguages().size()));
}

}  // namespace
}  // namespace vx::test
