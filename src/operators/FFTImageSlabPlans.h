// Slab-distributed FFT entry points of FFTImage: local sizes and r2c/c2r planning with the
// argument lists of a message-passing FFT, answered here for a single process.
#pragma once

#include <fftw3.h>

#include <cstddef>

#include "common/Types.h"

namespace gridmoor {

// Stands where a message-passing build passes its communicator. The one-process build has
// nothing to communicate, so the type carries no state.
struct FftCommunicator {};
inline constexpr FftCommunicator localCommunicator{};

// Planes of the first axis held by this process for a transform of `rank` dimensions and
// `howmany` interleaved components. `dims` are the complex extents (the last one n / 2 + 1).
// Returns the number of complex values to allocate here. One process holds every plane.
std::ptrdiff_t fftLocalSizeMany(int rank, const std::ptrdiff_t* dims, std::ptrdiff_t howmany,
                                std::ptrdiff_t inputBlock, std::ptrdiff_t outputBlock,
                                FftCommunicator communicator, std::ptrdiff_t* localCount,
                                std::ptrdiff_t* localStart);

// Real-to-complex and complex-to-real plans of a three-dimensional field with `howmany`
// components interleaved per voxel and the third axis padded to 2 * (n / 2 + 1) doubles.
// `dims` are the real extents. Block sizes and the communicator are ignored in this build.
// Either may return null when FFTW can't plan the given buffers.
FftPlan fftPlanManyR2c(int rank, const std::ptrdiff_t* dims, std::ptrdiff_t howmany,
                       std::ptrdiff_t inputBlock, std::ptrdiff_t outputBlock, double* in,
                       fftw_complex* out, FftCommunicator communicator, unsigned flags);
FftPlan fftPlanManyC2r(int rank, const std::ptrdiff_t* dims, std::ptrdiff_t howmany,
                       std::ptrdiff_t inputBlock, std::ptrdiff_t outputBlock, fftw_complex* in,
                       double* out, FftCommunicator communicator, unsigned flags);

}  // namespace gridmoor
