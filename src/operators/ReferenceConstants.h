// The isotropic reference material as the Green operators read it: its two Lame constants,
// the derived factors of the closed forms, and the stiffness of the hourglass points.
#pragma once

namespace gridmoor {

struct ReferenceConstants {
  double lambda0 = 0.0;
  double mu0 = 0.0;
  // 1 / (4 mu0): the deviatoric factor of the continuous Green operator.
  double inverseFourMu0 = 0.0;
  // (lambda0 + mu0) / (mu0 (lambda0 + 2 mu0)): its volumetric factor.
  double volumetricFactor = 0.0;
  // -1 / (2 mu0): the deviatoric factor of the continuous force operator.
  double minusInverseTwoMu0 = 0.0;
  // Lame constants of the hourglass points (only the hourglass-controlled element uses them).
  double lambdaHourglass = 0.0;
  double muHourglass = 0.0;

  // Captured once per operator call, so that a reference updated between time steps is
  // picked up without any state in the operators. mu0 must be positive for the factors to be
  // finite; the reference selection guarantees it before any operator runs.
  static ReferenceConstants of(double lambda0, double mu0, double lambdaHourglass = 0.0,
                               double muHourglass = 0.0) {
    ReferenceConstants r;
    r.lambda0 = lambda0;
    r.mu0 = mu0;
    r.inverseFourMu0 = 1.0 / (4.0 * mu0);
    r.volumetricFactor = (lambda0 + mu0) / (mu0 * (lambda0 + 2.0 * mu0));
    r.minusInverseTwoMu0 = -1.0 / (2.0 * mu0);
    r.lambdaHourglass = lambdaHourglass;
    r.muHourglass = muHourglass;
    return r;
  }
};

}  // namespace gridmoor
