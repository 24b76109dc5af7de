// Integration points of a voxel (coordinates in the unit cube) with their weights: the main
// rule sets the points per voxel of a field, the hourglass rule the stabilising points.
#pragma once

#include <array>
#include <cstddef>

#include "input/SolverEnums.h"

namespace gridmoor {

struct IntegrationRule {
  // Enough for the full trilinear rule; fixed so that rules live on the stack of the
  // frequency loops and copy without allocation.
  static constexpr std::size_t kMaxPoints = 8;

  std::size_t count = 0;
  std::array<double, kMaxPoints> weights{};
  std::array<std::array<double, 3>, kMaxPoints> points{};

  // One point at the voxel centre, weight 1.
  static IntegrationRule centre();
  // The 2 x 2 x 2 Gauss rule, weights 1/8, points in lexicographic order with the first
  // coordinate slowest.
  static IntegrationRule gauss2x2x2();
  // No points: the hourglass rule of every discretisation without hourglass control.
  static IntegrationRule empty() { return {}; }

  // The rules each discretisation works with. The full trilinear element integrates at the
  // Gauss points; the hourglass-controlled element keeps the reduced centre point for the
  // material and adds the Gauss points as hourglass points; all others have one centre point.
  static IntegrationRule mainRuleFor(GreenOperatorType discretisation);
  static IntegrationRule hourglassRuleFor(GreenOperatorType discretisation);
};

}  // namespace gridmoor
