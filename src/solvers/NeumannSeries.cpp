#include "solvers/NeumannSeries.h"

#include <cmath>
#include <ostream>

#include "common/Fatal.h"

namespace gridmoor {

namespace {

// The criteria's scalars of the field after the last step: its norm from the step's own
// reductions, the stress and the divergence measured on demand (the step's voxel loop meets
// the stress of the field it starts from, one iteration too early for the criterion).
class NeumannValues : public CriterionValues {
 public:
  NeumannValues(ElasticityHyperelasticityImage& field, const StepContext& ctx, FFTImage* work)
      : field_(field), ctx_(ctx), work_(work) {}
  void update(const StepSums& sums) { sums_ = sums; }
  double simpleValue() override { return std::sqrt(sums_.fieldNormSquared); }
  double stressValue() override { return field_.getStressNormSquared(ctx_); }
  double divergenceValue() override {
    if (!work_) fatal("The divergence criterion needs a work field of the solution's shape");
    return field_.getDivergenceNorm(*work_, ctx_);
  }

 private:
  ElasticityHyperelasticityImage& field_;
  const StepContext& ctx_;
  FFTImage* work_;
  StepSums sums_;
};

}  // namespace

NeumannResult solveNeumannSeries(ElasticityHyperelasticityImage& field, const StepContext& ctx,
                                 const MacroscopicLoad& load, const NeumannOptions& options,
                                 const ConvergenceSettings& settings, SolverCounters& counters,
                                 std::ostream& out, std::ostream& err) {
  const StepKind kind = stepKindOf(options.routineSet);
  NeumannValues values(field, ctx, options.divergenceWork);
  double e0Simple = 0.0;
  double e0Stress = 0.0;
  if (options.routineSet == RoutineSet::NewtonRaphson) {
    // The increment starts at zero; its scalars then start at zero as well.
    static_cast<FFTImage&>(field) = 0.0;
    field.isInFourierSpace = false;
  } else {
    if (options.stepIndex == 0) field.setInitialCondition(load, ctx);
    const StepSums first = field.step(kind, ctx, load);
    if (options.routineSet == RoutineSet::Fixed) field.updateInternalSolution(ctx);
    values.update(first);
    if (settings.useSimple) e0Simple = values.simpleValue();
    if (settings.useStress) e0Stress = values.stressValue();
  }
  ConvergenceMonitor monitor(settings, out, err);
  monitor.start(e0Simple, e0Stress, values);
  NeumannResult result;
  for (int n = 0; n < settings.maxIter; ++n) {
    out << "Iteration " << n;
    ++counters.iterations;
    const StepSums sums = options.eyreMilton ? field.eyreMiltonStep(ctx, load)
                                             : field.step(kind, ctx, load);
    if (options.routineSet == RoutineSet::Fixed) field.updateInternalSolution(ctx);
    ++counters.matrixVectorProducts;
    values.update(sums);
    result.iterations = n + 1;
    const bool done = monitor.check(n, values);
    out << std::flush;
    if (done) break;
  }
  result.limitReached = monitor.limitReached();
  return result;
}

}  // namespace gridmoor
