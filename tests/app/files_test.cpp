// Opening, saving and recovering files through the editor.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "app/editor/files.hpp"
#include "app/editor/session.hpp"
#include "platform/file_cache.hpp"
#include "platform/run_loop.hpp"
#include "support/temp_dir.hpp"

namespace vx::editor {
namespace {

class Files : public testing::Test {
protected:
    void SetUp() override { setenv("VX_HOME", m_home.path().c_str(), 1); }
    void TearDown() override { unsetenv("VX_HOME"); }
    test::TempDir m_home;
    test::TempDir m_files;
};

TEST_F(Files, SavingWritesTheTextAndKeepsThePermissions) {
    std::string path = m_files.write("script.sh", "echo hi\n");
    ::chmod(path.c_str(), 0755);
    Session session(60, 10);
    ASSERT_TRUE(openFile(session.editor(), path));
    session.send("<ctrl+end># done<ctrl+s>");
    EXPECT_EQ(readWholeFile(path), "echo hi\n# done");
    EXPECT_FALSE(session.editor().activeTab()->isModified());
    struct stat info{};
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0755u);

    // Opening the same path again shows the tab that has it.
    openFile(session.editor(), path);
    EXPECT_EQ(session.editor().tabCount(), 1u);
}

TEST_F(Files, AFailedSaveSaysWhyAndKeepsTheTextUnsaved) {
    // A file cannot be made inside a plain file, whoever runs the test.
    std::string path = m_files.write("plain", "x") + "/a.txt";
    Session session(60, 10);
    openFile(session.editor(), path);  // a new file
    session.send("text<ctrl+s>");
    EXPECT_TRUE(session.editor().activeTab()->isModified());
    EXPECT_NE(session.editor().message().find("couldn\u2019t be saved"), std::string::npos) << session.editor().message();
    EXPECT_EQ(readWholeFile(m_files.path() + "/plain"), "x");
    EXPECT_EQ(session.editor().activeTab()->text().text(), u"text");
}

TEST_F(Files, SaveAsForAnUntitledTabAndNewFiles) {
    Session session(60, 10);
    session.send("<ctrl+n>hello<ctrl+s>");
    ASSERT_TRUE(session.editor().hasModal());
    std::string path = m_files.path() + "/new.txt";
    session.send("<ctrl+u>" + path + "<enter>");
    EXPECT_EQ(readWholeFile(path), "hello");
    EXPECT_EQ(session.editor().activeTab()->path(), path);
}

TEST_F(Files, UnsavedTextIsRecoveredOnTheNextStart) {
    std::string path = m_files.write("notes.txt", "old");
    {
        Session session(60, 10);
        openFile(session.editor(), path);
        session.send("<ctrl+end> and new");
        session.send("<ctrl+n>untitled text");
        session.openText(u"not changed");
        EXPECT_EQ(writeRecoveryFiles(session.editor()), 2);
    }
    Session next(80, 14);
    offerRecoveredFiles(next.editor());
    ASSERT_TRUE(next.editor().hasModal());
    next.send("o");  // Open
    ASSERT_EQ(next.editor().tabCount(), 2u);
    EXPECT_EQ(next.editor().tab(0).path(), path);
    EXPECT_EQ(next.editor().tab(0).text().text(), u"old and new");
    EXPECT_TRUE(next.editor().tab(0).isModified());
    EXPECT_EQ(next.editor().tab(1).text().text(), u"untitled text");
    EXPECT_EQ(readWholeFile(path), "old");  // nothing was written over the file itself
    // Once opened, the recovery files are gone: they are not offered twice.
    EXPECT_TRUE(std::filesystem::is_empty(recoveryDirectory()));
}

TEST_F(Files, AFolderOpensAsAProjectInQuickOpenWithoutVersionControlFiles) {
    m_files.write("b.txt", "bee");
    m_files.write("a.txt", "ay");
    std::filesystem::create_directories(m_files.path() + "/.git");
    m_files.write(".git/config", "x");
    Session session(60, 12);
    openStartupPaths(session.editor(), {m_files.path()});
    ASSERT_TRUE(session.editor().hasModal());
    auto shows = [&](const std::string& text) {
        return RunLoop::main().runUntil(
            [&] {
                for (int y = 0; y < 12; ++y)
                    if (session.row(y).find(text) != std::string::npos) return true;
                return false;
            },
            std::chrono::seconds(3));
    };
    session.send("config");
    ASSERT_TRUE(shows("(no matches)"));
    session.send("<backspace><backspace><backspace><backspace><backspace><backspace>.txt");
    ASSERT_TRUE(shows("a.txt"));
    ASSERT_TRUE(shows("b.txt"));
    session.send("<down><enter>");
    ASSERT_EQ(session.editor().tabCount(), 1u);
    EXPECT_EQ(session.editor().activeTab()->text().text(), u"bee");
}

}  // namespace
}  // namespace vx::editor

