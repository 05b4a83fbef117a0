#include "intelligence/indexing_controller.hpp"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <list>

#include "intelligence/burrower_channel.hpp"
#include "intelligence/index_paths.hpp"
#include "platform/log.hpp"
#include "platform/paths.hpp"
#include "process/taskit.hpp"

namespace vx {

// --- The indexer process ------------------------------------------------------------------------

struct VXBurrowerProcess::Impl {
    std::mutex mutex;
    std::unique_ptr<VXBurrowerChannel> channel;
    std::unique_ptr<Taskit> task;
    // Reply handlers; each registration erases its own entry.
    std::shared_ptr<std::list<std::function<void(const VXBurrowerMessage&)>>> handlers =
        std::make_shared<std::list<std::function<void(const VXBurrowerMessage&)>>>();
    std::shared_ptr<std::mutex> handlersMutex = std::make_shared<std::mutex>();
};

VXBurrowerProcess& VXBurrowerProcess::shared() {
    static VXBurrowerProcess process;
    return process;
}

VXBurrowerProcess::VXBurrowerProcess()
    : m_object(VXBurrowerObjectForProcess(static_cast<long>(::getpid()))), m_impl(std::make_unique<Impl>()) {}

VXBurrowerProcess::~VXBurrowerProcess() { stop(); }

std::string VXBurrowerProcess::executablePath() {
    if (const char* explicitPath = std::getenv("VX_BURROWER"); explicitPath && *explicitPath) return explicitPath;
    std::error_code error;
    auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string("burrower") : (self.parent_path() / "burrower").string();
}

bool VXBurrowerProcess::startIfNecessary() {
    std::lock_guard lock(m_impl->mutex);
    if (!m_impl->channel) {
        m_impl->channel = VXBurrowerChannel::listen(VXBurrowerSocketPath(static_cast<long>(::getpid())));
        if (!m_impl->channel) return false;
        m_impl->channel->setReplyHandler([handlers = m_impl->handlers, mutex = m_impl->handlersMutex](const VXBurrowerMessage& message) {
            std::lock_guard handlersLock(*mutex);
            for (const auto& handler : *handlers) handler(message);
        });
    }
    if (m_impl->task && m_impl->task->isRunning()) return true;
    auto task = Taskit::task();
    task->setLaunchPath(executablePath());
    task->setArguments({"--socket", m_impl->channel->path(), "--object", m_object, "--parent", std::to_string(::getpid())});
    task->populateWithCurrentEnvironment();
    task->setPriority(5);  // indexing gives way to the editor
    if (!task->launch()) {
        VX_LOG_DEBUG("intelligence", "cannot start the indexer at %s", executablePath().c_str());
        return false;
    }
    task->readToEndInBackground();  // its diagnostics must never fill a pipe and stall it
    m_impl->task = std::move(task);
    return true;
}

void VXBurrowerProcess::send(const VXBurrowerMessage& message) {
    std::lock_guard lock(m_impl->mutex);
    if (m_impl->channel) m_impl->channel->send(message);
}

std::shared_ptr<void> VXBurrowerProcess::observeReplies(std::function<void(const VXBurrowerMessage&)> handler) {
    std::lock_guard lock(*m_impl->handlersMutex);
    auto handlers = m_impl->handlers;
    auto mutex = m_impl->handlersMutex;
    auto it = handlers->insert(handlers->end(), std::move(handler));
    return std::shared_ptr<void>(nullptr, [handlers, mutex, it](void*) {
        std::lock_guard eraseLock(*mutex);
        handlers->erase(it);
    });
}

void VXBurrowerProcess::stop() {
    std::lock_guard lock(m_impl->mutex);
    m_impl->channel.reset();  // the indexer reads the end of its connection and exits
    if (m_impl->task) {
        m_impl->task->kill();
        m_impl->task.reset();
    }
}

bool VXBurrowerProcess::isRunning() {
    std::lock_guard lock(m_impl->mutex);
    return m_impl->task && m_impl->task->isRunning();
}

// --- The controller -----------------------------------------------------------------------------

VXXIndexingController::VXXIndexingController(const std::string& directory, std::optional<std::string> databasePath)
    : m_directoryPath(VXStandardizedPath(directory)) {
    m_temporary = !databasePath || databasePath->empty();
    m_databasePath = m_temporary ? VXTemporaryIndexPath() : *databasePath;
    if (!m_temporary) makeDirectories(std::filesystem::path(m_databasePath).parent_path().string());
    m_database = std::make_unique<VXXMainDatabase>(m_databasePath, std::filesystem::path(m_directoryPath).filename().string(),
                                                   m_directoryPath);
    sendProjectMessage(burrower::kProjectOpen);
}

VXXIndexingController::~VXXIndexingController() {
    close();
    if (m_temporary) {
        std::error_code error;
        for (const char* suffix : {"", "-wal", "-shm"}) std::filesystem::remove(m_databasePath + suffix, error);
    }
}

std::map<std::string, std::string> VXXIndexingController::projectInfo(const std::string& kind) const {
    return {{burrower::kKind, kind},
            {burrower::kProjectIdentifier, std::filesystem::path(m_databasePath).filename().string()},
            {burrower::kProjectDirectory, m_directoryPath},
            {burrower::kProjectIndexDatabase, m_databasePath}};
}

void VXXIndexingController::startBurrowerIfNecessary() { VXBurrowerProcess::shared().startIfNecessary(); }

void VXXIndexingController::sendProjectMessage(const std::string& kind) {
    if (m_closed) return;
    startBurrowerIfNecessary();
    VXBurrowerMessage message;
    message.object = VXBurrowerProcess::shared().object();
    message.userInfo = projectInfo(kind);
    VXBurrowerProcess::shared().send(message);
}

void VXXIndexingController::sendFileMessage(const std::string& kind, const VXIndexedDocument& document) {
    if (m_closed) return;
    startBurrowerIfNecessary();
    VXBurrowerMessage message;
    message.object = VXBurrowerProcess::shared().object();
    message.userInfo = projectInfo(kind);
    if (!document.path.empty()) message.userInfo[burrower::kPath] = document.path;
    message.userInfo[burrower::kContents] = document.contents;
    message.userInfo[burrower::kLanguage] = document.ctagsLanguage;
    VXBurrowerProcess::shared().send(message);
}

void VXXIndexingController::startScanning() { sendProjectMessage(burrower::kProjectResume); }

void VXXIndexingController::stopScanning() { sendProjectMessage(burrower::kProjectSuspend); }

void VXXIndexingController::documentDidChange(const VXIndexedDocument& document) {
    sendFileMessage(burrower::kFileIndex, document);
}

std::vector<VXXMainDatabase*> VXXIndexingController::allApplicableIndexDatabases() {
    if (m_closed) return {};
    return {m_database.get()};
}

void VXXIndexingController::close() {
    if (m_closed) return;
    sendProjectMessage(burrower::kProjectClose);
    m_closed = true;
    m_replyRegistration.reset();
    m_database->close();
}

void VXXIndexingController::setReplyHandler(ReplyHandler handler) {
    const std::string database = m_databasePath;
    m_replyRegistration = VXBurrowerProcess::shared().observeReplies([database, handler = std::move(handler)](const VXBurrowerMessage& message) {
        if (message.value(burrower::kProjectIndexDatabase) == database) handler(message);
    });
}

}  // namespace vx
