// Allocator of every Vector: carries the field's name and counts its bytes in the
// process-wide total; in memory-estimate mode the owning Vector allocates nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

namespace gridmoor {

// The only process-wide mutable state of the containers. Set by the run driver before
// any large field is built; changed without atomics, so allocation stays off parallel regions.
inline bool memoryEstimateMode = false;
inline std::uint64_t allocatedBytes = 0;

template <class T>
class DebugAllocator {
 public:
  using value_type = T;
  // Storage of any two of these allocators comes from the global operator new, so one can
  // free what another allocated; the name stays with its container on assignment and swap.
  using is_always_equal = std::false_type;
  using propagate_on_container_copy_assignment = std::false_type;
  using propagate_on_container_move_assignment = std::false_type;
  using propagate_on_container_swap = std::false_type;

  explicit DebugAllocator(std::string name = "")
      : name_(std::move(name)), memoryEstimateMode_(gridmoor::memoryEstimateMode) {}
  template <class U>
  DebugAllocator(const DebugAllocator<U>& other)
      : name_(other.name()), memoryEstimateMode_(other.memoryEstimateMode()) {}

  T* allocate(std::size_t n) {
    if (n > static_cast<std::size_t>(-1) / sizeof(T)) throw std::bad_array_new_length();
    T* p = static_cast<T*>(::operator new(n * sizeof(T)));
    allocatedBytes += n * sizeof(T);
    return p;
  }
  void deallocate(T* p, std::size_t n) noexcept {
    allocatedBytes -= n * sizeof(T);
    ::operator delete(p);
  }

  const std::string& name() const { return name_; }
  bool memoryEstimateMode() const { return memoryEstimateMode_; }

  template <class U>
  bool operator==(const DebugAllocator<U>&) const {
    return true;
  }

 private:
  std::string name_;
  bool memoryEstimateMode_;
};

}  // namespace gridmoor
