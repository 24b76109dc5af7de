// Scalar readers and writers for binary formats of either byte order (legacy VTK is
// big-endian, the rest little-endian): with swap set the bytes of the value are reversed.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <istream>
#include <ostream>

namespace gridmoor {

namespace byteorder_detail {
template <class S>
void writeScalar(std::ostream& stream, S value, bool swap) {
  char bytes[sizeof(S)];
  std::memcpy(bytes, &value, sizeof(S));
  if (swap) std::reverse(bytes, bytes + sizeof(S));
  stream.write(bytes, sizeof(S));
}
}  // namespace byteorder_detail

inline void writeDouble(std::ostream& stream, double value, bool swap) {
  byteorder_detail::writeScalar(stream, value, swap);
}

// The value is narrowed to 4 bytes.
inline void writeFloat(std::ostream& stream, double value, bool swap) {
  byteorder_detail::writeScalar(stream, static_cast<float>(value), swap);
}

inline void writeInt(std::ostream& stream, std::int32_t value, bool swap) {
  byteorder_detail::writeScalar(stream, value, swap);
}

// The caller checks the stream afterwards; a failed read gives 0.
inline double readDouble(std::istream& stream, bool swap) {
  char bytes[sizeof(double)] = {};
  stream.read(bytes, sizeof(double));
  if (!stream) return 0.0;
  if (swap) std::reverse(bytes, bytes + sizeof(double));
  double value;
  std::memcpy(&value, bytes, sizeof(double));
  return value;
}

}  // namespace gridmoor
