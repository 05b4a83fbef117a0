#include "intelligence/burrower_channel.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <thread>

#include "platform/log.hpp"

namespace vx {
namespace {

std::optional<sockaddr_un> socketAddress(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return std::nullopt;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

void setNonBlocking(int fd) { ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK); }

}  // namespace

std::string VXRuntimeDirectory() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    std::string folder = runtime && *runtime ? std::string(runtime) + "/vellumex"
                                             : std::filesystem::temp_directory_path().string() + "/vellumex-" +
                                                   std::to_string(::getuid());
    ::mkdir(folder.c_str(), 0700);
    return folder;
}

std::string VXBurrowerSocketPath(long pid) { return VXRuntimeDirectory() + "/burrower-" + std::to_string(pid) + ".sock"; }

// --- The editor's end ---------------------------------------------------------------------------

// Shared by the channel and its thread; the thread owns the sockets.
struct VXBurrowerChannel::State {
    std::string path;
    UniqueFd listener;
    UniqueFd wake;  // an eventfd: new outgoing text, or time to stop
    std::mutex mutex;
    std::string outgoing;  // guarded by mutex
    bool stopping = false;
    bool connected = false;
    ReplyHandler handler;
    std::thread thread;

    void signal() {
        const uint64_t one = 1;
        [[maybe_unused]] auto written = ::write(wake.get(), &one, sizeof one);
    }

