// The static split of an index range over the threads of an OpenMP team that all voxel
// and element loops share: contiguous chunks, the first n % threads chunks one longer.
#pragma once

#include <omp.h>

#include <cstdint>

namespace gridmoor {

struct IndexRange {
  std::uint64_t begin;
  std::uint64_t end;
};

inline IndexRange staticPartition(std::uint64_t n, std::uint64_t thread, std::uint64_t threads) {
  const std::uint64_t base = n / threads;
  const std::uint64_t extra = n % threads;
  const std::uint64_t begin = thread * base + (thread < extra ? thread : extra);
  return {begin, begin + base + (thread < extra ? 1 : 0)};
}

// Runs body(begin, end) once on each thread of a new team with that thread's chunk of
// [0, n). Must not be called from inside a parallel region.
template <class Body>
void parallelForStatic(std::uint64_t n, Body&& body) {
  if (n == 0) return;
#pragma omp parallel
  {
    const IndexRange r = staticPartition(n, static_cast<std::uint64_t>(omp_get_thread_num()),
                                         static_cast<std::uint64_t>(omp_get_num_threads()));
    if (r.begin < r.end) body(r.begin, r.end);
  }
}

}  // namespace gridmoor
