// The run's thread count: a request of 0 or less asks for half the processors, rounded up,
// so the FFT library and the voxel loops leave room for the rest of the machine.
#pragma once

#include <omp.h>

namespace gridmoor {

inline int runThreadCount(int requested) {
  return requested > 0 ? requested : (omp_get_num_procs() + 1) / 2;
}

}  // namespace gridmoor
