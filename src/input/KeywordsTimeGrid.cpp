// The time grid of a run: number of steps, their times, lengths and fractions, by the kind of
// grid. Steps are numbered from 0; step i ends at timeOfStep(i + 1).
#include <cmath>
#include <sstream>
#include <string>

#include "common/Fatal.h"
#include "input/KeywordsElasticity.h"

namespace gridmoor {

namespace {

std::string numberText(double value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

}  // namespace

void KeywordsElasticity::unknownTimeStepType() const {
  fatal("Unknown timeStepType " + std::to_string(static_cast<int>(timeStepType())));
}

void KeywordsElasticity::checkTimeGrid() const {
  switch (timeStepType()) {
    case TimeStepType::None:
      return;
    case TimeStepType::UserDefined: {
      const DoubleList& times = timeSteps();
      if (times.size() < 2) {
        fatal(timeSteps.key + " holds " + std::to_string(times.size()) +
              " times, but a time grid needs at least two");
      }
      for (std::size_t k = 1; k < times.size(); ++k) {
        if (!(times[k] > times[k - 1])) {
          fatal(timeSteps.key + ": the times must increase, but " + numberText(times[k]) +
                " follows " + numberText(times[k - 1]));
        }
      }
      return;
    }
    case TimeStepType::Constant:
    case TimeStepType::Logarithmic:
      if (timeNSteps() < 1) {
        fatal(timeNSteps.key + " must be at least 1, not " + std::to_string(timeNSteps()));
      }
      if (timeStepType() == TimeStepType::Logarithmic && !(timeStart() > 0.0)) {
        fatal(timeStart.key + " must be positive for a logarithmic time grid, not " +
              numberText(timeStart()));
      }
      if (!(timeStop() > timeStart())) {
        fatal(timeStop.key + " (" + numberText(timeStop()) + ") must lie after " + timeStart.key +
              " (" + numberText(timeStart()) + ")");
      }
      return;
  }
  unknownTimeStepType();
}

int KeywordsElasticity::numberOfSteps() const {
  checkTimeGrid();
  switch (timeStepType()) {
    case TimeStepType::UserDefined: return static_cast<int>(timeSteps().size()) - 1;
    case TimeStepType::Constant:
    case TimeStepType::Logarithmic: return timeNSteps();
    case TimeStepType::None: return 1;
  }
  unknownTimeStepType();
}

double KeywordsElasticity::timeOfStep(int i) const {
  const int steps = numberOfSteps();
  if (timeStepType() == TimeStepType::None) return 0.0;
  // Times exist from the start (0) to the end of the last step (steps).
  if (i < 0 || i > steps) {
    fatal("Time index " + std::to_string(i) + " lies outside the time grid of " +
          std::to_string(steps) + " steps");
  }
  switch (timeStepType()) {
    case TimeStepType::UserDefined:
      return timeSteps()[static_cast<std::size_t>(i)];
    case TimeStepType::Constant:
      return timeStart() + i * (timeStop() - timeStart()) / timeNSteps();
    case TimeStepType::Logarithmic: {
      const double logStart = std::log(timeStart());
      return std::exp(logStart + i * (std::log(timeStop()) - logStart) / timeNSteps());
    }
    case TimeStepType::None:
      break;
  }
  unknownTimeStepType();
}

double KeywordsElasticity::stepLength(int i) const {
  switch (timeStepType()) {
    case TimeStepType::UserDefined:
    case TimeStepType::Logarithmic:
      return timeOfStep(i + 1) - timeOfStep(i);
    case TimeStepType::Constant:
      checkTimeGrid();
      return (timeStop() - timeStart()) / timeNSteps();
    case TimeStepType::None:
      return 0.0;
  }
  unknownTimeStepType();
}

double KeywordsElasticity::stepFraction(int i) const {
  switch (timeStepType()) {
    case TimeStepType::UserDefined: {
      const DoubleList& times = timeSteps();
      return (timeOfStep(i + 1) - times.front()) / (times.back() - times.front());
    }
    case TimeStepType::Constant:
      return (timeOfStep(i + 1) - timeStart()) / (timeStop() - timeStart());
    case TimeStepType::None:
      return 1.0;
    case TimeStepType::Logarithmic:
      break;  // no fraction is defined on a logarithmic grid
  }
  unknownTimeStepType();
}

bool KeywordsElasticity::isSingleStep() const {
  switch (timeStepType()) {
    case TimeStepType::None: return true;
    case TimeStepType::UserDefined:
    case TimeStepType::Constant: checkTimeGrid(); return false;
    case TimeStepType::Logarithmic: return numberOfSteps() < 2;
  }
  unknownTimeStepType();
}

}  // namespace gridmoor
