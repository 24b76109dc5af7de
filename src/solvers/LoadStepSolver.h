// What the run sequence calls around the solve: the work fields of the formulation and the
// method (aliases where a field is not needed), and the solve of one load step.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "operators/DiscreteGreenOperator.h"
#include "solvers/NeumannSeries.h"

namespace gridmoor {

class Geometry;
class KeywordsElasticity;
class MaterialElasticVector;

// The named work fields of a run. An unneeded field is the same object as another one,
// never null: E_old and E are deltaE unless the run needs them apart.
struct SolverFields {
  std::shared_ptr<ElasticityHyperelasticityImage> deltaE;
  std::shared_ptr<ElasticityHyperelasticityImage> E_old;
  std::shared_ptr<ElasticityHyperelasticityImage> E;
  // The fields of the iterative method ("d_k", "g_k", ... and "e0"), by name.
  std::map<std::string, std::shared_ptr<ElasticityHyperelasticityImage>> methodFields;
};

// A field of the formulation's class ("Strain": StrainImage, "Stress": StressImage, ...) on the
// grid, with the integration rules of the run's discretisation.
std::shared_ptr<ElasticityHyperelasticityImage> makeFormulationField(
    const std::string& formulation, const KeywordsElasticity& keywords,
    const std::array<std::uint64_t, 3>& grid, const std::string& name);

// Allocates the fields of the run by formulation and iterative method. pathIndependent: no
// used law keeps history. A method word outside the table allocates no method fields.
SolverFields allocateSolverFields(const KeywordsElasticity& keywords,
                                  const MaterialElasticVector& materials, const Geometry& geometry,
                                  const std::array<std::uint64_t, 3>& grid, bool pathIndependent);

// True when some routine set offers `method`: an unknown word solves nothing.
bool isIterativeMethod(const std::string& method);

// The macroscopic load of the keyword store at `time` in the solver's form.
MacroscopicLoad macroscopicLoadOf(const KeywordsElasticity& keywords, double time);

// The macroscopic load of homogenization load case loadCase (0 to 5: the unit loads in Voigt
// order, 6: the thermal case) and whether its mean is prescribed as stress.
MacroscopicLoad loadCaseLoad(const KeywordsElasticity& keywords, int loadCase);
// True when the load cases prescribe mean stresses, so that they measure the compliance.
bool loadCasesPrescribeStress(const KeywordsElasticity& keywords);

// The start field of step `step` of a load history, in place on E (the solution of the step
// before), by the Extrapolation word; E_old holds the solution of the step before that where
// the run keeps it apart (else it is E's alias) and leaves as the last converged state.
// - A run that keeps no old field (one step without load cases, or path-independent laws
//   and a word other than "AffinLinear") adds the load's change over the step to E.
// - "None": E stays as it is; E_old takes it.
// - "Linear", and the steps after the first of a run with effective matrices (whose load
//   cases leave E_old equal to E): E_old takes E, and the load's change is added to E.
// - "AffinLinear", "MemoryEfficient": the affine extrapolation through the loads at the
//   times of the steps i - 1, i and i + 1 (see the definition); E_old takes E.
// Only components prescribed as strain move by the load's change: a stress-controlled
// component finds its mean in the iteration. Nothing happens at step 0. firstStep is the
// first step of this run (after a restart, not 0).
void extrapolateStartField(ElasticityHyperelasticityImage& E, ElasticityHyperelasticityImage& E_old,
                           const KeywordsElasticity& keywords, int step, int firstStep,
                           bool pathIndependent);

// One object per run: the Green operator of the discretisation is built once, and each call
// of solveStep solves one load step in place on the fields.
class LoadStepSolver {
 public:
  LoadStepSolver(const KeywordsElasticity& keywords, const Geometry& geometry,
                 const MaterialElasticVector& materials, const std::string& outputDirectory,
                 const Timer* runTimer);

  // Solves step `step` with the isotropic reference (lambda0, mu0). The fields must be
  // planned. doneSteps and totalSteps place the solve on the main progress bar.
  NeumannResult solveStep(int step, SolverFields& fields, double lambda0, double mu0,
                          SolverCounters& counters, int doneSteps, int totalSteps);

  // Solves homogenization load case loadCase of step `step` in place on fields.deltaE: the
  // response to the load case's increment alone (see loadCaseContext). doneSteps and
  // totalSteps place the solve on the main progress bar, as for solveStep.
  NeumannResult solveLoadCase(int step, int loadCase, SolverFields& fields, double lambda0,
                              double mu0, SolverCounters& counters, int doneSteps,
                              int totalSteps);
  // The context in which load case loadCase is solved and its stress is evaluated.
  StepContext loadCaseContext(int loadCase, double lambda0, double mu0) const;

  const DiscreteGreenOperator& greenOperator() const { return *op_; }
  RoutineSet routineSet() const { return routineSet_; }

 private:
  StepContext contextOf(double lambda0, double mu0, double temperatureChange) const;
  // The one place where a solve calls the iterative method.
  NeumannResult runMethod(SolverFields& fields, const StepContext& ctx,
                          const MacroscopicLoad& load, int stepIndex, bool loadCaseRoutine,
                          SolverCounters& counters, int doneSteps, int totalSteps);

  const KeywordsElasticity& keywords_;
  const Geometry& geometry_;
  const MaterialElasticVector& materials_;
  std::string outputDirectory_;
  const Timer* runTimer_;
  std::unique_ptr<DiscreteGreenOperator> op_;
  RoutineSet routineSet_ = RoutineSet::Linear;
  // Made at the first solve that measures the divergence, then kept for the run.
  std::unique_ptr<FFTImage> divergenceWork_;
};

}  // namespace gridmoor
