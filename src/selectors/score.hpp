// Selector scores: unbounded unsigned integers.
//
// A scope test adds count × 16^depth, so a stack deeper than 15 entries already needs more than
// 64 bits. cpp_int keeps values up to 128 bits inline, so usual scores never allocate.
#pragma once

#include <boost/multiprecision/cpp_int.hpp>

namespace vx {

using BigUnsigned = boost::multiprecision::cpp_int;

}  // namespace vx
