// What one fixed-point step reads besides its own field: the run's settings, materials and
// operator, the reference constants and the macroscopic load of the step.
#pragma once

#include <array>
#include <cstdint>

#include "operators/ReferenceConstants.h"

namespace gridmoor {

class KeywordsElasticity;
class MaterialElasticVector;
class Geometry;
class DiscreteGreenOperator;
class FFTImage;

// Which material call the voxel loop makes: the law without history, with history, or
// linearized about the total field.
enum class StepKind { Linear, Nonlinear, Linearized };

// The load of a step as the solver needs it. Slots are in Voigt order 11, 22, 33, 23, 13, 12;
// strain values carry engineering shear, stress values plain shear.
struct MacroscopicLoad {
  std::array<double, 6> values{};
  // Bit i set: component i is prescribed as stress (its value is a mean stress), clear: as
  // strain. The opposite of the keyword store's mixed mask, whose bit means strain.
  unsigned stressMask = 0;
  // Rows are the axes of the frame in which the load is given, in global coordinates.
  std::array<double, 9> rotation{1, 0, 0, 0, 1, 0, 0, 0, 1};

  static MacroscopicLoad strain(const std::array<double, 6>& e) { return {e, 0u, identity()}; }
  static MacroscopicLoad stress(const std::array<double, 6>& s) { return {s, 0x3Fu, identity()}; }
  static std::array<double, 9> identity() { return {1, 0, 0, 0, 1, 0, 0, 0, 1}; }
  bool isPureStrain() const { return stressMask == 0; }
};

// Everything a step reads and never writes. Fields other than the primary one are given by
// pointer: null where the step kind does not need them.
struct StepContext {
  const KeywordsElasticity* keywords = nullptr;
  const MaterialElasticVector* materials = nullptr;
  const Geometry* geometry = nullptr;
  const DiscreteGreenOperator* greenOperator = nullptr;
  ReferenceConstants reference;
  // Body force already in Fourier space (three values per voxel), or null.
  const FFTImage* externalForce = nullptr;
  // The last converged field (history and linearized steps) and the total field about which
  // a linearized step works.
  const FFTImage* oldField = nullptr;
  const FFTImage* totalField = nullptr;
  int loadCase = 0;
  double temperatureChange = 0.0;
  // Tikhonov regularisation: weight, 0 when off.
  double tikhonovAlpha = 0.0;
};

// Work an iterative method fuses into the voxel loop of a step, on data the loop touches
// anyway: row(offset) runs on each row (the voxels of one (x, y), offset as in rowPass) before
// the loop reads that row's input, in the thread that then reads it; afterLoop() runs once
// when the loop is done and says whether the step goes on to its transforms. When it says no,
// the step ends there and its field holds no result.
class StepRowWork {
 public:
  virtual void row(std::uint64_t offset) = 0;
  virtual bool afterLoop() = 0;

 protected:
  ~StepRowWork() = default;
};

// The input of a step taken from other fields instead of the field's own values: the sum of
// weight * field over the terms (fields of the stepped field's shape, in real space; the
// stepped field itself may be one of them), also written into `store` when that is set. An
// iterative method forms its next direction this way inside the step's voxel loop, which
// saves the pass over the fields that would form it first; with `work` it moves its other
// fields on in the same loop.
struct StepInput {
  static constexpr int kMaxTerms = 3;
  int terms = 0;
  std::array<const FFTImage*, kMaxTerms> fields{};
  std::array<double, kMaxTerms> weights{};
  FFTImage* store = nullptr;
  StepRowWork* work = nullptr;

  StepInput& add(double weight, const FFTImage& field) {
    fields[static_cast<std::size_t>(terms)] = &field;
    weights[static_cast<std::size_t>(terms)] = weight;
    ++terms;
    return *this;
  }
  StepInput& storedIn(FFTImage& field) {
    store = &field;
    return *this;
  }
  StepInput& fusedWith(StepRowWork& rowWork) {
    work = &rowWork;
    return *this;
  }
};

// Reductions gathered by a step in passes it makes anyway.
struct StepSums {
  // Squared norm of the field the step produced (tensor norm, summed over voxels).
  double fieldNormSquared = 0.0;
  // False when the input's row work ended the step after its voxel loop.
  bool transformed = true;
};

}  // namespace gridmoor
