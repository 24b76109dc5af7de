#include <cstdio>
#include <new>

#include "driver/RunSequence.h"

int main(int argc, char** argv) {
  // Every out-of-memory failure of the run arrives here.
  try {
    gridmoor::RunSequence sequence(argc, argv);
    return sequence.run();
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr,
                 "Memory allocation failed. You do not have enough free memory. Please close some "
                 "applications and try again.\n");
    return 1;
  }
}
