#include "solvers/ConvergenceCriteria.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "common/Fatal.h"
#include "driver/Console.h"
#include "input/Keywords.h"

namespace gridmoor {

int mainProgress(int doneSteps, int totalSteps) {
  return 90 * doneSteps / std::max(1, totalSteps) + 5;
}

void ConvergenceSettings::setNorm(const std::string& word) {
  if (word == "Simple") {
    useSimple = true, useDivergence = false, useStress = false;
  } else if (word == "Divergence") {
    useSimple = false, useDivergence = true, useStress = false;
  } else if (word == "SimpleAndDivergence") {
    useSimple = true, useDivergence = true, useStress = false;
  } else if (word == "Stress") {
    useSimple = false, useDivergence = false, useStress = true;
  } else {
    fatal("input/Solution/ConvergenceNorm: unknown convergence norm \"" + word + "\"");
  }
}

ConvergenceSettings ConvergenceSettings::fromKeywords(const Keywords& keywords,
                                                      const std::string& outputDirectory,
                                                      const Timer* runTimer) {
  ConvergenceSettings s;
  s.tolerance = keywords.convergenceCriterion();
  s.checkIntervallLength = std::max(1, keywords.checkIntervallLength());
  s.maxIter = keywords.maxIter();
  s.maxRunTimeHours = keywords.maxRunTime();
  s.setNorm(keywords.convergenceNorm());
  s.stopFile = outputDirectory + "stop";
  s.runTimer = runTimer;
  return s;
}

ConvergenceMonitor::ConvergenceMonitor(const ConvergenceSettings& settings, std::ostream& out,
                                       std::ostream& err)
    : settings_(settings), out_(out), err_(err) {}

void ConvergenceMonitor::start(double e0Simple, double e0Stress, CriterionValues& values) {
  e0Simple_ = e0Simple;
  e0Stress_ = e0Stress;
  simpleDone_ = !settings_.useSimple;
  divergenceDone_ = !settings_.useDivergence;
  stressDone_ = !settings_.useStress;
  passes_ = 0;
  limitReached_ = false;
  simpleTrack_ = divergenceTrack_ = stressTrack_ = Track{};
  if (settings_.useSimple && settings_.useDivergence) divergence(values.divergenceValue(), -1);
}

bool ConvergenceMonitor::countPass(Outcome outcome) {
  passes_ = outcome == Outcome::Pass ? passes_ + 1 : 0;
  if (passes_ >= settings_.checkIntervallLength) {
    passes_ = 0;
    return true;
  }
  return false;
}

bool ConvergenceMonitor::check(int n, CriterionValues& values) {
  if (!simpleDone_) {
    const Outcome o = simple(simpleTrack_, e0Simple_, values.simpleValue(), n);
    if (o == Outcome::Limit) return true;
    simpleDone_ = countPass(o);
  }
  if (simpleDone_ && !divergenceDone_) {
    const Outcome o = divergence(values.divergenceValue(), n);
    if (o == Outcome::Limit) return true;
    divergenceDone_ = countPass(o);
  }
  if (!stressDone_) {
    const Outcome o = simple(stressTrack_, e0Stress_, values.stressValue(), n);
    if (o == Outcome::Limit) return true;
    stressDone_ = countPass(o);
  }
  // The stress criterion does not hold the loop: once the simple and divergence stages are
  // through, stress counts as done.
  if (simpleDone_ && divergenceDone_) {
    stressDone_ = true;
    subProgress(100);
    return true;
  }
  return false;
}

ConvergenceMonitor::Outcome ConvergenceMonitor::simple(Track& t, double e0, double v, int n) {
  t.oldValue = t.newValue;
  t.newValue = v;
  const double d = e0 != 0.0 ? e0 : t.oldValue != 0.0 ? t.oldValue : t.newValue;
  if (d == 0.0) {
    out_ << " - relative Error = " << 0 << std::endl;
    return limits(true, n);
  }
  const double difference = std::abs(t.newValue - t.oldValue);
  out_ << " - relative Error = " << difference / d << std::endl;
  const bool passed = difference <= settings_.tolerance * d || d <= 1e-16;
  reportProgress(t, difference, d, n);
  return limits(passed, n);
}

ConvergenceMonitor::Outcome ConvergenceMonitor::divergence(double e, int n) {
  Track& t = divergenceTrack_;
  const double magnitude = std::abs(e);
  const double difference = std::abs(std::abs(t.oldValue) - magnitude);
  t.oldValue = magnitude;
  if (n < 1) t.firstValue = magnitude;
  const bool passed = difference <= settings_.tolerance * t.firstValue;
  out_ << " - relative Error Divergence = "
       << (t.firstValue != 0.0 ? difference / std::abs(t.firstValue) : 0.0) << std::endl;
  // The evaluation before the first iteration only fills the starting value.
  if (n < 0) return passed ? Outcome::Pass : Outcome::Fail;
  reportProgress(t, difference, t.firstValue, n);
  return limits(passed, n);
}

ConvergenceMonitor::Outcome ConvergenceMonitor::limits(bool passed, int n) {
  if (n < 0) return passed ? Outcome::Pass : Outcome::Fail;
  // The last allowed iteration ends the loop with the message even when it has passed: the
  // host reads the message as "the limit was reached", not as a failure.
  if (n >= settings_.maxIter - 1) {
    err_ << "Maximal number of iterations exceeded" << std::endl;
    limitReached_ = true;
    return Outcome::Limit;
  }
  if (settings_.runTimer && settings_.runTimer->seconds() > settings_.maxRunTimeHours * 3600.0)
    fatal("Maximal runtime exceeded");
  if (!settings_.stopFile.empty()) {
    std::ifstream request(settings_.stopFile);
    if (request.is_open()) {
      out_.flush();
      std::cout.flush();
      std::exit(0);
    }
  }
  return passed ? Outcome::Pass : Outcome::Fail;
}

void ConvergenceMonitor::reportProgress(Track& t, double difference, double scale, int n) {
  // The first iteration fixes the start of the logarithmic scale.
  const double error = scale > 0.0 ? difference / scale : 0.0;
  if (n == 0) {
    t.firstDifference = difference;
    subProgress(0);
    progressPoint(mainProgress(settings_.doneSteps, settings_.totalSteps), n, error);
    return;
  }
  double q = 1.0;
  const double target = scale * settings_.tolerance;
  if (difference > 0.0 && t.firstDifference > 0.0 && target > 0.0 &&
      std::log(target) != std::log(t.firstDifference)) {
    q = (std::log(difference) - std::log(t.firstDifference)) /
        (std::log(target) - std::log(t.firstDifference));
  }
  q = std::clamp(q, 0.0, 1.0);
  q = std::max(q, static_cast<double>(n + 1) / std::max(1, settings_.maxIter));
  q = std::min(q, 1.0);
  subProgress(static_cast<int>(100.0 * q));
  const int percent =
      static_cast<int>((settings_.doneSteps + q) * (90.0 / settings_.totalSteps) + 5.0);
  if (settings_.singleTimeStep) progress(percent);
  progressPoint(percent, n, error);
}

}  // namespace gridmoor
