// Helpers of the solver tests: a small problem (geometry, isotropic laws, Green operator,
// planned strain field) and the exact laminate solution computed from the layer stiffnesses.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <sstream>
#include <vector>

#include "input/KeywordsElasticity.h"
#include "materials/IsotropicLinearElasticMaterial.h"
#include "materials/Material.h"
#include "materials/MaterialVector.h"
#include "operators/DiscreteGreenOperator.h"
#include "solvers/NeumannSeries.h"
#include "solvers/StrainStressImage.h"
#include "voxel/Geometry.h"

namespace gridmoor::solver_test {

using Grid = std::array<std::uint64_t, 3>;
using Voigt = std::array<double, 6>;
using Vector6 = std::array<double, 6>;
using Matrix6 = std::array<std::array<double, 6>, 6>;

inline Vector6 multiply(const Matrix6& m, const Vector6& v) {
  Vector6 r{};
  for (int i = 0; i < 6; ++i)
    for (int j = 0; j < 6; ++j) r[i] += m[i][j] * v[j];
  return r;
}

// Solves m x = b by Gauss-Jordan elimination with partial pivoting (plain arrays: Eigen's
// products warn under -march=native with g++ 12).
inline Vector6 solve(Matrix6 m, Vector6 b) {
  for (int k = 0; k < 6; ++k) {
    int p = k;
    for (int r = k + 1; r < 6; ++r)
      if (std::abs(m[r][k]) > std::abs(m[p][k])) p = r;
    std::swap(m[k], m[p]);
    std::swap(b[k], b[p]);
    for (int r = 0; r < 6; ++r) {
      if (r == k) continue;
      const double f = m[r][k] / m[k][k];
      for (int c = k; c < 6; ++c) m[r][c] -= f * m[k][c];
      b[r] -= f * b[k];
    }
  }
  for (int k = 0; k < 6; ++k) b[k] /= m[k][k];
  return b;
}

struct Lame {
  double lambda;
  double mu;
};

inline Lame lameOf(double youngs, double poisson) {
  return {youngs * poisson / ((1 + poisson) * (1 - 2 * poisson)), youngs / (2 * (1 + poisson))};
}

// Voigt stiffness for engineering shear, written out independently of the laws.
inline Matrix6 stiffnessOf(const Lame& m) {
  Matrix6 c{};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) c[i][j] = m.lambda;
    c[i][i] += 2 * m.mu;
    c[i + 3][i + 3] = m.mu;
  }
  return c;
}

// A periodic problem on a grid whose voxels carry colours 0 and 1, with an isotropic law per
// colour, the reference C0 = (Cmin + Cmax) / 2 of the eigenvalue bounds, and a strain field.
struct Problem {
  StaticGeometry geometry;
  KeywordsElasticity keywords;
  MaterialElasticVector materials;
  std::unique_ptr<DiscreteGreenOperator> op;
  std::unique_ptr<StrainImage> field;
  StepContext ctx;

  Problem(const Grid& grid, const std::vector<Colour>& colours, const std::vector<Lame>& laws,
          GreenOperatorType discretisation = GreenOperatorType::Basic) {
    geometry.RealVoxelImage = ColorImage(grid[0], grid[1], grid[2], 0, "RealVoxelImage");
    std::uint64_t i = 0;
    for (std::uint64_t x = 0; x < grid[0]; ++x)
      for (std::uint64_t y = 0; y < grid[1]; ++y)
        for (std::uint64_t z = 0; z < grid[2]; ++z) geometry.RealVoxelImage.at(x, y, z) = colours[i++];
    geometry.RealVoxelImage.collectColors();
    for (std::size_t c = 0; c < laws.size(); ++c) {
      auto* law = new IsotropicLinearElasticMaterial("law" + std::to_string(c), laws[c].lambda,
                                                     laws[c].mu);
      law->colour = static_cast<std::uint32_t>(c);
      materials.addMaterial(static_cast<Colour>(c), std::make_unique<Material>(law, nullptr));
    }
    const GreenOperatorSettings settings =
        GreenOperatorSettings::of(discretisation, FilterType::None, true);
    op = DiscreteGreenOperator::create(settings, grid);
    field = std::make_unique<StrainImage>(settings, grid[0], grid[1], grid[2], "deltaE");
    field->createPlans("Estimate");
    const EigenvalueRange range = materials.getMinMaxEigenvalueStrain(geometry, 0, nullptr);
    ctx.keywords = &keywords;
    ctx.materials = &materials;
    ctx.geometry = &geometry;
    ctx.greenOperator = op.get();
    // The isotropic reference whose eigenvalues all sit midway between the bounds.
    ctx.reference = ReferenceConstants::of(0.0, (range.minOfMinima + range.maxOfMaxima) / 4.0);
  }

