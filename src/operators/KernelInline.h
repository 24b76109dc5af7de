// Marks the small functions of the per-frequency kernels that must be inlined into the
// frequency loops: left to itself the compiler keeps some of them as calls per frequency.
#pragma once

#define GRIDMOOR_HOT [[gnu::always_inline]]
