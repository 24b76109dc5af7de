// Times the frequency loop of the Green operator on a cubic 6-component spectrum against the
// forward+backward transform pair of the same field in the same process. Prints table rows.
//
//   green_operator_loop SIZE THREADS [PLANNER=Estimate] [MIN_SECONDS=1]
//
// Rows: Gamma0 of "Basic" and "StaggeredGrid" in the closed one-point form, and "Basic" in
// the general form (the path of a run without SpecializeOperators).
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "common/Timer.h"
#include "operators/DiscreteGreenOperator.h"
#include "operators/FFTImage.h"

namespace {

using gridmoor::Timer;

int usage(const char* program) {
  std::fprintf(stderr, "usage: %s SIZE THREADS [PLANNER] [MIN_SECONDS]\n", program);
  return 1;
}

// Median seconds of `run`, repeated at least three times and for at least minSeconds;
// `reset` runs untimed before each repetition.
template <class Run, class Reset>
double medianSeconds(double minSeconds, const Run& run, const Reset& reset) {
  std::vector<double> times;
  Timer total;
  total.start();
  while (times.size() < 3 || total.seconds() < minSeconds) {
    reset();
    Timer once;
    once.start();
    run();
    times.push_back(once.seconds());
  }
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  using namespace gridmoor;
  if (argc < 3 || argc > 5) return usage(argv[0]);
  const long size = std::strtol(argv[1], nullptr, 10);
  const int threads = std::atoi(argv[2]);
  const std::string planner = argc > 3 ? argv[3] : "Estimate";
  const double minSeconds = argc > 4 ? std::atof(argv[4]) : 1.0;
  if (size < 2 || threads < 1 || minSeconds < 0.0) return usage(argv[0]);

  const auto n = static_cast<std::uint64_t>(size);
  FFTImage field(6, n, n, n, "benchmarkField");
  field.initThreadsAndPlans(threads, planner);
  std::mt19937 gen(1);
  std::uniform_real_distribution<double> dist(-1.0, 1.0);
  for (double& v : field) v = dist(gen);
  // One untimed pair pays for first touches.
  field.forwardTransform();
  field.backwardTransform();
  const double pair = medianSeconds(
      minSeconds,
      [&] {
        field.forwardTransform();
        field.backwardTransform();
      },
      [] {});

  field.forwardTransform();
  const std::vector<double> spectrum(field.begin(), field.end());
  const ReferenceConstants reference = ReferenceConstants::of(0.5, 1.0);
  const double voxels = static_cast<double>(n * n * n);

  struct Row {
    GreenOperatorType discretisation;
    bool specialize;
  };
  for (const Row& row :
       {Row{GreenOperatorType::Basic, true}, Row{GreenOperatorType::StaggeredGrid, true},
        Row{GreenOperatorType::Basic, false}}) {
    const auto op = DiscreteGreenOperator::create(
        GreenOperatorSettings::of(row.discretisation, FilterType::None, row.specialize), {n, n, n});
    const double loop = medianSeconds(
        minSeconds, [&] { op->applyGamma0(field, reference); },
        [&] { std::memcpy(field.data(), spectrum.data(), spectrum.size() * sizeof(double)); });
    std::printf("| %ld^3 | %d | %s | %s | %.4f | %.2f | %.4f | %.3f |\n", size, threads,
                wordOf(row.discretisation).c_str(), op->isSpecialized() ? "closed" : "general",
                loop, loop / voxels * 1e9, pair, loop / pair);
  }
  field.destroyPlansAndCleanupThreads();
  return 0;
}
