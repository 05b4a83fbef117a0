#include "document/chunked_text.hpp"

#include <algorithm>
#include <cstddef>

#include "platform/log.hpp"

namespace vx {
namespace {

constexpr char16_t kLF = u'\n';
constexpr char16_t kCR = u'\r';

// Smallest 1-based index i with prefix(i) >= target (target >= 1), or n + 1 when there is none.
size_t lowerBound(const std::vector<int64_t>& tree, int64_t target) {
    const size_t n = tree.size() - 1;
    size_t step = 1;
    while (step * 2 <= n) step *= 2;
    size_t position = 0;
    for (; step; step /= 2) {
        if (position + step <= n && tree[position + step] < target) {
            position += step;
            target -= tree[position];
        }
    }
    return position + 1;
}

int64_t prefixSum(const std::vector<int64_t>& tree, size_t count) {
    int64_t sum = 0;
    for (size_t i = count; i > 0; i -= i & (~i + 1)) sum += tree[i];
    return sum;
}

void addAt(std::vector<int64_t>& tree, size_t index, int64_t delta) {
    for (size_t i = index + 1; i < tree.size(); i += i & (~i + 1)) tree[i] += delta;
}

}  // namespace

// --- one chunk ---------------------------------------------------------------------------------

bool ChunkedText::Chunk::isBreakEnd(size_t end) const {
    const char16_t last = units[end - 1];
    if (last == kLF) return true;
    return last == kCR && (end == units.size() || units[end] != kLF);
}

void ChunkedText::Chunk::rescanBreaks(size_t from, size_t to) {
    from = std::max<size_t>(from, 1);
    to = std::min(to, units.size());
    auto first = std::lower_bound(breakEnds.begin(), breakEnds.end(), from);
    auto last = std::upper_bound(first, breakEnds.end(), to);
    std::vector<uint32_t> found;
    for (size_t end = from; end <= to; ++end)
        if (isBreakEnd(end)) found.push_back(static_cast<uint32_t>(end));
    auto at = breakEnds.erase(first, last);
    breakEnds.insert(at, found.begin(), found.end());
}

void ChunkedText::Chunk::insert(size_t at, std::u16string_view text, uint32_t attributes) {
    const size_t n = text.size();
    if (n == 0) return;
    for (auto& end : breakEnds)
        if (end > at) end += static_cast<uint32_t>(n);
    units.insert(units.begin() + static_cast<std::ptrdiff_t>(at), text.begin(), text.end());
    rescanBreaks(at, at + n + 1);

    // Split the run at `at` and put the new run between the halves.
    size_t position = 0, index = 0;
    while (index < runs.size() && position + runs[index].length < at) position += runs[index++].length;
    if (index < runs.size() && position + runs[index].length > at && position < at) {
        const uint32_t before = static_cast<uint32_t>(at - position);
        Run tail{runs[index].length - before, runs[index].attributes};
        runs[index].length = before;
        runs.insert(runs.begin() + static_cast<std::ptrdiff_t>(index) + 1, tail);
        ++index;
    } else if (index < runs.size() && position + runs[index].length == at) {
        ++index;
    }
    runs.insert(runs.begin() + static_cast<std::ptrdiff_t>(index), Run{static_cast<uint32_t>(n), attributes});
    mergeRuns();
}

void ChunkedText::Chunk::erase(size_t at, size_t count) {
    if (count == 0) return;
    auto first = std::lower_bound(breakEnds.begin(), breakEnds.end(), at);
    auto last = std::upper_bound(first, breakEnds.end(), at + count + 1);
    auto rest = breakEnds.erase(first, last);
    for (; rest != breakEnds.end(); ++rest) *rest -= static_cast<uint32_t>(count);
    units.erase(units.begin() + static_cast<std::ptrdiff_t>(at), units.begin() + static_cast<std::ptrdiff_t>(at + count));
    rescanBreaks(at, at + 1);

    size_t position = 0, left = count;
    for (size_t index = 0; index < runs.size() && left > 0;) {
        Run& run = runs[index];
        const size_t runEnd = position + run.length;
        if (runEnd <= at) {
            position = runEnd;
            ++index;
            continue;
        }
        const size_t cutFrom = std::max(at, position);
        const size_t cut = std::min(runEnd, at + left) - cutFrom;
        run.length -= static_cast<uint32_t>(cut);
        left -= cut;
        if (run.length == 0) {
            runs.erase(runs.begin() + static_cast<std::ptrdiff_t>(index));
        } else {
            position += run.length;
            ++index;
        }
    }
    mergeRuns();
}

void ChunkedText::Chunk::mergeRuns() {
    size_t out = 0;
    for (size_t i = 0; i < runs.size(); ++i) {
        if (runs[i].length == 0) continue;
        if (out > 0 && runs[out - 1].attributes == runs[i].attributes)
            runs[out - 1].length += runs[i].length;
        else
            runs[out++] = runs[i];
    }
    runs.resize(out);
}

uint32_t ChunkedText::Chunk::attributesAt(size_t at, size_t* runStart, size_t* runLength) const {
    size_t position = 0;
    for (const Run& run : runs) {
        if (at < position + run.length) {
            *runStart = position;
            *runLength = run.length;
            return run.attributes;
        }
        position += run.length;
    }
    *runStart = position;
    *runLength = 0;
    return 0;
}

void ChunkedText::Chunk::changeAttributes(size_t at, size_t count, const std::function<uint32_t(uint32_t)>& change) {
    std::vector<Run> result;
    result.reserve(runs.size() + 2);
    size_t position = 0;
    const size_t end = at + count;
    for (const Run& run : runs) {
        const size_t runEnd = position + run.length;
        const size_t overlapFrom = std::max(position, at), overlapTo = std::min(runEnd, end);
        if (overlapFrom >= overlapTo) {
            result.push_back(run);
        } else {
            if (overlapFrom > position) result.push_back({static_cast<uint32_t>(overlapFrom - position), run.attributes});
            result.push_back({static_cast<uint32_t>(overlapTo - overlapFrom), change(run.attributes)});
            if (runEnd > overlapTo) result.push_back({static_cast<uint32_t>(runEnd - overlapTo), run.attributes});
        }
        position = runEnd;
    }
    runs = std::move(result);
    mergeRuns();
}

ChunkedText::Chunk ChunkedText::Chunk::split(size_t at) {
    Chunk rest;
    rest.units.assign(units.begin() + static_cast<std::ptrdiff_t>(at), units.end());
    units.resize(at);
    auto firstAfter = std::upper_bound(breakEnds.begin(), breakEnds.end(), at);
    for (auto it = firstAfter; it != breakEnds.end(); ++it) rest.breakEnds.push_back(*it - static_cast<uint32_t>(at));
    breakEnds.erase(firstAfter, breakEnds.end());
    size_t position = 0, index = 0;
    while (index < runs.size() && position + runs[index].length <= at) position += runs[index++].length;
    if (index < runs.size()) {
        const uint32_t keep = static_cast<uint32_t>(at - position);
        rest.runs.push_back({runs[index].length - keep, runs[index].attributes});
        rest.runs.insert(rest.runs.end(), runs.begin() + static_cast<std::ptrdiff_t>(index) + 1, runs.end());
        runs.resize(index + 1);
        runs[index].length = keep;
        mergeRuns();
    }
    return rest;
}

void ChunkedText::Chunk::appendChunk(Chunk&& other) {
    const size_t offset = units.size();
    units.insert(units.end(), other.units.begin(), other.units.end());
    for (uint32_t end : other.breakEnds) breakEnds.push_back(end + static_cast<uint32_t>(offset));
    runs.insert(runs.end(), other.runs.begin(), other.runs.end());
    mergeRuns();
    if (offset > 0) rescanBreaks(offset, offset + 1);  // a CR at the seam may now pair with an LF
}

// --- the whole text ----------------------------------------------------------------------------

ChunkedText::ChunkedText() {
    m_chunks.emplace_back();
    rebuildIndex();
}

void ChunkedText::rebuildIndex() {
    const size_t n = m_chunks.size();
    m_unitTree.assign(n + 1, 0);
    m_breakTree.assign(n + 1, 0);
    m_length = 0;
    m_breaks = 0;
    for (size_t i = 0; i < n; ++i) {
        m_unitTree[i + 1] += static_cast<int64_t>(m_chunks[i].size());
        m_breakTree[i + 1] += static_cast<int64_t>(m_chunks[i].breakEnds.size());
        m_length += m_chunks[i].size();
        m_breaks += m_chunks[i].breakEnds.size();
        const size_t parent = (i + 1) + ((i + 1) & (~(i + 1) + 1));
        if (parent <= n) {
            m_unitTree[parent] += m_unitTree[i + 1];
            m_breakTree[parent] += m_breakTree[i + 1];
        }
    }
}

void ChunkedText::updateIndex(size_t chunk, int64_t unitsDelta, int64_t breaksDelta) {
    if (unitsDelta) addAt(m_unitTree, chunk, unitsDelta);
    if (breaksDelta) addAt(m_breakTree, chunk, breaksDelta);
    m_length = static_cast<uint64_t>(static_cast<int64_t>(m_length) + unitsDelta);
    m_breaks = static_cast<uint64_t>(static_cast<int64_t>(m_breaks) + breaksDelta);
}

uint64_t ChunkedText::prefixUnits(size_t chunks) const { return static_cast<uint64_t>(prefixSum(m_unitTree, chunks)); }

uint64_t ChunkedText::prefixBreaks(size_t chunks) const { return static_cast<uint64_t>(prefixSum(m_breakTree, chunks)); }

size_t ChunkedText::locate(uint64_t position, bool preferPrevious, uint64_t* chunkStart) const {
    size_t chunk;
    if (position >= m_length)
        chunk = m_chunks.size() - 1;
    else if (preferPrevious && position > 0)
        chunk = lowerBound(m_unitTree, static_cast<int64_t>(position)) - 1;
    else
        chunk = lowerBound(m_unitTree, static_cast<int64_t>(position) + 1) - 1;
    *chunkStart = prefixUnits(chunk);
    return chunk;
}

bool ChunkedText::boundaryNeedsFix(size_t left) const {
    if (left + 1 >= m_chunks.size()) return false;
    const auto& a = m_chunks[left].units;
    const auto& b = m_chunks[left + 1].units;
    return !a.empty() && !b.empty() && a.back() == kCR && b.front() == kLF;
}

void ChunkedText::rechunk(size_t first, size_t last) {
    Chunk whole = std::move(m_chunks[first]);
    for (size_t i = first + 1; i <= last; ++i) whole.appendChunk(std::move(m_chunks[i]));
    std::vector<Chunk> pieces;
    const size_t total = whole.size();
    if (total > kMaxChunk) {
        // Equal pieces near the nominal size, so that none is left small.
        const size_t count = (total + kNominalChunk - 1) / kNominalChunk;
        std::vector<size_t> cuts;
        for (size_t i = 1; i < count; ++i) {
            size_t cut = total * i / count;
            if (whole.units[cut - 1] == kCR && whole.units[cut] == kLF) ++cut;
            if (cuts.empty() || cut > cuts.back()) cuts.push_back(cut);
        }
        for (auto cut = cuts.rbegin(); cut != cuts.rend(); ++cut) pieces.push_back(whole.split(*cut));
        pieces.push_back(std::move(whole));
        std::reverse(pieces.begin(), pieces.end());
    } else if (total > 0) {
        pieces.push_back(std::move(whole));
    }
    m_chunks.erase(m_chunks.begin() + static_cast<std::ptrdiff_t>(first), m_chunks.begin() + static_cast<std::ptrdiff_t>(last) + 1);
    m_chunks.insert(m_chunks.begin() + static_cast<std::ptrdiff_t>(first), std::make_move_iterator(pieces.begin()),
                    std::make_move_iterator(pieces.end()));
    if (m_chunks.empty()) m_chunks.emplace_back();
    rebuildIndex();
}

void ChunkedText::replace(Range range, std::u16string_view text, uint32_t attributes) {
    VX_ASSERT(range.end() <= m_length);
    if (range.length == 0 && text.empty()) return;
    uint64_t start = 0;
    const size_t chunk = locate(range.location, true, &start);
    const size_t local = range.location - start;
    Chunk& c = m_chunks[chunk];
    if (attributes == kInherit) {
        size_t runStart = 0, runLength = 0;
        if (m_length == 0)
            attributes = 0;
        else if (range.length > 0 && local < c.size())
            attributes = c.attributesAt(local, &runStart, &runLength);
        else if (local > 0)
            attributes = c.attributesAt(local - 1, &runStart, &runLength);
        else
            attributes = attributesAt(range.location, nullptr);
    }

    if (local + range.length <= c.size()) {
        const size_t breaksBefore = c.breakEnds.size();
        c.erase(local, range.length);
        c.insert(local, text, attributes);
        const bool unbalanced = c.size() > kMaxChunk || (c.size() < kMinChunk && m_chunks.size() > 1);
        if (unbalanced || (chunk > 0 && boundaryNeedsFix(chunk - 1)) || boundaryNeedsFix(chunk)) {
            rechunk(chunk > 0 ? chunk - 1 : 0, std::min(chunk + 1, m_chunks.size() - 1));
        } else {
            updateIndex(chunk, static_cast<int64_t>(text.size()) - static_cast<int64_t>(range.length),
                        static_cast<int64_t>(c.breakEnds.size()) - static_cast<int64_t>(breaksBefore));
        }
        return;
    }

    // The range spans chunks: cut the tail of the first, drop the middle, cut the head of the last.
    uint64_t lastStart = 0;
    const size_t lastChunk = locate(range.end(), true, &lastStart);
    c.erase(local, c.size() - local);
    m_chunks[lastChunk].erase(0, range.end() - lastStart);
    m_chunks.erase(m_chunks.begin() + static_cast<std::ptrdiff_t>(chunk) + 1,
                   m_chunks.begin() + static_cast<std::ptrdiff_t>(lastChunk));
    m_chunks[chunk].insert(local, text, attributes);
    rechunk(chunk > 0 ? chunk - 1 : 0, std::min(chunk + 1, m_chunks.size() - 1));
}

void ChunkedText::reserve(uint64_t units) { m_chunks.reserve(m_chunks.size() + units / kNominalChunk + 1); }

void ChunkedText::append(std::u16string_view text, uint32_t attributes) {
    // Fills the last chunk up to the nominal size, then starts new ones; an LF that follows a CR
    // stays in the CR's chunk.
    while (!text.empty()) {
        Chunk* last = &m_chunks.back();
        if (last->size() >= kNominalChunk && !(last->units.back() == kCR && text.front() == kLF)) {
            m_chunks.emplace_back();
            m_chunks.back().units.reserve(kNominalChunk);
            last = &m_chunks.back();
        }
        size_t room = last->size() >= kNominalChunk ? 1 : kNominalChunk - last->size();
        const size_t take = std::min(room, text.size());
        const size_t offset = last->size();
        last->units.insert(last->units.end(), text.begin(), text.begin() + static_cast<std::ptrdiff_t>(take));
        if (!last->breakEnds.empty() && last->breakEnds.back() == offset && last->units[offset - 1] == kCR &&
            text.front() == kLF)
            last->breakEnds.pop_back();  // the CR pairs with the LF that just arrived
        for (size_t i = offset; i < offset + take; ++i) {
            const char16_t unit = last->units[i];
            if (unit == kLF || (unit == kCR && (i + 1 >= last->size() || last->units[i + 1] != kLF)))
                last->breakEnds.push_back(static_cast<uint32_t>(i + 1));
        }
        if (!last->runs.empty() && last->runs.back().attributes == attributes)
            last->runs.back().length += static_cast<uint32_t>(take);
        else
            last->runs.push_back({static_cast<uint32_t>(take), attributes});
        text.remove_prefix(take);
    }
    rebuildIndex();
}

char16_t ChunkedText::at(uint64_t position) const {
    VX_ASSERT(position < m_length);
    uint64_t start = 0;
    const size_t chunk = locate(position, false, &start);
    return m_chunks[chunk].units[position - start];
}

template <class Visit>
void ChunkedText::forEachChunkPiece(Range range, Visit&& visit) const {
    VX_ASSERT(range.end() <= m_length);
    if (range.length == 0) return;
    uint64_t start = 0;
    size_t chunk = locate(range.location, false, &start);
    size_t local = range.location - start;
    for (uint64_t left = range.length; left > 0; ++chunk, local = 0) {
        const size_t take = std::min<uint64_t>(left, m_chunks[chunk].units.size() - local);
        visit(chunk, local, take);
        left -= take;
    }
}

void ChunkedText::forEachSegment(Range range, const std::function<void(std::u16string_view)>& visit) const {
    forEachChunkPiece(range, [&](size_t chunk, size_t local, size_t take) {
        visit(std::u16string_view(m_chunks[chunk].units.data() + local, take));
    });
}

std::u16string ChunkedText::substring(Range range) const {
    std::u16string result;
    result.reserve(range.length);
    forEachSegment(range, [&](std::u16string_view piece) { result.append(piece); });
    return result;
}

uint64_t ChunkedText::lineStart(uint64_t line) const {
    if (line == 0) return 0;
    if (line > m_breaks) return m_length;
    const size_t chunk = lowerBound(m_breakTree, static_cast<int64_t>(line)) - 1;
    const uint64_t before = prefixBreaks(chunk);
    return prefixUnits(chunk) + m_chunks[chunk].breakEnds[line - before - 1];
}

uint64_t ChunkedText::lineIndexForPosition(uint64_t position) const {
    position = std::min(position, m_length);
    uint64_t start = 0;
    const size_t chunk = locate(position, false, &start);
    const auto& ends = m_chunks[chunk].breakEnds;
    return prefixBreaks(chunk) +
           static_cast<uint64_t>(std::upper_bound(ends.begin(), ends.end(), position - start) - ends.begin());
}

uint32_t ChunkedText::attributesAt(uint64_t position, Range* run) const {
    VX_ASSERT(position < m_length);
    uint64_t start = 0;
    const size_t chunk = locate(position, false, &start);
    size_t runStart = 0, runLength = 0;
    const uint32_t id = m_chunks[chunk].attributesAt(position - start, &runStart, &runLength);
    if (run) {
        // Widen across chunk seams while the neighbouring runs carry the same attributes.
        uint64_t from = start + runStart, to = start + runStart + runLength;
        for (size_t i = chunk; i > 0 && from == prefixUnits(i) && !m_chunks[i - 1].runs.empty() &&
                               m_chunks[i - 1].runs.back().attributes == id;
             --i)
            from -= m_chunks[i - 1].runs.back().length;
        for (size_t i = chunk + 1; i < m_chunks.size() && to == prefixUnits(i) && !m_chunks[i].runs.empty() &&
                                   m_chunks[i].runs.front().attributes == id;
             ++i)
            to += m_chunks[i].runs.front().length;
        *run = Range{from, to - from};
    }
    return id;
}

void ChunkedText::changeAttributes(Range range, const std::function<uint32_t(uint32_t)>& change) {
    forEachChunkPiece(range, [&](size_t chunk, size_t local, size_t take) {
        m_chunks[chunk].changeAttributes(local, take, change);
    });
}

}  // namespace vx
