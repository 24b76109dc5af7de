// The enumerated solver settings and their words: filter, Green operator and finite
// difference, extrapolation of the initial guess, and the kind of time grid.
#pragma once

#include <string>

namespace gridmoor {

enum class FilterType { None = 0, Periodize = 1, NonConsistent = 2 };

// Shared by the Green operator and the finite-difference scheme.
enum class GreenOperatorType {
  Basic = 0,
  ForwardDifference = 1,
  CentralDifference = 2,
  BackwardDifference = 3,
  StaggeredGrid = 4,
  TrilinearFE = 5,
  Q1FE = 6,
  Hex8RHourGlassControl = 7,
  Helmholtz = 8,
  Bilaplacian = 9
};

enum class ExtrapolationType { None = 0, Linear = 1, AffinLinear = 2, MemoryEfficient = 3 };

enum class TimeStepType { UserDefined = 0, Constant = 1, None = 2, Logarithmic = 3 };

// Word to value. A word outside the table leaves value untouched and returns false:
// the caller keeps what it had, without a message.
bool parseWord(const std::string& word, FilterType& value);
bool parseWord(const std::string& word, GreenOperatorType& value);
bool parseWord(const std::string& word, ExtrapolationType& value);
bool parseWord(const std::string& word, TimeStepType& value);

// Value to word; "unset" for a value outside the table.
std::string wordOf(FilterType value);
std::string wordOf(GreenOperatorType value);
std::string wordOf(ExtrapolationType value);
std::string wordOf(TimeStepType value);

}  // namespace gridmoor
