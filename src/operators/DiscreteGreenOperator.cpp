#include "operators/DiscreteGreenOperator.h"

#include <omp.h>

#include <cstddef>
#include <string>
#include <vector>

#include "common/Fatal.h"
#include "operators/ComplexValue.h"
#include "operators/GreenOperatorKernels.h"
#include "operators/FrequencyFilter.h"

namespace gridmoor {

namespace {

using Index = std::uint64_t;
constexpr std::size_t kMaxValues = kTensorComponents * IntegrationRule::kMaxPoints;

// Runs row(s, i, j, rowFrequency) over the rows (i, j) of the half spectrum of this process,
// OpenMP static over the first axis, s being the thread's FrequencyState, and returns the sum
// of what the rows return. rowFrequency numbers the row's first frequency in memory order: a
// field with c values per voxel holds frequency f's values from 2 c f on.
template <class Row>
double spectrumRows(const FFTImage& field, const AxisTables& tables, const Row& row) {
  const Index nSecond = field.nSecond;
  const Index nHalf = field.nThird / 2 + 1;
  double sum = 0.0;
#pragma omp parallel reduction(+ : sum)
  {
    FrequencyState s;
    s.h = tables.voxelLength();
    const IndexRange range = field.threadFirstRange();
    for (Index i = range.begin; i < range.end; ++i)
      for (Index j = 0; j < nSecond; ++j)
        sum += row(s, i, j, ((i - field.firstOffset) * nSecond + j) * nHalf);
  }
  return sum;
}

// The planes of the half spectrum without a conjugate twin in it, which count once in a sum
// over the whole spectrum, are those of inner index 0 and this one (the Nyquist plane of an
// even axis; 0 again for an odd one).
inline Index lastSingleIndex(const FFTImage& field) {
  return field.nThird % 2 == 0 ? field.nThird / 2 : 0;
}

// Runs body(state, i, j, l, frequency) over the frequencies of this process (see
// spectrumRows). Each axis level takes its factors when it is entered, so the work that holds
// for the inner levels is done once there. The body returns the weighted squared modulus of
// what it wrote; the loop sums those with the multiplicity of the half spectrum's plane and
// returns the sum.
template <GreenOperatorType V, bool Tables, class Body>
double frequencyLoop(const FFTImage& field, const AxisTables& tables,
                     const IntegrationRule& mainRule, const IntegrationRule& hourglassRule,
                     bool skipZero, const Body& body) {
  const Index nHalf = field.nThird / 2 + 1;
  const Index lastSingle = lastSingleIndex(field);
  return spectrumRows(field, tables, [&](FrequencyState& s, Index i, Index j, Index rowFrequency) {
    double single = 0.0;
    double twinned = 0.0;
    enterAxis<V, Tables>(s, 0, tables.at(0, 0, i));
    enterAxis<V, Tables>(s, 1, tables.at(1, 0, j));
    for (Index l = 0; l < nHalf; ++l) {
      if (skipZero && i == 0 && j == 0 && l == 0) continue;
      enterAxis<V, Tables>(s, 2, tables.at(2, 0, l));
      computeGradientVectors<V, Tables>(s, mainRule, hourglassRule);
      const double squares = body(s, i, j, l, rowFrequency + l);
      if (l == 0 || l == lastSingle)
        single += squares;
      else
        twinned += squares;
    }
    return single + 2.0 * twinned;
  });
}

// Two frequencies' values of one component as one vector: re and im of frequency l, then
// those of frequency l + 1. As factors of real operators the lanes hold (a, a, b, b).
using Pair2 = double __attribute__((vector_size(32)));
using LaneMask = long long __attribute__((vector_size(32)));

// The same lanes as two complex numbers, for the operators with complex vectors.
struct ComplexPair {
  Pair2 v;
};
// Arguments by reference: a 32-byte vector passed by value changes the calling convention
// between builds with and without AVX.
GRIDMOOR_HOT inline ComplexPair operator+(const ComplexPair& a, const ComplexPair& b) {
  return {a.v + b.v};
}
GRIDMOOR_HOT inline ComplexPair operator-(const ComplexPair& a) { return {-a.v}; }
GRIDMOOR_HOT inline ComplexPair operator*(const Pair2& real, const ComplexPair& a) {
  return {real * a.v};
}
GRIDMOOR_HOT inline ComplexPair operator*(const ComplexPair& a, const ComplexPair& b) {
  const Pair2 bRe = __builtin_shuffle(b.v, LaneMask{0, 0, 2, 2});
  const Pair2 bIm = __builtin_shuffle(b.v, LaneMask{1, 1, 3, 3});
  const Pair2 aSwapped = __builtin_shuffle(a.v, LaneMask{1, 0, 3, 2});
  return {a.v * bRe + aSwapped * bIm * Pair2{-1.0, 1.0, -1.0, 1.0}};
}
GRIDMOOR_HOT inline ComplexPair conj(const ComplexPair& a) {
  return {a.v * Pair2{1.0, -1.0, 1.0, -1.0}};
}

// A closed Gamma0 on whole rows, without the per-frequency state, two frequencies at a time
// in one vector per component; rowKernel(i, j) gives the kernel of row (i, j), which takes
// the first inner index l of the pair and the six values, scaled by the pass, in place (when
// l + 1 is past the row, the second lanes are a dummy with the inner axis's factors of index
// nHalf). Both the Neumann series and the Krylov methods run it once per iteration; the
// per-frequency form took two to three times as long.
template <class RowKernel>
double closedGamma0Rows(FFTImage& field, const SpectrumPass& pass, const AxisTables& tables,
                        const RowKernel& rowKernel) {
  constexpr Index kValues = 2 * kTensorComponents;
  const Index nHalf = field.nThird / 2 + 1;
  const Index lastSingle = lastSingleIndex(field);
  std::vector<double> multiplicity(nHalf + 1, 0.0);
  for (Index l = 0; l < nHalf; ++l) multiplicity[l] = (l == 0 || l == lastSingle) ? 1.0 : 2.0;
  double* data = field.data();
  const double scale = pass.scale;
  const double* weights = pass.normWeights;
  return spectrumRows(field, tables, [&](FrequencyState&, Index i, Index j, Index rowFrequency) {
    const auto kernel = rowKernel(i, j);
    double* row = data + rowFrequency * kValues;
    double sum = 0.0;
    double dummy[kValues] = {};
    // The zero frequency keeps its values: the solver sets the mean there.
    for (Index l = (i == 0 && j == 0) ? 1 : 0; l < nHalf; l += 2) {
      double* f = row + kValues * l;
      double* g = l + 1 < nHalf ? f + kValues : dummy;
      Pair2 out[6];
      for (Index c = 0; c < kTensorComponents; ++c)
        out[c] = scale * Pair2{f[2 * c], f[2 * c + 1], g[2 * c], g[2 * c + 1]};
      kernel(l, out);
      for (Index c = 0; c < kTensorComponents; ++c) {
        f[2 * c] = out[c][0];
        f[2 * c + 1] = out[c][1];
        g[2 * c] = out[c][2];
        g[2 * c + 1] = out[c][3];
      }
      if (weights) {
        Pair2 squares = {};
        for (Index c = 0; c < kTensorComponents; ++c) squares += weights[c] * out[c] * out[c];
        sum += multiplicity[l] * (squares[0] + squares[1]) +
               multiplicity[l + 1] * (squares[2] + squares[3]);
      }
    }
    return sum;
  });
}

// "Basic": the operator is real in xi, so it acts on real and imaginary parts alike.
double basicGamma0Rows(FFTImage& field, const AxisTables& tables, const ReferenceConstants& r,
                       const SpectrumPass& pass) {
  const Index nHalf = field.nThird / 2 + 1;
  std::vector<double> xiInner(nHalf + 1, 1.0);
  for (Index l = 0; l < nHalf; ++l) xiInner[l] = tables.at(2, 0, l).xi;
  const double halfInverseMu0 = 2.0 * r.inverseFourMu0;
  return closedGamma0Rows(field, pass, tables, [&](Index i, Index j) {
    const double x0 = tables.at(0, 0, i).xi;
    const double x1 = tables.at(1, 0, j).xi;
    const double outer = x0 * x0 + x1 * x1;
    return [&xiInner, &r, halfInverseMu0, x0, x1, outer](Index l, Pair2* values) {
      const double xa = xiInner[l], xb = xiInner[l + 1];
      const double sa = 1.0 / (outer + xa * xa), sb = 1.0 / (outer + xb * xb);
      const Pair2 p = halfInverseMu0 * Pair2{sa, sa, sb, sb};
      const Pair2 q = r.volumetricFactor * Pair2{sa * sa, sa * sa, sb * sb, sb * sb};
      basicGamma0(x0, x1, Pair2{xa, xa, xb, xb}, p, q, values);
    };
  });
}

// "StaggeredGrid": complex vectors; the inner axis's factors are read once per call.
double staggeredGamma0Rows(FFTImage& field, const AxisTables& tables,
                           const ReferenceConstants& r, const SpectrumPass& pass) {
  const Index nHalf = field.nThird / 2 + 1;
  std::vector<double> re(nHalf + 1, 1.0), im(nHalf + 1, 0.0);
  for (Index l = 0; l < nHalf; ++l) {
    re[l] = tables.at(2, 0, l).re;
    im[l] = tables.at(2, 0, l).im;
  }
  const double inverseMu0 = 4.0 * r.inverseFourMu0;
  return closedGamma0Rows(field, pass, tables, [&](Index i, Index j) {
    const AxisFactor& a0 = tables.at(0, 0, i);
    const AxisFactor& a1 = tables.at(1, 0, j);
    const double outer = a0.re * a0.re + a0.im * a0.im + a1.re * a1.re + a1.im * a1.im;
    const ComplexPair k0{Pair2{a0.re, a0.im, a0.re, a0.im}};
    const ComplexPair k1{Pair2{a1.re, a1.im, a1.re, a1.im}};
    return [&re, &im, &r, inverseMu0, outer, k0, k1](Index l, Pair2* values) {
      const double sa = 1.0 / (outer + re[l] * re[l] + im[l] * im[l]);
      const double sb = 1.0 / (outer + re[l + 1] * re[l + 1] + im[l + 1] * im[l + 1]);
      const Pair2 diagonal = inverseMu0 * Pair2{sa, sa, sb, sb};
      const Pair2 rankOne = -r.volumetricFactor * Pair2{sa * sa, sa * sa, sb * sb, sb * sb};
      const ComplexPair k[3] = {k0, k1, {Pair2{re[l], im[l], re[l + 1], im[l + 1]}}};
      ComplexPair tau[6];
      for (Index c = 0; c < kTensorComponents; ++c) tau[c] = {values[c]};
      staggeredGamma0(k, diagonal, rankOne, tau);
      for (Index c = 0; c < kTensorComponents; ++c) values[c] = tau[c].v;
    };
  });
}

GRIDMOOR_HOT inline void load(const double* d, std::size_t count, ComplexValue* values) {
  for (std::size_t c = 0; c < count; ++c) values[c] = {d[2 * c], d[2 * c + 1]};
}

GRIDMOOR_HOT inline void store(const ComplexValue* values, std::size_t count, double* d) {
  for (std::size_t c = 0; c < count; ++c) {
    d[2 * c] = values[c].re;
    d[2 * c + 1] = values[c].im;
  }
}

GRIDMOOR_HOT inline void clear(ComplexValue* values, std::size_t count) {
  for (std::size_t c = 0; c < count; ++c) values[c] = {};
}

// sum_c weight[c] |d_c|^2 over the complex values at d, 0 without weights.
GRIDMOOR_HOT inline double weightedSquares(const double* d, std::size_t count,
                                           const double* weights) {
  if (!weights) return 0.0;
  double s = 0.0;
  for (std::size_t c = 0; c < count; ++c)
    s += weights[c] * (d[2 * c] * d[2 * c] + d[2 * c + 1] * d[2 * c + 1]);
  return s;
}

// Writes the operator's result times the pass's scale and measures what it wrote.
GRIDMOOR_HOT inline double storeScaled(const ComplexValue* values, std::size_t count, double* d,
                                       const SpectrumPass& pass) {
  const double f = pass.scale;
  for (std::size_t c = 0; c < count; ++c) {
    d[2 * c] = f * values[c].re;
    d[2 * c + 1] = f * values[c].im;
  }
  return weightedSquares(d, count, pass.normWeights);
}

// Adds the force operator's result times the pass's scale and measures the sum.
GRIDMOOR_HOT inline double addScaled(const ComplexValue* values, std::size_t count, double* d,
                                     const SpectrumPass& pass) {
  const double f = pass.scale;
  for (std::size_t c = 0; c < count; ++c) {
    d[2 * c] += f * values[c].re;
    d[2 * c + 1] += f * values[c].im;
  }
  return weightedSquares(d, count, pass.normWeights);
}

// The divergence is the same in both forms: the weighted sum over the main points.
template <GreenOperatorType V>
void divergenceLoop(FFTImage& field, const AxisTables& tables, const IntegrationRule& mainRule,
                    const IntegrationRule& hourglassRule) {
  const std::size_t values = kTensorComponents * mainRule.count;
  double* data = field.data();
  frequencyLoop<V, false>(field, tables, mainRule, hourglassRule, false,
                          [&](const FrequencyState& s, Index, Index, Index, Index frequency) {
                            double* d = data + frequency * 2 * values;
                            ComplexValue tau[kMaxValues];
                            load(d, values, tau);
                            ComplexValue force[kMaxValues] = {};
                            getDivergenceInFourierSpace<V>(s, mainRule, tau, force);
                            store(force, values, d);
                            return 0.0;
                          });
}

// The closed forms: one point, no filter; product tables on.
template <GreenOperatorType V>
class SpecializedGreenOperator final : public DiscreteGreenOperator {
 public:
  SpecializedGreenOperator(const GreenOperatorSettings& settings,
                           const std::array<std::uint64_t, 3>& grid)
      : DiscreteGreenOperator(settings, grid, true) {}

