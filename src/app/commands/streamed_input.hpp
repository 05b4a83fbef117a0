// A file or standard input read in blocks as UTF-16, for commands that work as the text arrives
// (`vx highlight` on a pipe that never ends). A byte-order mark at the start is dropped; a UTF-8
// sequence cut by a block's end waits for the next block, so the blocks decode exactly as the
// whole text would (malformed bytes become U+FFFD).
#pragma once

#include <string>

#include "platform/unique_handle.hpp"

namespace vx::cli {

class StreamedInput {
public:
    // "-" reads standard input. Throws CommandFailure naming a file that cannot be opened for reading.
    explicit StreamedInput(const std::string& path);

    // Appends what the next read brings (as much as is there, up to a block; waits for at least
    // one byte) to `out`; false at the end of the input. Throws CommandFailure when a read fails.
    bool readInto(std::u16string& out);

private:
    std::string m_path;
    UniqueFd m_owned;
    int m_fd = -1;
    std::string m_held;  // the start of a UTF-8 sequence that the next block completes
    bool m_atStart = true;
    bool m_ended = false;
};

}  // namespace vx::cli
