// Text positions and ranges, counted in UTF-16 code units throughout the engine.
#pragma once

#include <cstdint>

namespace vx {

// "Not found" is the largest signed 64-bit value (2^63 − 1), as a location.
inline constexpr uint64_t kNotFound = INT64_MAX;

struct Range {
    uint64_t location = 0;
    uint64_t length = 0;

    uint64_t end() const { return location + length; }
    bool contains(uint64_t position) const { return position >= location && position < end(); }
    friend bool operator==(const Range&, const Range&) = default;
};

}  // namespace vx