  double applyGamma0(FFTImage& tensor, const ReferenceConstants& r,
                     const SpectrumPass& pass) const override {
    if constexpr (V == GreenOperatorType::Basic) {
      checkTensorField(tensor);
      return basicGamma0Rows(tensor, tables_, r, pass);
    } else if constexpr (V == GreenOperatorType::StaggeredGrid) {
      checkTensorField(tensor);
      return staggeredGamma0Rows(tensor, tables_, r, pass);
    } else {
      return tensorLoop(tensor, pass, [&](const FrequencyState& s, ComplexValue* tau) {
        Gamma0OperatorSpecialized<V>(s, r, tau);
      });
    }
  }

  double applyDelta0(FFTImage& tensor, const ReferenceConstants& r,
                     const SpectrumPass& pass) const override {
    return tensorLoop(tensor, pass, [&](const FrequencyState& s, ComplexValue* tau) {
      Delta0OperatorSpecialized<V>(s, r, tau);
    });
  }

  double applyPsi0(const FFTImage& force, FFTImage& strain, const ReferenceConstants& r,
                   const SpectrumPass& pass) const override {
    return forceLoop(force, strain, pass,
                     [&](const FrequencyState& s, const ComplexValue* f, ComplexValue* e) {
                       Psi0OperatorSpecialized<V>(s, r, f, e);
                     });
  }

