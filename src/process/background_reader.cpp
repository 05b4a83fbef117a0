#include "process/background_reader.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace vx {
namespace {

constexpr size_t kChunkSize = 64 * 1024;
constexpr TaskitStream kStreams[2] = {TaskitStream::Output, TaskitStream::Error};

}  // namespace

BackgroundReader::BackgroundReader(UniqueFd output, UniqueFd error, Completion completion)
    : m_streams{std::move(output), std::move(error)},
      m_stop(::eventfd(0, EFD_CLOEXEC)),
      m_completion(std::move(completion)),
      m_thread([this] { run(); }) {}

BackgroundReader::~BackgroundReader() {
    const uint64_t one = 1;
    if (m_stop && ::write(m_stop.get(), &one, sizeof one) != sizeof one) {
        // Cannot happen for an eventfd far from overflow; the join below would then wait for the ends.
    }
    m_thread.join();
}

void BackgroundReader::run() {
    std::string data[2];
    std::string chunk(kChunkSize, '\0');
    for (;;) {
        pollfd watches[3];
        nfds_t count = 0;
        int streamOfWatch[3];
        for (int stream = 0; stream < 2; ++stream) {
            if (!m_streams[stream]) continue;
            watches[count] = {m_streams[stream].get(), POLLIN, 0};
            streamOfWatch[count++] = stream;
        }
        if (count == 0) return;
        watches[count++] = {m_stop.get(), POLLIN, 0};
        if (::poll(watches, count, -1) == -1) {
            if (errno == EINTR) continue;
            return;
        }
        if (watches[count - 1].revents != 0) return;

        for (nfds_t i = 0; i + 1 < count; ++i) {
            if (watches[i].revents == 0) continue;
            const int stream = streamOfWatch[i];
            const ssize_t got = ::read(m_streams[stream].get(), chunk.data(), chunk.size());
            if (got > 0) {
                data[stream].append(chunk.data(), static_cast<size_t>(got));
            } else if (got == 0 || (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR)) {
                m_streams[stream].reset();
                m_completion(kStreams[stream], std::move(data[stream]));
            }
        }
    }
}

}  // namespace vx
