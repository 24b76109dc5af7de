// The field every solver works on: a double image whose padded, component-interleaved buffer
// is transformed in place between voxel values and its half-complex spectrum by FFTW plans.
#pragma once

#include <omp.h>

#include <cstdint>
#include <numbers>
#include <string>

#include "common/Types.h"
#include "voxel/Image.h"
#include "voxel/StaticPartition.h"
#include "voxel/Vector.h"

namespace gridmoor {

// Signed frequency of index m on an axis of extent n > 0: indices below (n + 1) / 2 map to
// themselves, the upper half to negative values, the Nyquist index of an even axis to -n / 2.
// An alias index m + a * n (any integer a, negative included) maps to the frequency of m
// shifted by a * n. Mod and division round towards minus infinity here: with C++'s
// truncation a negative alias of an upper-half index would fold back onto the index itself.
inline std::int64_t signedFrequency(std::int64_t m, std::int64_t n) {
  const std::int64_t half = n / 2;
  std::int64_t wrapped = (m + half) % n;
  if (wrapped < 0) wrapped += n;
  std::int64_t period = m / n;
  if (m % n != 0 && m < 0) --period;
  return wrapped - half + period * n;
}

// Angular frequency of index m on an axis of extent n with voxel length h on that axis.
inline double angularFrequency(std::int64_t m, std::int64_t n, double h) {
  return 2.0 * static_cast<double>(signedFrequency(m, n)) * std::numbers::pi /
         static_cast<double>(n) / h;
}

class FFTImage : public Image<double> {
 public:
  // Values per voxel: the interleaved components, the howmany of the transforms.
  std::uint64_t nComponents = 0;
  // Extents of the buffer. The third axis holds 2 * (nThird / 2 + 1) doubles per
  // component: room for nThird / 2 + 1 complex values after the forward transform.
  std::uint64_t nFirstLocal = 0;
  std::uint64_t nSecond = 0;
  std::uint64_t nThirdPadded = 0;
  // In doubles: from one second-axis row and from one first-axis plane to the next.
  std::uint64_t rowStride = 0;
  std::uint64_t planeStride = 0;
  // Global first-axis index of the first plane held here.
  std::uint64_t firstOffset = 0;
  std::uint64_t nThird = 0;
  // Half-open range of global first-axis indices held here: every voxel loop runs over it.
  std::uint64_t firstBegin = 0;
  std::uint64_t firstEnd = 0;
  std::uint64_t nFirst = 0;
  FftPlan forwardPlan = nullptr;
  FftPlan backwardPlan = nullptr;
  bool plansCreated = false;
  // Only used when FFTW can't plan in place; then it doubles the field's memory.
  Vector<double> outOfPlaceBuffer;
  bool isInFourierSpace = false;
  // Accumulated wall time of both transforms of this image.
  std::int32_t transformMilliseconds = 0;

  // Sizes the buffer (zero-filled) and plans nothing.
  FFTImage(std::uint64_t nComponents, std::uint64_t nFirst, std::uint64_t nSecond,
           std::uint64_t nThird, const std::string& name);
  // Takes its values from `values`, either already in the padded layout (the buffer's
  // length) or as a plain image without padding (nComponents * nFirst * nSecond * nThird).
  // Fields held on disk come back through readFromFile into a planned image instead: the
  // plans need the resident buffer, and measuring would overwrite what was read first.
  FFTImage(std::uint64_t nComponents, std::uint64_t nFirst, std::uint64_t nSecond,
           std::uint64_t nThird, const Vector<double>& values, const std::string& name);
  // Plans belong to one buffer: an image is neither copied nor moved, only assigned.
  FFTImage(const FFTImage&) = delete;
  ~FFTImage() override;

  // Copies values, extents, strides and the space flag; the plans stay this image's own.
  FFTImage& operator=(const FFTImage& other);
  // Fills every value, padding included.
  FFTImage& operator=(double value);