  double applyOmega0(const FFTImage& force, FFTImage& stress, const ReferenceConstants& r,
                     const SpectrumPass& pass) const override {
    return forceLoop(force, stress, pass,
                     [&](const FrequencyState& s, const ComplexValue* f, ComplexValue* e) {
                       Omega0OperatorSpecialized<V>(s, r, f, e);
                     });
  }

  void applyDivergence(FFTImage& tensor) const override {
    checkTensorField(tensor);
    divergenceLoop<V>(tensor, tables_, settings_.mainRule, settings_.hourglassRule);
  }

 private:
  template <class Body>
  double loop(const FFTImage& field, const Body& body) const {
    return frequencyLoop<V, true>(field, tables_, settings_.mainRule, settings_.hourglassRule,
                                  true, body);
  }

  // kernel(state, tau) in place on each frequency's tensor, written back scaled.
  template <class Kernel>
  double tensorLoop(FFTImage& tensor, const SpectrumPass& pass, const Kernel& kernel) const {
    checkTensorField(tensor);
    double* data = tensor.data();
    return loop(tensor, [&](const FrequencyState& s, Index, Index, Index, Index frequency) {
      double* d = data + frequency * 2 * kTensorComponents;
      ComplexValue tau[kTensorComponents];
      load(d, kTensorComponents, tau);
      kernel(s, tau);
      return storeScaled(tau, kTensorComponents, d, pass);
    });
  }

