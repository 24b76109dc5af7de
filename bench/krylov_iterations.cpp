// The iterative methods on a sphere composite at one contrast, each with the reference
// material a run would choose for it: iterations to a tolerance of 1e-6 (the Neumann series
// with "Basic" and "StaggeredGrid", the others with "Basic"), printed as a row "I|...", and
// the time per iteration of CG and BiCGSTAB against the transform pair of the same process,
// printed as rows "T|...".
//
//   krylov_iterations SIZE THREADS CONTRAST [MAXITER=2000] [WHAT=both] [REPEATS=3] [PLANNER=Estimate]
//
// WHAT is "iterations", "times" or "both". A time per iteration is the difference of two
// solves that stop at iteration limits 12 apart, so that the start of a solve (b and its
// residual) drops out; REPEATS rounds each time the pair and the two solves side by side,
// and the medians of the rounds are printed, with those of the time the same iterations
// spent in their own transforms per pair.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "input/KeywordsElasticity.h"
#include "operators/ReferenceMaterial.h"
#include "solvers/IterativeMethods.h"
#include "solvers/LoadStepSolver.h"

namespace {

using namespace gridmoor;

struct Run {
  int iterations = 0;
  bool limitReached = false;
  double seconds = 0.0;
  // Of those, the seconds spent in the solve's own transforms.
  double transformSeconds = 0.0;
};

Run solveOnce(const std::string& method, GreenOperatorType op, std::uint64_t n,
              const StaticGeometry& geometry, const MaterialElasticVector& materials,
              double tolerance, int maxIter, const std::string& planner) {
  KeywordsElasticity keywords;
  keywords.greenOperator.set(op);
  keywords.iterativeMethod.set(method);
  keywords.plannerFlag.set(planner);
  const std::array<std::uint64_t, 3> grid = {n, n, n};
  SolverFields fields = allocateSolverFields(keywords, materials, geometry, grid, true);
  fields.deltaE->createPlans(planner);
  auto green = DiscreteGreenOperator::create(
      GreenOperatorSettings::of(op, FilterType::None, true), grid);
  StepContext ctx;
  ctx.keywords = &keywords;
  ctx.materials = &materials;
  ctx.geometry = &geometry;
  ctx.greenOperator = green.get();
  // The run's own choice for this method and operator (for isotropic phases: lambda0 from the
  // bulk moduli for the Neumann series, 0 for the Krylov methods, mu0 = hi / 2 for slowCG).
  const ReferenceMaterialChoice reference = chooseReferenceMaterial(
      "Strain", gatherReferenceMaterialFacts("Strain", materials, geometry, 0, nullptr), keywords);
  ctx.reference = ReferenceConstants::of(reference.lambda0, reference.mu0);
  ConvergenceSettings convergence;
  convergence.tolerance = tolerance;
  convergence.maxIter = maxIter;
  MethodOptions options;
  // Every method's work fields are planned before the clock starts.
  for (auto& [name, f] : fields.methodFields) f->createPlans(planner);
  SolverCounters counters;
  std::ostringstream lines;
  const double transformsBefore = FFTImage::totalTransformSeconds();
  Timer t;
  t.start();
  const NeumannResult r =
      solveWithMethod(method, fields, ctx, MacroscopicLoad::strain({0.01, 0, 0, 0, 0, 0}),
                      options, convergence, counters, lines, lines);
  t.stop();
  return {r.iterations, r.limitReached, t.seconds(),
          FFTImage::totalTransformSeconds() - transformsBefore};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4 || argc > 8) {
    std::fprintf(stderr, "usage: %s SIZE THREADS CONTRAST [MAXITER] [WHAT] [REPEATS] [PLANNER]\n",
                 argv[0]);
    return 1;
  }
  const auto n = static_cast<std::uint64_t>(std::strtoull(argv[1], nullptr, 10));
  const int threads = std::atoi(argv[2]);
  const double contrast = std::atof(argv[3]);
  const int maxIter = argc > 4 ? std::atoi(argv[4]) : 2000;
  const std::string what = argc > 5 ? argv[5] : "both";
  const int repeats = argc > 6 ? std::atoi(argv[6]) : 3;
  // "Measure" plans each field shape once per process: FFTW keeps what it learnt for the next.
  const std::string planner = argc > 7 ? argv[7] : "Estimate";
  if (n < 4 || threads < 1 || !(contrast > 0.0) || maxIter < 1 || repeats < 1 ||
      (what != "both" && what != "iterations" && what != "times") ||
      (planner != "Estimate" && planner != "Measure"))
    return 1;

  StaticGeometry geometry;
  MaterialElasticVector materials;
  bench::sphereComposite(n, contrast, geometry, materials);
  FFTImage pairField(6, n, n, n, "pair");
  pairField.initThreadsAndPlans(threads, planner);

  if (what != "times") {
    std::ostringstream row;
    auto count = [&](const Run& r) {
      row << ' ' << (r.limitReached ? ">" : "") << (r.limitReached ? maxIter : r.iterations)
          << " |";
    };
    row << "I| " << contrast << " |";
    count(solveOnce("NeumannSeries", GreenOperatorType::Basic, n, geometry, materials, 1e-6,
                    maxIter, planner));
    count(solveOnce("NeumannSeries", GreenOperatorType::StaggeredGrid, n, geometry, materials,
                    1e-6, maxIter, planner));
    for (const char* method : {"CG", "slowCG", "BiCGSTAB", "MINRES", "LSQR"})
      count(solveOnce(method, GreenOperatorType::Basic, n, geometry, materials, 1e-6, maxIter,
                      planner));
    std::printf("%s\n", row.str().c_str());
  }

  if (what != "iterations") {
    // A tolerance no solve reaches: every timed solve runs to its limit.
    constexpr int kFirst = 5;
    constexpr int kMore = 12;
    for (const char* method : {"CG", "BiCGSTAB"}) {
      // Each round times the pair right before its two solves, so that both see the same
      // speed of the machine; the medians of the rounds are printed.
      std::vector<double> pairs, iterations, ratios, ownPairs, ownRatios;
      const double pairsPerIteration = std::string(method) == "BiCGSTAB" ? 2.0 : 1.0;
      for (int k = 0; k < repeats; ++k) {
        pairs.push_back(bench::transformPairSeconds(pairField, 3));
        const Run shorter = solveOnce(method, GreenOperatorType::Basic, n, geometry, materials,
                                      1e-30, kFirst, planner);
        const Run longer = solveOnce(method, GreenOperatorType::Basic, n, geometry, materials,
                                     1e-30, kFirst + kMore, planner);
        if (shorter.iterations != kFirst || longer.iterations != kFirst + kMore) {
          std::fprintf(stderr, "%s stopped before its iteration limit\n", method);
          return 1;
        }
        iterations.push_back((longer.seconds - shorter.seconds) / kMore);
        ratios.push_back(iterations.back() / pairs.back());
        // The same iterations' own transforms: timed in the same instants as the iterations,
        // this ratio does not move with the machine's speed between the pair and the solves.
        ownPairs.push_back((longer.transformSeconds - shorter.transformSeconds) /
                           (kMore * pairsPerIteration));
        ownRatios.push_back(iterations.back() / ownPairs.back());
      }
      std::printf("T| %s | %.0f | %llu^3 | %d | %.4f | %.4f | %.2f | %.4f | %.2f |\n", method,
                  contrast, static_cast<unsigned long long>(n), threads, bench::median(iterations),
                  bench::median(pairs), bench::median(ratios), bench::median(ownPairs),
                  bench::median(ownRatios));
    }
  }
  pairField.destroyPlansAndCleanupThreads();
  return 0;
}
