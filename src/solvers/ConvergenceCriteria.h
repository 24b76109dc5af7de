// The stop rules shared by every iterative method: the simple, divergence and stress
// criteria taken in sequence, the iteration, runtime and stop-file limits, and the progress bars.
#pragma once

#include <iosfwd>
#include <string>

#include "common/Timer.h"

namespace gridmoor {

class Keywords;

// The main progress bar between the solves: doneSteps of totalSteps finished, 5 to 95 %.
int mainProgress(int doneSteps, int totalSteps);

struct ConvergenceSettings {
  double tolerance = 1e-6;
  int checkIntervallLength = 1;
  int maxIter = 1000;
  // Hours; the run ends once its timer has passed the limit, so 0 stops it at the first
  // criterion call.
  double maxRunTimeHours = 0.0;
  bool useSimple = true;
  bool useDivergence = false;
  bool useStress = false;
  // Path of the stop request file; empty: never looked for.
  std::string stopFile;
  // The run's total timer, for the runtime limit; null: no runtime limit.
  const Timer* runTimer = nullptr;
  // The main progress bar: steps finished before this solve and all steps of the run.
  int doneSteps = 0;
  int totalSteps = 1;
  // A run of one time step: the main bar moves with the iterations of each solve, its own
  // and its load cases'; in a longer history it moves between the steps only.
  bool singleTimeStep = true;

  // Sets the three flags from a ConvergenceNorm word; any other word ends the run.
  void setNorm(const std::string& word);
  // Tolerance, passes, limits and norm from the keyword store; the stop file is "stop" in
  // outputDirectory.
  static ConvergenceSettings fromKeywords(const Keywords& keywords,
                                          const std::string& outputDirectory,
                                          const Timer* runTimer);
};

// The scalars the criteria measure, asked only when a criterion needs them.
class CriterionValues {
 public:
  virtual ~CriterionValues() = default;
  virtual double simpleValue() = 0;
  virtual double divergenceValue() = 0;
  virtual double stressValue() = 0;
};

class ConvergenceMonitor {
 public:
  ConvergenceMonitor(const ConvergenceSettings& settings, std::ostream& out, std::ostream& err);

  // Start of a solve: e0Simple and e0Stress are the scalars of the start field (0: none).
  // With both the simple and the divergence criterion, the divergence is measured once here.
  void start(double e0Simple, double e0Stress, CriterionValues& values);
  // End of iteration n: true when the loop is to end (converged, or the iteration limit).
  bool check(int n, CriterionValues& values);

  bool limitReached() const { return limitReached_; }
  int passes() const { return passes_; }

 private:
  enum class Outcome { Fail, Pass, Limit };
  struct Track {
    double oldValue = 0.0;
    double newValue = 0.0;
    double firstValue = 0.0;
    double firstDifference = 0.0;
  };
  Outcome simple(Track& track, double e0, double v, int n);
  Outcome divergence(double e, int n);
  // Counts a pass; true when the criterion has held long enough.
  bool countPass(Outcome outcome);
  Outcome limits(bool passed, int n);
  void reportProgress(Track& track, double difference, double scale, int n);

  ConvergenceSettings settings_;
  std::ostream& out_;
  std::ostream& err_;
  double e0Simple_ = 0.0;
  double e0Stress_ = 0.0;
  bool simpleDone_ = false;
  bool divergenceDone_ = false;
  bool stressDone_ = false;
  int passes_ = 0;
  bool limitReached_ = false;
  Track simpleTrack_;
  Track divergenceTrack_;
  Track stressTrack_;
};

}  // namespace gridmoor
