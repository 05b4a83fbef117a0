// Opening and saving a document set up its tab information; its settings go through its file's
// extension and its language.
#include <gtest/gtest.h>

#include "document/single_file_document.hpp"
#include "platform/scoped_home.hpp"
#include "platform/user_defaults.hpp"

namespace vx {
namespace {

struct LanguageOf : LanguageChooser {
    DocumentLanguage language;
    explicit LanguageOf(DocumentLanguage l) : language(std::move(l)) {}
    std::optional<DocumentLanguage> detectLanguageForFilePath(const std::string&, const VXTextStorage&) override {
        return language;
    }
};

struct OpenDocument {
    test::ScopedHome home;
    VXSettingsContext settings;
    VXSingleFileDocument document;
    OpenDocument() { document.setSettingsContexts({&settings}); }
    bool open(const std::string& name, const std::string& text) {
        std::string error;
        return document.readFromURL(home.dir.write(name, text), "txt", &error);
    }
};

TEST(DocumentTabInfo, OpeningChoosesFromTextSettingsAndLanguage) {
    {
        OpenDocument d;
        ASSERT_TRUE(d.open("a.py", "def f():\n    if x:\n        return 1\n    return 2\n"));
        EXPECT_EQ(d.document.indentationContext(), (VXIndentationContext{4, true}));
    }
    {
        OpenDocument d;
        ASSERT_TRUE(d.open("a.c", "int f() {\n\treturn 1;\n}\n"));
        EXPECT_EQ(d.document.indentationContext(), (VXIndentationContext{4, false}));
    }
    {
        // Nothing in the text: the extension's language (Ruby) gives 2; the plain defaults the rest.
        OpenDocument d;
        UserDefaults::standardUserDefaults().setInteger("VXTabSize", 8);
        UserDefaults::standardUserDefaults().setBool("VXUseSoftTabs", true);
        ASSERT_TRUE(d.open("Gemfile.rb", "source 'x'\ngem 'y'\n"));
        EXPECT_EQ(d.document.indentationContext(), (VXIndentationContext{2, true}));
    }
    {
        // A setting for the extension beats the language's default.
        OpenDocument d;
        const VXSettingsContext::Dictionary rb{{"__extension__", "rb"}};
        d.settings.setValue(int64_t{6}, "VXTabSize", 2, &rb);
        d.settings.setValue(false, "VXUseSoftTabs", 2, &rb);
        ASSERT_TRUE(d.open("x.RB", "a\nb\n"));
        EXPECT_EQ(d.document.indentationContext(), (VXIndentationContext{6, false}));
    }
    {
        // The user's own choice survives re-reading.
        OpenDocument d;
        d.document.setTabInfo({3, true});
        d.document.userHasChangedIndentationContext = true;
        ASSERT_TRUE(d.open("t.c", "\ta\n\tb\n"));
        EXPECT_EQ(d.document.indentationContext(), (VXIndentationContext{3, true}));
    }
}

TEST(DocumentTabInfo, SavingUnderAnotherNameSetsUpAgain) {
    OpenDocument d;
    ASSERT_TRUE(d.open("notes.txt", "a\nb\n"));
    EXPECT_EQ(d.document.indentationContext().tabSize, 4u);
    std::string error;
    ASSERT_TRUE(d.document.saveToURL(d.home.dir.path() + "/notes.yml", "txt", VXSingleFileDocument::SaveOperation::SaveAs,
                                     &error))
        << error;
    EXPECT_EQ(d.document.indentationContext().tabSize, 2u);  // YAML's default
}

TEST(DocumentTabInfo, SettingsThroughTheDocument) {
    OpenDocument d;
    LanguageOf ruby({"Ruby", "source.ruby", "source.ruby"});
    d.document.setLanguageChooser(&ruby);
    ASSERT_TRUE(d.open("lib.rb", "x\n"));

    d.document.setSetting(int64_t{3}, "VXTabSize", true);
    int64_t level = -1;
    EXPECT_EQ(d.document.settingForKey("VXTabSize", &level), PropertyValue(3));
    EXPECT_EQ(level, 2);
    const VXSettingsContext::Dictionary language{{"__language__", "source.ruby"}};
    EXPECT_EQ(d.settings.valueForKey("VXTabSize", 1, &language), PropertyValue(3));
    EXPECT_EQ(d.settings.valueForKey("VXTabSize", 0, nullptr), PropertyValue(3));

    // Re-opening takes the language-specific value over Ruby's default of 2.
    ASSERT_TRUE(d.open("other.rake", "y\n"));
    EXPECT_EQ(d.document.indentationContext().tabSize, 3u);
    EXPECT_EQ(d.document.settingForKey("VXTabSize", &level), PropertyValue(3));
    EXPECT_EQ(level, 1);
}

}  // namespace
}  // namespace vx
