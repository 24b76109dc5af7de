// The messages with which a Green operator stops the run: values without vectors or closed
// forms, unknown filters, and fields that do not fit the operator.
#include <gtest/gtest.h>

#include "operators/DiscreteGreenOperator.h"

namespace gridmoor {
namespace {

using G = GreenOperatorType;
const std::array<std::uint64_t, 3> kGrid = {4, 3, 5};

class GreenOperatorFailures : public ::testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(GreenOperatorFailures, ValuesWithoutVectorsOrClosedFormsStop) {
  EXPECT_EXIT(DiscreteGreenOperator::create(
                  GreenOperatorSettings::of(G::Bilaplacian, FilterType::None, false), kGrid),
              ::testing::ExitedWithCode(1), "^Unknown finite difference 9\n$");
  EXPECT_EXIT(makeSpecializedGreenOperator(
                  GreenOperatorSettings::of(G::Q1FE, FilterType::None, true), kGrid),
              ::testing::ExitedWithCode(1), "^Operator not specialized.\n$");
  EXPECT_EXIT(makeSpecializedGreenOperator(
                  GreenOperatorSettings::of(G::Helmholtz, FilterType::None, true), kGrid),
              ::testing::ExitedWithCode(1), "^Operator not specialized.\n$");
  EXPECT_EXIT(DiscreteGreenOperator::create(
                  GreenOperatorSettings::of(G::Basic, static_cast<FilterType>(3), false), kGrid),
              ::testing::ExitedWithCode(1), "^The filter is not known.\n$");
}

TEST_F(GreenOperatorFailures, FieldsThatDoNotFitStop) {
  const auto op = DiscreteGreenOperator::create(
      GreenOperatorSettings::of(G::Q1FE, FilterType::None, false), kGrid);
  FFTImage onePoint(6, 4, 3, 5, "strain");
  onePoint.isInFourierSpace = true;
  EXPECT_EXIT(op->applyGamma0(onePoint, ReferenceConstants::of(1.0, 1.0)),
              ::testing::ExitedWithCode(1), "field strain has 6 values per voxel instead of 48");
  FFTImage otherGrid(48, 4, 3, 6, "strain");
  otherGrid.isInFourierSpace = true;
  EXPECT_EXIT(op->applyGamma0(otherGrid, ReferenceConstants::of(1.0, 1.0)),
              ::testing::ExitedWithCode(1),
              "field strain of 4 x 3 x 6 voxels on an operator made for 4 x 3 x 5");
  FFTImage voxels(48, 4, 3, 5, "strain");
  EXPECT_EXIT(op->applyDelta0(voxels, ReferenceConstants::of(1.0, 1.0)),
              ::testing::ExitedWithCode(1), "field strain is not in Fourier space");
  voxels.isInFourierSpace = true;
  FFTImage force(6, 4, 3, 5, "force");
  force.isInFourierSpace = true;
  EXPECT_EXIT(op->applyPsi0(force, voxels, ReferenceConstants::of(1.0, 1.0)),
              ::testing::ExitedWithCode(1),
              "force field force has 6 values per voxel instead of 3");
}

}  // namespace
}  // namespace gridmoor
