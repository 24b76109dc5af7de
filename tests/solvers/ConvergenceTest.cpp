// The stop rules: passes in a row, zero fields, the first relative error, the sequence of the
// simple and divergence stages, and the iteration, runtime and stop-file limits.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

#include "SolverTestSupport.h"
#include "solvers/ConvergenceCriteria.h"

namespace gridmoor {
namespace {

// Scripted scalars: one entry per call, the last repeated; calls are counted.
class Script : public CriterionValues {
 public:
  std::vector<double> simple, divergence, stress;
  int simpleCalls = 0, divergenceCalls = 0, stressCalls = 0;
  double simpleValue() override { return next(simple, simpleCalls); }
  double divergenceValue() override { return next(divergence, divergenceCalls); }
  double stressValue() override { return next(stress, stressCalls); }

 private:
  static double next(const std::vector<double>& v, int& calls) {
    const std::size_t i = std::min<std::size_t>(static_cast<std::size_t>(calls++), v.size() - 1);
    return v[i];
  }
};

ConvergenceSettings settingsFor(const std::string& norm, int passes = 1, int maxIter = 100) {
  ConvergenceSettings s;
  s.setNorm(norm);
  s.tolerance = 1e-3;
  s.checkIntervallLength = passes;
  s.maxIter = maxIter;
  return s;
}

// Runs the monitor until it ends the loop; returns the iterations taken.
int run(ConvergenceMonitor& m, Script& script, int maxIter, double e0 = 1.0) {
  m.start(e0, e0, script);
  for (int n = 0; n < maxIter; ++n)
    if (m.check(n, script)) return n + 1;
  return maxIter;
}

TEST(ConvergenceSimple, PassesMustFollowEachOther) {
  std::ostringstream out, err;
  Script script;
  // Relative changes against e0 = 1: 1, 0, 0, 0.5, 0, 0, 0 (tolerance 1e-3).
  script.simple = {1.0, 1.0, 1.0, 1.5, 1.5, 1.5, 1.5};
  ConvergenceMonitor three(settingsFor("Simple", 3), out, err);
  EXPECT_EQ(run(three, script, 50), 7);  // the failure at the fourth iteration resets the count
  script.simpleCalls = 0;
  ConvergenceMonitor one(settingsFor("Simple", 1), out, err);
  EXPECT_EQ(run(one, script, 50), 2);
  EXPECT_TRUE(err.str().empty());
}

TEST(ConvergenceSimple, ErrorLinesAndZeroField) {
  std::ostringstream out, err;
  Script zero;
  zero.simple = {0.0};
  ConvergenceMonitor m(settingsFor("Simple"), out, err);
  EXPECT_EQ(run(m, zero, 10, 0.0), 1);
  EXPECT_EQ(out.str(), " - relative Error = 0\n");
  // Without a start value the first non-zero value is its own scale: the error prints 1.
  std::ostringstream out2;
  Script rising;
  rising.simple = {2.0, 3.0, 3.0};
  ConvergenceMonitor m2(settingsFor("Simple"), out2, err);
  EXPECT_EQ(run(m2, rising, 10, 0.0), 3);
  EXPECT_EQ(out2.str(),
            " - relative Error = 1\n - relative Error = 0.5\n - relative Error = 0\n");
}

TEST(ConvergenceSequence, DivergenceStageFollowsTheSimpleStage) {
  std::ostringstream out, err;
  Script script;
  script.simple = {1.0, 1.0};
  // Measured once before the first iteration, then only once the simple stage is through.
  script.divergence = {0.5, 0.3, 0.3};
  ConvergenceMonitor m(settingsFor("SimpleAndDivergence"), out, err);
  EXPECT_EQ(run(m, script, 20), 3);
  EXPECT_EQ(script.simpleCalls, 2);
  EXPECT_EQ(script.divergenceCalls, 3);
  EXPECT_NE(out.str().find(" - relative Error Divergence = 0.4\n"), std::string::npos);
}

TEST(ConvergenceSequence, StressAloneDoesNotHoldTheLoop) {
  std::ostringstream out, err;
  Script script;
  script.stress = {5.0, 1.0};
  ConvergenceMonitor m(settingsFor("Stress"), out, err);
  EXPECT_EQ(run(m, script, 20, 5.0), 1);
  EXPECT_EQ(script.stressCalls, 1);
  EXPECT_EQ(script.simpleCalls, 0);
}

// The last allowed iteration ends the loop with the message, also when it passes.
// The stress criterion measures the fields after the steps: E0 after the step before the
// loop, the value after iteration 0, where "Stress" alone ends. Its first change is taken
// against the empty history, so the error printed is value / E0.
TEST(ConvergenceSequence, StressCriterionMeasuresTheFieldAfterEachStep) {
  const solver_test::Grid g{4, 4, 8};
  const std::vector<solver_test::Lame> laws{solver_test::lameOf(1.0, 0.3),
                                            solver_test::lameOf(50.0, 0.3)};
  solver_test::Problem solved(g, solver_test::laminateColours(g, 2, 3), laws);
  solver_test::Problem replay(g, solver_test::laminateColours(g, 2, 3), laws);
  const MacroscopicLoad load = MacroscopicLoad::strain({0.01, 0, 0, 0, 0.002, 0});
  std::ostringstream out, err;
  SolverCounters counters;
  const NeumannResult r = solveNeumannSeries(*solved.field, solved.ctx, load, {},
                                             settingsFor("Stress"), counters, out, err);
  EXPECT_EQ(r.iterations, 1);
  replay.field->setInitialCondition(load, replay.ctx);
  replay.field->step(StepKind::Linear, replay.ctx, load);
  const double e0 = replay.field->getStressNormSquared(replay.ctx);
  replay.field->step(StepKind::Linear, replay.ctx, load);
  const double v = replay.field->getStressNormSquared(replay.ctx);
  const std::string text = out.str();
  const std::size_t at = text.find(" - relative Error = ");
  ASSERT_NE(at, std::string::npos) << text;
  EXPECT_NEAR(std::stod(text.substr(at + 20)), v / e0, 1e-5 * v / e0);
}

TEST(ConvergenceLimits, IterationLimitEndsTheLoopAndTheRunGoesOn) {
  for (const double last : {4.0, 3.0}) {
    std::ostringstream out, err;
    Script script;
    script.simple = {1.0, 2.0, 3.0, last};
    ConvergenceMonitor m(settingsFor("Simple", 1, 4), out, err);
    EXPECT_EQ(run(m, script, 4), 4);
    EXPECT_TRUE(m.limitReached());
    EXPECT_EQ(err.str(), "Maximal number of iterations exceeded\n");
  }
}

TEST(ConvergenceLimits, NeumannStopsAtTheLimitWithTheFieldKept) {
  const solver_test::Grid g{4, 4, 8};
  solver_test::Problem problem(g, solver_test::laminateColours(g, 2, 4),
                               {solver_test::lameOf(1.0, 0.3), solver_test::lameOf(1000.0, 0.3)});
  ConvergenceSettings s = settingsFor("Simple", 1, 3);
  s.tolerance = 1e-15;
  std::ostringstream out, err;
  SolverCounters counters;
  const NeumannResult r = solveNeumannSeries(*problem.field, problem.ctx,
                                             MacroscopicLoad::stress({0, 0, 1, 0, 0, 0}), {}, s,
                                             counters, out, err);
  EXPECT_TRUE(r.limitReached);
  EXPECT_EQ(r.iterations, 3);
  EXPECT_EQ(counters.matrixVectorProducts, 3);
  EXPECT_EQ(err.str(), "Maximal number of iterations exceeded\n");
  EXPECT_NE(out.str().find("Iteration 2 - relative Error = "), std::string::npos);
  EXPECT_GT(problem.field->getFieldNorm(), 0.0);
}

TEST(ConvergenceLimitsDeathTest, StopFileEndsTheProcessNormally) {
  const std::filesystem::path dir =
      std::filesystem::temp_directory_path() / ("gridmoor_stop_" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  std::ofstream(dir / "stop") << "";
  ConvergenceSettings s = settingsFor("Simple");
  s.stopFile = (dir / "stop").string();
  std::ostringstream out, err;
  Script script;
  script.simple = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
  ConvergenceMonitor m(s, out, err);
  EXPECT_EXIT(run(m, script, 10), testing::ExitedWithCode(0), "");
  std::filesystem::remove_all(dir);
  // Without the file the loop runs on.
  ConvergenceMonitor m2(s, out, err);
  script.simpleCalls = 0;
  EXPECT_EQ(run(m2, script, 10), 10);
}

TEST(ConvergenceLimitsDeathTest, RuntimeLimitEndsTheRunWithFailure) {
  Timer timer;
  timer.start();
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  ConvergenceSettings s = settingsFor("Simple");
  s.runTimer = &timer;
  s.maxRunTimeHours = 0.0;  // a limit like any other
  std::ostringstream out, err;
  Script script;
  script.simple = {1.0, 2.0};
  ConvergenceMonitor m(s, out, err);
  EXPECT_EXIT(run(m, script, 10), testing::ExitedWithCode(1), "Maximal runtime exceeded");
}

TEST(ConvergenceLimitsDeathTest, UnknownNormWordIsRefused) {
  ConvergenceSettings s;
  EXPECT_EXIT(s.setNorm("Energy"), testing::ExitedWithCode(1), "unknown convergence norm");
}

}  // namespace
}  // namespace gridmoor
