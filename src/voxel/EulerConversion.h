// Euler angles to rotation matrix and back for the repeated-axis conventions, coded by
// initial axis, parity, repetition and frame bits; the orientation reader turns ZXZ into XZX.
#pragma once

#include <array>

namespace gridmoor {

using RotationMatrix = std::array<std::array<double, 3>, 3>;
using EulerTriple = std::array<double, 3>;

// Convention codes: bit 0 frame, bit 1 repetition, bit 2 parity, bits 3 and 4 the initial
// axis (X, Y, Z = 0, 1, 2). Only repeated conventions with frame bit 0 are used.
constexpr int eulerZXZ = 0x12;  // axes (i, j, k) = (2, 0, 1), even parity
constexpr int eulerXZX = 0x06;  // axes (i, j, k) = (0, 2, 1), odd parity

RotationMatrix eulerToMatrix(const EulerTriple& angles, int convention);
EulerTriple matrixToEuler(const RotationMatrix& m, int convention);

// The same rotation, ZXZ angles in, XZX angles out (radians).
EulerTriple convertZXZToXZX(const EulerTriple& zxz);

}  // namespace gridmoor
