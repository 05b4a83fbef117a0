// Opening, saving and recovering files through the editor.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "app/editor/files.hpp"
#include "app/editor/session.hpp"
#include "platform/file_cache.hpp"
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
    EXPECT_NE(session.editor().message().find("Cannot save"), std::string::npos);
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

TEST_F(Files, AFolderOpensAsAFileListThatSkipsHiddenFiles) {
    m_files.write("b.txt", "bee");
    m_files.write("a.txt", "ay");
    std::filesystem::create_directories(m_files.path() + "/.git");
    m_files.write(".git/config", "x");
    Session session(60, 12);
    openStartupPaths(session.editor(), {m_files.path()});
    ASSERT_TRUE(session.editor().hasModal());
    session.send("<down><enter>");
    ASSERT_EQ(session.editor().tabCount(), 1u);
    EXPECT_EQ(session.editor().activeTab()->text().text(), u"bee");
}

}  // namespace
}  // namespace vx::editor
