#include "solvers/StrainStressImage.h"

#include <omp.h>

#include <typeinfo>

#include "common/Fatal.h"
#include "input/KeywordsElasticity.h"
#include "materials/IsotropicLinearElasticMaterial.h"
#include "materials/MaterialVector.h"
#include "solvers/MacroscopicRelation.h"
#include "voxel/Geometry.h"

namespace gridmoor {

namespace {

using LawTable = std::array<DiscretizedElasticMaterial*, 256>;

// The law of each colour, looked up once per pass so that the voxel loop reads the colour and
// calls the law through one pointer. A used colour without a law ends the run before any
// voxel is touched.
LawTable lawTableOf(const StepContext& ctx, const FFTImage& image) {
  const ColorImage& colours = ctx.geometry->RealVoxelImage;
  if (colours.getGlobalSizeX() != image.nFirst || colours.sizeY != image.nSecond ||
      colours.sizeZ != image.nThird)
    fatal("Field " + image.getName() + " does not match the grid of the geometry");
  LawTable laws{};
  for (Colour c : ctx.geometry->getUsedColors()) {
    laws[c] = ctx.materials->elasticLaw(c);
    if (!laws[c]) fatal("Not for all colors are the material parameters defined!");
  }
  return laws;
}

struct NoRowStart {
  void operator()(std::uint64_t) const {}
};

// Visits every integration point of `image` with its voxel's law, in the OpenMP team with
// static chunks of the first axis. Each thread works on its own Acc, merged at the end.
// rowStart(offset) runs before the points of each row.
template <class Acc, class Body, class RowStart = NoRowStart>
Acc visitPoints(const FFTImage& image, const StepContext& ctx, std::uint64_t points,
                Body body, RowStart rowStart = {}) {
  const LawTable laws = lawTableOf(ctx, image);
  const ColorImage& colours = ctx.geometry->RealVoxelImage;
  Acc total;
#pragma omp parallel
  {
    Acc local;
    const IndexRange range = image.threadFirstRange();
    for (std::uint64_t x = range.begin; x < range.end; ++x)
      for (std::uint64_t y = 0; y < image.nSecond; ++y) {
        const std::uint64_t row = (x - image.firstOffset) * image.planeStride + y * image.rowStride;
        rowStart(row);
        for (std::uint64_t z = 0; z < image.nThird; ++z) {
          const Colour colour = colours.at(x, y, z);
          DiscretizedElasticMaterial* law = laws[colour];
          const std::uint64_t offset = row + z * image.nComponents;
          for (std::uint64_t p = 0; p < points; ++p)
            body(local, *law, colour, x, y, z, p, offset + 6 * p);
        }
      }
#pragma omp critical(gridmoor_visit_points)
    total.merge(local);
  }
  return total;
}

struct SumAcc {
  double value = 0.0;
  void merge(const SumAcc& o) { value += o.value; }
};

struct PassAcc {
  std::array<double, ElasticityImage::kMaxValuesPerVoxel> regularisation{};
  void merge(const PassAcc& o) {
    for (std::size_t i = 0; i < regularisation.size(); ++i) regularisation[i] += o.regularisation[i];
  }
};

inline double stressNormSquared(const double* s) {
  return s[0] * s[0] + s[1] * s[1] + s[2] * s[2] + 2.0 * (s[3] * s[3] + s[4] * s[4] + s[5] * s[5]);
}

const double kZeroVoigt[6] = {0, 0, 0, 0, 0, 0};

// The stress of the law at a point for the step kind. Thermal forms only when there is a
// temperature change, so that plain runs make one virtual call per point.
template <bool Thermal>
inline void computeStressAt(DiscretizedElasticMaterial& law, StepKind kind, const StepContext& ctx,
                            std::uint64_t x, std::uint64_t y, std::uint64_t z, const double* old,
                            const double* total, const double* e, double* s) {
  const int lc = ctx.loadCase;
  const double t = ctx.temperatureChange;
  switch (kind) {
    case StepKind::Linear:
      if constexpr (Thermal) law.thermalS(lc, x, y, z, t, e, s);
      else law.S(lc, x, y, z, e, s);
      break;
    case StepKind::Nonlinear:
      if constexpr (Thermal) law.thermalSWithHistory(lc, x, y, z, t, old, e, s);
      else law.S(lc, x, y, z, old, e, s);
      break;
    case StepKind::Linearized:
      if constexpr (Thermal) law.thermalSLinearized(lc, x, y, z, t, old, total, e, s);
      else law.S(lc, x, y, z, old, total, e, s);
      break;
  }
}

// Where the voxel loop reads the strain of a point: the field's own values...
struct OwnValues {
  void beginRow(std::uint64_t) const {}
  const double* read(const double* e, std::uint64_t, double*) const { return e; }
};

// ...or a combination of Terms other fields (StepInput), written also into the store if there
// is one, after the input's row work on the row. The number of terms is a template argument,
// so that the loops unroll.
template <int Terms>
struct CombinedValues {
  std::array<const double*, Terms> fields{};
  std::array<double, Terms> weights{};
  double* store = nullptr;
  StepRowWork* work = nullptr;

