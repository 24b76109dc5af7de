// Adds a thread's partial sum to a shared double at the end of a parallel loop, by a
// compare-and-exchange loop on the double itself.
#pragma once

#include <atomic>

namespace gridmoor {

inline void atomicAdd(double& total, double value) {
  std::atomic_ref<double> shared(total);
  double expected = shared.load(std::memory_order_relaxed);
  while (!shared.compare_exchange_weak(expected, expected + value, std::memory_order_relaxed)) {
  }
}

}  // namespace gridmoor
