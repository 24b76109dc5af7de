// The messages with which a Green operator stops the run: values without vectors or closed
// forms, and unknown filters.
#include <gtest/gtest.h>

#include "operators/DiscreteGreenOperator.h"

namespace gridmoor {
namespace {

using G = GreenOperatorType;
const std::array<std::uint64_t, 3> kGrid = {4, 3, 5};

GreenOperatorSettings settings(G v, FilterType filter = FilterType::None) {
  return GreenOperatorSettings::of(v, filter, true);
}

TEST(GreenOperatorFailures, ValuesWithoutVectorsOrClosedFormsStop) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(DiscreteGreenOperator::create(settings(G::Bilaplacian), kGrid),
              ::testing::ExitedWithCode(1), "^Unknown finite difference 9\n$");
  EXPECT_EXIT(makeSpecializedGreenOperator(settings(G::Q1FE), kGrid), ::testing::ExitedWithCode(1),
              "^Operator not specialized.\n$");
  EXPECT_EXIT(makeSpecializedGreenOperator(settings(G::Helmholtz), kGrid),
              ::testing::ExitedWithCode(1), "^Operator not specialized.\n$");
  EXPECT_EXIT(DiscreteGreenOperator::create(settings(G::Basic, static_cast<FilterType>(3)), kGrid),
              ::testing::ExitedWithCode(1), "^The filter is not known.\n$");
}

}  // namespace
}  // namespace gridmoor
