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
#include "syntax/language_catalog.hpp"
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
    const fs::path samples = test::BundledLanguages::samplesDirectory();
    std::error_code error;
    if (!fs::is_directory(samples, error)) GTEST_SKIP() << "no samples in " << samples;
    test::BundledLanguages bundled;
    auto& catalog = bundled.catalog;
    auto& manager = bundled.manager;
    const bool update = std::getenv("VX_UPDATE_GOLDEN") && std::string(std::getenv("VX_UPDATE_GOLDEN")) == "1";

    int compared = 0;
    for (const auto& entry : fs::recursive_directory_iterator(samples, error)) {
        const fs::path sample = entry.path();
        const fs::path expected = sample.string() + ".scopes";
        if (!entry.is_regular_file() || !fs::is_regular_file(expected, error)) continue;
        const std::string bytes = *readWholeFile(sample.string());
        const std::u16string text = utf16FromUtf8(bytes);
        const VXLanguage* language = catalog.languageNamed(sample.parent_path().filename().string());
        if (!language) language = catalog.detectLanguageForFilePath(sample.string(), text);
        ASSERT_NE(language, nullptr) << sample;
        VXSyntaxRuleset* ruleset = manager.rulesetForLanguage(language->folderName);
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
