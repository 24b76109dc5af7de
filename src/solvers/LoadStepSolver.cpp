#include "solvers/LoadStepSolver.h"

#include <functional>
#include <iostream>
#include <vector>

#include "common/Fatal.h"
#include "input/KeywordsElasticity.h"
#include "materials/MaterialVector.h"
#include "solvers/IterativeMethods.h"
#include "solvers/PairAndLargeStrainImages.h"
#include "solvers/StrainStressImage.h"
#include "voxel/Geometry.h"

namespace gridmoor {

namespace {

using FieldFactory = std::function<std::shared_ptr<ElasticityHyperelasticityImage>(
    const GreenOperatorSettings&, const std::array<std::uint64_t, 3>&, const std::string&)>;

template <class T>
FieldFactory factoryOf() {
  return [](const GreenOperatorSettings& s, const std::array<std::uint64_t, 3>& g,
            const std::string& name) -> std::shared_ptr<ElasticityHyperelasticityImage> {
    return std::make_shared<T>(s.mainRule, s.hourglassRule, g[0], g[1], g[2], name);
  };
}

const std::map<std::string, FieldFactory>& formulationTable() {
  static const std::map<std::string, FieldFactory> table = {
      {"Strain", factoryOf<StrainImage>()},
      {"Stress", factoryOf<StressImage>()},
      {"Polarization", factoryOf<PolarizationImage>()},
      {"Eigenstrain", factoryOf<EigenstrainImage>()},
      {"DeformationGradient", factoryOf<DeformationGradientImage>()}};
  return table;
}

// The fields of each iterative method beyond the first three rows of the table.
const std::map<std::string, std::vector<std::string>>& methodTable() {
  static const std::map<std::string, std::vector<std::string>> table = {
      {"CG", {"d_k", "g_k", "Ad_k", "e0"}},
      {"slowCG", {"Ad_k", "e0"}},
      {"BiCGSTAB", {"s_k", "r_k", "p_k", "Ap_k", "As_k", "r_0", "e0"}},
      {"MINRES", {"s_k", "r_k", "p_k", "p_k_old", "s_k_old", "p_k_oldest", "s_k_oldest", "e0"}},
      {"LSQR", {"u_k", "v_k", "w_k", "Auv_k", "e0"}},
      {"NeumannSeries", {}}};
  return table;
}

// The step's routine sets offer no MINRES or LSQR: those run in the load cases of the
// effective matrices only. The step of such a run is solved by CG, the method of the same map
// with the fewest fields, on fields that MINRES or LSQR allocated anyway ("e0" keeps its name).
const std::map<std::string, std::map<std::string, std::string>>& stepAliasesOfCG() {
  static const std::map<std::string, std::map<std::string, std::string>> table = {
      {"MINRES", {{"d_k", "p_k"}, {"g_k", "r_k"}, {"Ad_k", "s_k"}}},
      {"LSQR", {{"d_k", "v_k"}, {"g_k", "u_k"}, {"Ad_k", "Auv_k"}}}};
  return table;
}

GreenOperatorSettings settingsOf(const KeywordsElasticity& keywords,
                                 const std::array<double, 3>& voxelLength) {
  return GreenOperatorSettings::of(keywords.greenOperator(), keywords.filter(),
                                   keywords.specializeOperators(), voxelLength);
}

}  // namespace

std::shared_ptr<ElasticityHyperelasticityImage> makeFormulationField(
    const std::string& formulation, const KeywordsElasticity& keywords,
    const std::array<std::uint64_t, 3>& grid, const std::string& name) {
  const auto it = formulationTable().find(formulation);
  if (it == formulationTable().end()) fatal("Unknown problem formulation");
  return it->second(settingsOf(keywords, {1.0, 1.0, 1.0}), grid, name);
}

SolverFields allocateSolverFields(const KeywordsElasticity& keywords,
                                  const MaterialElasticVector& materials, const Geometry& geometry,
                                  const std::array<std::uint64_t, 3>& grid, bool pathIndependent) {
  const std::string formulation = keywords.problemFormulation();
  SolverFields f;
  f.deltaE = makeFormulationField(formulation, keywords, grid, "deltaE");
  const bool sequence = keywords.numberOfSteps() >= 2 || keywords.numberOfLoadCases() > 0;
  const bool extrapolatesFromLoad =
      pathIndependent && keywords.extrapolation() != ExtrapolationType::AffinLinear;
  f.E_old = sequence && !extrapolatesFromLoad
                ? makeFormulationField(formulation, keywords, grid, "E_old")
                : f.deltaE;
  f.E = keywords.linearizeWithNR() ? makeFormulationField(formulation, keywords, grid, "E")
                                   : f.deltaE;
  const auto method = methodTable().find(keywords.iterativeMethod());
  if (method == methodTable().end()) return f;
  // "e0" holds b = T(0) of the system (I - L) x = b. When every law is affine linear in the
  // formulation and no Newton-Raphson iteration runs, the methods get L as the step under
  // zero load instead (the load, the temperature change and the body force are exactly the
  // affine part of the step), so b needs no field of its own. Otherwise L(p) = T(p) - b and
  // b is kept.
  const bool skipStart =
      materials.allLinearForFormulation(keywords, geometry) && !keywords.linearizeWithNR();
  for (const std::string& name : method->second) {
    if (name == "e0" && skipStart) continue;
    f.methodFields[name] = makeFormulationField(formulation, keywords, grid, name);
  }
  // The residuum is measured on a copy of the solution: the Neumann series has no work field
  // that could take it.
  if (keywords.calculateResiduum() && f.methodFields.empty())
    f.methodFields["Residuum"] = makeFormulationField(formulation, keywords, grid, "Residuum");
  return f;
}

bool loadCasesPrescribeStress(const KeywordsElasticity& keywords) {
  // A mixed load prescribes some strains and some stresses; its unit cases are taken as strain
  // cases: the effective stiffness of a linear cell does not depend on how the step's state
  // was reached, and strain cases need no inversion for partial case lists.
  return keywords.macroscopicLoadKind() == LoadKind::Stress;
}

MacroscopicLoad loadCaseLoad(const KeywordsElasticity& keywords, int loadCase) {
  MacroscopicLoad load;
  load.stressMask = loadCasesPrescribeStress(keywords) ? kAllVoigtBits : 0u;
  // Unit loads act in the grid's axes, so the matrices are in the grid's frame.
  if (loadCase >= 0 && loadCase < kThermalLoadCase)
    load.values[static_cast<std::size_t>(loadCase)] = keywords.macroscopicLoadCaseIncrement();
  return load;
}

bool isIterativeMethod(const std::string& method) { return methodTable().count(method) > 0; }

MacroscopicLoad macroscopicLoadOf(const KeywordsElasticity& keywords, double time) {
  std::vector<double> values;
  keywords.macroscopicLoadAt(time, values);
  MacroscopicLoad load;
  switch (keywords.macroscopicLoadKind()) {
    case LoadKind::Strain: load.stressMask = 0; break;
    case LoadKind::Stress: load.stressMask = kAllVoigtBits; break;
    // The store's bit says "strain prescribed"; the solver's says "stress prescribed".
    case LoadKind::StrainStress: load.stressMask = ~keywords.mixedMask() & kAllVoigtBits; break;
    default: fatal("Macroscopic load kind " + loadKindName(keywords.macroscopicLoadKind()) +
                   " is not solved by the small-strain formulations");
  }
  for (std::size_t c = 0; c < 6 && c < values.size(); ++c) load.values[c] = values[c];
  load.rotation = keywords.coordinateSystemMatrix();
  return load;
}

LoadStepSolver::LoadStepSolver(const KeywordsElasticity& keywords, const Geometry& geometry,
                               const MaterialElasticVector& materials,
                               const std::string& outputDirectory, const Timer* runTimer)
    : keywords_(keywords),
      geometry_(geometry),
      materials_(materials),
      outputDirectory_(outputDirectory),
      runTimer_(runTimer) {
  const std::array<std::uint64_t, 3> grid = {geometry.getSizeX(), geometry.getSizeY(),
                                             geometry.getSizeZ()};
  op_ = DiscreteGreenOperator::create(
      settingsOf(keywords, {geometry.getResolutionX(), geometry.getResolutionY(),
                            geometry.getResolutionZ()}),
      grid);
  const bool allLinear = materials.allLinear(geometry);
  const bool pathIndependent =
      !materials.hasInternalVariables(geometry, keywords.problemFormulation());
  if (allLinear || (pathIndependent && !keywords.linearizeWithNR()))
    routineSet_ = RoutineSet::Linear;
  else if (keywords.linearizeWithNR())
    routineSet_ = RoutineSet::NewtonRaphson;
  else
    routineSet_ = RoutineSet::Fixed;
}

StepContext LoadStepSolver::contextOf(double lambda0, double mu0, double temperatureChange) const {
  StepContext ctx;
  ctx.keywords = &keywords_;
  ctx.materials = &materials_;
  ctx.geometry = &geometry_;
  ctx.greenOperator = op_.get();
  ctx.reference = ReferenceConstants::of(lambda0, mu0);
  ctx.temperatureChange = temperatureChange;
  ctx.tikhonovAlpha =
      keywords_.tikhonovRegularization() ? keywords_.tikhonovRegularizationAlpha() : 0.0;
  return ctx;
}

NeumannResult LoadStepSolver::solveStep(int step, SolverFields& fields, double lambda0, double mu0,
                                        SolverCounters& counters, int doneSteps, int totalSteps) {
  if (routineSet_ == RoutineSet::NewtonRaphson)
    fatal("Newton-Raphson iterations are not available yet");
  // The load at the end of the step: the state the step has to reach.
  const double time = keywords_.timeOfStep(step + 1);
  const MacroscopicLoad load = macroscopicLoadOf(keywords_, time);
  StepContext ctx = contextOf(lambda0, mu0, keywords_.temperatureChangeAt(time));
  if (routineSet_ == RoutineSet::Fixed) ctx.oldField = fields.E_old.get();
  return runMethod(fields, ctx, load, step, false, counters, doneSteps, totalSteps);
}

// Load cases are solved for laws that are affine linear in the strain: the response to the
// step's state plus the increment, less the response to the state itself, is the response to
// the increment alone with no temperature change. So the mechanical cases solve the unit load
// at zero temperature change and the thermal case solves zero mechanical load at the
// temperature increment; neither needs the converged field of the step as a start.
StepContext LoadStepSolver::loadCaseContext(int loadCase, double lambda0, double mu0) const {
  const double temperature =
      loadCase == kThermalLoadCase ? keywords_.macroscopicTemperatureChangeIncrement() : 0.0;
  return contextOf(lambda0, mu0, temperature);
}

NeumannResult LoadStepSolver::solveLoadCase(int /*step*/, int loadCase, SolverFields& fields,
                                            double lambda0, double mu0, SolverCounters& counters,
                                            int doneSteps, int totalSteps) {
  if (routineSet_ == RoutineSet::NewtonRaphson)
    fatal("Newton-Raphson iterations are not available yet");
  const StepContext ctx = loadCaseContext(loadCase, lambda0, mu0);
  // Step index 0: each case starts from its own mean, not from the step's field.
  return runMethod(fields, ctx, loadCaseLoad(keywords_, loadCase), 0, true, counters, doneSteps,
                   totalSteps);
}

NeumannResult LoadStepSolver::runMethod(SolverFields& fields, const StepContext& ctx,
                                        const MacroscopicLoad& load, int stepIndex,
                                        bool loadCaseRoutine, SolverCounters& counters,
                                        int doneSteps, int totalSteps) {
  ElasticityHyperelasticityImage& field = *fields.deltaE;
  ConvergenceSettings settings =
      ConvergenceSettings::fromKeywords(keywords_, outputDirectory_, runTimer_);
  settings.doneSteps = doneSteps;
  settings.totalSteps = totalSteps;
  settings.singleTimeStep = keywords_.numberOfSteps() == 1;
  MethodOptions options;
  options.routineSet = routineSet_;
  options.stepIndex = stepIndex;
  options.calculateResiduum = keywords_.calculateResiduum();
  options.eyreMilton =
      keywords_.accelerateWithEyreMilton() && keywords_.problemFormulation() == "DeformationGradient";
  if (settings.useDivergence) {
    if (!divergenceWork_) {
      divergenceWork_ = std::make_unique<FFTImage>(field.nComponents, field.nFirst, field.nSecond,
                                                   field.nThird, "divergenceWork");
      divergenceWork_->createPlans(keywords_.plannerFlag());
    }
    options.divergenceWork = divergenceWork_.get();
  }
  field.resetSolverState();
  std::string method = keywords_.iterativeMethod();
  // An unknown word has no routine in any set and no work fields: the run goes on unsolved.
  if (!isIterativeMethod(method)) {
    std::cout << "Unknown iterative method " << method << ": the load "
              << (loadCaseRoutine ? "case" : "step") << " is not solved.\n";
    return {};
  }
  SolverFields solveFields = fields;
  const auto aliases = stepAliasesOfCG().find(method);
  if (!loadCaseRoutine && aliases != stepAliasesOfCG().end()) {
    std::cout << method << " solves the load cases of the effective matrices; the load step is "
              << "solved by CG.\n";
    for (const auto& [cgName, name] : aliases->second)
      solveFields.methodFields[cgName] = fields.methodFields.at(name);
    method = "CG";
  }
  // The stall note belongs to the answer a user reads: the run's last load step and the load
  // cases of the effective matrices, never a Newton-Raphson inner solve.
  options.reportStall = !keywords_.linearizeWithNR() &&
                        (loadCaseRoutine || stepIndex + 1 >= keywords_.numberOfSteps());
  return solveWithMethod(method, solveFields, ctx, load, options, settings, counters, std::cout,
                         std::cerr);
}

namespace {

// Bit i set: Voigt slot i of the load at `time` is prescribed as a strain.
unsigned strainSlotsAt(const KeywordsElasticity& keywords, double time) {
  return ~macroscopicLoadOf(keywords, time).stressMask & kAllVoigtBits;
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
  const std::array<double, 6> a = macroscopicLoadOf(keywords, keywords.timeOfStep(step - 1)).values;
  const std::array<double, 6> b = macroscopicLoadOf(keywords, keywords.timeOfStep(step)).values;
  const std::array<double, 6> c = macroscopicLoadOf(keywords, keywords.timeOfStep(step + 1)).values;
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
  const unsigned strainSlots = strainSlotsAt(keywords, keywords.timeOfStep(step + 1));
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
