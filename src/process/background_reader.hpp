// Reads a child's output and error streams to their ends on a thread of its own, so the caller
// can go on with other work and look at the results later.
#pragma once

#include <functional>
#include <string>
#include <thread>

#include "platform/unique_handle.hpp"
#include "process/taskit.hpp"

namespace vx {

class BackgroundReader {
public:
    // Called on the reader's thread once per stream that reached its end (or failed), with
    // everything read from it; the stream's descriptor is closed just before.
    using Completion = std::function<void(TaskitStream, std::string)>;

    BackgroundReader(UniqueFd output, UniqueFd error, Completion completion);
    // Stops reading (streams not finished yet get no completion) and joins the thread.
    ~BackgroundReader();
    BackgroundReader(const BackgroundReader&) = delete;
    BackgroundReader& operator=(const BackgroundReader&) = delete;

private:
    void run();

    UniqueFd m_streams[2];  // output, error
    UniqueFd m_stop;        // an eventfd the destructor signals
    Completion m_completion;
    std::thread m_thread;
};

}  // namespace vx
