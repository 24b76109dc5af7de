// Times the Neumann series of the strain formulation on a sphere composite (contrast 10,
// isotropic linear laws, "Basic" operator) against the transform pair of the same field,
// and counts iterations to a tolerance of 1e-6. Prints one Markdown table row.
//
//   neumann_iteration SIZE THREADS [PLANNER=Estimate] [MAX_ITERATIONS=10000]
//
// With a small MAX_ITERATIONS (large grids) the time per iteration still comes from the
// iterations made, and the iteration column says where the loop was stopped.
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
  if (argc < 3 || argc > 5) {
    std::fprintf(stderr, "usage: %s SIZE THREADS [PLANNER] [MAX_ITERATIONS]\n", argv[0]);
    return 1;
  }
  const auto n = static_cast<std::uint64_t>(std::strtoull(argv[1], nullptr, 10));
  const int threads = std::atoi(argv[2]);
  const std::string planner = argc > 3 ? argv[3] : "Estimate";
  const int maxIterations = argc > 4 ? std::atoi(argv[4]) : 10000;
  if (n < 4 || threads < 1 || maxIterations < 1) return 1;

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
  convergence.maxIter = maxIterations;
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
  const std::string iterations = r.limitReached
                                     ? "not measured (stopped after " + std::to_string(r.iterations) + ")"
                                     : std::to_string(r.iterations);
  std::printf("| %llu^3 | %d | %s | %.4f | %.4f | %.2f | %s | %.0f |\n",
              static_cast<unsigned long long>(n), threads, planner.c_str(), perIteration, pair,
              perIteration / pair, iterations.c_str(), static_cast<double>(peak) * 1024.0 / voxels);
  // Only a limit asked for is not a failure.
  return r.limitReached && argc <= 4 ? 2 : 0;
}
