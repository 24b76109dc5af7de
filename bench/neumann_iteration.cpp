// Times the Neumann series of the strain formulation on a sphere composite (contrast 10,
// isotropic linear laws, "Basic" operator) against the transform pair of the same field,
// and counts iterations to a tolerance of 1e-6. Prints one Markdown table row.
//
//   neumann_iteration SIZE THREADS [PLANNER=Estimate]
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "BenchSupport.h"
#include "input/KeywordsElasticity.h"
#include "solvers/NeumannSeries.h"
#include "solvers/StrainStressImage.h"

int main(int argc, char** argv) {
  using namespace gridmoor;
  if (argc < 3 || argc > 4) {
    std::fprintf(stderr, "usage: %s SIZE THREADS [PLANNER]\n", argv[0]);
    return 1;
  }
  const auto n = static_cast<std::uint64_t>(std::strtoull(argv[1], nullptr, 10));
  const int threads = std::atoi(argv[2]);
  const std::string planner = argc > 3 ? argv[3] : "Estimate";
  if (n < 4 || threads < 1) return 1;

  StaticGeometry geometry;
  MaterialElasticVector materials;
  bench::sphereComposite(n, 10.0, geometry, materials);

  const GreenOperatorSettings settings =
      GreenOperatorSettings::of(GreenOperatorType::Basic, FilterType::None, true);
  auto op = DiscreteGreenOperator::create(settings, {n, n, n});
  StrainImage field(settings, n, n, n, "deltaE");
  field.initThreadsAndPlans(threads, planner);

  // The transform pair of this very field, the denominator of the ratio.
  const double pair = bench::transformPairSeconds(field);

  KeywordsElasticity keywords;
  StepContext ctx;
  ctx.keywords = &keywords;
  ctx.materials = &materials;
  ctx.geometry = &geometry;
  ctx.greenOperator = op.get();
  const EigenvalueRange range = materials.getMinMaxEigenvalueStrain(geometry, 0, nullptr);
  ctx.reference = ReferenceConstants::of(0.0, (range.minOfMinima + range.maxOfMaxima) / 4.0);
  ConvergenceSettings convergence;
  convergence.tolerance = 1e-6;
  convergence.maxIter = 10000;
  SolverCounters counters;
  std::ostringstream lines;
  const MacroscopicLoad load = MacroscopicLoad::strain({0.01, 0, 0, 0, 0, 0});
  Timer solve;
  solve.start();
  const NeumannResult r =
      solveNeumannSeries(field, ctx, load, {}, convergence, counters, lines, lines);
  solve.stop();
  // The loop runs one step before the first iteration to fix the start value.
  const double perIteration = solve.seconds() / (r.iterations + 1);
  const double voxels = static_cast<double>(n * n * n);
  const std::uint64_t peak = bench::peakResidentKB();
  field.destroyPlansAndCleanupThreads();
  std::printf("| %llu^3 | %d | %.4f | %.4f | %.2f | %d | %.0f |\n",
              static_cast<unsigned long long>(n), threads, perIteration, pair,
              perIteration / pair, r.iterations, static_cast<double>(peak) * 1024.0 / voxels);
  return r.limitReached ? 2 : 0;
}
