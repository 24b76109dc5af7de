// The run's thread count: a request of 0 or less asks for half the processors, rounded up,
// so the FFT library and the voxel loops leave room for the rest of the machine.
#pragma once

#include <omp.h>

#include <algorithm>

namespace gridmoor {

// A request above the processor count is cut to it: more threads than processors only slow
// the transforms and the voxel loops, and a count in the thousands makes the thread library
// fail to start its team.
inline int runThreadCount(int requested) {
  const int processors = omp_get_num_procs();
  return requested > 0 ? std::min(requested, processors) : (processors + 1) / 2;
}

}  // namespace gridmoor
