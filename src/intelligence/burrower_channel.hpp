// The wire between one editor process and its indexer: a Unix-domain socket in the runtime folder
// named after the editor's process id, carrying one JSON message a line in both directions.
//
// The editor listens (VXBurrowerChannel) before it starts the indexer, which connects
// (VXBurrowerConnection). Messages sent before the indexer has connected wait in the channel, so
// sending never blocks the editor; a second editor has its own socket and its own indexer, and an
// indexer also ignores messages whose object is not its editor's.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "intelligence/burrower_message.hpp"
#include "platform/unique_handle.hpp"

namespace vx {

// $XDG_RUNTIME_DIR/vellumex, else <temporary folder>/vellumex-<uid>; created (mode 0700) on demand.
std::string VXRuntimeDirectory();
// The socket of an editor process: <runtime>/burrower-<pid>.sock.
std::string VXBurrowerSocketPath(long pid);

class VXBurrowerChannel {
public:
    using ReplyHandler = std::function<void(const VXBurrowerMessage&)>;

    // Listens at `socketPath` (a stale socket left by a dead process is replaced); nothing when
    // the socket cannot be made.
    static std::unique_ptr<VXBurrowerChannel> listen(const std::string& socketPath);
    // Closes the connection (the indexer sees the end and exits) and removes the socket.
    ~VXBurrowerChannel();
    VXBurrowerChannel(const VXBurrowerChannel&) = delete;
    VXBurrowerChannel& operator=(const VXBurrowerChannel&) = delete;

    // Queues the message for the indexer; returns at once.
    void send(const VXBurrowerMessage& message);
    // Called on the channel's own thread for every message the indexer sends back.
    void setReplyHandler(ReplyHandler handler);
    bool isConnected() const;
    const std::string& path() const;

    struct State;

private:
    explicit VXBurrowerChannel(std::shared_ptr<State> state);
    std::shared_ptr<State> m_state;
};

// The indexer's end.
class VXBurrowerConnection {
public:
    // Connects to an editor's socket, retrying for up to `seconds` while it is not there yet.
    static std::optional<VXBurrowerConnection> connect(const std::string& socketPath, double seconds = 5);

    // The next message; nothing once the editor has closed its end (or gone).
    std::optional<VXBurrowerMessage> receive();
    // Whether a whole message is already waiting (so that work can be batched).
    bool hasPendingMessage();
    bool reply(const VXBurrowerMessage& message);

private:
    explicit VXBurrowerConnection(UniqueFd fd) : m_fd(std::move(fd)) {}
    bool fill(bool wait);

    UniqueFd m_fd;
    std::string m_buffer;
};

}  // namespace vx
