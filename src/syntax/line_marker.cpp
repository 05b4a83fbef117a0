#include "syntax/line_marker.hpp"

namespace vx {

VXSyntaxLineMarker::VXSyntaxLineMarker() = default;

VXSyntaxLineMarker::~VXSyntaxLineMarker() {
    // Nobody can wait on a marker that is going away, but its queue may still be finishing a parse.
    m_queue.reset();
}

void VXSyntaxLineMarker::setLocations(Range inclusive, Range content) {
    inclusiveStartLocation = inclusive.location;
    inclusiveEndLocation = inclusive.end();
    contentStartLocation = content.location;
    contentEndLocation = content.end();
}

void VXSyntaxLineMarker::offsetLocationsBy(int64_t delta) {
    const auto d = static_cast<uint64_t>(delta);
    inclusiveStartLocation += d;
    contentStartLocation += d;
    contentEndLocation += d;
    inclusiveEndLocation += d;
}

void VXSyntaxLineMarker::parseFrom(const VXContext& start, std::u16string_view text, uint64_t contentLength,
                                   const VXSyntaxRuleset& ruleset, VXSyntaxParseState* state) {
    std::vector<VXSyntaxZone> zones;
    const VXSyntaxLine line{text, contentLength, 0};
    VXContext end = VXSyntaxParseLine(start, line, zones, ruleset, state);
    enter();
    m_zones = std::move(zones);
    m_everParsed = true;
    leave();
    startContext = start;
    endContext = std::move(end);
}

std::vector<VXSyntaxZone> VXSyntaxLineMarker::lineZones() {
    m_future.wait();
    enter();
    std::vector<VXSyntaxZone> zones = m_zones;
    leave();
    return zones;
}

std::optional<VXSyntaxLineMarker::Snapshot> VXSyntaxLineMarker::currentZones() {
    enter();
    std::optional<Snapshot> snapshot;
    if (m_everParsed) snapshot = Snapshot{m_zones, !isPending()};
    leave();
    return snapshot;
}

void VXSyntaxLineMarker::holdFuture() {
    if (!m_futureHeld.exchange(true, std::memory_order_acq_rel)) m_future.enter();
}

void VXSyntaxLineMarker::releaseFuture() {
    if (m_futureHeld.exchange(false, std::memory_order_acq_rel)) m_future.leave();
}

SerialQueue& VXSyntaxLineMarker::controlQueue() {
    if (!m_queue) m_queue = std::make_unique<SerialQueue>("line marker");
    return *m_queue;
}

const HUTF8MappedUTF16String& VXSyntaxLineMarker::makeUnicodeMap(const char16_t* characters, uint64_t length) {
    m_indexMap = std::make_unique<HUTF8MappedUTF16String>(
        HUTF8MappedUTF16String::fromUtf16(std::u16string_view(characters, length)));
    return *m_indexMap;
}

}  // namespace vx
