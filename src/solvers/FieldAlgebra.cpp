#include "solvers/FieldAlgebra.h"

#include <string>

#include "common/Fatal.h"
#include "solvers/ElasticityImageLadder.h"

namespace gridmoor {

namespace {

void requireSameShape(const FFTImage& a, const FFTImage& b, const char* operation) {
  if (a.nComponents != b.nComponents || a.nFirst != b.nFirst || a.nSecond != b.nSecond ||
      a.nThird != b.nThird || a.rowStride != b.rowStride || a.firstOffset != b.firstOffset)
    fatal(std::string("Function ") + operation + " can not be called for the fields " +
          a.getName() + " and " + b.getName() + " of different shape.");
}

}  // namespace

FieldProduct FieldProduct::tensor(const ElasticityHyperelasticityImage& field) {
  FieldProduct p;
  p.nValues_ = field.nComponents;
  p.points_ = field.pointsPerVoxel();
  if (p.nValues_ > kMaxValues) fatal("Field " + field.getName() + " has too many values per voxel");
  const std::array<double, 6> w6 = field.normWeights();
  const std::uint64_t width = field.componentsPerPoint;
  for (std::uint64_t c = 0; c < p.nValues_; ++c) {
    const std::uint64_t local = c % width;
    p.weight_[c] = field.mainRule.weights[c / width] * (local < 6 ? w6[local] : 1.0);
  }
  p.rowWeight_.resize(rowLength(field));
  for (std::uint64_t i = 0; i < p.rowWeight_.size(); ++i) p.rowWeight_[i] = p.weight_[i % p.nValues_];
  return p;
}

FieldProduct FieldProduct::energy(const ElasticityHyperelasticityImage& field,
                                  const ReferenceConstants& reference) {
  FieldProduct p = tensor(field);
  // C0 = 2 mu0 I + lambda0 (trace coupling) on the tensor: after the division by 2 mu0 the
  // weights stay those of the tensor norm and the traces couple with lambda0 / (2 mu0).
  if (field.componentsPerPoint != 6 || reference.lambda0 == 0.0) return p;
  if (!(reference.mu0 > 0.0)) fatal("The reference material needs a positive shear modulus");
  p.coupled_ = true;
  for (std::uint64_t q = 0; q < p.points_; ++q)
    p.trace_[q] = field.mainRule.weights[q] * reference.lambda0 / (2.0 * reference.mu0);
  return p;
}

void copyValues(FFTImage& dst, const FFTImage& src) {
  requireSameShape(dst, src, "copyValues");
  const std::uint64_t nc = dst.nComponents;
  double* d = dst.data();
  const double* s = src.data();
  voxelPass<0>(dst, [=](std::uint64_t o, std::array<double, 0>&) {
    for (std::uint64_t c = 0; c < nc; ++c) d[o + c] = s[o + c];
  });
  dst.isInFourierSpace = src.isInFourierSpace;
}

double dot(const FFTImage& x, const FFTImage& y, const FieldProduct& product) {
  requireSameShape(x, y, "dot");
  const double* a = x.data();
  const double* b = y.data();
  return voxelPass<1>(x, [&](std::uint64_t o, std::array<double, 1>& s) {
    s[0] += product(a + o, b + o);
  })[0];
}

double norm2(const FFTImage& x, const FieldProduct& product) {
  const double* a = x.data();
  return voxelPass<1>(x, [&](std::uint64_t o, std::array<double, 1>& s) {
    s[0] += product.norm2(a + o);
  })[0];
}

}  // namespace gridmoor
