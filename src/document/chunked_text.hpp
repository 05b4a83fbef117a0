// ChunkedText: the characters of a text storage, as UTF-16 code units in a list of chunks of a few
// thousand units each, with the line breaks and attribute runs of each chunk kept beside it.
//
//   chunks   [ "int main() {\n  retu" | "rn 0;\n}\n" | ... ]      2 048 units each, at most 4 096
//   breaks   [ 13 ]                   | [ 6, 8 ]                   offsets just past each line break
//   runs     [ 13:a, 7:b ]            | [ 15:b ]                   (length, attributes id) pairs
//
// Two Fenwick trees over the chunks (units and line breaks per chunk) find the chunk of a position
// or of a line in O(log n), so an edit moves at most one chunk's units and a lookup never walks the
// text. A line break is LF, CR or the pair CR LF; the pair is never split between two chunks, so each
// chunk can tell its own line breaks without looking at its neighbours.
//
// Chunk size, measured on a 100 MB file (open; 10,000 random one-character inserts, CPU time):
// 4 096 units: 219 ms, 28.6 ms, peak 2.24 x the file;  2 048: 229 ms, 25.0 ms, 2.27 x;
// 1 024: 259 ms, 22.4 ms, 2.35 x. Typing cost is mostly the move of the chunk's tail.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/range.hpp"

namespace vx {

class ChunkedText {
public:
    static constexpr size_t kNominalChunk = 2048;
    static constexpr size_t kMaxChunk = 4096;
    static constexpr size_t kMinChunk = 512;

    ChunkedText();

    uint64_t length() const { return m_length; }
    // Number of line breaks; the text has one line more (the last one may be empty).
    uint64_t lineBreakCount() const { return m_breaks; }

    // Replaces `range` by `text`; the new units get attributes `attributes`, or with kInherit those
    // of the first replaced unit, or with nothing replaced, of the unit before (after, at the start).
    static constexpr uint32_t kInherit = UINT32_MAX;
    void replace(Range range, std::u16string_view text, uint32_t attributes);
    // Adds units at the end (the fast path for reading a file).
    void append(std::u16string_view text, uint32_t attributes);
    void reserve(uint64_t units);

    char16_t at(uint64_t position) const;
    std::u16string substring(Range range) const;
    // Calls `visit` with consecutive pieces that together make up `range`, without copying.
    void forEachSegment(Range range, const std::function<void(std::u16string_view)>& visit) const;

    // Where line `line` (0-based, up to lineBreakCount()) starts.
    uint64_t lineStart(uint64_t line) const;
    // The line a position is on; a position inside a CR LF pair belongs to the line the pair ends.
    uint64_t lineIndexForPosition(uint64_t position) const;

    // The attributes id at a position and the run of equal ids around it.
    uint32_t attributesAt(uint64_t position, Range* run) const;
    // Rewrites the attributes id of every unit in `range` through `change`.
    void changeAttributes(Range range, const std::function<uint32_t(uint32_t)>& change);

    size_t chunkCount() const { return m_chunks.size(); }

private:
    struct Run {
        uint32_t length;
        uint32_t attributes;
    };
    struct Chunk {
        std::vector<char16_t> units;
        std::vector<uint32_t> breakEnds;
        std::vector<Run> runs;

        size_t size() const { return units.size(); }
        bool isBreakEnd(size_t end) const;
        void rescanBreaks(size_t from, size_t to);  // breaks ending in [from, to]
        void insert(size_t at, std::u16string_view text, uint32_t attributes);
        void erase(size_t at, size_t count);
        uint32_t attributesAt(size_t at, size_t* runStart, size_t* runLength) const;
        void changeAttributes(size_t at, size_t count, const std::function<uint32_t(uint32_t)>& change);
        void mergeRuns();
        Chunk split(size_t at);  // keeps [0, at), returns the rest
        void appendChunk(Chunk&& other);
    };

    // The chunk holding `position` and where that chunk starts. With `preferPrevious`, a position on a
    // boundary belongs to the chunk before it (where an insertion there should go).
    size_t locate(uint64_t position, bool preferPrevious, uint64_t* chunkStart) const;
    // Calls visit(chunk, offsetInChunk, count) for each chunk's share of range, in order.
    template <class Visit>
    void forEachChunkPiece(Range range, Visit&& visit) const;
    void rebuildIndex();
    void updateIndex(size_t chunk, int64_t unitsDelta, int64_t breaksDelta);
    uint64_t prefixUnits(size_t chunks) const;
    uint64_t prefixBreaks(size_t chunks) const;
    // Re-cuts chunks [first, last] into pieces of nominal size that never separate CR from LF.
    void rechunk(size_t first, size_t last);
    bool boundaryNeedsFix(size_t left) const;

    std::vector<Chunk> m_chunks;
    std::vector<int64_t> m_unitTree, m_breakTree;  // Fenwick trees, 1-based
    uint64_t m_length = 0;
    uint64_t m_breaks = 0;
};

}  // namespace vx
