#include "app/burrower/burrower.hpp"

#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "intelligence/burrower_channel.hpp"
#include "intelligence/project_indexer.hpp"
#include "platform/log.hpp"
#include "projects/path_index.hpp"

namespace vx {
namespace {

struct Job {
    enum class Kind { Scan, File, Close } kind;
    std::string database;  // the project's index file, which names the project
    std::string directory;
    std::string path, contents, language;  // File jobs
};

// A project's files as quick open lists them (the same filter of names and folders, the same
// ignore files), with the modification times the indexer compares with its passes. Links are
// left out, as the indexer's own walk does: they would index a file twice or one outside.
std::vector<ProjectFile> filesAsQuickOpenListsThem(const std::string& root) {
    path_collection listed;
    listed.queue.sync([&] { VXBuildQuickOpenIndexInto(root, listed, QuickOpenWalkOptions{}); });
    std::string base = root;
    while (base.size() > 1 && base.back() == '/') base.pop_back();
    std::vector<ProjectFile> files;
    files.reserve(listed.items.size());
    for (const path_item& item : listed.items) {
        std::string path = base + "/" + std::string(item.path());
        struct stat info;
        if (::lstat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) continue;
        const double modified = static_cast<double>(info.st_mtim.tv_sec) + info.st_mtim.tv_nsec / 1e9 - kReferenceDateOffset;
        files.push_back({std::move(path), modified});
    }
    return files;
}

struct Project {
    std::unique_ptr<VXXMainDatabase> database;
    std::shared_ptr<std::atomic<bool>> cancel = std::make_shared<std::atomic<bool>>(false);
};

class Burrower {
public:
    Burrower(VXBurrowerConnection& connection, std::string object) : m_connection(connection), m_object(std::move(object)) {}

    void run() {
        std::thread worker([this] { work(); });
        while (auto message = m_connection.receive()) {
            if (message->name != burrower::kName || message->object != m_object) continue;
            handle(*message);
        }
        // The editor is gone: stop what runs, drop what waits.
        {
            std::lock_guard lock(m_mutex);
            m_finished = true;
            m_jobs.clear();
            for (auto& [path, cancel] : m_cancelFlags) cancel->store(true);
        }
        m_changed.notify_all();
        worker.join();
    }

private:
    std::shared_ptr<std::atomic<bool>> cancelFlag(const std::string& database) {
        auto& flag = m_cancelFlags[database];
        if (!flag) flag = std::make_shared<std::atomic<bool>>(false);
        return flag;
    }

    void handle(const VXBurrowerMessage& message) {
        const std::string kind = message.value(burrower::kKind);
        Job job;
        job.database = message.value(burrower::kProjectIndexDatabase);
        job.directory = message.value(burrower::kProjectDirectory);
        if (job.database.empty()) return;
        std::lock_guard lock(m_mutex);
        if (kind == burrower::kProjectOpen || kind == burrower::kProjectResume) {
            cancelFlag(job.database)->store(false);
            for (const auto& waiting : m_jobs)
                if (waiting.kind == Job::Kind::Scan && waiting.database == job.database) return;  // one is enough
            job.kind = Job::Kind::Scan;
        } else if (kind == burrower::kProjectSuspend || kind == burrower::kProjectClose) {
            cancelFlag(job.database)->store(true);
            std::erase_if(m_jobs, [&](const Job& waiting) { return waiting.database == job.database; });
            if (kind == burrower::kProjectSuspend) return;
            job.kind = Job::Kind::Close;
        } else if (kind == burrower::kFileIndex) {
            job.kind = Job::Kind::File;
            job.path = message.value(burrower::kPath);
            job.contents = message.value(burrower::kContents);
            job.language = message.value(burrower::kLanguage);
            for (auto& waiting : m_jobs)
                if (waiting.kind == Job::Kind::File && waiting.database == job.database && waiting.path == job.path) {
                    waiting = std::move(job);  // the newest text is all that matters
                    return;
                }
        } else {
            return;
        }
        m_jobs.push_back(std::move(job));
        m_changed.notify_all();
    }

    VXXMainDatabase& open(const Job& job) {
        auto& project = m_projects[job.database];
        if (!project.database)
            project.database = std::make_unique<VXXMainDatabase>(job.database, std::string(), job.directory);
        return *project.database;
    }

    void work() {
        while (true) {
            Job job;
            std::shared_ptr<std::atomic<bool>> cancel;
            {
                std::unique_lock lock(m_mutex);
                m_changed.wait(lock, [&] { return m_finished || !m_jobs.empty(); });
                if (m_finished) return;
                job = std::move(m_jobs.front());
                m_jobs.pop_front();
                cancel = cancelFlag(job.database);
            }
            perform(job, *cancel);
        }
    }

    void perform(const Job& job, const std::atomic<bool>& cancel) {
        VXBurrowerMessage reply;
        reply.name = burrower::kReplyName;
        reply.object = m_object;
        reply.userInfo[burrower::kProjectIndexDatabase] = job.database;
        reply.userInfo[burrower::kProjectDirectory] = job.directory;
        switch (job.kind) {
        case Job::Kind::Close:
            m_projects.erase(job.database);
            return;
        case Job::Kind::Scan: {
            auto& database = open(job);
            VXProjectIndexer indexer(database);
            indexer.setFileLister(filesAsQuickOpenListsThem);
            const IndexSummary summary = indexer.indexDirectory(job.directory, &cancel);
            if (cancel.load()) return;  // suspended or closed: nobody waits for an answer
            reply.userInfo[burrower::kKind] = burrower::kProjectIndexed;
            reply.userInfo[burrower::kFiles] = std::to_string(database.fileCount());
            reply.userInfo[burrower::kSymbols] = std::to_string(database.symbolCount());
            reply.userInfo["ok"] = summary.ok ? "1" : "0";
            break;
        }
        case Job::Kind::File: {
            auto& database = open(job);
            const bool ok = VXProjectIndexer(database).indexContents(job.path, job.contents, job.language);
            reply.userInfo[burrower::kKind] = burrower::kFileIndexed;
            reply.userInfo[burrower::kPath] = job.path;
            reply.userInfo["ok"] = ok ? "1" : "0";
            break;
        }
        }
        m_connection.reply(reply);
    }

    VXBurrowerConnection& m_connection;
    const std::string m_object;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Job> m_jobs;
    std::map<std::string, std::shared_ptr<std::atomic<bool>>> m_cancelFlags;
    bool m_finished = false;
    std::map<std::string, Project> m_projects;  // only the worker touches these
};

}  // namespace

int VXRunBurrower(const BurrowerOptions& options) {
    // Ends with the editor even when the editor could not say goodbye (it was killed).
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (options.parent > 0 && ::getppid() != options.parent) return 0;
    auto connection = VXBurrowerConnection::connect(options.socketPath);
    if (!connection) {
        VX_LOG_DEBUG("burrower", "cannot connect to %s", options.socketPath.c_str());
        return 1;
    }
    Burrower(*connection, options.object).run();
    return 0;
}

}  // namespace vx
