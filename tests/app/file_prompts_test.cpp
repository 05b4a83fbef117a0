// What the editor asks and says around files: replacing another file on Save As, saving a text
// that was valid in no encoding, a failed save, paths with "~", new files' languages, the command
// line's line numbers, recovery, line endings and tab settings.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "app/editor/file_location.hpp"
#include "app/editor/files.hpp"
#include "app/editor/session.hpp"
#include "platform/atomic_file.hpp"
#include "platform/file_cache.hpp"
#include "platform/user_defaults.hpp"
#include "support/temp_dir.hpp"

namespace vx::editor {
namespace {

namespace fs = std::filesystem;

class FilePrompts : public testing::Test {
protected:
    void SetUp() override { setenv("VX_HOME", m_home.path().c_str(), 1); }
    void TearDown() override { unsetenv("VX_HOME"); }
    std::string screenText(Session& session, int rows) {
        std::string text;
        for (int y = 0; y < rows; ++y) text += session.row(y) + "\n";
        return text;
    }
    test::TempDir m_home;
    test::TempDir m_files;
};

TEST_F(FilePrompts, SaveAsOverAnotherFileAsksFirstAndExpandsTheHomeFolder) {
    const std::string other = m_files.write("other.c", "int keep;\n");
    Session session(90, 14);
    session.send("<ctrl+n>new text<alt+s>");
    ASSERT_TRUE(session.editor().hasModal());
    // An untitled text suggests the current folder, with one slash.
    const std::string prompt = session.row(13);
    EXPECT_EQ(prompt.find("//"), std::string::npos) << prompt;
    EXPECT_NE(prompt.find(fs::current_path().string() + "/"), std::string::npos) << prompt;

    session.send("<ctrl+u>" + other + "<enter>");
    ASSERT_TRUE(session.editor().hasModal());
    EXPECT_NE(screenText(session, 14).find("\u201cother.c\u201d already exists"), std::string::npos) << screenText(session, 14);
    session.send("c");  // Cancel
    EXPECT_EQ(readWholeFile(other), "int keep;\n");
    EXPECT_TRUE(session.editor().activeTab()->isModified());

    session.send("<alt+s><ctrl+u>" + other + "<enter>r");  // Replace
    EXPECT_EQ(readWholeFile(other), "new text");
    EXPECT_FALSE(session.editor().activeTab()->isModified());

    // "~" is the home folder.
    const char* previous = std::getenv("HOME");
    const std::string savedHome = previous ? previous : "";
    ::setenv("HOME", m_files.path().c_str(), 1);
    session.send("<alt+s><ctrl+u>~/tilde.txt<enter>");
    if (previous) ::setenv("HOME", savedHome.c_str(), 1); else ::unsetenv("HOME");
    EXPECT_EQ(readWholeFile(m_files.path() + "/tilde.txt"), "new text");
    EXPECT_EQ(expandTilde("~"), savedHome.empty() ? "~" : savedHome);
    EXPECT_EQ(expandTilde("~root/x"), "/root/x");
    EXPECT_EQ(expandTilde("~no-such-user-here/x"), "~no-such-user-here/x");
    EXPECT_EQ(expandTilde("a/~b"), "a/~b");
}

TEST_F(FilePrompts, ATextValidInNoEncodingIsSavedOnlyWhenTheUserAgrees) {
    const std::string bytes = "\x81\x8D\x8F\x90\x9D\n";
    const std::string path = m_files.write("odd.txt", bytes);
    Session session(100, 14);
    ASSERT_TRUE(openFile(session.editor(), path));
    EXPECT_NE(session.editor().message().find("not valid text in any encoding"), std::string::npos)
        << session.editor().message();
    session.send("<ctrl+s>");
    ASSERT_TRUE(session.editor().hasModal());
    EXPECT_NE(screenText(session, 14).find("Save as UTF-8"), std::string::npos);
    session.send("c");
    EXPECT_EQ(readWholeFile(path), bytes);
    session.send("<ctrl+s>s");
    EXPECT_EQ(decodeStrictly(*readWholeFile(path), encoding::kUTF8), session.editor().activeTab()->text().text());
    session.send("x<ctrl+s>");  // asked once only
    EXPECT_FALSE(session.editor().hasModal());
}

TEST_F(FilePrompts, AFailedWriteShowsItsReasonAndLeavesTheFile) {
    const std::string path = m_files.write("kept.txt", "original\n");
    Session session(100, 10);
    ASSERT_TRUE(openFile(session.editor(), path));
    session.send("more ");
    const FileSystemCalls saved = fileSystemCalls();
    fileSystemCalls().fsync = [](int) {
        errno = ENOSPC;
        return -1;
    };
    session.send("<ctrl+s>");
    fileSystemCalls() = saved;
    EXPECT_EQ(readWholeFile(path), "original\n");
    EXPECT_TRUE(session.editor().activeTab()->isModified());
    EXPECT_NE(session.row(9).find(std::strerror(ENOSPC)), std::string::npos) << session.row(9);
}

TEST_F(FilePrompts, ANewFileIsColouredByItsNameBeforeItsFirstSave) {
    Session session(80, 10);
    ASSERT_TRUE(openFile(session.editor(), m_files.path() + "/new.c"));
    EXPECT_EQ(session.editor().activeTab()->languageName(), "C");
    EXPECT_NE(session.editor().activeTab()->highlighter(), nullptr);
}

TEST_F(FilePrompts, CommandLineLineAndColumn) {
    const std::string literal = m_files.write("odd:12", "x");
    auto exists = [&](const std::string& path) { return fs::exists(path); };
    using L = FileLocation;
    EXPECT_EQ(fileLocationsFromArguments({"a.c:500"}, exists), (std::vector<L>{{"a.c", 500, std::nullopt}}));
    EXPECT_EQ(fileLocationsFromArguments({"a.c:500:7"}, exists), (std::vector<L>{{"a.c", 500, 7}}));
    EXPECT_EQ(fileLocationsFromArguments({"+500", "a.c", "b.c"}, exists),
              (std::vector<L>{{"a.c", 500, std::nullopt}, {"b.c", std::nullopt, std::nullopt}}));
    EXPECT_EQ(fileLocationsFromArguments({literal}, exists), (std::vector<L>{{literal, std::nullopt, std::nullopt}}));
    EXPECT_EQ(fileLocationsFromArguments({"a.c:x", "+5"}, exists),
              (std::vector<L>{{"a.c:x", std::nullopt, std::nullopt}, {"+5", std::nullopt, std::nullopt}}));

    std::string text;
    for (int i = 1; i <= 50; ++i) text += "line " + std::to_string(i) + "\n";
    const std::string path = m_files.write("lines.txt", text);
    Session session(80, 10);
    openStartupPaths(session.editor(), {path + ":30:3"});
    Tab& tab = *session.editor().activeTab();
    EXPECT_EQ(tab.path(), path);
    EXPECT_EQ(tab.caretLine(), 29u);
    EXPECT_EQ(tab.caretColumn(), 2u);
    EXPECT_NE(screenText(session, 10).find("line 30"), std::string::npos);
}

TEST_F(FilePrompts, RecoveryKeepsOneFilePerBufferAndThenOpensTheCommandLine) {
    const std::string path = m_files.write("notes.txt", "old");
    {
        Session session(60, 10);
        openFile(session.editor(), path);
        session.send("<ctrl+end> new");
        EXPECT_EQ(writeRecoveryFiles(session.editor()), 1);
        session.send("er");
        EXPECT_EQ(writeRecoveryFiles(session.editor()), 1);  // a second hang-up replaces the first
    }
    size_t files = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(recoveryDirectory())) ++files;
    EXPECT_EQ(files, 2u);  // the text and its description