  // For the first image of a run: starts FFTW's threads, sets the OpenMP team and FFTW to
  // nThreads and plans this image. Returns the thread count.
  int initThreadsAndPlans(int nThreads, const std::string& plannerFlag);
  // "Estimate" or "Measure". Measuring overwrites the buffer: an image is planned before
  // it receives values. An image built from existing values keeps them.
  void createPlans(const std::string& plannerFlag);
  // At the end of a run. FFTW's cleanup invalidates every plan, so the plans of all images
  // are destroyed first; an image with no plans is planned again before it transforms.
  void destroyPlansAndCleanupThreads();

  // Unnormalised forward transform: the zero frequency holds the sum over all voxels.
  void forwardTransform();
  // Backward transform followed by the division of every value, padding included, by the
  // number of voxels, so that it inverts forwardTransform.
  void backwardTransform();
  // Backward transform without the division: for a spectrum whose last pass has divided it
  // by the number of voxels already, which saves a pass over the field.
  void backwardTransformUnnormalised();

  std::uint64_t numberOfVoxels() const { return nFirst * nSecond * nThird; }

  // Spectrum at frequency indices (i, j, k), 0 <= k <= nThird / 2, i global.
  double& realPart(std::uint64_t c, std::uint64_t i, std::uint64_t j, std::uint64_t k) {
    return data()[spectrumIndex(c, i, j, k)];
  }
  double realPart(std::uint64_t c, std::uint64_t i, std::uint64_t j, std::uint64_t k) const {
    return data()[spectrumIndex(c, i, j, k)];
  }
  double& imagPart(std::uint64_t c, std::uint64_t i, std::uint64_t j, std::uint64_t k) {
    return data()[spectrumIndex(c, i, j, k) + 1];
  }
  double imagPart(std::uint64_t c, std::uint64_t i, std::uint64_t j, std::uint64_t k) const {
    return data()[spectrumIndex(c, i, j, k) + 1];
  }
  std::uint64_t spectrumIndex(std::uint64_t c, std::uint64_t i, std::uint64_t j,
                              std::uint64_t k) const {
    return (i - firstOffset) * planeStride + j * rowStride + (k * nComponents + c) * 2;
  }

  // The chunk of the first-axis range [begin, end) that thread `thread` of `threads` takes
  // in every voxel and spectrum loop: contiguous, the first (end - begin) % threads one
  // plane longer.
  static IndexRange firstAxisChunk(std::uint64_t begin, std::uint64_t end, std::uint64_t thread,
                                   std::uint64_t threads) {
    const IndexRange r = staticPartition(end - begin, thread, threads);
    return {begin + r.begin, begin + r.end};
  }
  // The calling thread's planes of this image, inside a parallel region.
  IndexRange threadFirstRange() const {
    return firstAxisChunk(firstBegin, firstEnd, static_cast<std::uint64_t>(omp_get_thread_num()),
                          static_cast<std::uint64_t>(omp_get_num_threads()));
  }

  // Seconds spent in transforms by all images of the process, for the run report.
  static double totalTransformSeconds() { return runTransformSeconds; }

 protected:
  // Plans with FFTW flags; inPlaceFirst false goes straight to the out-of-place fallback.
  void createPlansWithFlags(unsigned flags, bool inPlaceFirst);

 private:
  void destroyPlans();
  void linkPlanned();
  void unlinkPlanned();
  void addTransformTime(double seconds);

  // Transforms run on the main thread only (FFTW's threads do the parallel work), so the
  // run-wide sum needs no synchronisation.
  inline static double runTransformSeconds = 0.0;
  // Every image holding FFTW plans, linked through the images themselves (no allocation),
  // so that the cleanup at the end of a run can destroy them while FFTW still knows them.
  // Planning happens on the main thread only.
  inline static FFTImage* firstPlanned = nullptr;
  FFTImage* previousPlanned_ = nullptr;
  FFTImage* nextPlanned_ = nullptr;
  // Unrounded sum behind transformMilliseconds, so that short transforms still add up.
  double transformSeconds_ = 0.0;
  // Set for an image built from existing values until its first planning.
  bool keepValuesWhenPlanning_ = false;
};

}  // namespace gridmoor
