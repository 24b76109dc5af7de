#include "operators/FFTImage.h"

#include <fftw3.h>
#include <omp.h>

#include <cmath>
#include <cstddef>
#include <string>

#include "common/Fatal.h"
#include "common/Timer.h"
#include "operators/FFTImageSlabPlans.h"

namespace gridmoor {

namespace {

// Block size argument of the distributed calls: 0 lets the library choose the split.
constexpr std::ptrdiff_t defaultBlock = 0;

// dst[i] = src[i] over the whole length, split over the OpenMP team.
void parallelCopy(double* dst, const double* src, std::uint64_t n) {
  parallelForStatic(n, [=](std::uint64_t b, std::uint64_t e) {
    for (std::uint64_t i = b; i < e; ++i) dst[i] = src[i];
  });
}

}  // namespace

FFTImage::FFTImage(std::uint64_t components, std::uint64_t first, std::uint64_t second,
                   std::uint64_t third, const std::string& name)
    : Image<double>(name), outOfPlaceBuffer(name + "_outOfPlaceBuffer") {
  nComponents = components;
  nFirst = first;
  nSecond = second;
  nThird = third;
  nThirdPadded = 2 * (third / 2 + 1);

  const std::ptrdiff_t complexDims[3] = {static_cast<std::ptrdiff_t>(first),
                                         static_cast<std::ptrdiff_t>(second),
                                         static_cast<std::ptrdiff_t>(third / 2 + 1)};
  std::ptrdiff_t localCount = 0;
  std::ptrdiff_t localStart = 0;
  const std::ptrdiff_t complexTotal =
      fftLocalSizeMany(3, complexDims, static_cast<std::ptrdiff_t>(components), defaultBlock,
                       defaultBlock, localCommunicator, &localCount, &localStart);

  nFirstLocal = static_cast<std::uint64_t>(localCount);
  firstOffset = static_cast<std::uint64_t>(localStart);
  firstBegin = firstOffset;
  firstEnd = firstOffset + nFirstLocal;
  rowStride = nComponents * nThirdPadded;
  planeStride = rowStride * nSecond;

  resize(nComponents, nFirstLocal, nSecond, nThirdPadded,
         2 * static_cast<std::uint64_t>(complexTotal));
  xOffset = firstOffset;
}

FFTImage::FFTImage(std::uint64_t components, std::uint64_t first, std::uint64_t second,
                   std::uint64_t third, const Vector<double>& values, const std::string& name)
    : FFTImage(components, first, second, third, name) {
  if (estimateOnly()) return;
  if (values.size() == size()) {
    parallelCopy(data(), values.data(), size());
  } else if (values.size() == nComponents * nFirstLocal * nSecond * nThird) {
    // Unpadded rows: each row of nThird voxels lands at the start of a padded row.
    const std::uint64_t rowLength = nComponents * nThird;
    const std::uint64_t rows = nFirstLocal * nSecond;
    double* dst = data();
    const double* src = values.data();
    const std::uint64_t stride = rowStride;
    parallelForStatic(rows, [=](std::uint64_t b, std::uint64_t e) {
      for (std::uint64_t r = b; r < e; ++r)
        for (std::uint64_t i = 0; i < rowLength; ++i) dst[r * stride + i] = src[r * rowLength + i];
    });
  } else {
    fatal("FFTImage " + name + ": " + std::to_string(values.size()) +
          " values do not fit a field of " + std::to_string(nComponents) + " components on " +
          std::to_string(nFirst) + " x " + std::to_string(nSecond) + " x " +
          std::to_string(nThird) + " voxels");
  }
  keepValuesWhenPlanning_ = true;
}

FFTImage::~FFTImage() { destroyPlans(); }

FFTImage& FFTImage::operator=(const FFTImage& other) {
  if (this == &other) return *this;
  if (other.size() != size()) fatal("can not use operator=() for FFTImage of different length");
  parallelCopy(data(), other.data(), size());

  strideX = other.strideX;
  strideY = other.strideY;
  strideZ = other.strideZ;
  sizeX = other.sizeX;
  sizeY = other.sizeY;
  sizeZ = other.sizeZ;
  xOffset = other.xOffset;
  xOffsetEnd = other.xOffsetEnd;

  nComponents = other.nComponents;
  nFirstLocal = other.nFirstLocal;
  nSecond = other.nSecond;
  nThirdPadded = other.nThirdPadded;
  rowStride = other.rowStride;
  planeStride = other.planeStride;
  firstOffset = other.firstOffset;
  nThird = other.nThird;
  firstBegin = other.firstBegin;
  firstEnd = other.firstEnd;
  nFirst = other.nFirst;
  isInFourierSpace = other.isInFourierSpace;
  return *this;
}

FFTImage& FFTImage::operator=(double value) {
  Vector<double>::operator=(value);
  return *this;
}

int FFTImage::initThreadsAndPlans(int nThreads, const std::string& plannerFlag) {
  if (fftw_init_threads() == 0) fatal("can not init fftw threads");
  omp_set_num_threads(nThreads);
  fftw_plan_with_nthreads(nThreads);
  createPlans(plannerFlag);
  return nThreads;
}

void FFTImage::createPlans(const std::string& plannerFlag) {
  unsigned flags = 0;
  if (plannerFlag == "Estimate")
    flags = FFTW_ESTIMATE;
  else if (plannerFlag == "Measure")
    flags = FFTW_MEASURE;
  else
    fatal("Unknown Planner Flag " + plannerFlag);
  createPlansWithFlags(flags, true);
}

void FFTImage::createPlansWithFlags(unsigned flags, bool inPlaceFirst) {
  destroyPlans();
  outOfPlaceBuffer.clear();

  // A field of zero voxels (or a memory-estimate shell without storage) has nothing to
  // transform: FFTW is not asked, both plans stay null and the transforms do nothing. In a
  // distributed build a process with no local planes would still take part in planning.
  if (numberOfVoxels() * nComponents == 0 || estimateOnly()) {
    plansCreated = true;
    return;
  }

  // Measuring runs trial transforms on the buffer.
  const bool measuring = (flags & FFTW_ESTIMATE) == 0;
  Vector<double> saved(getName() + "_savedForPlanning");
  if (measuring && keepValuesWhenPlanning_) {
    saved.resize(size());
    parallelCopy(saved.data(), data(), size());
  }

  const std::ptrdiff_t dims[3] = {static_cast<std::ptrdiff_t>(nFirst),
                                  static_cast<std::ptrdiff_t>(nSecond),
                                  static_cast<std::ptrdiff_t>(nThird)};
  const auto howmany = static_cast<std::ptrdiff_t>(nComponents);
  double* values = data();
  auto* spectrum = reinterpret_cast<fftw_complex*>(values);

  if (inPlaceFirst)
    forwardPlan = fftPlanManyR2c(3, dims, howmany, defaultBlock, defaultBlock, values, spectrum,
                                 localCommunicator, flags);
  if (forwardPlan == nullptr) {
    outOfPlaceBuffer.resize(size());
    outOfPlaceBuffer = 0.0;
    forwardPlan = fftPlanManyR2c(3, dims, howmany, defaultBlock, defaultBlock, values,
                                 reinterpret_cast<fftw_complex*>(outOfPlaceBuffer.data()),
                                 localCommunicator, flags);
  }
  double* backwardOut = outOfPlaceBuffer.empty() ? values : outOfPlaceBuffer.data();
  backwardPlan = fftPlanManyC2r(3, dims, howmany, defaultBlock, defaultBlock, spectrum,
                                backwardOut, localCommunicator, flags);

  if ((forwardPlan == nullptr || backwardPlan == nullptr) && nFirstLocal != 0 && nSecond != 0 &&
      nThirdPadded != 0)
    fatal("Could not create FFT plans. Aborting...");
  plansCreated = true;
  linkPlanned();

  if (measuring && keepValuesWhenPlanning_) parallelCopy(data(), saved.data(), size());
  keepValuesWhenPlanning_ = false;
}

void FFTImage::destroyPlansAndCleanupThreads() {
  destroyPlans();
  while (firstPlanned != nullptr) firstPlanned->destroyPlans();
  fftw_cleanup_threads();
}

void FFTImage::destroyPlans() {
  if (forwardPlan != nullptr) fftw_destroy_plan(forwardPlan);
  if (backwardPlan != nullptr) fftw_destroy_plan(backwardPlan);
  forwardPlan = nullptr;
  backwardPlan = nullptr;
  plansCreated = false;
  unlinkPlanned();
}

void FFTImage::linkPlanned() {
  if (forwardPlan == nullptr && backwardPlan == nullptr) return;
  previousPlanned_ = nullptr;
  nextPlanned_ = firstPlanned;
  if (firstPlanned != nullptr) firstPlanned->previousPlanned_ = this;
  firstPlanned = this;
}

void FFTImage::unlinkPlanned() {
  const bool linked = previousPlanned_ != nullptr || firstPlanned == this;
  if (!linked) return;
  if (previousPlanned_ != nullptr)
    previousPlanned_->nextPlanned_ = nextPlanned_;
  else
    firstPlanned = nextPlanned_;
  if (nextPlanned_ != nullptr) nextPlanned_->previousPlanned_ = previousPlanned_;
  previousPlanned_ = nullptr;
  nextPlanned_ = nullptr;
}

void FFTImage::forwardTransform() {
  if (!plansCreated) fatal("FFTImage " + getName() + " is transformed before it is planned");
  Timer timer;
  timer.start();
  if (forwardPlan != nullptr) fftw_execute(forwardPlan);
  if (!outOfPlaceBuffer.empty()) parallelCopy(data(), outOfPlaceBuffer.data(), size());
  isInFourierSpace = true;
  addTransformTime(timer.seconds());
}

void FFTImage::backwardTransform() {
  if (!plansCreated) fatal("FFTImage " + getName() + " is transformed before it is planned");
  Timer timer;
  timer.start();
  if (backwardPlan != nullptr) fftw_execute(backwardPlan);
  isInFourierSpace = false;
  const std::uint64_t voxels = numberOfVoxels();
  if (voxels != 0) {
    const double n = static_cast<double>(voxels);
    if (outOfPlaceBuffer.empty()) {
      *this /= n;
    } else {
      // The copy back and the normalisation in one pass.
      double* dst = data();
      const double* src = outOfPlaceBuffer.data();
      parallelForStatic(size(), [=](std::uint64_t b, std::uint64_t e) {
        for (std::uint64_t i = b; i < e; ++i) dst[i] = src[i] / n;
      });
    }
  }
  addTransformTime(timer.seconds());
}

void FFTImage::backwardTransformUnnormalised() {
  if (!plansCreated) fatal("FFTImage " + getName() + " is transformed before it is planned");
  Timer timer;
  timer.start();
  if (backwardPlan != nullptr) fftw_execute(backwardPlan);
  if (!outOfPlaceBuffer.empty()) parallelCopy(data(), outOfPlaceBuffer.data(), size());
  isInFourierSpace = false;
  addTransformTime(timer.seconds());
}

void FFTImage::addTransformTime(double seconds) {
  transformSeconds_ += seconds;
  transformMilliseconds = static_cast<std::int32_t>(std::llround(transformSeconds_ * 1000.0));
  runTransformSeconds += seconds;
}

}  // namespace gridmoor