  // kernel(state, force, out) adds to a zeroed tensor, which is added scaled to the field.
  template <class Kernel>
  double forceLoop(const FFTImage& force, FFTImage& tensor, const SpectrumPass& pass,
                   const Kernel& kernel) const {
    checkForceField(force, tensor);
    const double* in = force.data();
    double* out = tensor.data();
    return loop(tensor, [&](const FrequencyState& s, Index, Index, Index, Index frequency) {
      ComplexValue f[kForceComponents];
      load(in + frequency * 2 * kForceComponents, kForceComponents, f);
      ComplexValue e[kTensorComponents] = {};
      kernel(s, f, e);
      return addScaled(e, kTensorComponents, out + frequency * 2 * kTensorComponents, pass);
    });
  }
};

// The general form: any number of points, hourglass points, filters. G is inverted as a
// 3 x 3 complex matrix at each frequency (and at each alias of the non-consistent filter).
template <GreenOperatorType V>
class GeneralGreenOperator final : public DiscreteGreenOperator {
 public:
  GeneralGreenOperator(const GreenOperatorSettings& settings,
                       const std::array<std::uint64_t, 3>& grid)
      : DiscreteGreenOperator(settings, grid, false),
        aliasCount_(settings.filter == FilterType::NonConsistent ? kAliasTriples.size() : 1) {}

