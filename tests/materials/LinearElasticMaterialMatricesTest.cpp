#include <gtest/gtest.h>

#include <cmath>

#include "LinearElasticTestSupport.h"
#include "materials/LinearElasticMaterialMatrices.h"
#include "materials/VoigtRotation.h"

namespace gridmoor {
namespace {

using namespace linear_elastic_test;

TEST(LinearElasticMatrices, LUInverseNeedsRowExchangesAndDoesNotCheckSingularity) {
  // Zero leading entries everywhere: no inverse without row exchanges.
  VoigtMatrix permuted;
  const int order[6] = {3, 0, 5, 1, 4, 2};
  for (int a = 0; a < 6; ++a) {
    permuted(a, order[a]) = 2.0 + a;
    permuted(a, (order[a] + 1) % 6) = 0.5;
  }
  ASSERT_EQ(permuted(0, 0), 0.0);
  EXPECT_LT(distanceToIdentity(multiply(permuted, invertByLU(permuted))), 1e-13);

  // A singular matrix is not reported: its inverse holds non-finite entries.
  VoigtMatrix singular = permuted;
  for (int b = 0; b < 6; ++b) singular(4, b) = 2.0 * singular(1, b);
  bool anyNonFinite = false;
  for (double v : invertByLU(singular).m) anyNonFinite = anyNonFinite || !std::isfinite(v);
  EXPECT_TRUE(anyNonFinite);
}

}  // namespace
}  // namespace gridmoor
