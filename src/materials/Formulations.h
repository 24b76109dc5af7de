// The five problem formulations by their words, and the lists that let a law family be
// declared once: one member per formulation, always in the same order.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace gridmoor {

// X(Word) for each formulation, in dispatch order.
#define GRIDMOOR_FORMULATIONS(X) \
  X(Strain)                      \
  X(Stress)                      \
  X(Polarization)                \
  X(Eigenstrain)                 \
  X(DeformationGradient)

// M(Word, args...) for each formulation: declares a family from one line.
#define GRIDMOOR_FOR_EACH_FORMULATION(M, ...) \
  M(Strain, __VA_ARGS__)                      \
  M(Stress, __VA_ARGS__)                      \
  M(Polarization, __VA_ARGS__)                \
  M(Eigenstrain, __VA_ARGS__)                 \
  M(DeformationGradient, __VA_ARGS__)

enum class Formulation {
#define GRIDMOOR_ENUM_ENTRY(Word) Word,
  GRIDMOOR_FORMULATIONS(GRIDMOOR_ENUM_ENTRY)
#undef GRIDMOOR_ENUM_ENTRY
};

inline constexpr std::array<std::string_view, 5> formulationWords = {
#define GRIDMOOR_WORD_ENTRY(Word) #Word,
    GRIDMOOR_FORMULATIONS(GRIDMOOR_WORD_ENTRY)
#undef GRIDMOOR_WORD_ENTRY
};

// The formulation of a word, compared in the order above; any other word ends the run with
// "Unknown problem formulation " and the word.
Formulation formulationOf(const std::string& word);

}  // namespace gridmoor