  explicit CombinedValues(const StepInput& input)
      : store(input.store ? input.store->data() : nullptr), work(input.work) {
    for (int t = 0; t < Terms; ++t) {
      fields[t] = input.fields[static_cast<std::size_t>(t)]->data();
      weights[t] = input.weights[static_cast<std::size_t>(t)];
    }
  }
  void beginRow(std::uint64_t offset) const {
    if (work) work->row(offset);
  }
  // The six values of the point at offset `at` into v, which is returned.
  const double* read(const double*, std::uint64_t at, double* v) const {
    for (int c = 0; c < 6; ++c) {
      double sum = weights[0] * fields[0][at + c];
      for (int t = 1; t < Terms; ++t) sum += weights[t] * fields[t][at + c];
      v[c] = sum;
    }
    if (store)
      for (int c = 0; c < 6; ++c) store[at + c] = v[c];
    return v;
  }
};

// The three distinct entries of an isotropic stiffness in Voigt form, and of C - C0.
struct IsotropicEntries {
  double normal = 0.0;  // C(0, 0)
  double cross = 0.0;   // C(0, 1)
  double shear = 0.0;   // C(3, 3), engineering shear
};

// The entries of each used colour when every used law is exactly the isotropic linear law,
// else false. Its history and linearized-about-nothing forms are its plain form, so the
// table serves the linear and the history step alike.
bool isotropicTableOf(const StepContext& ctx, std::array<IsotropicEntries, 256>& table) {
  for (Colour c : ctx.geometry->getUsedColors()) {
    const DiscretizedElasticMaterial* law = ctx.materials->elasticLaw(c);
    // The exact type: a derived law may answer differently.
    if (!law || typeid(*law) != typeid(IsotropicLinearElasticMaterial)) return false;
    const VoigtMatrix& m = static_cast<const IsotropicLinearElasticMaterial*>(law)->cVoigt;
    table[c] = {m(0, 0), m(0, 1), m(3, 3)};
  }
  return true;
}

// The voxel loop for isotropic linear laws without temperature change or regularisation:
// tau = (C - C0) e in the sparse pattern, inline, without a call per point. The
// general loop below makes the same products through the law's S, one virtual call each.
template <class Input>
void isotropicStrainPass(StrainImage& image, const StepContext& ctx,
                         const std::array<IsotropicEntries, 256>& laws, const Input& input) {
  const ColorImage& colours = ctx.geometry->RealVoxelImage;
  if (colours.getGlobalSizeX() != image.nFirst || colours.sizeY != image.nSecond ||
      colours.sizeZ != image.nThird)
    fatal("Field " + image.getName() + " does not match the grid of the geometry");
  const ReferenceConstants& ref = ctx.reference;
  // tau's entries: C - C0 with C0 = lambda0 1 x 1 + 2 mu0 I (mu0 on engineering shear).
  std::array<IsotropicEntries, 256> difference{};
  for (Colour c : ctx.geometry->getUsedColors())
    difference[c] = {laws[c].normal - ref.lambda0 - 2.0 * ref.mu0, laws[c].cross - ref.lambda0,
                     laws[c].shear - ref.mu0};
  const std::uint64_t points = image.pointsPerVoxel();
  const std::uint64_t nc = image.nComponents;
  double* data = image.data();
#pragma omp parallel
  {
    const IndexRange range = image.threadFirstRange();
    for (std::uint64_t x = range.begin; x < range.end; ++x)
      for (std::uint64_t y = 0; y < image.nSecond; ++y) {
        const std::uint64_t row = (x - image.firstOffset) * image.planeStride + y * image.rowStride;
        input.beginRow(row);
        const Colour* colourRow = colours.voxelPointer(x, y, 0);
        for (std::uint64_t z = 0; z < image.nThird; ++z) {
          const Colour colour = colourRow[z * colours.strideZ];
          const IsotropicEntries& d = difference[colour];
          for (std::uint64_t p = 0; p < points; ++p) {
            const std::uint64_t at = row + z * nc + 6 * p;
            double* e = data + at;
            double values[6];
            const double* in = input.read(e, at, values);
            const double e0 = in[0], e1 = in[1], e2 = in[2], e3 = in[3], e4 = in[4], e5 = in[5];
            // tau_a = (C - C0)(0,1) tr e + ((C - C0)(0,0) - (C - C0)(0,1)) e_a: the row
            // products of C - C0 regrouped.
            const double trace = e0 + e1 + e2;
            const double tauDiagonal = d.normal - d.cross;
            e[0] = d.cross * trace + tauDiagonal * e0;
            e[1] = d.cross * trace + tauDiagonal * e1;
            e[2] = d.cross * trace + tauDiagonal * e2;
            e[3] = d.shear * e3;
            e[4] = d.shear * e4;
            e[5] = d.shear * e5;
          }
        }
      }
  }
}

template <bool Thermal, class Input>
void strainPass(StrainImage& image, StepKind kind, const StepContext& ctx,
                const MacroscopicLoad& load, double* regularisationSums, const Input& input) {
  if (kind != StepKind::Linear && !ctx.oldField)
    fatal("A step with history needs the field of the last converged step");
  if (kind == StepKind::Linearized && !ctx.totalField)
    fatal("A linearized step needs the total field");
  const bool tikhonov = ctx.tikhonovAlpha != 0.0;
  if (!Thermal && !tikhonov && kind != StepKind::Linearized) {
    std::array<IsotropicEntries, 256> isotropic{};
    if (isotropicTableOf(ctx, isotropic)) {
      for (std::uint64_t i = 0; i < image.nComponents; ++i) regularisationSums[i] = 0.0;
      isotropicStrainPass(image, ctx, isotropic, input);
      return;
    }
  }
  std::array<bool, 256> regularised{};
  if (tikhonov)
    for (Colour c : ctx.materials->colorsWithoutInfiniteContrast(*ctx.geometry)) regularised[c] = true;
  // Target of the regularisation: the prescribed strain components; the others carry none.
  std::array<double, 6> target{};
  std::array<bool, 6> targeted{};
  for (unsigned c = 0; c < 6; ++c) {
    targeted[c] = !(load.stressMask & (1u << c));
    target[c] = targeted[c] ? load.values[c] : 0.0;
  }
  double* data = image.data();
  const double* oldData = ctx.oldField ? ctx.oldField->data() : nullptr;
  const double* totalData = ctx.totalField ? ctx.totalField->data() : nullptr;
  // Without history in homogenization the linearization runs about an unstrained old state.
  const bool zeroOld = kind == StepKind::Linearized && ctx.keywords &&
                       ctx.keywords->usingLinearizedMaterialLawForHomogenization();
  const ReferenceConstants& ref = ctx.reference;
  const PassAcc acc = visitPoints<PassAcc>(
      image, ctx, image.pointsPerVoxel(),
      [&](PassAcc& local, DiscretizedElasticMaterial& law, Colour colour, std::uint64_t x,
          std::uint64_t y, std::uint64_t z, std::uint64_t p, std::uint64_t at) {
        double* e = data + at;
        double values[6];
        const double* in = input.read(e, at, values);
        const double* old = oldData && !zeroOld ? oldData + at : kZeroVoigt;
        const double* total = totalData ? totalData + at : nullptr;
        double s[6];
        double s0[6];
        computeStressAt<Thermal>(law, kind, ctx, x, y, z, old, total, in, s);
        applyIsotropicStiffness(ref, in, s0);
        if (tikhonov && regularised[colour]) {
          double mismatch[6];
          double pull[6];
          for (int c = 0; c < 6; ++c) mismatch[c] = targeted[c] ? in[c] - target[c] : 0.0;
          applyIsotropicStiffness(ref, mismatch, pull);
          for (int c = 0; c < 6; ++c) {
            s[c] += ctx.tikhonovAlpha * pull[c];
            local.regularisation[6 * p + c] += mismatch[c];
          }
        }
        for (int c = 0; c < 6; ++c) e[c] = s[c] - s0[c];
      },
      [&](std::uint64_t row) { input.beginRow(row); });
  for (std::uint64_t i = 0; i < image.nComponents; ++i) regularisationSums[i] = acc.regularisation[i];
}

template <bool Thermal>
void stressOf(const StrainImage& image, FFTImage& out, const StepContext& ctx) {
  const double* data = image.data();
  double* target = out.data();
  const double* oldData = ctx.oldField ? ctx.oldField->data() : nullptr;
  visitPoints<SumAcc>(image, ctx, image.pointsPerVoxel(),
                      [&](SumAcc&, DiscretizedElasticMaterial& law, Colour, std::uint64_t x,
                          std::uint64_t y, std::uint64_t z, std::uint64_t, std::uint64_t at) {
                        const StepKind kind = oldData ? StepKind::Nonlinear : StepKind::Linear;
                        computeStressAt<Thermal>(law, kind, ctx, x, y, z,
                                                 oldData ? oldData + at : nullptr, nullptr,
                                                 data + at, target + at);
                      });
}

void requireSameShape(const FFTImage& a, const FFTImage& b) {
  if (a.nComponents != b.nComponents || a.nFirst != b.nFirst || a.nSecond != b.nSecond ||
      a.nThird != b.nThird)
    fatal("Fields " + a.getName() + " and " + b.getName() + " differ in shape");
}

}  // namespace

namespace {

template <class Input>
void strainPassOf(StrainImage& image, StepKind kind, const StepContext& ctx,
                  const MacroscopicLoad& load, double* regularisationSums, const Input& input) {
  if (ctx.temperatureChange != 0.0)
    strainPass<true>(image, kind, ctx, load, regularisationSums, input);
  else
    strainPass<false>(image, kind, ctx, load, regularisationSums, input);
}

}  // namespace

void StrainImage::materialPass(StepKind kind, const StepContext& ctx,
                               const MacroscopicLoad& load, double* regularisationSums) {
  const StepInput* input = stepInput();
  switch (input ? input->terms : 0) {
    case 1: return strainPassOf(*this, kind, ctx, load, regularisationSums, CombinedValues<1>(*input));
    case 2: return strainPassOf(*this, kind, ctx, load, regularisationSums, CombinedValues<2>(*input));
    case 3: return strainPassOf(*this, kind, ctx, load, regularisationSums, CombinedValues<3>(*input));
    default: break;
  }
  strainPassOf(*this, kind, ctx, load, regularisationSums, OwnValues{});
}

void StrainImage::computeStress(FFTImage& out, const StepContext& ctx) const {
  requireSameShape(*this, out);
  out.isInFourierSpace = false;
  if (ctx.temperatureChange != 0.0)
    stressOf<true>(*this, out, ctx);
  else
    stressOf<false>(*this, out, ctx);
}

double StrainImage::getStressNormSquared(const StepContext& ctx) const {
  const double* data = this->data();
  const double* weights = mainRule.weights.data();
  const double* oldData = ctx.oldField ? ctx.oldField->data() : nullptr;
  return visitPoints<SumAcc>(
             *this, ctx, pointsPerVoxel(),
             [&](SumAcc& local, DiscretizedElasticMaterial& law, Colour, std::uint64_t x,
                 std::uint64_t y, std::uint64_t z, std::uint64_t p, std::uint64_t at) {
               double s[6];
               const StepKind kind = oldData ? StepKind::Nonlinear : StepKind::Linear;
               if (ctx.temperatureChange != 0.0)
                 computeStressAt<true>(law, kind, ctx, x, y, z, oldData ? oldData + at : nullptr,
                                       nullptr, data + at, s);
               else
                 computeStressAt<false>(law, kind, ctx, x, y, z, oldData ? oldData + at : nullptr,
                                        nullptr, data + at, s);
               local.value += weights[p] * stressNormSquared(s);
             })
      .value;
}

void StrainImage::setInitialCondition(const MacroscopicLoad& load, const StepContext& ctx) {
  const std::array<double, 6> mean = solveMacroscopicStrain(load, {}, ctx.reference);
  isInFourierSpace = false;
  setConstantAtPoints(mean.data());
  stateMark = 0;
}

void StrainImage::computeMeanFromSpectrum(const StepContext& ctx, const MacroscopicLoad& load,
                                          const double* strainPart, double* mean) const {
  std::array<double, 6> e{};
  if (load.isPureStrain()) {
    for (int c = 0; c < 6; ++c) e[c] = strainPart[c];
  } else {
    // The mean polarization, weighted over the points: the mean strain is one for all
    // points of a periodic field, so the stress condition holds for the voxel mean.
    std::array<double, 6> tau{};
    const double n = static_cast<double>(numberOfVoxels());
    for (std::uint64_t p = 0; p < pointsPerVoxel(); ++p)
      for (int c = 0; c < 6; ++c) tau[c] += mainRule.weights[p] * realPart(6 * p + c, 0, 0, 0) / n;
    e = solveMacroscopicStrain(load, tau, ctx.reference);
  }
  for (std::uint64_t p = 0; p < pointsPerVoxel(); ++p)
    for (int c = 0; c < 6; ++c) mean[6 * p + c] = e[c];
}

double StrainImage::applyGamma0(const StepContext& ctx, const SpectrumPass& pass) {
  return ctx.greenOperator->applyGamma0(*this, ctx.reference, pass);
}

double StrainImage::applyPsi0(const StepContext& ctx, const SpectrumPass& pass) {
  return ctx.greenOperator->applyPsi0(*ctx.externalForce, *this, ctx.reference, pass);
}

namespace {

[[noreturn]] void stressFormulationMissing() {
  fatal("The stress formulation can not be solved yet: use PrimaryUnknown Strain");
}

}  // namespace

void StressImage::computeStress(FFTImage&, const StepContext&) const { stressFormulationMissing(); }
void StressImage::setInitialCondition(const MacroscopicLoad&, const StepContext&) {
  stressFormulationMissing();
}
double StressImage::getStressNormSquared(const StepContext&) const { stressFormulationMissing(); }
double StressImage::applyGamma0(const StepContext&, const SpectrumPass&) {
  stressFormulationMissing();
}
double StressImage::applyPsi0(const StepContext&, const SpectrumPass&) {
  stressFormulationMissing();
}
void StressImage::materialPass(StepKind, const StepContext&, const MacroscopicLoad&, double*) {
  stressFormulationMissing();
}
void StressImage::computeMeanFromSpectrum(const StepContext&, const MacroscopicLoad&,
                                          const double*, double*) const {
  stressFormulationMissing();
}

}  // namespace gridmoor
