// A complex number as two doubles with plain inline arithmetic, for the per-frequency
// kernels: std::complex multiplication may call out to a NaN-handling routine. Trivial, so
// that local arrays cost nothing until written: write {} where zero is meant.
#pragma once

namespace gridmoor {

struct ComplexValue {
  double re;
  double im;
};

inline ComplexValue operator+(ComplexValue a, ComplexValue b) { return {a.re + b.re, a.im + b.im}; }
inline ComplexValue operator-(ComplexValue a, ComplexValue b) { return {a.re - b.re, a.im - b.im}; }
inline ComplexValue operator-(ComplexValue a) { return {-a.re, -a.im}; }
inline ComplexValue operator*(ComplexValue a, ComplexValue b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
inline ComplexValue operator*(double s, ComplexValue a) { return {s * a.re, s * a.im}; }
inline ComplexValue& operator+=(ComplexValue& a, ComplexValue b) {
  a.re += b.re;
  a.im += b.im;
  return a;
}
inline ComplexValue conj(ComplexValue a) { return {a.re, -a.im}; }

}  // namespace gridmoor
