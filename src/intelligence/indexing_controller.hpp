// VXXIndexingController: the editor's side of one project's symbol index. It opens the index
// database (so that the editor can read it) and tells the indexer process what to do: a project
// was opened, resumed, suspended or closed, or a document's text changed.
//
// The indexer ("burrower", installed beside the editor's executable) is one child process per
// editor process, started on the first message and stopped with the editor. Messages go through
// the editor's socket (burrower_channel.hpp); nothing here waits for the indexer.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "intelligence/burrower_message.hpp"
#include "intelligence/main_database.hpp"

namespace vx {

// What the indexer needs of a document: its file (when it has one), its whole current text and
// its language in ctags' naming (`ctagsLanguage`).
struct VXIndexedDocument {
    std::string path;
    std::string contents;  // UTF-8
    std::string ctagsLanguage;
};

class VXXIndexingController {
public:
    using ReplyHandler = std::function<void(const VXBurrowerMessage&)>;

    // Opens the index at `databasePath` (a temporary one, removed with the controller, when not
    // given) for the project folder `directory`, and tells the indexer the project is open.
    VXXIndexingController(const std::string& directory, std::optional<std::string> databasePath = std::nullopt);
    ~VXXIndexingController();
    VXXIndexingController(const VXXIndexingController&) = delete;
    VXXIndexingController& operator=(const VXXIndexingController&) = delete;

    const std::string& directoryPath() const { return m_directoryPath; }
    VXXMainDatabase& database() { return *m_database; }
    bool shouldScanDirectories = true;

    void sendProjectMessage(const std::string& kind);
    void sendFileMessage(const std::string& kind, const VXIndexedDocument& document);
    void startScanning();  // "VXBurrowerProjectResume"
    void stopScanning();   // "VXBurrowerProjectSuspend"
    // A document's text changed (saved or not): the indexer reads the text as it now stands.
    void documentDidChange(const VXIndexedDocument& document);
    // File and folder changes reach the indexer through its own scans; these do nothing.
    void fileDidChange(const std::string&) {}
    void directoryDidChange(const std::string&) {}
    // The databases to search for this project: its own index.
    std::vector<VXXMainDatabase*> allApplicableIndexDatabases();
    // Tells the indexer the project is closed and closes the database.
    void close();

    // Starts the indexer when it is not running (once per editor process).
    void startBurrowerIfNecessary();
    // Called (on the channel's thread) for each answer of the indexer about this project.
    void setReplyHandler(ReplyHandler handler);

    // The messages' common user info.
    std::map<std::string, std::string> projectInfo(const std::string& kind) const;

private:
    std::string m_directoryPath;
    std::string m_databasePath;
    bool m_temporary = false;
    bool m_closed = false;
    std::unique_ptr<VXXMainDatabase> m_database;
    std::shared_ptr<void> m_replyRegistration;
};

// The indexer process shared by every controller of this editor process.
class VXBurrowerProcess {
public:
    static VXBurrowerProcess& shared();
    // The indexer executable: $VX_BURROWER, else "burrower" beside this process's executable.
    static std::string executablePath();

    // Starts listening and launches the indexer when it is not running; false when it cannot.
    bool startIfNecessary();
    void send(const VXBurrowerMessage& message);
    // Registers a handler for the indexer's answers; it stays while the returned token lives.
    std::shared_ptr<void> observeReplies(std::function<void(const VXBurrowerMessage&)> handler);
    // Stops the indexer (also done when the process ends).
    void stop();
    bool isRunning();
    const std::string& object() const { return m_object; }

    ~VXBurrowerProcess();

    struct Impl;

private:
    VXBurrowerProcess();
    std::string m_object;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace vx
