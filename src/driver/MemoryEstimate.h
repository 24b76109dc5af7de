// The memory a run of given parameters needs at its peak, as its report quotes it: the
// solver's fields by formulation and method, the scratch fields and buffers of output and
// homogenization, and the process with its plans that holds them.
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
  // What making the transform plans added to the resident size: the transforms' tables and
  // the threads' stacks.
  std::uint64_t planKB = 0;
};

// Full-grid double fields the run holds through its solves: the field table of the
// formulation and the method, the twins of the pair formulations, and the work field of the
// divergence criterion.
std::uint64_t solverFieldCount(const KeywordsElasticity& keywords, const MemoryEstimateInputs& in);

// Bytes held beside those fields for a while after a step's solve, the larger of two times:
// the field output and averages with the dual field, or the homogenization with its copy of
// the step's solution, the dual field of a load case and the buffer that reads back the
// responses of earlier cases.
std::uint64_t postprocessingBytes(const KeywordsElasticity& keywords, const MemoryEstimateInputs& in);

// The estimate in KB: base, plans, the solver fields and the larger of the two later times.
std::uint64_t estimateMemoryKB(const KeywordsElasticity& keywords, const MemoryEstimateInputs& in);

}  // namespace gridmoor
