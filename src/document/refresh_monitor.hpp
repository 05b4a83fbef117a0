// VXRefreshMonitor: notices files changed on disk by another application.
//
// It holds the open documents. A check (on its own serial queue: in the background with
// promptInBackground, or waited for with promptImmediately) asks performActionForURL for each
// document with a path: 0 nothing to do, 1 revert without asking, 2 ask. On the main thread the
// silent reverts happen first, then one critical alert per document that has unsaved changes:
// "Keep Vellumex Version" leaves its text alone and takes the version on disk as seen (it is not
// asked about again until the file changes again), "Use Version on Disk" reverts it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "document/document_hooks.hpp"
#include "platform/dispatch.hpp"
#include "platform/file_stamp.hpp"

namespace vx {

class VXSingleFileDocument;

class VXRefreshMonitor {
public:
    enum Action : int { kNothing = 0, kRevert = 1, kAsk = 2 };

    static VXRefreshMonitor& sharedMonitor();

    VXRefreshMonitor();
    VXRefreshMonitor(const VXRefreshMonitor&) = delete;
    VXRefreshMonitor& operator=(const VXRefreshMonitor&) = delete;

    // Main thread only.
    void addDocument(VXSingleFileDocument* document);
    void removeDocument(VXSingleFileDocument* document);
    void setAlertPresenter(AlertPresenter* presenter) { m_alerts = presenter; }

    // Checks on the monitor's queue; the reverts and alerts are posted to the main run loop.
    void promptInBackground();
    // Checks, waiting for the result, then reverts and alerts at once (call on the main thread).
    void promptImmediately();

    // What to do about one document: nothing when the file on disk is the version last read or
    // written (same modification time, size, inode and device) or is gone, a silent revert when
    // the document has no unsaved changes, else ask. Any difference counts, an older modification
    // time too: a copy restored with its old times is still another program's change. `outdata`
    // receives nothing: the revert reads the file again itself.
    static int performActionForURL(const std::string& path, const VXSingleFileDocument& document, std::string* outdata);
    static int performActionForSnapshot(const std::string& path, const FileStamp& lastSeen, bool hasUnsavedChanges);
    // A file's modification time in seconds since 2001-01-01 00:00:00 UTC; 0 when it cannot be read.
    static double timestampForURL(const std::string& path);

    static constexpr const char* kAlertTitle = "Warning: This file has been changed by another application";
    static std::string alertMessage(const std::string& path);

private:
    struct Snapshot {
        VXSingleFileDocument* document;
        std::string path;
        FileStamp lastSeen;
        bool unsaved;
    };
    struct Record {
        VXSingleFileDocument* document;
        std::string url;
        std::string data;
        int action;
        std::optional<FileStamp> onDisk;
    };
    std::vector<Snapshot> snapshot() const;
    static std::vector<Record> check(const std::vector<Snapshot>& snapshots);
    void act(const std::vector<Record>& records);

    std::vector<VXSingleFileDocument*> m_documents;
    AlertPresenter* m_alerts = nullptr;
    SerialQueue m_queue{"refresh monitor"};
};

// Seconds between the Unix epoch and 2001-01-01 00:00:00 UTC.
inline constexpr double kSecondsFrom1970To2001 = 978307200.0;

}  // namespace vx
