#include "operators/FFTImage.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <cstdint>
#include <map>
#include <numbers>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace gridmoor {
namespace {

using Index = std::uint64_t;

struct Shape {
  Index components, first, second, third;
};

void fillRandom(FFTImage& image, unsigned seed) {
  std::mt19937 gen(seed);
  std::uniform_real_distribution<double> dist(-1.0, 1.0);
  for (double& v : image) v = dist(gen);
}

// Largest difference over the voxel values; the padding is not compared.
double maxVoxelDifference(const FFTImage& a, const std::vector<double>& original) {
  double worst = 0.0;
  for (Index i = 0; i < a.nFirst; ++i)
    for (Index j = 0; j < a.nSecond; ++j)
      for (Index k = 0; k < a.nThird; ++k)
        for (Index c = 0; c < a.nComponents; ++c) {
          const Index at = a.elementIndex(c, i, j, k);
          worst = std::max(worst, std::abs(a[at] - original[at]));
        }
  return worst;
}

// A test image that can skip the in-place attempt and plan out of place at once.
class OutOfPlaceImage : public FFTImage {
 public:
  using FFTImage::FFTImage;
  void planOutOfPlace() { createPlansWithFlags(FFTW_ESTIMATE, false); }
};

TEST(FFTImageLayout, ExtentsStridesAndLengthFollowThePaddedThirdAxis) {
  for (const Shape s : {Shape{6, 4, 3, 8}, Shape{2, 3, 5, 7}, Shape{1, 2, 2, 1}}) {
    FFTImage image(s.components, s.first, s.second, s.third, "layout");
    const Index padded = s.third % 2 == 0 ? s.third + 2 : s.third + 1;
    EXPECT_EQ(image.nThirdPadded, padded);
    EXPECT_EQ(image.size(), 2 * s.first * s.second * (s.third / 2 + 1) * s.components);
    EXPECT_EQ(image.size(), s.first * s.second * padded * s.components);
    EXPECT_EQ(image.rowStride, s.components * padded);
    EXPECT_EQ(image.planeStride, s.components * padded * s.second);
    EXPECT_EQ(image.firstBegin, 0u);
    EXPECT_EQ(image.firstEnd, s.first);
    EXPECT_EQ(image.nFirstLocal, s.first);
    EXPECT_FALSE(image.plansCreated) << "constructing does not plan";
    // Voxel addressing through the Image base agrees with the padded layout.
    const Index c = s.components - 1, i = s.first - 1, j = s.second - 1, k = s.third - 1;
    EXPECT_EQ(image.elementPointer(c, i, j, k) - image.data(),
              static_cast<std::ptrdiff_t>(i * image.planeStride + j * image.rowStride +
                                          k * s.components + c));
    // The last complex value of a row ends exactly at the row's padded end.
    EXPECT_EQ(image.spectrumIndex(c, i, j, s.third / 2) + 2, image.size());
  }
}

TEST(FFTImageLayout, BuildsFromPaddedOrUnpaddedValues) {
  const Index h = 2, n0 = 2, n1 = 3, n2 = 5;
  Vector<double> plain(h * n0 * n1 * n2, "plain");
  for (Index n = 0; n < plain.size(); ++n) plain[n] = static_cast<double>(n);
  FFTImage fromPlain(h, n0, n1, n2, plain, "fromPlain");
  for (Index i = 0; i < n0; ++i)
    for (Index j = 0; j < n1; ++j)
      for (Index k = 0; k < n2; ++k)
        for (Index c = 0; c < h; ++c)
          ASSERT_EQ(*fromPlain.elementPointer(c, i, j, k),
                    static_cast<double>(((i * n1 + j) * n2 + k) * h + c));

  FFTImage fromPadded(h, n0, n1, n2, fromPlain, "fromPadded");
  for (Index n = 0; n < fromPlain.size(); ++n) ASSERT_EQ(fromPadded[n], fromPlain[n]);

  // Measuring runs trial transforms on the buffer; an image built from values keeps them.
  fromPlain.createPlans("Measure");
  for (Index n = 0; n < fromPlain.size(); ++n) ASSERT_EQ(fromPadded[n], fromPlain[n]);
}

TEST(FFTImageLayout, FirstAxisChunksTileTheRangeWithLongerChunksFirst) {
  const Index begin = 3, end = 13, threads = 4;
  Index expectedBegin = begin;
  const Index lengths[] = {3, 3, 2, 2};
  for (Index t = 0; t < threads; ++t) {
    const IndexRange r = FFTImage::firstAxisChunk(begin, end, t, threads);
    EXPECT_EQ(r.begin, expectedBegin);
    EXPECT_EQ(r.end - r.begin, lengths[t]);
    expectedBegin = r.end;
  }
  EXPECT_EQ(expectedBegin, end);
  // More threads than planes: the surplus threads get empty chunks at the end.
  const IndexRange last = FFTImage::firstAxisChunk(0, 2, 3, 4);
  EXPECT_EQ(last.begin, last.end);
}

class FFTImageRoundTrip : public ::testing::TestWithParam<Shape> {};

TEST_P(FFTImageRoundTrip, ForwardThenBackwardReturnsTheVoxelValues) {
  const Shape s = GetParam();
  FFTImage image(s.components, s.first, s.second, s.third, "roundTrip");
  image.createPlans("Estimate");
  ASSERT_TRUE(image.plansCreated);
  ASSERT_NE(image.forwardPlan, nullptr);
  ASSERT_NE(image.backwardPlan, nullptr);
  // FFTW plans the interleaved layout in place, except with several components on a third
  // axis of one voxel: then the round trip goes through the out-of-place fallback.
  if (s.third > 1 || s.components == 1)
    EXPECT_TRUE(image.outOfPlaceBuffer.empty()) << "in place";
  else
    EXPECT_EQ(image.outOfPlaceBuffer.size(), image.size()) << "fallback";

  fillRandom(image, 7);
  const std::vector<double> original(image.begin(), image.end());
  const double before = FFTImage::totalTransformSeconds();
  image.forwardTransform();
  EXPECT_TRUE(image.isInFourierSpace);
  image.backwardTransform();
  EXPECT_FALSE(image.isInFourierSpace);
  EXPECT_LT(maxVoxelDifference(image, original), 1e-13);
  EXPECT_GT(FFTImage::totalTransformSeconds(), before);
}

INSTANTIATE_TEST_SUITE_P(
    FFTImageShapes, FFTImageRoundTrip,
    ::testing::Values(Shape{6, 8, 6, 4}, Shape{3, 5, 7, 9}, Shape{6, 4, 5, 6}, Shape{2, 6, 4, 7},
                      Shape{1, 1, 6, 5}, Shape{6, 6, 1, 5}, Shape{6, 5, 6, 1}, Shape{9, 1, 1, 8},
                      Shape{1, 1, 1, 1}),
    [](const ::testing::TestParamInfo<Shape>& info) {
      const Shape& s = info.param;
      return "c" + std::to_string(s.components) + "_" + std::to_string(s.first) + "x" +
             std::to_string(s.second) + "x" + std::to_string(s.third);
    });

TEST(FFTImageRoundTripPlanning, MeasuredAndOutOfPlacePlansAgreeWithEstimated) {
  const Shape s{3, 6, 5, 7};
  FFTImage estimated(s.components, s.first, s.second, s.third, "estimated");
  FFTImage measured(s.components, s.first, s.second, s.third, "measured");
  OutOfPlaceImage outOfPlace(s.components, s.first, s.second, s.third, "outOfPlace");
  estimated.createPlans("Estimate");
  measured.createPlans("Measure");
  outOfPlace.planOutOfPlace();
  ASSERT_EQ(outOfPlace.outOfPlaceBuffer.size(), outOfPlace.size());

  fillRandom(estimated, 11);
  const std::vector<double> original(estimated.begin(), estimated.end());
  std::copy(original.begin(), original.end(), measured.begin());
  std::copy(original.begin(), original.end(), outOfPlace.begin());
  estimated.forwardTransform();
  measured.forwardTransform();
  outOfPlace.forwardTransform();
  for (Index i = 0; i < s.first; ++i)
    for (Index j = 0; j < s.second; ++j)
      for (Index k = 0; k <= s.third / 2; ++k)
        for (Index c = 0; c < s.components; ++c) {
          const double re = estimated.realPart(c, i, j, k), im = estimated.imagPart(c, i, j, k);
          ASSERT_NEAR(measured.realPart(c, i, j, k), re, 1e-12);
          ASSERT_NEAR(measured.imagPart(c, i, j, k), im, 1e-12);
          ASSERT_NEAR(outOfPlace.realPart(c, i, j, k), re, 1e-12);
          ASSERT_NEAR(outOfPlace.imagPart(c, i, j, k), im, 1e-12);
        }
  measured.backwardTransform();
  outOfPlace.backwardTransform();
  EXPECT_LT(maxVoxelDifference(measured, original), 1e-13);
  EXPECT_LT(maxVoxelDifference(outOfPlace, original), 1e-13);
}

// Checks every stored spectrum value against a sparse map of the expected non-zero ones.
using SpectrumKey = std::tuple<Index, Index, Index, Index>;  // c, i, j, k
struct Complex {
  double re, im;
};

void expectSpectrum(const FFTImage& image, const std::map<SpectrumKey, Complex>& nonZero) {
  const double tolerance = 1e-10 * static_cast<double>(image.numberOfVoxels());
  for (Index c = 0; c < image.nComponents; ++c)
    for (Index i = 0; i < image.nFirst; ++i)
      for (Index j = 0; j < image.nSecond; ++j)
        for (Index k = 0; k <= image.nThird / 2; ++k) {
          const auto found = nonZero.find({c, i, j, k});
          const Complex want = found == nonZero.end() ? Complex{0.0, 0.0} : found->second;
          ASSERT_NEAR(image.realPart(c, i, j, k), want.re, tolerance)
              << "c " << c << " at " << i << ", " << j << ", " << k;
          ASSERT_NEAR(image.imagPart(c, i, j, k), want.im, tolerance)
              << "c " << c << " at " << i << ", " << j << ", " << k;
        }
}

TEST(FFTImageSpectrum, SingleModesLandAtTheirComplexIndices) {
  const Index n0 = 6, n1 = 5, n2 = 8;
  FFTImage image(4, n0, n1, n2, "modes");
  image.createPlans("Estimate");
  const double two_pi = 2.0 * std::numbers::pi;
  for (Index i = 0; i < n0; ++i)
    for (Index j = 0; j < n1; ++j)
      for (Index k = 0; k < n2; ++k) {
        auto phase = [&](double p, double q, double r) {
          return two_pi * (p * i / n0 + q * j / n1 + r * k / n2);
        };
        double* v = image.voxelPointer(i, j, k);
        v[0] = 2.0 * std::cos(phase(1, 2, 3));   // inside the stored half: one entry
        v[1] = 3.0 * std::sin(phase(-1, 0, 1));  // first index 5 stands for -1
        v[2] = 0.5 * std::cos(phase(2, 1, 0));   // k = 0 holds both the mode and its mirror
        v[3] = std::cos(phase(0, 0, 4));         // Nyquist of the third axis
      }
  image.forwardTransform();
  const double half = 0.5 * static_cast<double>(n0 * n1 * n2);
  // The forward transform has the minus sign in its exponent: sin goes to -i N / 2.
  expectSpectrum(image, {{{0, 1, 2, 3}, {2.0 * half, 0.0}},
                         {{1, 5, 0, 1}, {0.0, -3.0 * half}},
                         {{2, 2, 1, 0}, {0.5 * half, 0.0}},
                         {{2, 4, 4, 0}, {0.5 * half, 0.0}},
                         {{3, 0, 0, 4}, {2.0 * half, 0.0}}});
}

TEST(FFTImageSpectrum, ConstantFieldHasTheSumAtZeroFrequencyOnAnOddThirdAxis) {
  FFTImage image(2, 3, 4, 5, "constant");
  image.createPlans("Estimate");
  ASSERT_EQ(image.nThirdPadded, 6u) << "three complex values on a third axis of five";
  for (Index i = 0; i < 3; ++i)
    for (Index j = 0; j < 4; ++j)
      for (Index k = 0; k < 5; ++k) {
        *image.elementPointer(0, i, j, k) = 1.5;
        *image.elementPointer(1, i, j, k) = -2.0;
      }
  image.forwardTransform();
  const double n = 60.0;
  expectSpectrum(image, {{{0, 0, 0, 0}, {1.5 * n, 0.0}}, {{1, 0, 0, 0}, {-2.0 * n, 0.0}}});
  // A prescribed mean is set at zero frequency as mean times the number of voxels.
  image.realPart(1, 0, 0, 0) = 0.25 * n;
  image.backwardTransform();
  EXPECT_NEAR(*image.elementPointer(0, 2, 3, 4), 1.5, 1e-14);
  EXPECT_NEAR(*image.elementPointer(1, 1, 2, 3), 0.25, 1e-14);
}

TEST(FFTImageFrequency, SignedFrequencyMatchesTheDirectDefinition) {
  for (std::int64_t n = 1; n <= 9; ++n)
    for (std::int64_t m = 0; m < n; ++m) {
      const std::int64_t direct = m < (n + 1) / 2 ? m : m - n;
      for (std::int64_t alias = -2; alias <= 2; ++alias)
        ASSERT_EQ(signedFrequency(m + alias * n, n), direct + alias * n)
            << "index " << m << " alias " << alias << " extent " << n;
    }
  // Nyquist indices of even axes are negative; odd axes have none.
  EXPECT_EQ(signedFrequency(2, 4), -2);
  EXPECT_EQ(signedFrequency(4, 8), -4);
  EXPECT_EQ(signedFrequency(2, 5), 2);
  EXPECT_EQ(signedFrequency(3, 5), -2);
  EXPECT_DOUBLE_EQ(angularFrequency(7, 8, 0.5), 2.0 * -1.0 * std::numbers::pi / 8.0 / 0.5);
}

TEST(FFTImageZeroExtent, PlansNothingAndTransformsNothing) {
  for (const Shape s : {Shape{6, 0, 4, 4}, Shape{6, 4, 0, 4}, Shape{6, 4, 4, 0}, Shape{0, 2, 2, 2}}) {
    FFTImage image(s.components, s.first, s.second, s.third, "empty");
    image.createPlans("Measure");
    EXPECT_TRUE(image.plansCreated);
    EXPECT_EQ(image.forwardPlan, nullptr);
    EXPECT_EQ(image.backwardPlan, nullptr);
    image = 1.0;
    image.forwardTransform();
    image.backwardTransform();
    for (double v : image) ASSERT_EQ(v, 1.0) << "no voxels, nothing to normalise";
  }
}

TEST(FFTImageAssignment, CopiesValuesExtentsAndSpaceButKeepsItsPlans) {
  // Equal buffer lengths, different shapes: one component on 4 x 4 x 6 voxels (padded to
  // 8) and two on 4 x 4 x 2 (padded to 4).
  FFTImage target(1, 4, 4, 6, "target");
  FFTImage source(2, 4, 4, 2, "source");
  ASSERT_EQ(target.size(), source.size());
  target.createPlans("Estimate");
  const FftPlan ownForward = target.forwardPlan;
  fillRandom(source, 3);
  source.isInFourierSpace = true;
  target = source;
  EXPECT_EQ(target.forwardPlan, ownForward);
  EXPECT_EQ(target.nComponents, 2u);
  EXPECT_EQ(target.nThird, 2u);
  EXPECT_EQ(target.nThirdPadded, 4u);
  EXPECT_EQ(target.rowStride, source.rowStride);
  EXPECT_EQ(target.strideY, source.strideY);
  EXPECT_EQ(target.getSizeZ(), 4u);
  EXPECT_TRUE(target.isInFourierSpace);
  for (Index n = 0; n < source.size(); ++n) ASSERT_EQ(target[n], source[n]);
}

TEST(FFTImageThreads, TwoThreadsGiveTheSingleThreadSpectrum) {
  const Shape s{6, 16, 12, 10};
  FFTImage single(s.components, s.first, s.second, s.third, "single");
  single.createPlans("Estimate");
  fillRandom(single, 5);
  const std::vector<double> original(single.begin(), single.end());

  FFTImage threaded(s.components, s.first, s.second, s.third, "threaded");
  EXPECT_EQ(threaded.initThreadsAndPlans(2, "Estimate"), 2);
  EXPECT_EQ(omp_get_max_threads(), 2);
  std::copy(original.begin(), original.end(), threaded.begin());
  single.forwardTransform();
  threaded.forwardTransform();
  for (Index n = 0; n < single.size(); ++n) ASSERT_NEAR(threaded[n], single[n], 1e-11);
  threaded.backwardTransform();
  EXPECT_LT(maxVoxelDifference(threaded, original), 1e-13);

  threaded.destroyPlansAndCleanupThreads();
  EXPECT_FALSE(threaded.plansCreated);
  EXPECT_EQ(threaded.forwardPlan, nullptr);
  // `single` was planned before the cleanup: it forgets its plans when it is destroyed.
  fftw_plan_with_nthreads(1);
}

TEST(FFTImageDeathTest, UnknownPlannerWordAndMismatchedAssignmentStopTheRun) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  FFTImage image(6, 4, 4, 4, "field");
  EXPECT_EXIT(image.createPlans("estimate"), ::testing::ExitedWithCode(1),
              "^Unknown Planner Flag estimate\n$");
  EXPECT_EXIT(image.createPlans(""), ::testing::ExitedWithCode(1), "^Unknown Planner Flag \n$");
  FFTImage other(6, 4, 4, 6, "other");
  EXPECT_EXIT(image = other, ::testing::ExitedWithCode(1),
              "^can not use operator=\\(\\) for FFTImage of different length\n$");
  Vector<double> wrong(7, "wrong");
  EXPECT_EXIT(FFTImage(6, 4, 4, 4, wrong, "fromWrong"), ::testing::ExitedWithCode(1),
              "FFTImage fromWrong: 7 values do not fit");
}

}  // namespace
}  // namespace gridmoor