  Voigt at(std::uint64_t x, std::uint64_t y, std::uint64_t z, std::uint64_t point = 0) const {
    Voigt v;
    const double* voxel = field->data() + (x - field->firstOffset) * field->planeStride +
                          y * field->rowStride + z * field->nComponents + 6 * point;
    for (int c = 0; c < 6; ++c) v[c] = voxel[c];
    return v;
  }

  // Solves with the Neumann series to a tight tolerance; output is swallowed.
  NeumannResult solve(const MacroscopicLoad& load, double tolerance, int maxIter,
                      RoutineSet set = RoutineSet::Linear) {
    ConvergenceSettings settings;
    settings.tolerance = tolerance;
    settings.maxIter = maxIter;
    std::ostringstream out, err;
    SolverCounters counters;
    NeumannOptions options;
    options.routineSet = set;
    return solveNeumannSeries(*field, ctx, load, options, settings, counters, out, err);
  }
};

// Colours of a laminate: colour 1 where the coordinate along `axis` is below `thickness`.
inline std::vector<Colour> laminateColours(const Grid& grid, int axis, std::uint64_t thickness) {
  std::vector<Colour> colours;
  for (std::uint64_t x = 0; x < grid[0]; ++x)
    for (std::uint64_t y = 0; y < grid[1]; ++y)
      for (std::uint64_t z = 0; z < grid[2]; ++z) {
        const std::uint64_t coord[3] = {x, y, z};
        colours.push_back(coord[axis] < thickness ? 1 : 0);
      }
  return colours;
}

// Voigt slots of the components that carry the layer normal: the normal strain and the two
// shears in planes containing it.
inline std::array<int, 3> normalSlots(int axis) {
  if (axis == 0) return {0, 4, 5};
  if (axis == 1) return {1, 3, 5};
  return {2, 3, 4};
}

// Exact strains of the two layers of a laminate under mean strain `mean`: in-plane strains are
// those of the mean, and on the normal slots the tractions C e agree and the volume average
// is the mean.
struct LaminateStrains {
  Vector6 layer0, layer1;
};

inline LaminateStrains laminateUnderStrain(const Matrix6& c0, const Matrix6& c1, double f1,
                                           int axis, const Vector6& mean) {
  const std::array<int, 3> n = normalSlots(axis);
  Matrix6 a{};
  Vector6 b{};
  // Unknowns: the normal slots of layer 0 (0..2) and of layer 1 (3..5).
  for (int r = 0; r < 3; ++r) {
    a[r][r] = 1.0 - f1;
    a[r][r + 3] = f1;
    b[r] = mean[n[r]];
    double rhs = 0.0;
    for (int k = 0; k < 6; ++k) {
      const bool isNormal = k == n[0] || k == n[1] || k == n[2];
      if (!isNormal) rhs -= (c0[n[r]][k] - c1[n[r]][k]) * mean[k];
    }
    for (int q = 0; q < 3; ++q) {
      a[r + 3][q] = c0[n[r]][n[q]];
      a[r + 3][q + 3] = -c1[n[r]][n[q]];
    }
    b[r + 3] = rhs;
  }
  const Vector6 x = solve(a, b);
  LaminateStrains s{mean, mean};
  for (int q = 0; q < 3; ++q) {
    s.layer0[n[q]] = x[q];
    s.layer1[n[q]] = x[q + 3];
  }
  return s;
}

// The exact laminate stiffness, column by column from the layer strains of unit mean strains.
inline Matrix6 laminateStiffness(const Matrix6& c0, const Matrix6& c1, double f1, int axis) {
  Matrix6 eff{};
  for (int j = 0; j < 6; ++j) {
    Vector6 unit{};
    unit[j] = 1.0;
    const LaminateStrains s = laminateUnderStrain(c0, c1, f1, axis, unit);
    const Vector6 s0 = multiply(c0, s.layer0), s1 = multiply(c1, s.layer1);
    for (int i = 0; i < 6; ++i) eff[i][j] = (1.0 - f1) * s0[i] + f1 * s1[i];
  }
  return eff;
}

// Mean strain of the laminate under mean stress: the effective stiffness inverted.
inline Vector6 laminateMeanStrainUnderStress(const Matrix6& c0, const Matrix6& c1, double f1,
                                             int axis, const Vector6& stress) {
  return solve(laminateStiffness(c0, c1, f1, axis), stress);
}

}  // namespace gridmoor::solver_test
