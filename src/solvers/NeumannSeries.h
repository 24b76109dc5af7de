// The basic fixed-point iteration of the Lippmann-Schwinger equation for one load step,
// written over the field's step and norms only, whatever formulation the field solves.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "solvers/ConvergenceCriteria.h"
#include "solvers/ElasticityImageLadder.h"
#include "solvers/StepContext.h"

namespace gridmoor {

// Which routine set a solve belongs to: it fixes the step kind and what follows a step.
enum class RoutineSet { Linear, Fixed, NewtonRaphson };

// The step kind of a routine set: the law without history, with history, or linearized.
inline StepKind stepKindOf(RoutineSet set) {
  switch (set) {
    case RoutineSet::Fixed: return StepKind::Nonlinear;
    case RoutineSet::NewtonRaphson: return StepKind::Linearized;
    case RoutineSet::Linear: break;
  }
  return StepKind::Linear;
}

// Run-wide counters that the driver reads for its report.
struct SolverCounters {
  std::int64_t iterations = 0;
  std::int64_t matrixVectorProducts = 0;
};

struct NeumannResult {
  int iterations = 0;
  // True when the loop ended on the iteration limit and not on convergence.
  bool limitReached = false;
};

struct NeumannOptions {
  RoutineSet routineSet = RoutineSet::Linear;
  // The load step; at step 0 the field starts from the initial condition.
  int stepIndex = 0;
  // Large strain only: the accelerated step replaces the plain one.
  bool eyreMilton = false;
  // A planned image of the field's shape for the divergence criterion; null when the
  // criteria do not measure the divergence.
  FFTImage* divergenceWork = nullptr;
};

NeumannResult solveNeumannSeries(ElasticityHyperelasticityImage& field, const StepContext& ctx,
                                 const MacroscopicLoad& load, const NeumannOptions& options,
                                 const ConvergenceSettings& settings, SolverCounters& counters,
                                 std::ostream& out, std::ostream& err);


}  // namespace gridmoor
