// The effective-matrix data model (inverse, row formats, tensor form of Voigt vectors) and
// the Voigt and Reuss bounds as volume means of the laws' matrices.
#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "../solvers/SolverTestSupport.h"
#include "postprocessing/EffectiveMatrix.h"
#include "postprocessing/VoigtReussBounds.h"

namespace gridmoor {
namespace {

using namespace solver_test;

TEST(EffectiveMatrix, InvertsRegularMatricesAndRefusesSingularOnes) {
  EffectiveMatrix m;
  for (int i = 0; i < 6; ++i)
    for (int j = 0; j < 6; ++j) m(i, j) = (i == j ? 10.0 : 0.0) + 1.0 / (1 + i + 2 * j);
  const EffectiveMatrix original = m;
  ASSERT_TRUE(m.invert());
  for (int i = 0; i < 6; ++i)
    for (int j = 0; j < 6; ++j) {
      double s = 0.0;
      for (int k = 0; k < 6; ++k) s += original(i, k) * m(k, j);
      EXPECT_NEAR(s, i == j ? 1.0 : 0.0, 1e-14);
    }

  // Rank 5 (a shear row of zeros, as a soft phase's Voigt mean can give) and a NaN entry:
  // both left as they are.
  EffectiveMatrix singular = original;
  for (int j = 0; j < 6; ++j) singular(4, j) = 0.0;
  const EffectiveMatrix before = singular;
  EXPECT_FALSE(singular.invert());
  EXPECT_EQ(singular.values, before.values);
  EffectiveMatrix notFinite = original;
  notFinite(2, 3) = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(notFinite.invert());
}

TEST(EffectiveMatrix, RowsKeepTheirNumberAndOnlyTheMaskedEntries) {
  EffectiveMatrix m;
  EXPECT_EQ(m.rowIndex, (std::array<int, 6>{0, 1, 2, 1, 0, 0}));
  EXPECT_EQ(m.columnIndex, (std::array<int, 6>{0, 1, 2, 2, 2, 1}));
  for (int i = 0; i < 36; ++i) m.values[i] = i;
  std::ostringstream masked;
  m.writeRows(masked, "Matrix:Stiffness:Energy", 0b100010u, 0b100010u);
  EXPECT_EQ(masked.str(), "Matrix:Stiffness:Energy:2  7,11\nMatrix:Stiffness:Energy:6  31,35\n");
  std::ostringstream full;
  m.writeRows(full, "K");
  EXPECT_NE(full.str().find("K:1  0,1,2,3,4,5\n"), std::string::npos);
  EXPECT_NE(full.str().find("K:6  30,31,32,33,34,35\n"), std::string::npos);
  std::ostringstream latex;
  m.printPmatrix(latex);
  EXPECT_EQ(latex.str().rfind("\\begin{pmatrix}\n0 & 1 & 2 & 3 & 4 & 5 \\\\\n", 0), 0u);
  EXPECT_NE(latex.str().find("30 & 31 & 32 & 33 & 34 & 35 \\\\\n\\end{pmatrix}\n"),
            std::string::npos);
}

TEST(EffectiveMatrix, TensorFormHalvesOnlyEngineeringShear) {
  const std::array<double, 6> v{1, 2, 3, 4, 6, 8};
  EXPECT_EQ(tensorOfVoigt(v, true), (std::array<double, 9>{1, 4, 3, 4, 2, 2, 3, 2, 3}));
  EXPECT_EQ(tensorOfVoigt(v, false), (std::array<double, 9>{1, 8, 6, 8, 2, 4, 6, 4, 3}));
}

TEST(VoigtReussBounds, AreTheVolumeMeansOfStiffnessAndCompliance) {
  // Three colours in unequal shares; colour 2 is one voxel.
  const Grid g{2, 3, 4};
  std::vector<Colour> colours(24, 0);
  for (int i = 0; i < 9; ++i) colours[2 * i + 1] = 1;
  colours[23] = 2;
  const std::vector<Lame> laws = {lameOf(3.0, 0.3), lameOf(70.0, 0.2), lameOf(400.0, 0.1)};
  Problem p(g, colours, laws);
  const double share[3] = {14.0 / 24.0, 9.0 / 24.0, 1.0 / 24.0};
  Matrix6 voigt{}, reuss{};
  for (int c = 0; c < 3; ++c) {
    const Matrix6 stiffness = stiffnessOf(laws[c]);
    for (int j = 0; j < 6; ++j) {
      Vector6 unit{};
      unit[j] = 1.0;
      const Vector6 column = solve(stiffness, unit);
      for (int i = 0; i < 6; ++i) {
        voigt[i][j] += share[c] * stiffness[i][j];
        reuss[i][j] += share[c] * column[i];
      }
    }
  }
  const EffectiveMatrix v = computeVoigtBound(p.materials, p.geometry);
  const EffectiveMatrix r = computeReussBound(p.materials, p.geometry);
  for (int i = 0; i < 6; ++i)
    for (int j = 0; j < 6; ++j) {
      EXPECT_NEAR(v(i, j), voigt[i][j], 1e-12 * 400.0) << i << "," << j;
      EXPECT_NEAR(r(i, j), reuss[i][j], 1e-12) << i << "," << j;
    }
}

}  // namespace
}  // namespace gridmoor