namespace vx::editor {
namespace {

// Makes the file look changed by another program a little later than it was read.
void changeOnDisk(const std::string& path, const std::string& contents) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    std::fwrite(contents.data(), 1, contents.size(), file);
    std::fclose(file);
    timespec times[2];
    clock_gettime(CLOCK_REALTIME, &times[0]);
    times[0].tv_sec += 5;
    times[1] = times[0];
    ::utimensat(AT_FDCWD, path.c_str(), times, 0);
}

TEST_F(Files, ChangesOnDiskRevertQuietlyOrAskWhenThereAreUnsavedChanges) {
    std::string quiet = m_files.write("quiet.txt", "one");
    std::string busy = m_files.write("busy.txt", "two");
    Session session(100, 16);
    openFile(session.editor(), quiet);
    openFile(session.editor(), busy);
    session.send("<ctrl+end> edited");
    changeOnDisk(quiet, "one, changed");
    changeOnDisk(busy, "two, changed");

    // The question is answered by the next key; the pump lets the test see the screen first.
    std::vector<std::string> shown;
    session.editor().setInputPump([&] {
        for (int y = 0; y < 16; ++y) shown.push_back(session.row(y));
        session.send("u");  // Use Version on Disk
        return true;
    });
    session.send("<f5>");
    std::string screen;
    for (const auto& row : shown) screen += row + "\n";
    EXPECT_NE(screen.find("Warning: This file has been changed by another application"), std::string::npos) << screen;
    EXPECT_NE(screen.find("[ Keep Vellumex Version ]"), std::string::npos) << screen;
    EXPECT_NE(screen.find("[ Use Version on Disk ]"), std::string::npos) << screen;
    EXPECT_NE(screen.find("busy.txt"), std::string::npos) << screen;
    EXPECT_EQ(session.editor().tab(0).text().text(), u"one, changed");
    EXPECT_EQ(session.editor().tab(1).text().text(), u"two, changed");
    EXPECT_FALSE(session.editor().tab(1).isModified());

    // Keeping the edited version leaves the text and its unsaved state alone.
    session.send("<ctrl+end>!");
    changeOnDisk(busy, "three");
    session.editor().setInputPump([&] {
        session.send("k");
        return true;
    });
    session.send("<f5>");
    EXPECT_EQ(session.editor().tab(1).text().text(), u"two, changed!");
    EXPECT_TRUE(session.editor().tab(1).isModified());
}

TEST_F(Files, EncodingMenuChangesHowTheFileIsSavedOrRefusesWhatCannotBeHeld) {
    std::string path = m_files.write("caf.txt", "caf\xc3\xa9");
    Session session(100, 16);
    openFile(session.editor(), path);
    session.send("<alt+e>ascii<enter>");
    EXPECT_FALSE(session.editor().message().empty());
    EXPECT_EQ(session.editor().activeTab()->document().fileEncoding(), 4u);
    session.send("<alt+e>latin 1<enter><ctrl+s>");
    EXPECT_EQ(session.editor().activeTab()->document().fileEncoding(), 5u);
    EXPECT_EQ(readWholeFile(path), "caf\xe9");
    EXPECT_NE(session.row(14).find("Latin"), std::string::npos) << session.row(14);
}

TEST_F(Files, LineEndingMenuSetsTheStyleOrConvertsTheTextAsOneUndoStep) {
    std::string path = m_files.write("lines.txt", "a\nb\n");
    Session session(100, 16);
    openFile(session.editor(), path);
    Tab& tab = *session.editor().activeTab();
    session.send("<alt+l>to crlf<enter>");
    EXPECT_EQ(tab.text().text(), u"a\r\nb\r\n");
    EXPECT_EQ(tab.document().lineEndingType(), NewlineType::CRLF);
    session.send("<ctrl+end>c<enter>");
    EXPECT_EQ(tab.text().text(), u"a\r\nb\r\nc\r\n");
    session.send("<ctrl+z><ctrl+z><ctrl+z>");
    EXPECT_EQ(tab.text().text(), u"a\nb\n");
    EXPECT_EQ(tab.document().lineEndingType(), NewlineType::LF);
    // Only the style: the text stays, new line breaks follow it.
    session.send("<alt+l>cr (classic<enter><ctrl+end>x<enter>");
    EXPECT_EQ(tab.text().text(), u"a\nb\nx\r");
}

}  // namespace
}  // namespace vx::editor