    fs::create_directories(m_files.path() + "/folder");
    m_files.write("folder/a.txt", "a");
    Session next(80, 14);
    offerRecoveredFiles(next.editor(), [&](Editor& e) { openStartupPaths(e, {m_files.path() + "/folder"}); });
    next.send("l");  // Later
    // The folder asked for is shown, as a project in quick open, once the question is answered.
    ASSERT_TRUE(next.editor().hasModal());
    EXPECT_NE(screenText(next, 14).find("Open quickly in " + m_files.path() + "/folder"), std::string::npos)
        << screenText(next, 14);
}

TEST_F(FilePrompts, ConvertingToTheStyleTheTextHasIsNoChange) {
    const std::string path = m_files.write("crlf.txt", "a\r\nb\r\n");
    Session session(100, 14);
    openFile(session.editor(), path);
    session.send("<alt+l>to crlf<enter>");
    EXPECT_FALSE(session.editor().activeTab()->isModified());
    session.send("<alt+l>crlf (win<enter>");
    EXPECT_FALSE(session.editor().activeTab()->isModified());
    session.send("<alt+l>to lf<enter>");
    EXPECT_TRUE(session.editor().activeTab()->isModified());
    EXPECT_EQ(session.editor().activeTab()->text().text(), u"a\nb\n");
}

TEST_F(FilePrompts, TabSettingsForTheFileOrForTheLanguage) {
    const std::string c = m_files.write("a.c", "int x;\n");
    const std::string other = m_files.write("b.c", "int y;\n");
    Session session(100, 14);
    openFile(session.editor(), c);
    session.send("<f8>tab size 2<enter>for this<enter>");
    EXPECT_EQ(session.editor().activeTab()->tabSize(), 2);
    session.send("<f8>spaces<enter>for this<enter>");
    EXPECT_TRUE(session.editor().activeTab()->softTabs());
    session.send("<f8>other<enter>for every<enter>");  // nothing happens until a size is given
    session.send("<f8>other<enter>40<enter>for every<enter>");
    EXPECT_EQ(session.editor().activeTab()->tabSize(), 18);  // clamped as the document clamps
    // Another C file now opens with the language's setting.
    openFile(session.editor(), other);
    EXPECT_EQ(session.editor().activeTab()->tabSize(), 18);
}

TEST_F(FilePrompts, LanguageTabSizeSurvivesSaving) {
    UserDefaults::standardUserDefaults().setInteger("VXTabSize", 8);
    const std::string path = m_files.write("a.rb", "puts 1\n");
    Session session(80, 10);
    openFile(session.editor(), path);
    EXPECT_EQ(session.editor().activeTab()->tabSize(), 2);
    session.send("x<ctrl+s>y<ctrl+s>");
    EXPECT_EQ(session.editor().activeTab()->tabSize(), 2);
    session.editor().closeTab(0);
    openFile(session.editor(), path);
    EXPECT_EQ(session.editor().activeTab()->tabSize(), 2);
}

TEST_F(FilePrompts, AHeavyFileIsNotHighlighted) {
    std::string minified = "var a=1;";
    while (minified.size() < 2'200'000) minified += "function f(x){return x*2+\"s\";}";
    const std::string path = m_files.write("min.js", minified);
    Session session(80, 10);
    openFile(session.editor(), path);
    EXPECT_EQ(session.editor().activeTab()->languageName(), "JavaScript");
    EXPECT_EQ(session.editor().activeTab()->highlighter(), nullptr);
    // A short file of the same language is.
    openFile(session.editor(), m_files.write("small.js", "var a = 1;\n"));
    EXPECT_NE(session.editor().activeTab()->highlighter(), nullptr);
}

TEST_F(FilePrompts, SavingOverAVersionNotSeenAsksFirst) {
    const std::string path = m_files.write("shared.txt", "mine\n");
    Session session(100, 14);
    ASSERT_TRUE(openFile(session.editor(), path));
    session.send("edit ");
    // Another program replaces the file with an older copy; no check has run yet.
    const std::string copy = m_files.write(".shared.copy", "theirs\n");
    timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    ::utimensat(AT_FDCWD, copy.c_str(), times, 0);
    ASSERT_EQ(::rename(copy.c_str(), path.c_str()), 0);
    session.send("<ctrl+s>");
    ASSERT_TRUE(session.editor().hasModal());
    EXPECT_NE(screenText(session, 14).find("changed by another application"), std::string::npos);
    session.send("c");
    EXPECT_EQ(readWholeFile(path), "theirs\n");
    session.send("<ctrl+s>s");  // Save Anyway
    EXPECT_EQ(readWholeFile(path), "edit mine\n");
    EXPECT_FALSE(session.editor().activeTab()->isModified());
}

}  // namespace
}  // namespace vx::editor
