// The iterative methods of one load step behind one dispatch by method word: the Neumann
// series, the Krylov methods (CG, BiCGSTAB, MINRES, LSQR) and the Nesterov scheme (slowCG).
#pragma once

#include <iosfwd>
#include <string>

#include "solvers/LoadStepSolver.h"
#include "solvers/NeumannSeries.h"

namespace gridmoor {

struct MethodOptions : NeumannOptions {
  // Print "relative Residuum = " after the solve (one more step).
  bool calculateResiduum = false;
  // Print a line when a Krylov method stops because its system has stalled.
  bool reportStall = true;
};

// Solves one load step with `method` (any of the six method words) on fields.deltaE, using
// the method's work fields from fields.methodFields (those steps run on are planned here on
// first use). Which routine set offers which method is the caller's concern. b = T(0) and
// every product A(p) count as matrix-vector products, every loop pass as an iteration.
NeumannResult solveWithMethod(const std::string& method, SolverFields& fields,
                              const StepContext& ctx, const MacroscopicLoad& load,
                              const MethodOptions& options, const ConvergenceSettings& settings,
                              SolverCounters& counters, std::ostream& out, std::ostream& err);

// The relative equilibrium residual of x, |x - T(x)| / |x| in the field's norm, with T the
// step of `kind`; `scratch` (a field of x's shape) is overwritten. |x - T(x)| alone when x = 0.
double relativeResiduum(ElasticityHyperelasticityImage& x, ElasticityHyperelasticityImage& scratch,
                        StepKind kind, const StepContext& ctx, const MacroscopicLoad& load);

}  // namespace gridmoor