    void run() {
        UniqueFd peer;
        std::string incoming, sending;
        char buffer[1 << 16];
        while (true) {
            {
                std::lock_guard lock(mutex);
                if (stopping) break;
                if (peer) sending += std::exchange(outgoing, {});
                connected = static_cast<bool>(peer);
            }
            pollfd fds[3] = {{wake.get(), POLLIN, 0},
                             {peer ? -1 : listener.get(), POLLIN, 0},
                             {peer ? peer.get() : -1, static_cast<short>(POLLIN | (sending.empty() ? 0 : POLLOUT)), 0}};
            if (::poll(fds, 3, -1) < 0 && errno != EINTR) break;
            if (fds[0].revents & POLLIN) {
                uint64_t count;
                [[maybe_unused]] auto got = ::read(wake.get(), &count, sizeof count);
            }
            if (fds[1].revents & POLLIN) {
                peer = UniqueFd(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
                continue;
            }
            if (!peer) continue;
            if (fds[2].revents & POLLOUT) {
                const ssize_t n = ::send(peer.get(), sending.data(), sending.size(), MSG_NOSIGNAL);
                if (n > 0) sending.erase(0, static_cast<size_t>(n));
            }
            if (fds[2].revents & (POLLIN | POLLHUP | POLLERR)) {
                const ssize_t n = ::read(peer.get(), buffer, sizeof buffer);
                if (n == 0 || (n < 0 && errno != EAGAIN && errno != EINTR)) {
                    // The indexer went away; a new one may connect and gets what was not sent.
                    peer.reset();
                    std::lock_guard lock(mutex);
                    outgoing.insert(0, std::exchange(sending, {}));
                    continue;
                }
                if (n > 0) incoming.append(buffer, static_cast<size_t>(n));
                size_t start = 0;
                for (size_t newline; (newline = incoming.find('\n', start)) != std::string::npos; start = newline + 1) {
                    auto message = VXDecodeBurrowerMessage(std::string_view(incoming).substr(start, newline - start));
                    ReplyHandler current;
                    {
                        std::lock_guard lock(mutex);
                        current = handler;
                    }
                    if (message && current) current(*message);
                }
                incoming.erase(0, start);
            }
        }
        // What was queued last (the close of a project, typically) still goes out, briefly.
        if (!peer) return;
        sending += outgoing;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
        while (!sending.empty() && std::chrono::steady_clock::now() < deadline) {
            pollfd fd = {peer.get(), POLLOUT, 0};
            if (::poll(&fd, 1, 50) <= 0) continue;
            const ssize_t n = ::send(peer.get(), sending.data(), sending.size(), MSG_NOSIGNAL);
            if (n <= 0) break;
            sending.erase(0, static_cast<size_t>(n));
        }
    }
};

std::unique_ptr<VXBurrowerChannel> VXBurrowerChannel::listen(const std::string& socketPath) {
    auto address = socketAddress(socketPath);
    if (!address) return nullptr;
    auto state = std::make_shared<State>();
    state->path = socketPath;
    state->listener = UniqueFd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    state->wake = UniqueFd(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!state->listener || !state->wake) return nullptr;
    ::unlink(socketPath.c_str());  // a socket file outlives a process that crashed
    if (::bind(state->listener.get(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0 ||
        ::listen(state->listener.get(), 4) != 0) {
        VX_LOG_DEBUG("intelligence", "cannot listen at %s: %s", socketPath.c_str(), std::strerror(errno));
        return nullptr;
    }
    setNonBlocking(state->listener.get());
    state->thread = std::thread([raw = state.get()] { raw->run(); });
    return std::unique_ptr<VXBurrowerChannel>(new VXBurrowerChannel(std::move(state)));
}

VXBurrowerChannel::VXBurrowerChannel(std::shared_ptr<State> state) : m_state(std::move(state)) {}

VXBurrowerChannel::~VXBurrowerChannel() {
    {
        std::lock_guard lock(m_state->mutex);
        m_state->stopping = true;
    }
    m_state->signal();
    if (m_state->thread.joinable()) m_state->thread.join();
    ::unlink(m_state->path.c_str());
}

void VXBurrowerChannel::send(const VXBurrowerMessage& message) {
    {
        std::lock_guard lock(m_state->mutex);
        m_state->outgoing += VXEncodeBurrowerMessage(message);
    }
    m_state->signal();
}

void VXBurrowerChannel::setReplyHandler(ReplyHandler handler) {
    std::lock_guard lock(m_state->mutex);
    m_state->handler = std::move(handler);
}

bool VXBurrowerChannel::isConnected() const {
    std::lock_guard lock(m_state->mutex);
    return m_state->connected;
}

const std::string& VXBurrowerChannel::path() const { return m_state->path; }

// --- The indexer's end --------------------------------------------------------------------------

std::optional<VXBurrowerConnection> VXBurrowerConnection::connect(const std::string& socketPath, double seconds) {
    auto address = socketAddress(socketPath);
    if (!address) return std::nullopt;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (true) {
        UniqueFd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (fd && ::connect(fd.get(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address) == 0)
            return VXBurrowerConnection(std::move(fd));
        if (std::chrono::steady_clock::now() >= deadline) return std::nullopt;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

bool VXBurrowerConnection::fill(bool wait) {
    char buffer[1 << 16];
    pollfd fd = {m_fd.get(), POLLIN, 0};
    if (::poll(&fd, 1, wait ? -1 : 0) <= 0) return false;
    const ssize_t n = ::read(m_fd.get(), buffer, sizeof buffer);
    if (n <= 0) {
        if (n < 0 && errno == EINTR) return true;
        m_fd.reset();
        return false;
    }
    m_buffer.append(buffer, static_cast<size_t>(n));
    return true;
}

std::optional<VXBurrowerMessage> VXBurrowerConnection::receive() {
    while (true) {
        if (size_t newline = m_buffer.find('\n'); newline != std::string::npos) {
            auto message = VXDecodeBurrowerMessage(std::string_view(m_buffer).substr(0, newline));
            m_buffer.erase(0, newline + 1);
            if (message) return message;
            continue;  // a malformed line is skipped
        }
        if (!m_fd || !fill(true)) {
            if (!m_fd) return std::nullopt;
        }
    }
}

bool VXBurrowerConnection::hasPendingMessage() {
    while (m_buffer.find('\n') == std::string::npos)
        if (!m_fd || !fill(false)) return false;
    return true;
}

bool VXBurrowerConnection::reply(const VXBurrowerMessage& message) {
    if (!m_fd) return false;
    const std::string line = VXEncodeBurrowerMessage(message);
    for (size_t done = 0; done < line.size();) {
        const ssize_t n = ::send(m_fd.get(), line.data() + done, line.size() - done, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

}  // namespace vx
