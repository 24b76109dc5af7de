// Closed-form stiffness and compliance matrices of the linear elastic laws, and the dense
// 6x6 inverse by LU factorisation with row pivoting used where no closed form exists.
#pragma once

#include "materials/VoigtMatrix.h"

namespace gridmoor {

struct LameConstants {
  double lambda;
  double mu;
};

// lambda = E nu / ((1 - 2 nu)(1 + nu)), mu = E / ((1 + nu) + (1 + nu)). nu = 0.5 divides by zero
// in lambda; such a law is incompressible and its stiffness is never used.
LameConstants lameConstantsOf(double youngsModulus, double poissonRatio);

// Normal block lambda + 2 mu on the diagonal and lambda off it, shear diagonal mu.
VoigtMatrix isotropicStiffness(double lambda, double mu);
// Normal block 1/E and -nu/E, shear diagonal 2 (1 + nu) / E (engineering shear).
VoigtMatrix isotropicCompliance(double youngsModulus, double poissonRatio);

// Inverse of the isotropic matrix with Lame values (dl, dm), built as the compliance of the
// pseudo-modulus dm (3 dl + 2 dm) / (dl + dm) and Poisson number dl / (2 (dl + dm)). The caller
// must not pass dl + dm = 0: that matrix may well be invertible, but not by this route.
VoigtMatrix isotropicInverseByModuli(double dl, double dm);

// Transversally isotropic about x: E1 along the axis, E2 across it, nu12, nu23, G12.
VoigtMatrix transversalIsotropicStiffness(double e1, double e2, double nu12, double nu23,
                                          double g12);
VoigtMatrix transversalIsotropicCompliance(double e1, double e2, double nu12, double nu23,
                                           double g12);

struct OrthotropicConstants {
  double e1, e2, e3, nu12, nu13, nu23, g12, g13, g23;
};
VoigtMatrix orthotropicCompliance(const OrthotropicConstants& k);
// Normal block by cofactors of the compliance's normal block; shear diagonal G23, G13, G12.
VoigtMatrix orthotropicStiffness(const OrthotropicConstants& k);

// Inverse by LU with partial pivoting. A singular matrix is not detected: its zero pivot
// gives infinite or undefined entries.
VoigtMatrix invertByLU(const VoigtMatrix& m);

}  // namespace gridmoor
