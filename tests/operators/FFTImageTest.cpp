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

class FFTImageRoundTrip : public ::testing::TestWithParam<Shape> {};

TEST_P(FFTImageRoundTrip, ForwardThenBackwardReturnsTheVoxelValues) {
  const Shape s = GetParam();
  FFTImage image(s.components, s.first, s.second, s.third, "roundTrip");
  image.createPlans("Estimate");
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

// The fallback must leave the spectrum where the in-place plan puts it (a round trip alone
// would not see a consistent misplacement).
TEST(FFTImageRoundTripPlanning, OutOfPlacePlansAgreeWithInPlacePlans) {
  const Shape s{3, 6, 5, 7};
  FFTImage inPlace(s.components, s.first, s.second, s.third, "inPlace");
  OutOfPlaceImage outOfPlace(s.components, s.first, s.second, s.third, "outOfPlace");
  inPlace.createPlans("Estimate");
  outOfPlace.planOutOfPlace();
  ASSERT_EQ(outOfPlace.outOfPlaceBuffer.size(), outOfPlace.size());
  fillRandom(inPlace, 11);
  const std::vector<double> original(inPlace.begin(), inPlace.end());
  std::copy(original.begin(), original.end(), outOfPlace.begin());
  inPlace.forwardTransform();
  outOfPlace.forwardTransform();
  // A spectrum fills the whole buffer, padding included.
  for (Index n = 0; n < inPlace.size(); ++n) ASSERT_NEAR(outOfPlace[n], inPlace[n], 1e-12);
  // Without its division the backward transform still copies back from the buffer (the
  // divided one is a round trip of the fallback shape above).
  outOfPlace *= 1.0 / static_cast<double>(outOfPlace.numberOfVoxels());
  outOfPlace.backwardTransformUnnormalised();
  EXPECT_FALSE(outOfPlace.isInFourierSpace);
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
  FFTImage image(5, n0, n1, n2, "modes");
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
        v[4] = -1.5;                             // the sum at zero frequency
      }
  image.forwardTransform();
  const double half = 0.5 * static_cast<double>(n0 * n1 * n2);
  // The forward transform has the minus sign in its exponent: sin goes to -i N / 2.
  expectSpectrum(image, {{{0, 1, 2, 3}, {2.0 * half, 0.0}},
                         {{1, 5, 0, 1}, {0.0, -3.0 * half}},
                         {{2, 2, 1, 0}, {0.5 * half, 0.0}},
                         {{2, 4, 4, 0}, {0.5 * half, 0.0}},
                         {{3, 0, 0, 4}, {2.0 * half, 0.0}},
                         {{4, 0, 0, 0}, {-3.0 * half, 0.0}}});
}

TEST(FFTImageFrequency, SignedFrequencyMatchesTheDirectDefinition) {
  for (std::int64_t n = 1; n <= 9; ++n)
    for (std::int64_t m = 0; m < n; ++m) {
      const std::int64_t direct = m < (n + 1) / 2 ? m : m - n;
      for (std::int64_t alias = -2; alias <= 2; ++alias)
        ASSERT_EQ(signedFrequency(m + alias * n, n), direct + alias * n)
            << "index " << m << " alias " << alias << " extent " << n;
    }
  EXPECT_EQ(signedFrequency(4, 8), -4) << "the Nyquist index of an even axis is negative";
}

TEST(FFTImageZeroExtent, PlansNothingAndTransformsNothing) {
  for (const Shape s : {Shape{6, 0, 4, 4}, Shape{6, 4, 0, 4}, Shape{6, 4, 4, 0}, Shape{0, 2, 2, 2}}) {
    FFTImage image(s.components, s.first, s.second, s.third, "empty");
    image.createPlans("Measure");
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
  EXPECT_EQ(target.strideY, source.strideY) << "the Image geometry follows";
  EXPECT_TRUE(target.isInFourierSpace);
  for (Index n = 0; n < source.size(); ++n) ASSERT_EQ(target[n], source[n]);
}

TEST(FFTImageThreads, InitialisedImageTransformsWithTwoThreadsAndCleansUp) {
  FFTImage other(6, 4, 4, 4, "plannedBeforeCleanup");
  other.createPlans("Estimate");
  FFTImage threaded(6, 16, 12, 10, "threaded");
  EXPECT_EQ(threaded.initThreadsAndPlans(2, "Estimate"), 2);
  EXPECT_EQ(omp_get_max_threads(), 2);
  fillRandom(threaded, 5);
  const std::vector<double> original(threaded.begin(), threaded.end());
  threaded.forwardTransform();
  threaded.backwardTransform();
  EXPECT_LT(maxVoxelDifference(threaded, original), 1e-13);
  // FFTW's cleanup invalidates every plan: the other image's plans go first.
  threaded.destroyPlansAndCleanupThreads();
  EXPECT_EQ(threaded.forwardPlan, nullptr);
  EXPECT_EQ(other.forwardPlan, nullptr);
  EXPECT_FALSE(other.plansCreated);
}

TEST(FFTImageDeathTest, UnknownPlannerWordStopsTheRun) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  FFTImage image(6, 4, 4, 4, "field");
  EXPECT_EXIT(image.createPlans("estimate"), ::testing::ExitedWithCode(1),
              "^Unknown Planner Flag estimate\n$");
}

}  // namespace
}  // namespace gridmoor
