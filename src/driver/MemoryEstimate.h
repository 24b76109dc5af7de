// The memory a run of given parameters needs, as its report quotes it: the solver's fields by
// formulation and method, the per-voxel data beside them and the process that holds them.
#pragma once

#include <array>
#include <cstdint>

namespace gridmoor {

class KeywordsElasticity;

struct MemoryEstimateInputs {
  std::array<std::uint64_t, 3> grid{};
  // Values of one solver field at a voxel: components times integration points.
  std::uint64_t valuesPerVoxel = 6;
  bool allLinear = true;
  bool pathIndependent = true;
  // Resident size of the process before any solver field existed: code, libraries, the
  // geometry, the orientations and the material table.
  std::uint64_t baselineKB = 0;
};

// Full-grid double fields the run holds at its peak: the field table of the formulation and
// the method, the twins of the pair formulations, and the scratch fields of the divergence
// criterion, of the field output and of the homogenization.
std::uint64_t solverFieldCount(const KeywordsElasticity& keywords, const MemoryEstimateInputs& in);

// The estimate in KB.
std::uint64_t estimateMemoryKB(const KeywordsElasticity& keywords, const MemoryEstimateInputs& in);

}  // namespace gridmoor
