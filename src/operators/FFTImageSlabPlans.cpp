#include "operators/FFTImageSlabPlans.h"

#include <string>
#include <utility>

#include "common/Fatal.h"

namespace gridmoor {

namespace {

// Guru dimensions of the interleaved, padded layout: strides in doubles on the real side
// and in complex numbers on the complex side; the components are one howmany loop of
// stride 1, so every component of a voxel stays adjacent through the transform.
struct GuruLayout {
  fftw_iodim64 dims[3];
  fftw_iodim64 howmany;
};

GuruLayout realToComplexLayout(int rank, const std::ptrdiff_t* n, std::ptrdiff_t h) {
  if (rank != 3)
    fatal("FFT planning supports three-dimensional fields only, not rank " +
          std::to_string(rank));
  const std::ptrdiff_t realRow = (2 * (n[2] / 2) + 2) * h;
  const std::ptrdiff_t complexRow = (n[2] / 2 + 1) * h;
  GuruLayout layout;
  layout.dims[0] = {n[0], n[1] * realRow, n[1] * complexRow};
  layout.dims[1] = {n[1], realRow, complexRow};
  layout.dims[2] = {n[2], h, h};
  layout.howmany = {h, 1, 1};
  return layout;
}

}  // namespace

std::ptrdiff_t fftLocalSizeMany(int rank, const std::ptrdiff_t* dims, std::ptrdiff_t howmany,
                                std::ptrdiff_t /*inputBlock*/, std::ptrdiff_t /*outputBlock*/,
                                FftCommunicator /*communicator*/, std::ptrdiff_t* localCount,
                                std::ptrdiff_t* localStart) {
  std::ptrdiff_t total = howmany;
  for (int d = 0; d < rank; ++d) total *= dims[d];
  *localCount = rank > 0 ? dims[0] : 0;
  *localStart = 0;
  return total;
}

FftPlan fftPlanManyR2c(int rank, const std::ptrdiff_t* dims, std::ptrdiff_t howmany,
                       std::ptrdiff_t /*inputBlock*/, std::ptrdiff_t /*outputBlock*/, double* in,
                       fftw_complex* out, FftCommunicator /*communicator*/, unsigned flags) {
  const GuruLayout layout = realToComplexLayout(rank, dims, howmany);
  return fftw_plan_guru64_dft_r2c(3, layout.dims, 1, &layout.howmany, in, out, flags);
}

FftPlan fftPlanManyC2r(int rank, const std::ptrdiff_t* dims, std::ptrdiff_t howmany,
                       std::ptrdiff_t /*inputBlock*/, std::ptrdiff_t /*outputBlock*/,
                       fftw_complex* in, double* out, FftCommunicator /*communicator*/,
                       unsigned flags) {
  GuruLayout layout = realToComplexLayout(rank, dims, howmany);
  for (fftw_iodim64& d : layout.dims) std::swap(d.is, d.os);
  return fftw_plan_guru64_dft_c2r(3, layout.dims, 1, &layout.howmany, in, out, flags);
}

}  // namespace gridmoor
