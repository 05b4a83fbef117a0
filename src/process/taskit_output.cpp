// Collecting a child's output and error streams: in the calling thread (the waitFor... calls)
// or in the background.
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

#include "platform/unicode.hpp"
#include "process/background_reader.hpp"
#include "process/taskit.hpp"

namespace vx {
namespace {

// Each collecting read takes at most this much, alternating between the two streams, so neither
// stream's pipe fills up while the other is being read.
constexpr size_t kReadSize = 200;

enum class ReadResult { Data, NoData, Closed, Failed };

ReadResult readSome(int fd, std::string& into) {
    char buffer[kReadSize];
    const ssize_t got = ::read(fd, buffer, sizeof buffer);
    if (got > 0) {
        into.append(buffer, static_cast<size_t>(got));
        return ReadResult::Data;
    }
    if (got == 0) return ReadResult::Closed;
    if (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR) return ReadResult::NoData;
    return ReadResult::Failed;
}

void setNonBlocking(const UniqueFd& fd) {
    if (!fd) return;
    const int flags = ::fcntl(fd.get(), F_GETFL);
    if (flags != -1) ::fcntl(fd.get(), F_SETFL, flags | O_NONBLOCK);
}

}  // namespace

void Taskit::setUpFileHandles() {
    setNonBlocking(m_outPipe.readEnd);
    setNonBlocking(m_errPipe.readEnd);
}

bool Taskit::waitForIntoOutputData(std::string& output, std::string& error) {
    if (!m_launched) return true;
    // A child that has exited has written all it will: what is in the pipes is taken without
    // waiting for the streams to close, which a grandchild could put off indefinitely.
    const bool exited = !isRunning();
    if (m_shouldSetUpFileHandlesAutomatically) setUpFileHandles();

    struct Stream {
        int fd;
        std::string& into;
        bool open;
    } streams[2] = {{m_outPipe.readEnd.get(), output, bool(m_outPipe.readEnd)},
                    {m_errPipe.readEnd.get(), error, bool(m_errPipe.readEnd)}};
    bool failed = false;
    while (streams[0].open || streams[1].open) {
        bool gotData = false;
        for (Stream& stream : streams) {
            if (!stream.open) continue;
            switch (readSome(stream.fd, stream.into)) {
            case ReadResult::Data: gotData = true; break;
            case ReadResult::NoData: stream.open = !exited; break;
            case ReadResult::Closed: stream.open = false; break;
            case ReadResult::Failed:
                stream.open = false;
                failed = true;
                break;
            }
        }
        if (gotData) continue;
        // Nothing to read on either stream yet: sleep until one has something (or closes).
        pollfd watches[2];
        nfds_t count = 0;
        for (const Stream& stream : streams)
            if (stream.open) watches[count++] = {stream.fd, POLLIN, 0};
        if (count > 0) ::poll(watches, count, -1);
    }
    return !failed;
}

bool Taskit::waitForOutputData(std::string* output, std::string* error) {
    std::string collectedOutput, collectedError;
    const bool ok = waitForIntoOutputData(collectedOutput, collectedError);
    if (output) *output = std::move(collectedOutput);
    if (error) *error = std::move(collectedError);
    return ok;
}

bool Taskit::waitForOutputString(std::string* output, std::string* error) {
    std::string collectedOutput, collectedError;
    const bool ok = waitForIntoOutputData(collectedOutput, collectedError);
    if (output) *output = decodeUtf8Lossy(collectedOutput);
    if (error) *error = decodeUtf8Lossy(collectedError);
    return ok;
}

std::string Taskit::waitForOutput() {
    std::string output;
    waitForOutputData(&output, nullptr);
    return output;
}

std::string Taskit::waitForError() {
    std::string error;
    waitForOutputData(nullptr, &error);
    return error;
}

std::string Taskit::waitForOutputString() {
    return decodeUtf8Lossy(waitForOutput());
}

std::string Taskit::waitForErrorString() {
    return decodeUtf8Lossy(waitForError());
}

void Taskit::readToEndInBackground() {
    if (!m_launched || m_backgroundReader) return;
    m_backgroundReader = std::make_unique<BackgroundReader>(
        std::move(m_outPipe.readEnd), std::move(m_errPipe.readEnd),
        [this](TaskitStream stream, std::string data) { syncFileHandleReadCompletion(stream, std::move(data)); });
}

void Taskit::syncFileHandleReadCompletion(TaskitStream stream, std::string data) {
    std::lock_guard lock(m_backgroundMutex);
    bool& finished = stream == TaskitStream::Output ? m_hasFinishedReadingOutput : m_hasFinishedReadingError;
    if (finished) return;
    (stream == TaskitStream::Output ? m_outputBuffer : m_errorBuffer) = std::move(data);
    finished = true;
    m_backgroundFinished.notify_all();
}

bool Taskit::waitForBackgroundReading(double seconds) {
    std::unique_lock lock(m_backgroundMutex);
    return m_backgroundFinished.wait_for(lock, std::chrono::duration<double>(seconds),
                                         [this] { return m_hasFinishedReadingOutput && m_hasFinishedReadingError; });
}

bool Taskit::hasFinishedReadingOutput() const {
    std::lock_guard lock(m_backgroundMutex);
    return m_hasFinishedReadingOutput;
}

bool Taskit::hasFinishedReadingError() const {
    std::lock_guard lock(m_backgroundMutex);
    return m_hasFinishedReadingError;
}

std::string Taskit::outputBuffer() const {
    std::lock_guard lock(m_backgroundMutex);
    return m_outputBuffer;
}

std::string Taskit::errorBuffer() const {
    std::lock_guard lock(m_backgroundMutex);
    return m_errorBuffer;
}

void Taskit::end() {
    m_backgroundReader.reset();
    m_inPipe = {};
    m_outPipe = {};
    m_errPipe = {};
}

}  // namespace vx
