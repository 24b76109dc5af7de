#include "materials/VoigtMatrix.h"

#include <gtest/gtest.h>

using namespace gridmoor;

namespace {
VoigtMatrix symmetricSample() {
  VoigtMatrix c;
  for (int a = 0; a < 6; ++a)
    for (int b = a; b < 6; ++b) c(a, b) = c(b, a) = 1.0 + a + 7.0 * b + (a == b ? 20.0 : 0.0);
  return c;
}
}  // namespace

TEST(VoigtMatrix, StiffnessTensorHasMinorSymmetriesAndReturnsToVoigt) {
  const VoigtMatrix c = symmetricSample();
  const TensorMatrix t = stiffnessTensorOf(c);
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 3; ++k)
        for (int l = 0; l < 3; ++l) {
          EXPECT_EQ(t(3 * i + j, 3 * k + l), t(3 * j + i, 3 * k + l));
          EXPECT_EQ(t(3 * i + j, 3 * k + l), t(3 * i + j, 3 * l + k));
        }
  // Shear xy (Voigt 5) against normal yy (Voigt 1).
  EXPECT_EQ(t(1, 4), c(5, 1));
  EXPECT_EQ(t(3, 4), c(5, 1));
  const VoigtMatrix back = voigtOf(t);
  for (int a = 0; a < 6; ++a)
    for (int b = 0; b < 6; ++b) EXPECT_EQ(back(a, b), c(a, b));
}

TEST(VoigtMatrix, DoubledShearFormDoublesOnlyTheShearDiagonal) {
  const VoigtMatrix c = symmetricSample();
  const TensorMatrix t = doubledShearTensorOf(c);
  // (yz, yz) and (zy, zy) carry twice C33; the mixed (yz, zy) pair stays empty.
  EXPECT_EQ(t(5, 5), 2.0 * c(3, 3));
  EXPECT_EQ(t(7, 7), 2.0 * c(3, 3));
  EXPECT_EQ(t(5, 7), 0.0);
  EXPECT_EQ(t(0, 4), c(0, 1));
  EXPECT_EQ(t(1, 0), c(5, 0));
  EXPECT_EQ(t(3, 0), c(5, 0));
  EXPECT_EQ(VoigtMatrix().rowIndex[3], 1.0);
  EXPECT_EQ(VoigtMatrix().columnIndex[3], 2.0);
}
