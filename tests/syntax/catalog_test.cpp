// Truffles on disk and the choice of a language for a file.
#include <gtest/gtest.h>

#include <filesystem>

#include "support/temp_dir.hpp"
#include "syntax/document_highlighter.hpp"
#include "document/text_storage.hpp"
#include "syntax/language_catalog.hpp"
#include "syntax/language_chooser.hpp"

namespace {

using namespace vx;

// Two truffles: bundled C, C++ and shell; a user truffle that replaces shell.
struct Truffles {
    test::TempDir dir;
    VXLanguageCatalog catalog;
    Truffles() {
        dir.write("bundled/Base/info.selfml", "(name Base) (scope vellumex)");
        language("bundled/Base", "c", "(name C) (name-glob *.c *.h) (tab-size 8) (soft-tabs no)"
                 " (comment (line //) (start /*) (end */)) (pairs (pair [(] [)]) (pair a b))");
        language("bundled/Base", "c++", "(name C++) (name-glob *.cpp *.h) (content-regex [\\bclass\\b])");
        language("bundled/Base", "shell", "(name Shell) (name-glob *.sh) (content-regex [\\A#!.*\\bsh\\b])");
        language("user/Mine", "shell", "(name My Shell) (name-glob *.sh *.bash) (content-regex [\\A#!.*\\bbash\\b])");
        catalog.loadTruffleDirectories({dir.path() + "/bundled", dir.path() + "/user"});
        catalog.setUserDefinedLanguages({{"inc", "c++"}});
    }
    void language(const std::string& truffle, const std::string& name, const std::string& settings) {
        dir.write(truffle + "/Languages/" + name + "/syntax.selfml", "(root source." + name + " (zone kw (match `x`)))");
        dir.write(truffle + "/Languages/" + name + "/language.selfml", settings);
    }
    std::string detect(const std::string& name, std::u16string_view text = {}) {
        const VXLanguage* language = catalog.detectLanguageForFilePath(dir.path() + "/src/" + name, text);
        return language ? language->identifier : "(none)";
    }
};

TEST(LanguageCatalog, ReadsTrufflesAndLanguageSettings) {
    Truffles t;
    ASSERT_EQ(t.catalog.allLanguages().size(), 4u);  // c, c++, the user's shell, plain text
    const VXLanguage* c = t.catalog.languageNamed("C");
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->truffleScope, "vellumex");
    EXPECT_EQ(c->tabSize, 8);
    EXPECT_EQ(c->softTabs, false);
    EXPECT_EQ(c->blockCommentEnd, "*/");
    EXPECT_EQ(c->pairs.size(), 2u);
    EXPECT_EQ(t.catalog.languageNamed("cpp"), t.catalog.languageNamed("C++"));  // normalised names
    EXPECT_EQ(t.catalog.languageNamed("shell")->name, "My Shell");              // the user's replaces
    EXPECT_EQ(t.catalog.languageNamed("txt")->name, "Plain Text");              // exists without a file

    VXSyntaxZoneManager manager;
    t.catalog.attachTo(manager);
    VXSyntaxRuleset* cpp = manager.rulesetForLanguage("c++");
    ASSERT_NE(cpp, nullptr);
    EXPECT_EQ(cpp->fullLanguageIdentifier, "c++.vellumex");
    EXPECT_EQ(formatScopes(highlightText(u"yx", *cpp)), "L0:\n0-1 source.c++\n1-2 source.c++ kw.c++\n");
    VXSyntaxRuleset* plain = manager.rulesetForLanguage("txt");
    ASSERT_NE(plain, nullptr);
    EXPECT_EQ(formatScopes(highlightText(u"x", *plain)), "L0:\n0-1 text.plain\n");
}

TEST(LanguageCatalog, ChoosesByUserChoiceGlobContentSiblingsThenPlainText) {
    Truffles t;
    EXPECT_EQ(t.detect("main.c"), "c");
    EXPECT_EQ(t.detect("MAIN.C"), "c");                            // globs ignore case
    EXPECT_EQ(t.detect("lib.inc"), "c++");                         // the user's mapping
    EXPECT_EQ(t.detect("a.h", u"class A {};"), "c++");             // content settles a tie
    EXPECT_EQ(t.detect("a.h", u"int x;"), "c");                    // first in order otherwise
    EXPECT_EQ(t.detect("run", u"#!/bin/bash\necho"), "shell");     // content alone
    EXPECT_EQ(t.detect("notes"), "txt");
    EXPECT_EQ(t.detect("notes.txt", u"#!/bin/bash"), "txt");       // a glob beats content
    // Only the head of the text is looked at.
    std::u16string late(600, u' ');
    late += u"class";
    EXPECT_EQ(t.detect("b.h", late), "c");

    // The document's chooser answers the same, with the root scope of the language's ruleset.
    VXSyntaxLanguageChooser chooser(t.catalog);
    const auto chosen = chooser.detectLanguageForFilePath(t.dir.path() + "/src/a.h", VXTextStorage(u"class A {};"));
    ASSERT_TRUE(chosen.has_value());
    EXPECT_EQ(chosen->identifier, "c++");
    EXPECT_EQ(chooser.plainTextLanguage().identifier, "txt");

    // A sibling with the same base name decides between C and C++.
    t.dir.write("src/widget.cpp", "");
    t.dir.write("src/widget.h", "");
    EXPECT_EQ(t.detect("widget.h", u"int x;"), "c++");
}

}  // namespace
