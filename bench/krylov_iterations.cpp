// Iterations to a tolerance of 1e-6 of every iterative method on the sphere composite at one
// contrast (the Neumann series with "Basic" and "StaggeredGrid", the others with "Basic"),
// and the time per iteration of CG and BiCGSTAB against the transform pair of the same run.
// Prints a row "I|..." of iteration counts and rows "T|..." of times.
//
//   krylov_iterations SIZE THREADS CONTRAST [MAXITER=2000]
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "BenchSupport.h"
#include "input/KeywordsElasticity.h"
#include "solvers/IterativeMethods.h"
#include "solvers/LoadStepSolver.h"

namespace {

using namespace gridmoor;

struct Run {
  int iterations = 0;
  bool limitReached = false;
  std::int64_t products = 0;
  double seconds = 0.0;
};

Run solveOnce(const std::string& method, GreenOperatorType op, std::uint64_t n,
              const StaticGeometry& geometry, const MaterialElasticVector& materials,
              int maxIter, const std::string& planner) {
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
  const EigenvalueRange range = materials.getMinMaxEigenvalueStrain(geometry, 0, nullptr);
  // The reference selection's choices: the Nesterov scheme takes mu0 = hi / 2, the others
  // the midpoint of the eigenvalue range, all with lambda0 = 0.
  const double mu0 = method == "slowCG" ? range.maxOfMaxima / 2.0
                                        : (range.minOfMinima + range.maxOfMaxima) / 4.0;
  ctx.reference = ReferenceConstants::of(0.0, mu0);
  ConvergenceSettings convergence;
  convergence.tolerance = 1e-6;
  convergence.maxIter = maxIter;
  MethodOptions options;
  // Every method's work fields are planned before the clock starts.
  for (auto& [name, f] : fields.methodFields) f->createPlans(planner);
  SolverCounters counters;
  std::ostringstream lines;
  Timer t;
  t.start();
  const NeumannResult r =
      solveWithMethod(method, fields, ctx, MacroscopicLoad::strain({0.01, 0, 0, 0, 0, 0}),
                      options, convergence, counters, lines, lines);
  t.stop();
  return {r.iterations, r.limitReached, counters.matrixVectorProducts, t.seconds()};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4 || argc > 5) {
    std::fprintf(stderr, "usage: %s SIZE THREADS CONTRAST [MAXITER]\n", argv[0]);
    return 1;
  }
  const auto n = static_cast<std::uint64_t>(std::strtoull(argv[1], nullptr, 10));
  const int threads = std::atoi(argv[2]);
  const double contrast = std::atof(argv[3]);
  const int maxIter = argc > 4 ? std::atoi(argv[4]) : 2000;
  const std::string planner = "Estimate";
  if (n < 4 || threads < 1 || !(contrast > 0.0) || maxIter < 1) return 1;

  StaticGeometry geometry;
  MaterialElasticVector materials;
  bench::sphereComposite(n, contrast, geometry, materials);
  FFTImage pairField(6, n, n, n, "pair");
  pairField.initThreadsAndPlans(threads, planner);
  const double pair = bench::transformPairSeconds(pairField);

  std::ostringstream row;
  auto count = [&](const Run& r) {
    row << ' ' << (r.limitReached ? ">" : "") << (r.limitReached ? maxIter : r.iterations) << " |";
  };
  row << "I| " << contrast << " |";
  count(solveOnce("NeumannSeries", GreenOperatorType::Basic, n, geometry, materials, maxIter,
                  planner));
  count(solveOnce("NeumannSeries", GreenOperatorType::StaggeredGrid, n, geometry, materials,
                  maxIter, planner));
  std::string times;
  for (const char* method : {"CG", "slowCG", "BiCGSTAB", "MINRES", "LSQR"}) {
    const Run r = solveOnce(method, GreenOperatorType::Basic, n, geometry, materials, maxIter,
                            planner);
    count(r);
    const std::string m = method;
    if (m != "CG" && m != "BiCGSTAB") continue;
    // The solve's products include the start (b and its residual): the time per product
    // times the products of one iteration is the iteration's cost.
    const double perIteration = r.seconds / static_cast<double>(r.products) *
                                (m == "BiCGSTAB" ? 2.0 : 1.0);
    char line[256];
    std::snprintf(line, sizeof line, "T| %s | %.0f | %llu^3 | %d | %.4f | %.4f | %.2f |\n", method,
                  contrast, static_cast<unsigned long long>(n), threads, perIteration, pair,
                  perIteration / pair);
    times += line;
  }
  std::printf("%s\n%s", row.str().c_str(), times.c_str());
  pairField.destroyPlansAndCleanupThreads();
  return 0;
}
