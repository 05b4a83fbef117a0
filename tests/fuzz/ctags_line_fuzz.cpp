// The indexer reads ctags' output and the editor's messages as lines of JSON. Any bytes must
// give a tag or nothing (no crash, no overrun), a tag must have its name and path, and a decoded
// message must encode and decode back to itself.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "intelligence/burrower_message.hpp"
#include "intelligence/ctags_runner.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view line(reinterpret_cast<const char*>(data), size);
    if (auto tag = vx::VXParseCtagsLine(line)) {
        if (tag->first.empty() || tag->second.name.empty()) std::abort();
        (void)vx::VXLineOfCtagsPattern(tag->second.pattern);
    }
    if (auto message = vx::VXDecodeBurrowerMessage(line)) {
        std::string encoded = vx::VXEncodeBurrowerMessage(*message);
        encoded.pop_back();  // the line break
        auto again = vx::VXDecodeBurrowerMessage(encoded);
        if (!again || again->name != message->name || again->object != message->object ||
            again->userInfo != message->userInfo)
            std::abort();
    }
    return 0;
}
