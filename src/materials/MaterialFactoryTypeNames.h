// The short material type names of the mechanical and the heat table, by their place in the
// list, which is what the factory switches on and what a ".cff" type word translates into.
#pragma once

#include <string>
#include <vector>

namespace gridmoor {

// Places in the mechanical list. The names stand in mechanicalTypeNames() at the same index.
enum class MechanicalType {
  LE = 0,
  FLUID = 1,
  COMPRESSIBLE_FLUID = 2,
  LETI = 3,
  LVE = 4,
  LED = 5,
  RIGID = 6,
  SOFT = 7,
  UMAT = 8,
  LEH = 9,
  LEHTI = 10,
  NH = 11,
  MR = 12,
  MHE = 13,
  LETE = 14,
  LETITE = 15,
  UMATTE = 16,
  LEORTH = 17,
  LEORTHTE = 18,
  LEANISO = 19,
  LEANISOTE = 20,
  NHTE = 21,
  MRTE = 22,
  COMPRESSIBLE_FLUID_TE = 23,
  KNOWLES = 24,
  NHP = 25,
  ANHP = 26,
  LHTI = 27,
  OrthotropicHeat = 28,
  Count = 29
};

// Places in the heat list.
enum class HeatType {
  LH = 0,
  LEH = 1,
  LHTI = 2,
  LEHTI = 3,
  ISOLATE = 4,
  PERFECTCONDUCTING = 5,
  MHH = 6,
  Count = 7
};

// Index 28 of the mechanical list has no name on purpose: the ".cff" word "OrthotropicHeat"
// writes the empty name, and only that empty name finds it.
inline const std::vector<std::string>& mechanicalTypeNames() {
  static const std::vector<std::string> names = {
      "LE",     "FLUID",     "COMPRESSIBLE_FLUID",    "LETI",    "LVE",     "LED",
      "RIGID",  "SOFT",      "UMAT",                  "LEH",     "LEHTI",   "NH",
      "MR",     "MHE",       "LETE",                  "LETITE",  "UMATTE",  "LEORTH",
      "LEORTHTE", "LEANISO", "LEANISOTE",             "NHTE",    "MRTE",    "COMPRESSIBLE_FLUID_TE",
      "KNOWLES", "NHP",      "ANHP",                  "LHTI",    ""};
  return names;
}

inline const std::vector<std::string>& heatTypeNames() {
  static const std::vector<std::string> names = {
      "LH", "LEH", "LHTI", "LEHTI", "ISOLATE", "PERFECTCONDUCTING", "MHH"};
  return names;
}

}  // namespace gridmoor
