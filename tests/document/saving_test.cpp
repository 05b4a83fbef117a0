#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "document/document_fakes.hpp"
#include "document/single_file_document.hpp"
#include "platform/file_cache.hpp"
#include "platform/scoped_home.hpp"
#include "platform/unicode.hpp"
#include "platform/user_defaults.hpp"

extern char** environ;

namespace vx {
namespace {

std::string fileText(const std::string& path) { return readWholeFile(path).value_or("<unreadable>"); }

mode_t modeOf(const std::string& path) {
    struct stat info {};
    ::stat(path.c_str(), &info);
    return info.st_mode & 07777;
}

// Sets the process umask for one test.
struct ScopedUmask {
    mode_t previous;
    explicit ScopedUmask(mode_t mask) : previous(::umask(mask)) {}
    ~ScopedUmask() { ::umask(previous); }
};

TEST(Saving, WritesInTheDocumentsEncodingWithLineBreaksAsTheyStand) {
    test::ScopedHome home;
    std::string error;
    struct Case {
        const char* name;
        std::string bytes;
        std::string afterEdit;  // after "X" is typed at the start
    };
    const Case cases[] = {
        {"crlf.txt", "a\r\nb\nc\r", "Xa\r\nb\nc\r"},
        {"latin1.txt", "Le ma\xEEtre d'h\xF4tel a servi une cr\xE8me br\xFBl\xE9" "e tr\xE8s r\xE9ussie \xE0 la fin.\n",
         "XLe ma\xEEtre d'h\xF4tel a servi une cr\xE8me br\xFBl\xE9" "e tr\xE8s r\xE9ussie \xE0 la fin.\n"},
        {"be.txt", std::string("\xFE\xFF\0h\0i", 6), std::string("\xFE\xFF\0X\0h\0i", 8)},
        {"le.txt", std::string("\xFF\xFEh\0i\0", 6), std::string("\xFF\xFEX\0h\0i\0", 8)},
        {"bom8.txt", "\xEF\xBB\xBFhi", "\xEF\xBB\xBFXhi"},  // a mark read is a mark written
    };
    for (const auto& c : cases) {
        const std::string path = home.dir.write(c.name, c.bytes);
        VXSingleFileDocument document;
        ASSERT_TRUE(document.readFromURL(path, "txt", &error)) << c.name << ": " << error;
        document.js_replaceTextInRange({0, 0}, u"X");
        EXPECT_TRUE(document.hasUnsavedChanges());
        ASSERT_TRUE(document.saveToURL(path, "txt", VXSingleFileDocument::SaveOperation::Save, &error)) << error;
        EXPECT_EQ(fileText(path), c.afterEdit) << c.name;
        EXPECT_FALSE(document.hasUnsavedChanges());
    }

    // A new document in UTF-16 writes little-endian with a mark.
    VXSingleFileDocument fresh;
    fresh.js_setText(u"hi");
    ASSERT_TRUE(fresh.setFileEncoding(encoding::kUTF16));
    const std::string path = home.dir.path() + "/new.txt";
    ASSERT_TRUE(fresh.saveToURL(path, "txt", VXSingleFileDocument::SaveOperation::SaveAs, &error));
    EXPECT_EQ(fileText(path), std::string("\xFF\xFEh\0i\0", 6));
    EXPECT_EQ(*fresh.fileURL(), path);
}

TEST(Saving, FailuresLeaveTheFileAndTheTextAsTheyWere) {
    test::ScopedHome home;
    std::string error;
    const std::string path = home.dir.write("ascii.txt", "plain\n");
    VXSingleFileDocument document;
    ASSERT_TRUE(document.readFromURL(path, "txt", &error));
    ASSERT_TRUE(document.setFileEncoding(encoding::kASCII));
    document.js_replaceTextInRange({0, 0}, u"é");
    EXPECT_FALSE(document.saveToURL(path, "txt", VXSingleFileDocument::SaveOperation::Save, &error));
    EXPECT_NE(error.find("ascii.txt"), std::string::npos);
    EXPECT_EQ(fileText(path), "plain\n");
    EXPECT_EQ(document.contents().string(), u"éplain\n");
    EXPECT_TRUE(document.hasUnsavedChanges());

    // A folder where the file should be, and a folder that does not exist.
    ASSERT_TRUE(document.setFileEncoding(encoding::kUTF8));
    const std::string folder = home.dir.path() + "/folder";
    std::filesystem::create_directory(folder);
    error.clear();
    EXPECT_FALSE(document.saveToURL(folder, "txt", VXSingleFileDocument::SaveOperation::SaveAs, &error));
    EXPECT_FALSE(error.empty());
    EXPECT_TRUE(std::filesystem::is_directory(folder));
    EXPECT_FALSE(document.saveToURL(home.dir.path() + "/no/such/place.txt", "txt",
                                    VXSingleFileDocument::SaveOperation::SaveAs, &error));
    EXPECT_EQ(*document.fileURL(), path);
    size_t entries = 0;
    for ([[maybe_unused]] auto& entry : std::filesystem::directory_iterator(home.dir.path())) ++entries;
    EXPECT_EQ(entries, 2u);  // ascii.txt and folder: no temporary file left behind
}

TEST(Saving, PermissionBitsAndOwnerAreRepaired) {
    test::ScopedHome home;
    ScopedUmask umask(022);
    std::string error;
    const std::string path = home.dir.write("script.sh", "#!/bin/sh\necho hi\n");
    ::chmod(path.c_str(), 0755);
    VXSingleFileDocument document;
    ASSERT_TRUE(document.readFromURL(path, "sh", &error));
    document.js_replaceTextInRange({0, 0}, u"# edited\n");
    ASSERT_TRUE(document.saveToURL(path, "sh", VXSingleFileDocument::SaveOperation::Save, &error)) << error;
    EXPECT_EQ(modeOf(path), 0755u);  // the new copy came out 0644 and was given its bits back

    // Save-as onto another file replaces its contents, not what the file is.
    const std::string other = home.dir.write("other.sh", "x");
    ::chmod(other.c_str(), 0700);
    ASSERT_TRUE(document.saveToURL(other, "sh", VXSingleFileDocument::SaveOperation::SaveAs, &error));
    EXPECT_EQ(modeOf(other), 0700u);

    if (::geteuid() != 0) GTEST_SKIP() << "changing a file's owner needs root";
    ASSERT_EQ(::chown(other.c_str(), 4321, 8765), 0);
    ASSERT_TRUE(document.saveToURL(other, "sh", VXSingleFileDocument::SaveOperation::Save, &error));
    struct stat info {};
    ::stat(other.c_str(), &info);
    EXPECT_EQ(info.st_uid, 4321u);
    EXPECT_EQ(info.st_gid, 8765u);
}

TEST(Saving, TrailingWhitespaceTrimFollowsTheDefaultsAndTheViews) {
    test::ScopedHome home;
    std::string error;
    const std::string original = "a  \nword   \n   \nb \t\n";
    const std::string path = home.dir.write("t.txt", original);
    auto save = [&](VXSingleFileDocument& document) {
        return document.saveToURL(path, "txt", VXSingleFileDocument::SaveOperation::Save, &error);
    };
    VXSingleFileDocument document;
    ASSERT_TRUE(document.readFromURL(path, "txt", &error));

    ASSERT_TRUE(save(document));  // amount 0 (unset): nothing is trimmed, and there is no view anyway
    EXPECT_EQ(fileText(path), original);

    UserDefaults::standardUserDefaults().setInteger("VXTrimTrailingWhitespaceAmount", 1);
    ASSERT_TRUE(save(document));  // still no view
    EXPECT_EQ(fileText(path), original);

    test::FakeView view;
    view.selection = {11, 0};  // right after "word   "
    document.addView(&view);
    view.decoherent = false;  // secondary selections
    ASSERT_TRUE(save(document));
    EXPECT_EQ(fileText(path), original);
    view.decoherent = true;
    view.folded = true;
    ASSERT_TRUE(save(document));
    EXPECT_EQ(fileText(path), original);
    view.folded = false;

    ASSERT_TRUE(save(document));
    EXPECT_EQ(fileText(path), "a\nword   \n   \nb\n");
    EXPECT_EQ(view.selection, (Range{9, 0}));
    EXPECT_FALSE(document.hasUnsavedChanges());
    document.undoManager().undo();  // the trim is one undoable step
    EXPECT_EQ(utf8FromUtf16(document.contents().string()), original);

    UserDefaults::standardUserDefaults().setInteger("VXTrimTrailingWhitespaceAmount", 2);
    view.selection = {0, 0};
    ASSERT_TRUE(save(document));
    EXPECT_EQ(fileText(path), "a\nword\n\nb\n");

    // Markdown keeps its trailing spaces (they are line breaks there).
    test::FakeChooser markdown;
    document.setLanguageChooser(&markdown);
    ASSERT_TRUE(document.readFromURL(home.dir.write("m.md", "line  \nnext\n"), "md", &error));
    ASSERT_TRUE(document.saveToURL(home.dir.path() + "/m.md", "md", VXSingleFileDocument::SaveOperation::Save, &error));
    EXPECT_EQ(fileText(home.dir.path() + "/m.md"), "line  \nnext\n");
}

// Runs only as the child of KilledSaveLeavesOneWholeFile: saves two large texts in turn, forever.
TEST(SavingChild, SaveAlternatelyUntilKilled) {
    const char* path = std::getenv("VX_SAVE_CHILD_PATH");
    if (!path) GTEST_SKIP() << "run by KilledSaveLeavesOneWholeFile";
    VXSingleFileDocument document;
    std::string error;
    for (int i = 0;; ++i) {
        document.js_setText(std::u16string(8 << 20, i % 2 ? u'b' : u'a'));
        if (!document.saveToURL(path, "txt", VXSingleFileDocument::SaveOperation::Save, &error)) ::_exit(3);
    }
}

TEST(Saving, KilledSaveLeavesOneWholeFile) {
    test::ScopedHome home;
    const std::string path = home.dir.write("big.txt", std::string(8 << 20, 'a'));
    std::string filter = "--gtest_filter=SavingChild.SaveAlternatelyUntilKilled";
    std::string pathVariable = "VX_SAVE_CHILD_PATH=" + path;
    std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    char* argv[] = {self.data(), filter.data(), nullptr};
    char* envp[] = {pathVariable.data(), const_cast<char*>("VX_LOG=off"), nullptr};
    for (int round = 0; round < 3; ++round) {
        pid_t child = 0;
        ASSERT_EQ(::posix_spawn(&child, self.c_str(), nullptr, nullptr, argv, envp), 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(150 + 70 * round));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the child stopped on its own with " << status;
        const std::string text = fileText(path);
        ASSERT_EQ(text.size(), size_t{8} << 20);
        EXPECT_TRUE(text == std::string(8 << 20, 'a') || text == std::string(8 << 20, 'b'));
    }
}

}  // namespace
}  // namespace vx
