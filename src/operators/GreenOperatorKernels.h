// The four Green operators, the divergence and the reference stiffness on the values of one
// frequency: closed, unrolled specialised forms and the general form over integration points.
#pragma once

#include <cstddef>

#include "input/SolverEnums.h"
#include "operators/AcousticInverse.h"
#include "operators/ComplexValue.h"
#include "operators/FrequencyVectors.h"
#include "operators/IntegrationRule.h"
#include "operators/KernelInline.h"
#include "operators/ReferenceConstants.h"

namespace gridmoor {

// Values per point of the symmetric tensors (Voigt order 11, 22, 33, 23, 13, 12) and of
// the force vector.
inline constexpr std::size_t kTensorComponents = 6;
inline constexpr std::size_t kForceComponents = 3;

// sigma = C0 epsilon: engineering shear in, plain shear out.
GRIDMOOR_HOT inline void applyReferenceStiffness(const ReferenceConstants& r,
                                                 const ComplexValue* strain, ComplexValue* stress) {
  const ComplexValue trace = strain[0] + strain[1] + strain[2];
  const double twoMu = 2.0 * r.mu0;
  for (std::size_t c = 0; c < 3; ++c) stress[c] = r.lambda0 * trace + twoMu * strain[c];
  for (std::size_t c = 3; c < 6; ++c) stress[c] = r.mu0 * strain[c];
}

// f = B^H tau for the discrete symmetric gradient B of vector k: the divergence of a
// stress-like tensor without its minus sign. conj(k_j) tau_ij summed over j; the staggered
// gradient takes -k_i tau_ii for the normal term. T is a complex value, or lanes holding the
// complex values of several frequencies.
template <bool Staggered, class T>
GRIDMOOR_HOT inline void transposedGradientOf(const T k[3], const T* tau, T f[3]) {
  const T kc[3] = {conj(k[0]), conj(k[1]), conj(k[2])};
  T normal[3];
  for (std::size_t i = 0; i < 3; ++i) {
    if constexpr (Staggered)
      normal[i] = -(k[i] * tau[i]);
    else
      normal[i] = kc[i] * tau[i];
  }
  // Shear components: 3 = (1, 2), 4 = (0, 2), 5 = (0, 1).
  f[0] = normal[0] + kc[1] * tau[5] + kc[2] * tau[4];
  f[1] = normal[1] + kc[0] * tau[5] + kc[2] * tau[3];
  f[2] = normal[2] + kc[0] * tau[4] + kc[1] * tau[3];
}

template <bool Staggered>
GRIDMOOR_HOT inline void transposedGradient(const double kr[3], const double ki[3],
                                            const ComplexValue* tau, ComplexValue f[3]) {
  const ComplexValue k[3] = {{kr[0], ki[0]}, {kr[1], ki[1]}, {kr[2], ki[2]}};
  transposedGradientOf<Staggered>(k, tau, f);
}

// epsilon = B w, engineering shear: k_i w_i on the diagonal (-conj(k_i) w_i for the
// staggered gradient), k_i w_j + k_j w_i on the shear components.
template <bool Staggered, class T>
GRIDMOOR_HOT inline void symmetricGradientOf(const T k[3], const T w[3], T* strain) {
  for (std::size_t i = 0; i < 3; ++i) {
    if constexpr (Staggered)
      strain[i] = -(conj(k[i]) * w[i]);
    else
      strain[i] = k[i] * w[i];
  }
  strain[3] = k[1] * w[2] + k[2] * w[1];
  strain[4] = k[0] * w[2] + k[2] * w[0];
  strain[5] = k[0] * w[1] + k[1] * w[0];
}

template <bool Staggered>
GRIDMOOR_HOT inline void symmetricGradient(const double kr[3], const double ki[3],
                                           const ComplexValue w[3], ComplexValue* strain) {
  const ComplexValue k[3] = {{kr[0], ki[0]}, {kr[1], ki[1]}, {kr[2], ki[2]}};
  symmetricGradientOf<Staggered>(k, w, strain);
}

// ---- Specialised forms: one point, no filter. ------------------------------------------

// -Gamma0 tau of "Basic" at xi = (x0, x1, x2) in place, with p = 1 / (2 mu0 |xi|^2) and
// q = (lambda0 + mu0) / (mu0 (lambda0 + 2 mu0) |xi|^4). With k = i xi the operator is real:
// -[(xi_i t_j + xi_j t_i) / (2 mu0 |xi|^2) - q xi_i xi_j (xi . t)], t_i = xi_j tau_ij, so it
// acts on real and imaginary parts alike. T is the values' type (a complex value, or lanes
// holding the parts of several frequencies), S that of x2, p and q (a number, or lanes).
template <class T, class S>
GRIDMOOR_HOT inline void basicGamma0(double x0, double x1, const S& x2, const S& p, const S& q,
                                     T* tau) {
  const T t0 = x0 * tau[0] + x1 * tau[5] + x2 * tau[4];
  const T t1 = x0 * tau[5] + x1 * tau[1] + x2 * tau[3];
  const T t2 = x0 * tau[4] + x1 * tau[3] + x2 * tau[2];
  const T v = q * (x0 * t0 + x1 * t1 + x2 * t2);
  const T a0 = p * t0, a1 = p * t1, a2 = p * t2;
  tau[0] = x0 * x0 * v - 2.0 * x0 * a0;
  tau[1] = x1 * x1 * v - 2.0 * x1 * a1;
  tau[2] = x2 * x2 * v - 2.0 * x2 * a2;
  tau[3] = 2.0 * (x1 * x2 * v - x1 * a2 - x2 * a1);
  tau[4] = 2.0 * (x0 * x2 * v - x0 * a2 - x2 * a0);
  tau[5] = 2.0 * (x0 * x1 * v - x0 * a1 - x1 * a0);
}

// -Gamma0 tau of "StaggeredGrid" at vector k in place: B^H, the inverse of the acoustic
// tensor (staggeredAcousticInverse) and B, negated. R is the type of its real factors.
template <class T, class R>
GRIDMOOR_HOT inline void staggeredGamma0(const T k[3], const R& diagonal, const R& rankOne,
                                         T* tau) {
  T f[3], w[3];
  transposedGradientOf<true>(k, tau, f);
  staggeredAcousticInverse(k, diagonal, rankOne, f, w);
  symmetricGradientOf<true>(k, w, tau);
  for (std::size_t c = 0; c < kTensorComponents; ++c) tau[c] = -tau[c];
}

// In place: tau (stress-like) becomes -Gamma0 tau (strain-like).
template <GreenOperatorType V>
GRIDMOOR_HOT inline void Gamma0OperatorSpecialized(const FrequencyState& s,
                                                   const ReferenceConstants& r, ComplexValue* tau) {
  if constexpr (V == GreenOperatorType::Basic) {
    const double* xi = s.kIm[0];
    const double S = s.ii[0][0] + s.ii[1][1] + s.ii[2][2];
    basicGamma0(xi[0], xi[1], xi[2], 2.0 * r.inverseFourMu0 / S, r.volumetricFactor / (S * S),
                tau);
  } else {
    constexpr bool staggered = isStaggered(V);
    ComplexValue f[3], w[3];
    transposedGradient<staggered>(s.kRe[0], s.kIm[0], tau, f);
    applyAcousticInverse<V>(s, r, f, w);
    symmetricGradient<staggered>(s.kRe[0], s.kIm[0], w, tau);
    for (std::size_t c = 0; c < kTensorComponents; ++c) tau[c] = -tau[c];
  }
}

// Adds -B G force (strain-like) to strain.
template <GreenOperatorType V>
GRIDMOOR_HOT inline void Psi0OperatorSpecialized(const FrequencyState& s,
                                                 const ReferenceConstants& r,
                                                 const ComplexValue force[3],
                                                 ComplexValue* strain) {
  if constexpr (V == GreenOperatorType::Basic) {
    // The operator is i M with the real 6 x 3 matrix M of entries
    // c xi_p xi_q xi_i / |xi|^4 - (delta_pi xi_q + delta_qi xi_p) / (2 mu |xi|^2), shear
    // rows doubled: the real part takes -M f_im, the imaginary part M f_re.
    const double* xi = s.kIm[0];
    const double S = s.ii[0][0] + s.ii[1][1] + s.ii[2][2];
    const double c = r.volumetricFactor / (S * S);
    const double d = r.minusInverseTwoMu0 / S;
    // M f for f = (re, im) at once: the same real matrix acts on both parts.
    const ComplexValue xf = c * (xi[0] * force[0] + xi[1] * force[1] + xi[2] * force[2]);
    const ComplexValue df[3] = {d * force[0], d * force[1], d * force[2]};
    ComplexValue m[6];
    for (std::size_t i = 0; i < 3; ++i) m[i] = s.ii[i][i] * xf + 2.0 * xi[i] * df[i];
    m[3] = 2.0 * (s.ii[1][2] * xf + xi[2] * df[1] + xi[1] * df[2]);
    m[4] = 2.0 * (s.ii[0][2] * xf + xi[2] * df[0] + xi[0] * df[2]);
    m[5] = 2.0 * (s.ii[0][1] * xf + xi[1] * df[0] + xi[0] * df[1]);
    for (std::size_t k = 0; k < kTensorComponents; ++k)
      strain[k] += ComplexValue{-m[k].im, m[k].re};
  } else {
    constexpr bool staggered = isStaggered(V);
    ComplexValue w[3], e[kTensorComponents];
    applyAcousticInverse<V>(s, r, force, w);
    symmetricGradient<staggered>(s.kRe[0], s.kIm[0], w, e);
    for (std::size_t c = 0; c < kTensorComponents; ++c) strain[c] += -e[c];
  }
}

// In place: tau (strain-like) becomes -(C0 - C0 Gamma0 C0) tau (stress-like).
template <GreenOperatorType V>
GRIDMOOR_HOT inline void Delta0OperatorSpecialized(const FrequencyState& s,
                                                   const ReferenceConstants& r, ComplexValue* tau) {
  ComplexValue u[kTensorComponents];
  applyReferenceStiffness(r, tau, u);
  ComplexValue g[kTensorComponents];
  for (std::size_t c = 0; c < kTensorComponents; ++c) g[c] = u[c];
  Gamma0OperatorSpecialized<V>(s, r, g);
  applyReferenceStiffness(r, g, tau);
  for (std::size_t c = 0; c < kTensorComponents; ++c) tau[c] = -tau[c] - u[c];
}

// Adds C0 (-B G force) (stress-like) to stress.
template <GreenOperatorType V>
GRIDMOOR_HOT inline void Omega0OperatorSpecialized(const FrequencyState& s,
                                                   const ReferenceConstants& r,
                                                   const ComplexValue force[3],
                                                   ComplexValue* stress) {
  ComplexValue e[kTensorComponents] = {};
  Psi0OperatorSpecialized<V>(s, r, force, e);
  ComplexValue c0e[kTensorComponents];
  applyReferenceStiffness(r, e, c0e);
  for (std::size_t c = 0; c < kTensorComponents; ++c) stress[c] += c0e[c];
}

// ---- General forms: any number of points, the hourglass points, one alias at a time. ---

// f = -sum over points of w_p B_p^H tau_p: the force balancing the stress-like tensors of
// all points, as the discretisation measures divergence.
template <GreenOperatorType V>
GRIDMOOR_HOT inline void getDivergenceInFourierSpace(const FrequencyState& s,
                                                     const IntegrationRule& mainRule,
                                                     const ComplexValue* tau,
                                                     ComplexValue force[3]) {
  force[0] = force[1] = force[2] = ComplexValue{};
  for (std::size_t p = 0; p < mainRule.count; ++p) {
    ComplexValue f[3];
    transposedGradient<isStaggered(V)>(s.kRe[p], s.kIm[p], tau + p * kTensorComponents, f);
    for (std::size_t i = 0; i < 3; ++i) force[i] += -mainRule.weights[p] * f[i];
  }
}

// out_p = -B_p G sum_q w_q B_q^H tau_q at every main point.
template <GreenOperatorType V>
GRIDMOOR_HOT inline void Gamma0Operator(const FrequencyState& s, const IntegrationRule& mainRule,
                                        const HermitianMatrix3& g, const ComplexValue* tau,
                                        ComplexValue* out) {
  ComplexValue f[3], w[3];
  getDivergenceInFourierSpace<V>(s, mainRule, tau, f);
  // The divergence carries the minus sign that the operator also has: G f = -G B^H tau.
  applyHermitian(g, f, w);
  for (std::size_t p = 0; p < mainRule.count; ++p)
    symmetricGradient<isStaggered(V)>(s.kRe[p], s.kIm[p], w, out + p * kTensorComponents);
}

// out_p = -B_p G force at every main point.
template <GreenOperatorType V>
GRIDMOOR_HOT inline void Psi0Operator(const FrequencyState& s, const IntegrationRule& mainRule,
                                      const HermitianMatrix3& g, const ComplexValue force[3],
                                      ComplexValue* out) {
  ComplexValue w[3];
  applyHermitian(g, force, w);
  for (std::size_t i = 0; i < 3; ++i) w[i] = -w[i];
  for (std::size_t p = 0; p < mainRule.count; ++p)
    symmetricGradient<isStaggered(V)>(s.kRe[p], s.kIm[p], w, out + p * kTensorComponents);
}

// out = -(C0 - C0 Gamma0 C0) tau at every main point; `work` holds as many values as tau.
template <GreenOperatorType V>
GRIDMOOR_HOT inline void Delta0Operator(const FrequencyState& s, const IntegrationRule& mainRule,
                                        const ReferenceConstants& r, const HermitianMatrix3& g,
                                        const ComplexValue* tau, ComplexValue* work,
                                        ComplexValue* out) {
  for (std::size_t p = 0; p < mainRule.count; ++p)
    applyReferenceStiffness(r, tau + p * kTensorComponents, work + p * kTensorComponents);
  Gamma0Operator<V>(s, mainRule, g, work, out);
  for (std::size_t p = 0; p < mainRule.count; ++p) {
    ComplexValue c0g[kTensorComponents];
    ComplexValue* o = out + p * kTensorComponents;
    applyReferenceStiffness(r, o, c0g);
    for (std::size_t c = 0; c < kTensorComponents; ++c)
      o[c] = -c0g[c] - work[p * kTensorComponents + c];
  }
}

// out = C0 (-B_p G force) at every main point.
template <GreenOperatorType V>
GRIDMOOR_HOT inline void Omega0Operator(const FrequencyState& s, const IntegrationRule& mainRule,
                                        const ReferenceConstants& r, const HermitianMatrix3& g,
                                        const ComplexValue force[3], ComplexValue* out) {
  Psi0Operator<V>(s, mainRule, g, force, out);
  for (std::size_t p = 0; p < mainRule.count; ++p) {
    ComplexValue e[kTensorComponents];
    ComplexValue* o = out + p * kTensorComponents;
    for (std::size_t c = 0; c < kTensorComponents; ++c) e[c] = o[c];
    applyReferenceStiffness(r, e, o);
  }
}

}  // namespace gridmoor
