// A document's scoped settings: lookups through its extension and language, and language-specific
// writes.
#include <gtest/gtest.h>

#include "document/default_detector.hpp"
#include "document/document_settings.hpp"

using namespace vx;

namespace {

DocumentSettings document(VXSettingsContext& context, std::string language, std::string path) {
    return DocumentSettings(std::move(language), std::move(path), {&context});
}

TEST(DocumentSettings, LanguageSpecificWriteBecomesGlobalToo) {
    VXSettingsContext c;
    auto rubyFile = document(c, "source.ruby", "/p/lib/a.rb");
    rubyFile.setSetting(int64_t{2}, "VXTabSize", true);

    int64_t level = -1;
    EXPECT_EQ(rubyFile.settingForKey("VXTabSize", &level), PropertyValue(2));
    EXPECT_EQ(level, 2);
    // Another Ruby file with another extension finds it through the language.
    EXPECT_EQ(document(c, "source.ruby", "/p/Rakefile").settingForKey("VXTabSize", &level), PropertyValue(2));
    EXPECT_EQ(level, 1);
    // A file of another language finds the global value written alongside.
    EXPECT_EQ(document(c, "source.python", "/p/x.py").settingForKey("VXTabSize", &level), PropertyValue(2));
    EXPECT_EQ(level, 0);
    EXPECT_EQ(c.strata().size(), 3u);

    // Not language-specific: the global value alone changes. The fallback lookup takes the first
    // stratum holding the key, which is still the extension stratum of the Ruby file.
    document(c, "source.python", "/p/x.py").setSetting(int64_t{8}, "VXTabSize", false);
    EXPECT_EQ(rubyFile.settingForKey("VXTabSize"), PropertyValue(2));
    EXPECT_EQ(c.valueForKey("VXTabSize", 0, nullptr), PropertyValue(8));
    EXPECT_EQ(document(c, "source.python", "/p/x.py").settingForKey("VXTabSize"), PropertyValue(2));
    EXPECT_EQ(c.strata().size(), 3u);

    // A document without a file has no extension stratum to write to; one without a language no
    // language stratum.
    VXSettingsContext d;
    document(d, "source.c", "").setSetting(true, "VXUseSoftTabs", true);
    document(d, "", "/p/notes.TXT").setSetting(false, "VXUseSoftTabs", true);
    const VXSettingsContext::Dictionary cLanguage{{"__language__", "source.c"}}, txt{{"__extension__", "txt"}};
    EXPECT_EQ(d.valueForKey("VXUseSoftTabs", 1, &cLanguage), PropertyValue(true));
    EXPECT_EQ(d.valueForKey("VXUseSoftTabs", 2, &txt), PropertyValue(false));
    EXPECT_EQ(d.strata().size(), 3u);
}

TEST(DocumentSettings, LookupOrder) {
    VXSettingsContext first, second;
    const VXSettingsContext::Dictionary rb{{"__extension__", "rb"}}, ruby{{"__language__", "source.ruby"}},
        python{{"__language__", "source.python"}};
    first.setValue(int64_t{3}, "VXTabSize", 1, &ruby);
    first.setValue(int64_t{5}, "VXTabSize", 2, &rb);
    second.setValue(int64_t{6}, "VXTabSize", 2, &rb);

    DocumentSettings both("source.ruby", "/p/A.Rb", {&first, &second});
    int64_t level = -1;
    // The extension value wins over the language value (the extension is compared lower-cased).
    EXPECT_EQ(both.settingForKey("VXTabSize", &level), PropertyValue(5));
    EXPECT_EQ(level, 2);
    // Contexts are asked one after the other: the first one's language value beats the second's
    // extension value.
    VXSettingsContext languageOnly;
    languageOnly.setValue(int64_t{4}, "VXTabSize", 1, &ruby);
    EXPECT_EQ(DocumentSettings("source.ruby", "/p/a.rb", {&languageOnly, &second}).settingForKey("VXTabSize", &level),
              PropertyValue(4));
    EXPECT_EQ(level, 1);

    // With nothing for this file, any stratum answers, reported as level 0 (here another
    // language's value, since no global one exists).
    VXSettingsContext other;
    other.setValue(int64_t{7}, "VXTabSize", 1, &python);
    EXPECT_EQ(DocumentSettings("source.ruby", "/p/a.rb", {&other}).settingForKey("VXTabSize", &level), PropertyValue(7));
    EXPECT_EQ(level, 0);
    EXPECT_EQ(DocumentSettings("source.ruby", "/p/a.rb", {&other}).settingForKey("VXUseSoftTabs"), std::nullopt);

    EXPECT_EQ(extensionOrFileName("/x/Parser.RB"), "rb");
    EXPECT_EQ(extensionOrFileName("/x/Makefile"), "makefile");
    EXPECT_EQ(extensionOrFileName("/x/.bashrc"), ".bashrc");
    EXPECT_EQ(extensionOrFileName("a.tar.gz"), "gz");
    EXPECT_EQ(DocumentSettings("", "/x/Makefile", {&other}).extensionContext(),
              (VXSettingsContext::Dictionary{{"__extension__", "makefile"}}));
}

}  // namespace
