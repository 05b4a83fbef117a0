// Runs every keystroke case under tests/data/keys/<group>/<case>/:
//   in      the text before, with the selections marked: #[...|]# the primary, #(...|)# others
//           (the caret on the | side)
//   keys    the key script (see app/editor/session.hpp)
//   out     the text and selection after
//   screen  (optional) the first rows of the screen after, trailing blanks ignored
//   size    (optional) the screen size, "WIDTHxHEIGHT" (default 60x12)
//   tabs    (optional) the indentation, "<size> soft" or "<size> hard" (default "4 soft")
//   language (optional) the language the text is in (default: none, plain text)
//   snippets (optional) a snippets file (as in a truffle's Snippets folder) whose snippets join
//            the bundled ones for this case
// Each case is a test of its own, named after its folder (move/word-right is
// Keys/KeyScript.GivesItsExpectedTextSelectionAndScreen/move_word_right); it runs with LF line
// breaks and again with CRLF.
#include "support/build_paths.hpp"
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "app/editor/edit_document.hpp"
#include "app/editor/session.hpp"
#include "platform/paths.hpp"
#include "snippets/snippet_catalog.hpp"
#include "syntax/language_catalog.hpp"
#include "app/tui/utf8.hpp"

namespace vx::editor {
namespace {

namespace fs = std::filesystem;

std::optional<std::string> readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::stringstream buffer;
    buffer << in.rdbuf();
    std::string text = buffer.str();
    if (!text.empty() && text.back() == '\n') text.pop_back();  // the file's own last line break
    return text;
}

std::string withCrlf(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\n') out += '\r';
        out += c;
    }
    return out;
}

// The text with its selections: #[...|]# is the primary, #(...|)# a secondary; | marks the
// caret's end.
struct Marked {
    std::u16string text;
    std::vector<Selection> selections;  // the primary first
};

Marked parseMarkup(const std::string& markup) {
    std::u16string all = utf16FromUtf8(markup);
    Marked marked;
    std::optional<std::pair<uint64_t, bool>> open;  // start, and whether the caret is at it
    bool openPrimary = false;
    std::vector<Selection> secondaries;
    Selection primary;
    for (size_t i = 0; i < all.size();) {
        std::u16string_view rest = std::u16string_view(all).substr(i);
        if (!open && (rest.starts_with(u"#[") || rest.starts_with(u"#("))) {
            openPrimary = rest[1] == u'[';
            i += 2;
            bool caretFirst = i < all.size() && all[i] == u'|';
            if (caretFirst) ++i;
            open = {marked.text.size(), caretFirst};
            continue;
        }
        if (open && (rest.starts_with(u"|]#") || rest.starts_with(u"|)#") || rest.starts_with(u"]#") || rest.starts_with(u")#"))) {
            i += rest[0] == u'|' ? 3 : 2;
            uint64_t start = open->first, end = marked.text.size();
            Selection s = open->second ? Selection{end, start} : Selection{start, end};
            if (openPrimary) primary = s;
            else secondaries.push_back(s);
            open.reset();
            continue;
        }
        marked.text += all[i++];
    }
    marked.selections.push_back(primary);
    marked.selections.insert(marked.selections.end(), secondaries.begin(), secondaries.end());
    return marked;
}

std::string formatMarkup(const std::u16string& text, const std::vector<Selection>& selections, size_t primaryIndex) {
    std::u16string out = text;
    for (size_t i = selections.size(); i-- > 0;) {
        Range range = selections[i].range();
        bool caretFirst = selections[i].caret < selections[i].anchor;
        std::u16string_view open = i == primaryIndex ? u"#[" : u"#(", close = i == primaryIndex ? u"]#" : u")#";
        out.insert(range.end(), std::u16string(caretFirst ? u"" : u"|") + std::u16string(close));
        out.insert(range.location, std::u16string(open) + (caretFirst ? u"|" : u""));
    }
    return utf8FromUtf16(out);
}

std::string trimRight(std::string text) {
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text;
}

fs::path casesRoot() { return fs::path(VX_TEST_DATA_DIR) / "keys"; }

