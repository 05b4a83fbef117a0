#include "document/refresh_monitor.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>

#include "document/single_file_document.hpp"
#include "platform/run_loop.hpp"

namespace vx {

VXRefreshMonitor& VXRefreshMonitor::sharedMonitor() {
    static VXRefreshMonitor monitor;
    return monitor;
}

VXRefreshMonitor::VXRefreshMonitor() = default;

void VXRefreshMonitor::addDocument(VXSingleFileDocument* document) {
    if (std::find(m_documents.begin(), m_documents.end(), document) == m_documents.end()) m_documents.push_back(document);
}

void VXRefreshMonitor::removeDocument(VXSingleFileDocument* document) { std::erase(m_documents, document); }

double VXRefreshMonitor::timestampForURL(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return 0;
    return static_cast<double>(info.st_mtim.tv_sec) + info.st_mtim.tv_nsec / 1e9 - kSecondsFrom1970To2001;
}

int VXRefreshMonitor::performActionForSnapshot(const std::string& path, const FileStamp& lastSeen, bool hasUnsavedChanges) {
    const auto now = fileStampForPath(path);
    if (!now || *now == lastSeen) return kNothing;
    return hasUnsavedChanges ? kAsk : kRevert;
}

int VXRefreshMonitor::performActionForURL(const std::string& path, const VXSingleFileDocument& document,
                                          std::string* outdata) {
    if (outdata) outdata->clear();
    const auto& lastSeen = document.diskStamp();
    if (!lastSeen) return kNothing;  // never read from disk: nothing to compare with
    return performActionForSnapshot(path, *lastSeen, document.hasUnsavedChanges());
}

std::string VXRefreshMonitor::alertMessage(const std::string& path) {
    return "The file on disk for " + abbreviatingWithTildeInPath(path) +
           " has been modified by another application, but you still have unsaved changes in Vellumex.\n\n"
           "Do you want to keep open the version in Vellumex or replace your changes with the version on disk?";
}

std::vector<VXRefreshMonitor::Snapshot> VXRefreshMonitor::snapshot() const {
    // Documents belong to the main thread: the queue works on copies of what it needs.
    std::vector<Snapshot> snapshots;
    for (auto* document : m_documents) {
        if (!document->fileURL() || document->fileURL()->empty() || !document->diskStamp()) continue;
        snapshots.push_back({document, *document->fileURL(), *document->diskStamp(), document->hasUnsavedChanges()});
    }
    return snapshots;
}

std::vector<VXRefreshMonitor::Record> VXRefreshMonitor::check(const std::vector<Snapshot>& snapshots) {
    std::vector<Record> records;
    for (const auto& item : snapshots) {
        const int action = performActionForSnapshot(item.path, item.lastSeen, item.unsaved);
        if (action != kNothing)
            records.push_back({item.document, item.path, std::string(), action, fileStampForPath(item.path)});
    }
    return records;
}

void VXRefreshMonitor::act(const std::vector<Record>& records) {
    auto stillOpen = [this](VXSingleFileDocument* document) {
        return std::find(m_documents.begin(), m_documents.end(), document) != m_documents.end();
    };
    for (const auto& record : records)
        if (record.action == kRevert && stillOpen(record.document))
            record.document->revertFromDiskAfterDiskChangedToURL(record.url, record.data);
    for (const auto& record : records) {
        if (record.action == kRevert || !stillOpen(record.document)) continue;
        if (!m_alerts) continue;  // no front end to ask: keep the version in memory
        const size_t choice = m_alerts->runCriticalAlert(kAlertTitle, alertMessage(record.url),
                                                         {"Keep Vellumex Version", "Use Version on Disk"});
        if (choice == 1) record.document->revertFromDiskAfterDiskChangedToURL(record.url, record.data);
        else record.document->setDiskStamp(record.onDisk);  // kept: this version is not asked about again
    }
}

void VXRefreshMonitor::promptInBackground() {
    m_queue.async([this, snapshots = snapshot()] {
        auto records = check(snapshots);
        if (records.empty()) return;
        RunLoop::main().performBlock([this, records = std::move(records)] { act(records); });
    });
}

void VXRefreshMonitor::promptImmediately() {
    std::vector<Record> records;
    const auto snapshots = snapshot();
    m_queue.sync([&] { records = check(snapshots); });
    act(records);
}

}  // namespace vx
