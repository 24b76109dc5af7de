// Eigenvalue range of a material matrix in Mandel form, where the shear rows and columns are
// rescaled so that the 6x6 matrix has the eigenvalues of the fourth-order tensor.
#pragma once

#include "materials/VoigtMatrix.h"

namespace gridmoor {

// Scales rows and columns 3, 4, 5 by shearFactor (0, 1, 2 by 1), takes the real parts of
// the eigenvalues of the general real matrix, and returns the smallest and largest.
void mandelEigenvalueRange(const VoigtMatrix& matrix, double shearFactor, double& minimum,
                           double& maximum);

// A stiffness (engineering shear strains in): shear scaled by sqrt 2; an isotropic law gives
// 2 mu and 3 K.
void stiffnessEigenvalueRange(const VoigtMatrix& stiffness, double& minimum, double& maximum);
// A compliance: shear divided by sqrt 2; an isotropic law gives 1 / (3 K) and 1 / (2 mu).
void complianceEigenvalueRange(const VoigtMatrix& compliance, double& minimum, double& maximum);

}  // namespace gridmoor
