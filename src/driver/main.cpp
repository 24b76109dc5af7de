#include <cstdio>
#include <new>
#include <stdexcept>

#include "driver/RunSequence.h"

namespace {

int memoryAllocationFailed() {
  std::fprintf(stderr,
               "Memory allocation failed. You do not have enough free memory. Please close some "
               "applications and try again.\n");
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  // Every out-of-memory failure of the run arrives here; a container asked for more elements
  // than it can count (length_error) is the same failure seen earlier.
  try {
    gridmoor::RunSequence sequence(argc, argv);
    return sequence.run();
  } catch (const std::bad_alloc&) {
    return memoryAllocationFailed();
  } catch (const std::length_error&) {
    return memoryAllocationFailed();
  }
}
