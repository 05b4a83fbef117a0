#include "document/refresh_monitor.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "document/document_fakes.hpp"
#include "document/single_file_document.hpp"
#include "platform/file_stamp.hpp"
#include "platform/run_loop.hpp"
#include "platform/scoped_home.hpp"

namespace vx {
namespace {

using namespace std::chrono_literals;

// Rewrites a file and dates it `secondsAhead` from now, as another application's save would.
void changeOnDisk(const std::string& path, const std::string& text, int secondsAhead = 5) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
    timespec times[2];
    ::clock_gettime(CLOCK_REALTIME, &times[0]);
    times[0].tv_sec += secondsAhead;
    times[1] = times[0];
    ::utimensat(AT_FDCWD, path.c_str(), times, 0);
}

TEST(RefreshMonitor, DecisionsByAnyChangeOfTheFileAndUnsavedChanges) {
    test::ScopedHome home;
    const std::string path = home.dir.write("f.txt", "x");
    timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    const double modified = VXRefreshMonitor::timestampForURL(path);
    EXPECT_DOUBLE_EQ(modified, 1'000'000'000 - 978'307'200.0);  // seconds since 2001-01-01
    EXPECT_EQ(VXRefreshMonitor::timestampForURL(home.dir.path() + "/gone"), 0);

    using M = VXRefreshMonitor;
    const FileStamp seen = *fileStampForPath(path);
    EXPECT_EQ(M::performActionForSnapshot(path, seen, false), M::kNothing);  // the same version
    EXPECT_EQ(M::performActionForSnapshot(path, seen, true), M::kNothing);
    FileStamp newer = seen, older = seen, otherSize = seen, otherInode = seen;
    newer.modifiedNanoseconds -= 1'000'000'000;  // what was seen is older than the file: it changed
    older.modifiedNanoseconds += 1'000'000'000;  // the file went back in time: a restored copy
    otherSize.size += 1;
    otherInode.inode += 1;
    for (const FileStamp& stale : {newer, older, otherSize, otherInode}) {
        EXPECT_EQ(M::performActionForSnapshot(path, stale, false), M::kRevert);
        EXPECT_EQ(M::performActionForSnapshot(path, stale, true), M::kAsk);
    }
    EXPECT_EQ(M::performActionForSnapshot(home.dir.path() + "/gone", seen, true), M::kNothing);

    VXSingleFileDocument untitled;
    std::string data = "stale";
    EXPECT_EQ(M::performActionForURL(path, untitled, &data), M::kNothing);  // never read from disk
    EXPECT_TRUE(data.empty());
}

TEST(RefreshMonitor, AnOlderCopyPutInPlaceIsNoticed) {
    test::ScopedHome home;
    std::string error;
    const std::string path = home.dir.write("f.txt", "current\n");
    VXSingleFileDocument document;
    ASSERT_TRUE(document.readFromURL(path, "txt", &error));
    // cp -p / rsync -a / tar x: other contents, renamed into place, with times from the past.
    const std::string copy = home.dir.write(".f.txt.restore", "restored\n");
    timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, copy.c_str(), times, 0), 0);
    ASSERT_EQ(::rename(copy.c_str(), path.c_str()), 0);
    EXPECT_TRUE(document.fileChangedOnDisk());
    EXPECT_EQ(VXRefreshMonitor::performActionForURL(path, document, nullptr), VXRefreshMonitor::kRevert);

    VXRefreshMonitor monitor;
    test::FakeAlerts alerts;
    monitor.setAlertPresenter(&alerts);
    monitor.addDocument(&document);
    document.js_replaceTextInRange({0, 0}, u"mine ");
    alerts.answer = 0;  // keep the text here: the version on disk is then not asked about again
    monitor.promptImmediately();
    monitor.promptImmediately();
    EXPECT_EQ(alerts.titles.size(), 1u);
    EXPECT_EQ(document.contents().string(), u"mine current\n");
    EXPECT_FALSE(document.fileChangedOnDisk());
}

