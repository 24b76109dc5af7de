// Whole-field algebra of the iterative methods on real-space fields of one shape: copies,
// weighted inner products, and a voxel pass that fuses updates with their reductions.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "operators/FFTImage.h"
#include "operators/ReferenceConstants.h"

namespace gridmoor {

class ElasticityHyperelasticityImage;

// Runs body(offset, sums) once per row of `shape`: the nThird voxels of one (x, y), whose
// rowLength values lie contiguous from offset on, so that elementwise loops over a row
// vectorize. The row padding of the r2c layout is never visited: after a backward transform
// it holds leftovers that must not enter a reduction. Threads take static chunks of the first
// axis and add into their own sums, merged at the end.
inline std::uint64_t rowLength(const FFTImage& shape) { return shape.nThird * shape.nComponents; }

template <std::size_t NSums, class Body>
std::array<double, NSums> rowPass(const FFTImage& shape, Body&& body) {
  std::array<double, NSums> total{};
#pragma omp parallel
  {
    std::array<double, NSums> local{};
    const IndexRange range = shape.threadFirstRange();
    for (std::uint64_t x = range.begin; x < range.end; ++x)
      for (std::uint64_t y = 0; y < shape.nSecond; ++y)
        body((x - shape.firstOffset) * shape.planeStride + y * shape.rowStride, local);
    if constexpr (NSums > 0) {
#pragma omp critical(gridmoor_row_pass)
      for (std::size_t i = 0; i < NSums; ++i) total[i] += local[i];
    }
  }
  return total;
}

// Runs body(offset, sums) once per voxel of `shape`, offset being the index of the voxel's
// first value in every buffer of that shape: rowPass with a loop over the row's voxels.
template <std::size_t NSums, class Body>
std::array<double, NSums> voxelPass(const FFTImage& shape, Body&& body) {
  const std::uint64_t voxels = shape.nThird;
  const std::uint64_t width = shape.nComponents;
  return rowPass<NSums>(shape, [&](std::uint64_t row, std::array<double, NSums>& sums) {
    for (std::uint64_t z = 0; z < voxels; ++z) body(row + z * width, sums);
  });
}

// A symmetric bilinear form on the values of one voxel: a weight per value plus, for
// six-component points, a coupling of the traces of the two arguments.
class FieldProduct {
 public:
  static constexpr std::size_t kMaxValues = 48;
  static constexpr std::size_t kMaxPoints = kMaxValues / 6;

  // The tensor product of the field's own norm: point weight times the component's norm
  // weight (shear halved for engineering strains). Its square root on x.x is getFieldNorm.
  static FieldProduct tensor(const ElasticityHyperelasticityImage& field);
  // x . (C0 y) with the isotropic reference, divided by 2 mu0. The step's map is self-adjoint
  // in this product (the symmetric methods need exactly it). The division makes the product
  // independent of the stiffness units, not of the load: the methods' stall thresholds are
  // absolute and so scale with the square of the load and with the number of voxels. With
  // lambda0 = 0 it equals the tensor product.
  static FieldProduct energy(const ElasticityHyperelasticityImage& field,
                             const ReferenceConstants& reference);

  double operator()(const double* x, const double* y) const {
    double s = 0.0;
    for (std::uint64_t c = 0; c < nValues_; ++c) s += weight_[c] * x[c] * y[c];
    if (coupled_)
      for (std::uint64_t p = 0; p < points_; ++p) {
        const double* a = x + 6 * p;
        const double* b = y + 6 * p;
        s += trace_[p] * (a[0] + a[1] + a[2]) * (b[0] + b[1] + b[2]);
      }
    return s;
  }
  double norm2(const double* x) const { return (*this)(x, x); }

  // The form summed over the voxels of one row (see rowPass) of the field it was made for.
  double row(const double* x, const double* y) const {
    const std::uint64_t n = rowWeight_.size();
    const double* w = rowWeight_.data();
    double s = 0.0;
#pragma omp simd reduction(+ : s)
    for (std::uint64_t i = 0; i < n; ++i) s += w[i] * x[i] * y[i];
    return coupled_ ? s + rowTraces(x, y) : s;
  }
  double rowNorm2(const double* x) const { return row(x, x); }

  // On a row the form is the sum of rowWeights()[i] x[i] y[i], plus rowTraces(x, y) when it
  // is coupled: loops that make their own elementwise work take the first part on the way.
  const double* rowWeights() const { return rowWeight_.data(); }
  bool coupled() const { return coupled_; }
  double rowTraces(const double* x, const double* y) const {
    double s = 0.0;
    for (std::uint64_t v = 0; v < rowWeight_.size(); v += nValues_)
      for (std::uint64_t p = 0; p < points_; ++p) {
        const double* a = x + v + 6 * p;
        const double* b = y + v + 6 * p;
        s += trace_[p] * (a[0] + a[1] + a[2]) * (b[0] + b[1] + b[2]);
      }
    return s;
  }

 private:
  std::uint64_t nValues_ = 0;
  std::uint64_t points_ = 0;
  bool coupled_ = false;
  std::array<double, kMaxValues> weight_{};
  std::array<double, kMaxPoints> trace_{};
  // weight_ repeated for every voxel of a row.
  std::vector<double> rowWeight_;
};

// Element-wise updates that need no reduction (scale, scaled add) are Vector's own: they may
// run over the padding too. The methods fuse theirs into voxelPass with their reductions.

// dst := src, values only (the padding is left alone).
void copyValues(FFTImage& dst, const FFTImage& src);
double dot(const FFTImage& x, const FFTImage& y, const FieldProduct& product);
double norm2(const FFTImage& x, const FieldProduct& product);

}  // namespace gridmoor