  double applyGamma0(FFTImage& tensor, const ReferenceConstants& r,
                     const SpectrumPass& pass) const override {
    checkTensorField(tensor);
    const std::size_t values = valuesPerVoxel();
    double* data = tensor.data();
    return loop(tensor, [&](const FrequencyState& s, Index i, Index j, Index l, Index frequency) {
      double* d = data + frequency * 2 * values;
      ComplexValue tau[kMaxValues], result[kMaxValues], alias[kMaxValues];
      load(d, values, tau);
      clear(result, values);
      forEachAlias(s, i, j, l, [&](const FrequencyState& a, double filter) {
        HermitianMatrix3 g;
        generalAcousticInverse<V>(a, mainRule(), hourglassRule(), r, g);
        Gamma0Operator<V>(a, mainRule(), g, tau, alias);
        applyFilter(filter, alias, values, result);
      });
      return storeScaled(result, values, d, pass);
    });
  }

  double applyDelta0(FFTImage& tensor, const ReferenceConstants& r,
                     const SpectrumPass& pass) const override {
    checkTensorField(tensor);
    const std::size_t values = valuesPerVoxel();
    double* data = tensor.data();
    return loop(tensor, [&](const FrequencyState& s, Index i, Index j, Index l, Index frequency) {
      double* d = data + frequency * 2 * values;
      ComplexValue tau[kMaxValues], result[kMaxValues], alias[kMaxValues], work[kMaxValues];
      load(d, values, tau);
      clear(result, values);
      forEachAlias(s, i, j, l, [&](const FrequencyState& a, double filter) {
        HermitianMatrix3 g;
        generalAcousticInverse<V>(a, mainRule(), hourglassRule(), r, g);
        Delta0Operator<V>(a, mainRule(), r, g, tau, work, alias);
        applyFilter(filter, alias, values, result);
      });
      return storeScaled(result, values, d, pass);
    });
  }

  double applyPsi0(const FFTImage& force, FFTImage& strain, const ReferenceConstants& r,
                   const SpectrumPass& pass) const override {
    checkForceField(force, strain);
    return forceLoop(
        force, strain,
        [&](const FrequencyState& a, const HermitianMatrix3& g, const ComplexValue* f,
            ComplexValue* out) { Psi0Operator<V>(a, mainRule(), g, f, out); },
        r, pass);
  }

  double applyOmega0(const FFTImage& force, FFTImage& stress, const ReferenceConstants& r,
                     const SpectrumPass& pass) const override {
    checkForceField(force, stress);
    return forceLoop(
        force, stress,
        [&](const FrequencyState& a, const HermitianMatrix3& g, const ComplexValue* f,
            ComplexValue* out) { Omega0Operator<V>(a, mainRule(), r, g, f, out); },
        r, pass);
  }

  void applyDivergence(FFTImage& tensor) const override {
    checkTensorField(tensor);
    divergenceLoop<V>(tensor, tables_, mainRule(), hourglassRule());
  }

 private:
  const IntegrationRule& mainRule() const { return settings_.mainRule; }
  const IntegrationRule& hourglassRule() const { return settings_.hourglassRule; }

  template <class Body>
  double loop(const FFTImage& field, const Body& body) const {
    return frequencyLoop<V, false>(field, tables_, mainRule(), hourglassRule(), true, body);
  }