TEST(RefreshMonitor, RevertsCleanDocumentsAndAsksAboutChangedOnes) {
    test::ScopedHome home;
    std::string error;
    const std::string cleanPath = home.dir.write("clean.txt", "old clean");
    const std::string dirtyPath = home.dir.write("dirty.txt", "old dirty");
    const std::string untouchedPath = home.dir.write("same.txt", "same");
    VXSingleFileDocument clean, dirty, untouched;
    ASSERT_TRUE(clean.readFromURL(cleanPath, "txt", &error));
    ASSERT_TRUE(dirty.readFromURL(dirtyPath, "txt", &error));
    ASSERT_TRUE(untouched.readFromURL(untouchedPath, "txt", &error));
    dirty.js_replaceTextInRange({0, 0}, u"mine ");

    VXRefreshMonitor monitor;
    test::FakeAlerts alerts;
    monitor.setAlertPresenter(&alerts);
    for (auto* document : {&clean, &dirty, &untouched}) monitor.addDocument(document);

    changeOnDisk(cleanPath, "new clean");
    changeOnDisk(dirtyPath, "new dirty");
    alerts.answer = 0;  // keep the version in memory
    monitor.promptImmediately();
    EXPECT_EQ(clean.contents().string(), u"new clean");
    EXPECT_FALSE(clean.hasUnsavedChanges());
    EXPECT_EQ(untouched.contents().string(), u"same");
    EXPECT_EQ(dirty.contents().string(), u"mine old dirty");
    ASSERT_EQ(alerts.titles.size(), 1u);
    EXPECT_EQ(alerts.titles[0], "Warning: This file has been changed by another application");
    EXPECT_NE(alerts.messages[0].find(dirtyPath), std::string::npos);
    EXPECT_EQ(alerts.buttons[0], (std::vector<std::string>{"Keep Vellumex Version", "Use Version on Disk"}));

    // Kept once, the same version is not asked about again; a newer one is, and the user now takes
    // the version on disk, in the background.
    monitor.promptImmediately();
    EXPECT_EQ(alerts.titles.size(), 1u);
    changeOnDisk(dirtyPath, "new dirty", 7);
    alerts.answer = 1;
    monitor.promptInBackground();
    EXPECT_TRUE(RunLoop::main().runUntil([&] { return dirty.contents().string() == u"new dirty"; }, 2s));
    EXPECT_FALSE(dirty.hasUnsavedChanges());

    // A closed document is no longer checked.
    changeOnDisk(cleanPath, "newest", 10);
    monitor.removeDocument(&clean);
    monitor.promptImmediately();
    EXPECT_EQ(clean.contents().string(), u"new clean");
}

TEST(RefreshMonitor, OurOwnSaveIsNotAChangeOnDisk) {
    test::ScopedHome home;
    std::string error;
    const std::string path = home.dir.write("f.txt", "x");
    VXSingleFileDocument document;
    ASSERT_TRUE(document.readFromURL(path, "txt", &error));
    document.js_setText(u"y");
    ASSERT_TRUE(document.saveToURL(path, "txt", VXSingleFileDocument::SaveOperation::Save, &error));
    EXPECT_EQ(VXRefreshMonitor::performActionForURL(path, document, nullptr), VXRefreshMonitor::kNothing);
}

TEST(RefreshMonitor, AlertMessageShowsTheHomeFolderAsTilde) {
    const char* previous = std::getenv("HOME");
    const std::string saved = previous ? previous : "";
    ::setenv("HOME", "/home/someone", 1);
    const std::string message = VXRefreshMonitor::alertMessage("/home/someone/src/main.c");
    const std::string outside = VXRefreshMonitor::alertMessage("/home/someoneelse/x");
    if (previous) ::setenv("HOME", saved.c_str(), 1); else ::unsetenv("HOME");
    EXPECT_EQ(message.rfind("The file on disk for ~/src/main.c has been modified", 0), 0u) << message;
    EXPECT_NE(outside.find("/home/someoneelse/x"), std::string::npos);
}

}  // namespace
}  // namespace vx
