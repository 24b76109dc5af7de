// Fixed-size tensor arrays without allocation or name (Voigt vectors, matrices, the 21
// complex entries of a symmetric operator), convertible to a named Vector.
#pragma once

#include <complex>
#include <cstddef>

#include "voxel/Vector.h"

namespace gridmoor {

template <std::size_t N, class S = double>
class FixedVector {
 public:
  FixedVector() : values_{} {}
  explicit FixedVector(const S& value) {
    for (std::size_t i = 0; i < N; ++i) values_[i] = value;
  }

  static constexpr std::size_t size() { return N; }
  S& operator[](std::size_t i) { return values_[i]; }
  const S& operator[](std::size_t i) const { return values_[i]; }
  S* data() { return values_; }
  const S* data() const { return values_; }
  S* begin() { return values_; }
  S* end() { return values_ + N; }
  const S* begin() const { return values_; }
  const S* end() const { return values_ + N; }

  // A Vector named "FixedVector" holding a copy of the entries (none in estimate mode,
  // where a Vector holds no data).
  Vector<S> toVector() const {
    Vector<S> v(N, "FixedVector");
    if (v.size() == N)
      for (std::size_t i = 0; i < N; ++i) v[i] = values_[i];
    return v;
  }

 private:
  S values_[N];
};

using ComplexFixedVector21 = FixedVector<21, std::complex<double>>;

}  // namespace gridmoor
