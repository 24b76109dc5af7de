// Times the planning and one forward+backward transform pair of a cubic FFTImage, the
// denominator of every per-iteration figure. Prints one Markdown table row.
//
//   fft_transform_pair SIZE PLANNER THREADS [COMPONENTS=6] [MIN_SECONDS=1]
//
// One configuration per process: FFTW keeps what it learnt while planning for later plans
// of the same process, which would flatter every configuration after the first.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "common/Timer.h"
#include "operators/FFTImage.h"

namespace {

int usage(const char* program) {
  std::fprintf(stderr,
               "usage: %s SIZE PLANNER THREADS [COMPONENTS] [MIN_SECONDS]\n"
               "  PLANNER is Estimate or Measure\n",
               program);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  using gridmoor::FFTImage;
  using gridmoor::Timer;
  if (argc < 4 || argc > 6) return usage(argv[0]);
  const long size = std::strtol(argv[1], nullptr, 10);
  const std::string planner = argv[2];
  const int threads = std::atoi(argv[3]);
  const long components = argc > 4 ? std::strtol(argv[4], nullptr, 10) : 6;
  const double minSeconds = argc > 5 ? std::atof(argv[5]) : 1.0;
  if (size < 1 || threads < 1 || components < 1 || minSeconds < 0.0) return usage(argv[0]);
  constexpr int minPairs = 3;

  const auto n = static_cast<std::uint64_t>(size);
  FFTImage field(static_cast<std::uint64_t>(components), n, n, n, "benchmarkField");

  Timer planning;
  planning.start();
  field.initThreadsAndPlans(threads, planner);
  planning.stop();

  // Values only after planning: measuring overwrites the buffer.
  std::mt19937 gen(1);
  std::uniform_real_distribution<double> dist(-1.0, 1.0);
  for (double& v : field) v = dist(gen);
  const std::vector<double> original(field.begin(), field.end());

  // The first pair is not timed: it pays for first touches of FFTW's own tables.
  field.forwardTransform();
  field.backwardTransform();

  std::vector<double> pairs;
  Timer total;
  total.start();
  while (static_cast<int>(pairs.size()) < minPairs || total.seconds() < minSeconds) {
    Timer pair;
    pair.start();
    field.forwardTransform();
    field.backwardTransform();
    pairs.push_back(pair.seconds());
  }

  // Each pair is an identity up to rounding: a large error means the figures time a broken
  // transform.
  double error = 0.0;
  for (std::uint64_t i = 0; i < n; ++i)
    for (std::uint64_t j = 0; j < n; ++j)
      for (std::uint64_t k = 0; k < n; ++k)
        for (std::uint64_t c = 0; c < field.nComponents; ++c) {
          const std::uint64_t at = field.elementIndex(c, i, j, k);
          error = std::max(error, std::abs(field[at] - original[at]));
        }
  field.destroyPlansAndCleanupThreads();

  std::sort(pairs.begin(), pairs.end());
  const double median = pairs[pairs.size() / 2];
  const double voxels = static_cast<double>(n * n * n);
  std::printf("| %ld^3 | %s | %d | %.2f | %.4f | %.4f | %.1f | %zu | %.1e |\n", size,
              planner.c_str(), threads, planning.seconds(), median, pairs.front(),
              median / voxels * 1e9, pairs.size(), error);
  return error < 1e-9 ? 0 : 2;
}
