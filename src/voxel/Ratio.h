// Exact grid ratios (original size over target size) and the floor and ceiling by which
// slab ranges and resampling boxes are mapped between grids without loss.
#pragma once

#include <boost/rational.hpp>

#include <cstdint>

namespace gridmoor {

using Ratio = boost::rational<std::uint64_t>;

inline std::uint64_t floorOf(const Ratio& r) { return r.numerator() / r.denominator(); }

inline std::uint64_t ceilOf(const Ratio& r) {
  return r.numerator() / r.denominator() + (r.numerator() % r.denominator() != 0 ? 1 : 0);
}

// [floor(begin * ratio), ceil(end * ratio)): the planes of another grid that a range of
// planes covers. The end of one range may equal the beginning of the next.
inline void mapRange(std::uint64_t begin, std::uint64_t end, const Ratio& ratio,
                     std::uint64_t& mappedBegin, std::uint64_t& mappedEnd) {
  mappedBegin = floorOf(Ratio(begin) * ratio);
  mappedEnd = ceilOf(Ratio(end) * ratio);
}

}  // namespace gridmoor