  // body(state, filter) for the frequency itself and, with the non-consistent filter, for
  // its 26 aliases, each with its vectors recomputed and its own filter value.
  template <class Body>
  void forEachAlias(const FrequencyState& s, Index i, Index j, Index l, const Body& body) const {
    body(s, s.axis[0].filter * s.axis[1].filter * s.axis[2].filter);
    for (std::size_t n = 1; n < aliasCount_; ++n) {
      const AliasTriple& a = kAliasTriples[n];
      FrequencyState shifted;
      shifted.h = s.h;
      enterAxis<V, false>(shifted, 0, tables_.at(0, a[0], i));
      enterAxis<V, false>(shifted, 1, tables_.at(1, a[1], j));
      enterAxis<V, false>(shifted, 2, tables_.at(2, a[2], l));
      computeGradientVectors<V, false>(shifted, mainRule(), hourglassRule());
      body(shifted, shifted.axis[0].filter * shifted.axis[1].filter * shifted.axis[2].filter);
    }
  }

  // The loop of the force operators: reads the force, adds the filtered result.
  template <class Kernel>
  double forceLoop(const FFTImage& force, FFTImage& tensor, const Kernel& kernel,
                   const ReferenceConstants& r, const SpectrumPass& pass) const {
    const std::size_t values = valuesPerVoxel();
    const double* in = force.data();
    double* out = tensor.data();
    return loop(tensor, [&](const FrequencyState& s, Index i, Index j, Index l, Index frequency) {
      ComplexValue f[kForceComponents];
      load(in + frequency * 2 * kForceComponents, kForceComponents, f);
      ComplexValue result[kMaxValues], alias[kMaxValues];
      clear(result, values);
      forEachAlias(s, i, j, l, [&](const FrequencyState& a, double filter) {
        HermitianMatrix3 g;
        generalAcousticInverse<V>(a, mainRule(), hourglassRule(), r, g);
        kernel(a, g, f, alias);
        applyFilter(filter, alias, values, result);
      });
      return addScaled(result, values, out + frequency * 2 * values, pass);
    });
  }

