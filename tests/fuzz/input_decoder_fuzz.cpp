// Terminal input bytes decoded into events. Besides memory safety under the sanitizers it checks
// that how the bytes arrive does not matter: fed in pieces (sizes from the first byte) or all at
// once, they give the same events, and nothing is left pending after a flush.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "app/tui/input_decoder.hpp"

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

std::vector<vx::tui::InputEvent> decode(std::string_view bytes, size_t piece) {
    vx::tui::InputDecoder decoder;
    std::vector<vx::tui::InputEvent> events;
    for (size_t at = 0; at < bytes.size(); at += piece) {
        decoder.feed(bytes.substr(at, piece));
        for (auto& event : decoder.takeEvents()) events.push_back(std::move(event));
    }
    decoder.flushPending();
    for (auto& event : decoder.takeEvents()) events.push_back(std::move(event));
    check(!decoder.hasPendingSequence());
    return events;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const size_t piece = data[0] % 7 + 1;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    check(decode(bytes, piece) == decode(bytes, bytes.size() + 1));
    return 0;
}
