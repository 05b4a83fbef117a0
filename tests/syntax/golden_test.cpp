// Golden files: every sample tests/data/syntax/<language>/<case>.<ext> that has a
// <case>.<ext>.scopes beside it is highlighted as the language its folder names (or the one
// chosen for the file when the folder names none), and must give exactly that output. A
// mismatch writes <case>.<ext>.scopes.new for a person to diff; VX_UPDATE_GOLDEN=1 replaces the
// stored file instead (scripts/regen-golden.sh does the same through `vx highlight`). Each sample
// must also highlight the same with CR LF line breaks.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/file_cache.hpp"
#include "syntax/document_highlighter.hpp"
#include "syntax/mapped_string.hpp"
#include "syntax_test_support.hpp"

namespace {

using namespace vx;
namespace fs = std::filesystem;

void writeFile(const fs::path& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
}

TEST(Golden, SamplesHighlightAsStored) {
    test::BundledLanguages bundled;
    const bool update = std::getenv("VX_UPDATE_GOLDEN") && std::string(std::getenv("VX_UPDATE_GOLDEN")) == "1";

    int compared = 0;
    std::error_code error;
    for (const auto& [sample, text, language, ruleset] : bundled.samples()) {
        const fs::path expected = sample + ".scopes";
        ASSERT_NE(language, nullptr) << sample;
        ASSERT_NE(ruleset, nullptr) << "cannot load " << language->name << " for " << sample;

        const std::string actual = formatScopes(highlightText(text, *ruleset));
        const std::string stored = *readWholeFile(expected.string());
        ++compared;
        // The same text with CR LF line breaks highlights the same.
        std::u16string crlf;
        for (char16_t c : text) c == u'\n' ? crlf += u"\r\n" : crlf += c;
        EXPECT_EQ(formatScopes(highlightText(crlf, *ruleset)), actual) << sample << " with CR LF line breaks";
        const fs::path fresh = expected.string() + ".new";
        if (actual == stored) {
            fs::remove(fresh, error);
            continue;
        }
        if (update) {
            writeFile(expected, actual);
            continue;
        }
        writeFile(fresh, actual);
        ADD_FAILURE() << sample << " highlights differently from " << expected << "; see " << fresh;
    }
    if (compared == 0) GTEST_SKIP() << "no sample has stored scopes yet";
}

}  // namespace