  std::size_t aliasCount_;
};

std::unique_ptr<DiscreteGreenOperator> makeGeneralGreenOperator(
    const GreenOperatorSettings& settings, const std::array<std::uint64_t, 3>& grid) {
  using G = GreenOperatorType;
  switch (settings.discretisation) {
    case G::Basic:
      return std::make_unique<GeneralGreenOperator<G::Basic>>(settings, grid);
    case G::ForwardDifference:
      return std::make_unique<GeneralGreenOperator<G::ForwardDifference>>(settings, grid);
    case G::CentralDifference:
      return std::make_unique<GeneralGreenOperator<G::CentralDifference>>(settings, grid);
    case G::BackwardDifference:
      return std::make_unique<GeneralGreenOperator<G::BackwardDifference>>(settings, grid);
    case G::StaggeredGrid:
      return std::make_unique<GeneralGreenOperator<G::StaggeredGrid>>(settings, grid);
    case G::TrilinearFE:
      return std::make_unique<GeneralGreenOperator<G::TrilinearFE>>(settings, grid);
    case G::Q1FE:
      return std::make_unique<GeneralGreenOperator<G::Q1FE>>(settings, grid);
    case G::Hex8RHourGlassControl:
      return std::make_unique<GeneralGreenOperator<G::Hex8RHourGlassControl>>(settings, grid);
    case G::Helmholtz:
      return std::make_unique<GeneralGreenOperator<G::Helmholtz>>(settings, grid);
    default:
      break;
  }
  // "Bilaplacian" has no gradient vector: it stops with the message of the axis factors.
  fatal("Unknown finite difference " + std::to_string(static_cast<int>(settings.discretisation)));
}

void checkRule(const IntegrationRule& rule, std::size_t least, const char* which) {
  if (rule.count < least || rule.count > IntegrationRule::kMaxPoints)
    fatal(std::string("Green operator: the ") + which + " integration rule has " +
          std::to_string(rule.count) + " points, allowed are " + std::to_string(least) + " to " +
          std::to_string(IntegrationRule::kMaxPoints));
}

}  // namespace

GreenOperatorSettings GreenOperatorSettings::of(GreenOperatorType discretisation, FilterType filter,
                                                bool specializeOperators,
                                                const std::array<double, 3>& voxelLength) {
  GreenOperatorSettings s;
  s.discretisation = discretisation;
  s.filter = filter;
  s.specializeOperators = specializeOperators;
  s.mainRule = IntegrationRule::mainRuleFor(discretisation);
  s.hourglassRule = IntegrationRule::hourglassRuleFor(discretisation);
  s.voxelLength = voxelLength;
  return s;
}

DiscreteGreenOperator::DiscreteGreenOperator(const GreenOperatorSettings& settings,
                                             const std::array<std::uint64_t, 3>& grid,
                                             bool specialized)
    : settings_(settings),
      tables_(settings.discretisation, settings.filter, grid, settings.voxelLength),
      specialized_(specialized) {}

std::unique_ptr<DiscreteGreenOperator> DiscreteGreenOperator::create(
    const GreenOperatorSettings& settings, const std::array<std::uint64_t, 3>& grid) {
  if (settings.filter != FilterType::None && settings.filter != FilterType::Periodize &&
      settings.filter != FilterType::NonConsistent)
    fatal("The filter is not known.");
  checkRule(settings.mainRule, 1, "main");
  checkRule(settings.hourglassRule, 0, "hourglass");
  if (settings.filter == FilterType::None && settings.specializeOperators &&
      isOperatorSpecialized(settings.discretisation) && settings.mainRule.count == 1)
    return makeSpecializedGreenOperator(settings, grid);
  return makeGeneralGreenOperator(settings, grid);
}

std::unique_ptr<DiscreteGreenOperator> makeSpecializedGreenOperator(
    const GreenOperatorSettings& settings, const std::array<std::uint64_t, 3>& grid) {
  using G = GreenOperatorType;
  if (!isOperatorSpecialized(settings.discretisation)) fatal("Operator not specialized.");
  if (settings.filter != FilterType::None || settings.mainRule.count != 1)
    fatal("The specialized Green operator takes one integration point and no filter.");
  switch (settings.discretisation) {
    case G::Basic:
      return std::make_unique<SpecializedGreenOperator<G::Basic>>(settings, grid);
    case G::ForwardDifference:
      return std::make_unique<SpecializedGreenOperator<G::ForwardDifference>>(settings, grid);
    case G::CentralDifference:
      return std::make_unique<SpecializedGreenOperator<G::CentralDifference>>(settings, grid);
    case G::BackwardDifference:
      return std::make_unique<SpecializedGreenOperator<G::BackwardDifference>>(settings, grid);
    case G::StaggeredGrid:
      return std::make_unique<SpecializedGreenOperator<G::StaggeredGrid>>(settings, grid);
    case G::TrilinearFE:
      return std::make_unique<SpecializedGreenOperator<G::TrilinearFE>>(settings, grid);
    default:
      break;
  }
  fatal("Operator not specialized.");
}

void DiscreteGreenOperator::checkTensorField(const FFTImage& field) const {
  const std::array<std::uint64_t, 3>& grid = tables_.extents();
  if (field.nFirst != grid[0] || field.nSecond != grid[1] || field.nThird != grid[2])
    fatal("Green operator: field " + field.getName() + " of " + std::to_string(field.nFirst) +
          " x " + std::to_string(field.nSecond) + " x " + std::to_string(field.nThird) +
          " voxels on an operator made for " + std::to_string(grid[0]) + " x " +
          std::to_string(grid[1]) + " x " + std::to_string(grid[2]));
  if (field.nComponents != valuesPerVoxel())
    fatal("Green operator: field " + field.getName() + " has " + std::to_string(field.nComponents) +
          " values per voxel instead of " + std::to_string(valuesPerVoxel()));
  if (!field.isInFourierSpace)
    fatal("Green operator: field " + field.getName() + " is not in Fourier space");
}

void DiscreteGreenOperator::checkForceField(const FFTImage& force, const FFTImage& tensor) const {
  checkTensorField(tensor);
  if (force.nFirst != tensor.nFirst || force.nSecond != tensor.nSecond ||
      force.nThird != tensor.nThird || force.firstBegin != tensor.firstBegin ||
      force.firstEnd != tensor.firstEnd)
    fatal("Green operator: force field " + force.getName() + " does not match the grid of " +
          tensor.getName());
  if (force.nComponents != kForceComponents)
    fatal("Green operator: force field " + force.getName() + " has " +
          std::to_string(force.nComponents) + " values per voxel instead of 3");
  if (!force.isInFourierSpace)
    fatal("Green operator: force field " + force.getName() + " is not in Fourier space");
}

}  // namespace gridmoor
