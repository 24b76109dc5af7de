// The mean strain of a step under a stress or mixed load: the macroscopic relation between
// the isotropic reference, the mean polarization of the spectrum and the load, in the load's frame.
#pragma once

#include <array>

#include "operators/ReferenceConstants.h"
#include "solvers/StepContext.h"

namespace gridmoor {

// C0 e for an isotropic reference, strain with engineering shear, stress with plain shear.
inline void applyIsotropicStiffness(const ReferenceConstants& r, const double* e, double* s) {
  const double volumetric = r.lambda0 * (e[0] + e[1] + e[2]);
  for (int i = 0; i < 3; ++i) s[i] = volumetric + 2.0 * r.mu0 * e[i];
  for (int i = 3; i < 6; ++i) s[i] = r.mu0 * e[i];
}

// Rotation of symmetric tensors between the global frame and the load's frame, through the
// table T_ijkl = R_ik R_jl: x' = T : x forwards, x = T^T : x' backwards.
class LoadFrame {
 public:
  explicit LoadFrame(const std::array<double, 9>& rotation);
  // Voigt vectors; `engineeringShear` says whether shear slots hold twice the tensor value.
  std::array<double, 6> toLoadFrame(const std::array<double, 6>& v, bool engineeringShear) const;
  std::array<double, 6> toGlobalFrame(const std::array<double, 6>& v, bool engineeringShear) const;

 private:
  std::array<double, 6> apply(const std::array<double, 6>& v, bool engineeringShear,
                              bool forwards) const;
  double table_[3][3][3][3];
};

// The mean strain (global frame, engineering shear) that satisfies the load: components
// prescribed as strain take the load value, and on the components prescribed as stress
// C0 E + meanPolarization equals the load. meanPolarization is a stress in the global frame;
// with a pure strain load it is not used and no rotation takes place.
std::array<double, 6> solveMacroscopicStrain(const MacroscopicLoad& load,
                                             const std::array<double, 6>& meanPolarization,
                                             const ReferenceConstants& reference);

}  // namespace gridmoor
