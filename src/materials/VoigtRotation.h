// Rotation of Voigt-form stiffness and compliance matrices about the x and z axes, and the
// compositions that turn a material by the XZX Euler angles of a voxel's orientation.
#pragma once

#include "materials/VoigtMatrix.h"

namespace gridmoor {

enum class RotationAxis { X, Z };

// Transformation of a strain vector (engineering shear) into a frame turned by angle about
// the axis, i.e. eps' = R^T eps R for the right-handed rotation R(angle). With angle t this
// is the matrix A(t) of the rotation routines.
VoigtMatrix strainRotationMatrix(RotationAxis axis, double angle);
// The same for a stress vector (plain shear): the matrix B(t).
VoigtMatrix stressRotationMatrix(RotationAxis axis, double angle);

// The material turned by R(angle): C' = B(-t) C A(t). The compliance is turned as the inverse
// of that stiffness, D' = A(-t) D B(t), so that D' C' = I holds for every angle.
VoigtMatrix rotateStiffness(const VoigtMatrix& c, RotationAxis axis, double angle);
VoigtMatrix rotateCompliance(const VoigtMatrix& d, RotationAxis axis, double angle);

// The material turned by R = Rx(t1) Rz(t2) Rx(t3): first by t3 about x, then by t2 about z,
// last by t1 about x. Two-angle laws pass t3 = 0, which leaves R = Rx(t1) Rz(t2); a zero
// angle is skipped, so unturned matrices come back bit for bit.
VoigtMatrix rotateStiffnessXZX(const VoigtMatrix& c, double t1, double t2, double t3);
VoigtMatrix rotateComplianceXZX(const VoigtMatrix& d, double t1, double t2, double t3);

// A strain vector (engineering shear) of the material frame expressed in the frame turned by
// R = Rx(t1) Rz(t2) Rx(t3), i.e. eps' = R eps R^T: the rule that goes with rotateComplianceXZX.
void rotateStrainXZX(const double* strainVoigt, double t1, double t2, double t3, double* out);

// Product of two 6x6 matrices.
VoigtMatrix multiply(const VoigtMatrix& p, const VoigtMatrix& q);

}  // namespace gridmoor
