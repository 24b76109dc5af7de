#include "input/SolverEnums.h"

#include <array>
#include <string_view>

namespace gridmoor {

namespace {

// The words stand at the index of their numeric value.
constexpr std::array<std::string_view, 3> kFilterWords = {"None", "Periodize", "NonConsistent"};
constexpr std::array<std::string_view, 10> kGreenOperatorWords = {
    "Basic",       "ForwardDifference", "CentralDifference",     "BackwardDifference",
    "StaggeredGrid", "TrilinearFE",     "Q1FE", "Hex8RHourGlassControl", "Helmholtz",
    "Bilaplacian"};
constexpr std::array<std::string_view, 4> kExtrapolationWords = {"None", "Linear", "AffinLinear",
                                                                 "MemoryEfficient"};
constexpr std::array<std::string_view, 4> kTimeStepWords = {"UserDefined", "Constant", "None",
                                                            "Logarithmic"};

template <typename Enum, std::size_t N>
bool lookUp(const std::array<std::string_view, N>& words, const std::string& word, Enum& value) {
  for (std::size_t i = 0; i < N; ++i) {
    if (words[i] == word) {
      value = static_cast<Enum>(i);
      return true;
    }
  }
  return false;
}

template <typename Enum, std::size_t N>
std::string wordIn(const std::array<std::string_view, N>& words, Enum value) {
  const auto i = static_cast<int>(value);
  if (i < 0 || i >= static_cast<int>(N)) return "unset";
  return std::string(words[static_cast<std::size_t>(i)]);
}

}  // namespace

bool parseWord(const std::string& word, FilterType& value) {
  return lookUp(kFilterWords, word, value);
}
bool parseWord(const std::string& word, GreenOperatorType& value) {
  return lookUp(kGreenOperatorWords, word, value);
}
bool parseWord(const std::string& word, ExtrapolationType& value) {
  return lookUp(kExtrapolationWords, word, value);
}
bool parseWord(const std::string& word, TimeStepType& value) {
  return lookUp(kTimeStepWords, word, value);
}

std::string wordOf(FilterType value) { return wordIn(kFilterWords, value); }
std::string wordOf(GreenOperatorType value) { return wordIn(kGreenOperatorWords, value); }
std::string wordOf(ExtrapolationType value) { return wordIn(kExtrapolationWords, value); }
std::string wordOf(TimeStepType value) { return wordIn(kTimeStepWords, value); }

}  // namespace gridmoor
