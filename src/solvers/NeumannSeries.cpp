#include "solvers/NeumannSeries.h"

#include <array>
#include <cmath>
#include <ostream>
#include <vector>

#include "common/Fatal.h"
#include "input/KeywordsElasticity.h"
#include "input/LoadComponents.h"

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

namespace {

// Bit i set: Voigt slot i of the load is a strain.
unsigned strainPrescribedSlots(const KeywordsElasticity& keywords) {
  switch (keywords.macroscopicLoadKind()) {
    case LoadKind::Strain: return kAllVoigtBits;
    case LoadKind::StrainStress: return keywords.mixedMask();
    default: return 0u;
  }
}

std::array<double, 6> loadAt(const KeywordsElasticity& keywords, double time) {
  // Zero-filled: a one-row table leaves the vector untouched.
  std::vector<double> values(6, 0.0);
  keywords.macroscopicLoadAt(time, values);
  std::array<double, 6> load{};
  for (std::size_t c = 0; c < 6 && c < values.size(); ++c) load[c] = values[c];
  return load;
}

// The same value for every point of a voxel: six per point, the rest of a wider point 0.
std::vector<double> perPoint(const ElasticityHyperelasticityImage& field,
                             const std::array<double, 6>& values) {
  std::vector<double> v(field.componentsPerPoint, 0.0);
  for (std::size_t c = 0; c < 6 && c < v.size(); ++c) v[c] = values[c];
  return v;
}

void addLoadIncrement(ElasticityHyperelasticityImage& E, const KeywordsElasticity& keywords,
                      int step, unsigned strainSlots) {
  std::vector<double> change;
  keywords.macroscopicLoadIncrement(step, change);
  std::array<double, 6> increment{};
  for (unsigned c = 0; c < 6 && c < change.size(); ++c)
    increment[c] = (strainSlots & (1u << c)) ? change[c] : 0.0;
  E.addConstantToPoints(perPoint(E, increment).data());
}

// With the loads L at the times of steps i - 1, i and i + 1 and the solutions E (at step i)
// and E_old (at step i - 1), the new start is E + s (E - E_old) + c: s is the ratio of the
// load's coming change to its last one (least squares over the six components, exact for a
// proportional history, where a linear cell's solution scales with the load), and c puts the
// strain-prescribed means onto the new load. E_old takes E in the same pass.
void affineExtrapolation(ElasticityHyperelasticityImage& E, ElasticityHyperelasticityImage& E_old,
                         const KeywordsElasticity& keywords, int step, unsigned strainSlots) {
  const std::array<double, 6> a = loadAt(keywords, keywords.timeOfStep(step - 1));
  const std::array<double, 6> b = loadAt(keywords, keywords.timeOfStep(step));
  const std::array<double, 6> c = loadAt(keywords, keywords.timeOfStep(step + 1));
  double cross = 0.0, last = 0.0;
  for (int k = 0; k < 6; ++k) {
    cross += (c[k] - b[k]) * (b[k] - a[k]);
    last += (b[k] - a[k]) * (b[k] - a[k]);
  }
  const double s = last > 0.0 ? cross / last : 0.0;
  std::array<double, 6> shift{};
  for (unsigned k = 0; k < 6; ++k)
    shift[k] = (strainSlots & (1u << k)) ? (c[k] - b[k]) - s * (b[k] - a[k]) : 0.0;
  const std::vector<double> constant = perPoint(E, shift);
  const std::uint64_t width = E.componentsPerPoint;
  const std::uint64_t values = E.nComponents;
  if (E_old.nComponents != values || E_old.rowStride != E.rowStride)
    fatal("The fields " + E.getName() + " and " + E_old.getName() + " differ in shape");
  double* e = E.data();
  double* old = E_old.data();
  const FFTImage& image = E;
#pragma omp parallel
  {
    const IndexRange range = image.threadFirstRange();
    for (std::uint64_t x = range.begin; x < range.end; ++x)
      for (std::uint64_t y = 0; y < image.nSecond; ++y) {
        const std::uint64_t row = (x - image.firstOffset) * image.planeStride + y * image.rowStride;
        for (std::uint64_t i = 0; i < image.nThird * values; ++i) {
          const double now = e[row + i];
          e[row + i] = now + s * (now - old[row + i]) + constant[i % width];
          old[row + i] = now;
        }
      }
  }
}

}  // namespace

void extrapolateStartField(ElasticityHyperelasticityImage& E, ElasticityHyperelasticityImage& E_old,
                           const KeywordsElasticity& keywords, int step, int firstStep,
                           bool pathIndependent) {
  if (step <= 0) return;
  const ExtrapolationType word = keywords.extrapolation();
  const unsigned strainSlots = strainPrescribedSlots(keywords);
  const bool noOldField = (keywords.numberOfSteps() == 1 && keywords.numberOfLoadCases() == 0) ||
                          (pathIndependent && word != ExtrapolationType::AffinLinear);
  const bool apart = &E_old != &E;
  if (noOldField || !apart) {
    addLoadIncrement(E, keywords, step, strainSlots);
    return;
  }
  if (word == ExtrapolationType::None) {
    static_cast<FFTImage&>(E_old) = E;
    return;
  }
  if ((!keywords.writeEffectiveMatrix() || step == firstStep) &&
      word != ExtrapolationType::Linear) {
    affineExtrapolation(E, E_old, keywords, step, strainSlots);
    return;
  }
  static_cast<FFTImage&>(E_old) = E;
  addLoadIncrement(E, keywords, step, strainSlots);
}

}  // namespace gridmoor