// Every folder under tests/data/keys that holds a key script, in a stable order.
std::vector<fs::path> caseFolders() {
    std::vector<fs::path> folders;
    for (const auto& entry : fs::recursive_directory_iterator(casesRoot()))
        if (entry.is_directory() && fs::exists(entry.path() / "keys")) folders.push_back(entry.path());
    std::sort(folders.begin(), folders.end());
    return folders;
}

// A case's test name is its folder under keys/, e.g. move_word_right for move/word-right.
std::string caseName(const testing::TestParamInfo<fs::path>& info) {
    std::string name = info.param.lexically_relative(casesRoot()).string();
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name;
}

class KeyScript : public testing::TestWithParam<fs::path> {};

TEST_P(KeyScript, GivesItsExpectedTextSelectionAndScreen) {
    const fs::path& directory = GetParam();
    auto in = readFile(directory / "in");
    auto keys = readFile(directory / "keys");
    auto out = readFile(directory / "out");
    ASSERT_TRUE(in && keys && out) << directory << " needs in, keys and out";
    int width = 60, height = 12;
    if (auto size = readFile(directory / "size")) std::sscanf(size->c_str(), "%dx%d", &width, &height);
    auto screen = readFile(directory / "screen");
    auto language = readFile(directory / "language");
    VXSnippetCatalog snippets;
    const bool ownSnippets = fs::exists(directory / "snippets");
    if (ownSnippets) {
        snippets.loadTruffleDirectories({bundledTrufflesDirectory()});
        snippets.loadFile((directory / "snippets").string());
    }
    int tabSize = 4;
    char kind[8] = "soft";
    if (auto tabs = readFile(directory / "tabs")) std::sscanf(tabs->c_str(), "%d %7s", &tabSize, kind);
    for (bool crlf : {false, true}) {
        SCOPED_TRACE(crlf ? "with CRLF line breaks" : "with LF line breaks");
        Marked start = parseMarkup(crlf ? withCrlf(*in) : *in);
        Session session(width, height);
        if (ownSnippets) session.editor().setSnippetCatalog(&snippets);
        Tab* openedTab = nullptr;
        if (language) {
            const VXLanguage* named = VXLanguageCatalog::sharedCatalog().languageNamed(*language);
            ASSERT_NE(named, nullptr) << "no language " << *language;
            openedTab = &session.editor().openTab(std::make_unique<Tab>(documentWithText(utf8FromUtf16(start.text), named)));
        } else {
            openedTab = &session.openText(start.text);
        }
        Tab& opened = *openedTab;
        opened.view().setSelections(start.selections);
        // As a document read from a CRLF file would be set up.
        if (crlf) opened.setLineBreak(u"\r\n");
        opened.setIndentation(tabSize, std::string_view(kind) == "soft");
        session.send(*keys);
        session.screen();  // what was still coming in (a snippet's shell output) arrives, as before a frame
        Tab* tab = session.editor().activeTab();
        ASSERT_NE(tab, nullptr);
        size_t primary = 0;
        auto selections = tab->view().selections(&primary);
        EXPECT_EQ(formatMarkup(tab->text().text(), selections, primary), crlf ? withCrlf(*out) : *out);
        if (screen && !crlf) {
            std::istringstream rows(*screen);
            std::string want;
            for (int y = 0; std::getline(rows, want); ++y) EXPECT_EQ(trimRight(session.row(y)), trimRight(want)) << "row " << y;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Keys, KeyScript, testing::ValuesIn(caseFolders()), caseName);

TEST(KeyScripts, ScriptSyntaxErrorsNameTheToken) {
    EXPECT_THROW(parseKeyScript("a<nokey>"), KeyScriptError);
    EXPECT_THROW(parseKeyScript("<paste>abc"), KeyScriptError);
    EXPECT_THROW(parseKeyScript("<click 1>"), KeyScriptError);
    auto events = parseKeyScript("a\n<lt><ctrl+s><paste>x\ny</paste><click 3,4><resize 20x5>");
    ASSERT_EQ(events.size(), 6u);
    EXPECT_EQ(std::get<tui::KeyEvent>(events[1]).codepoint, U'<');
    EXPECT_EQ(std::get<tui::PasteEvent>(events[3]).text, "x\ny");
    EXPECT_EQ(std::get<tui::MouseEvent>(events[4]).y, 4);
    EXPECT_EQ(std::get<tui::ResizeEvent>(events[5]).width, 20);
}

}  // namespace
}  // namespace vx::editor
