#include "solvers/ElasticityImageLadder.h"

#include <omp.h>

#include <cmath>

#include "common/Fatal.h"
#include "formats/DataWriter.h"
#include "input/KeywordsElasticity.h"
#include "input/LoadComponents.h"
#include "materials/MaterialVector.h"
#include "operators/DiscreteGreenOperator.h"
#include "postprocessing/SurfaceForces.h"
#include "solvers/FieldAlgebra.h"

namespace gridmoor {

ElasticityLaplaceStokesBrinkmanImage::ElasticityLaplaceStokesBrinkmanImage(
    std::uint64_t componentsPerPoint, const IntegrationRule& mainRule,
    const IntegrationRule& hourglassRule, std::uint64_t n0, std::uint64_t n1, std::uint64_t n2,
    const std::string& name)
    : FFTImage(componentsPerPoint * mainRule.count, n0, n1, n2, name),
      mainRule(mainRule),
      hourglassRule(hourglassRule),
      componentsPerPoint(componentsPerPoint) {}

namespace {

// Runs body(value pointer of the voxel's first component) over every voxel of the image, in
// the OpenMP team with static chunks of the first axis.
template <class Body>
void forEachVoxel(FFTImage& image, Body body) {
#pragma omp parallel
  {
    const IndexRange range = image.threadFirstRange();
    for (std::uint64_t x = range.begin; x < range.end; ++x)
      for (std::uint64_t y = 0; y < image.nSecond; ++y) {
        double* row = image.data() + (x - image.firstOffset) * image.planeStride +
                      y * image.rowStride;
        for (std::uint64_t z = 0; z < image.nThird; ++z) body(row + z * image.nComponents);
      }
  }
}

}  // namespace

void ElasticityLaplaceStokesBrinkmanImage::addConstantToPoints(const double* increment) {
  const std::uint64_t width = componentsPerPoint;
  const std::uint64_t points = pointsPerVoxel();
  forEachVoxel(*this, [=](double* v) {
    for (std::uint64_t p = 0; p < points; ++p)
      for (std::uint64_t c = 0; c < width; ++c) v[p * width + c] += increment[c];
  });
}

void ElasticityLaplaceStokesBrinkmanImage::setConstantAtPoints(const double* value) {
  const std::uint64_t width = componentsPerPoint;
  const std::uint64_t points = pointsPerVoxel();
  forEachVoxel(*this, [=](double* v) {
    for (std::uint64_t p = 0; p < points; ++p)
      for (std::uint64_t c = 0; c < width; ++c) v[p * width + c] = value[c];
  });
}

PointLayout ElasticityLaplaceStokesBrinkmanImage::pointLayout() const {
  return {componentsPerPoint,
          std::vector<Real>(mainRule.weights.begin(), mainRule.weights.begin() + mainRule.count)};
}

StepSums ElasticityHyperelasticityImage::eyreMiltonStep(const StepContext&,
                                                        const MacroscopicLoad&) {
  fatal("Eyre-Milton scheme not implemented.");
}

StepSums ElasticityHyperelasticityImage::step(StepKind kind, const StepContext& ctx,
                                              const MacroscopicLoad& load) {
  switch (kind) {
    case StepKind::Nonlinear: return nonlinearStep(ctx, load);
    case StepKind::Linearized: return linearizedStep(ctx, load);
    case StepKind::Linear: break;
  }
  return linearStep(ctx, load);
}

StepSums ElasticityHyperelasticityImage::step(StepKind kind, const StepContext& ctx,
                                              const MacroscopicLoad& load,
                                              const StepInput& input) {
  if (input.terms < 1 || input.terms > StepInput::kMaxTerms)
    fatal("A step input needs one to three fields");
  if (input.store) input.store->isInFourierSpace = false;
  isInFourierSpace = false;
  if (readsStepInput()) {
    stepInput_ = &input;
    const StepSums sums = step(kind, ctx, load);
    stepInput_ = nullptr;
    return sums;
  }
  const std::uint64_t length = rowLength(*this);
  const int terms = input.terms;
  double* own = data();
  double* store = input.store ? input.store->data() : nullptr;
  rowPass<0>(*this, [&](std::uint64_t o, std::array<double, 0>&) {
    if (input.work) input.work->row(o);
    for (std::uint64_t i = o; i < o + length; ++i) {
      double sum = 0.0;
      for (int t = 0; t < terms; ++t)
        sum += input.weights[static_cast<std::size_t>(t)] *
               input.fields[static_cast<std::size_t>(t)]->data()[i];
      own[i] = sum;
      if (store) store[i] = sum;
    }
  });
  if (input.work && !input.work->afterLoop()) return {0.0, false};
  return step(kind, ctx, load);
}

void ElasticityHyperelasticityImage::updateInternalSolution(const StepContext& ctx) const {
  ctx.materials->updateInternalSolution(*ctx.keywords, *ctx.geometry, ctx.loadCase, *this);
}

void ElasticityHyperelasticityImage::updateInternalVariables(const StepContext& ctx) const {
  ctx.materials->updateInternalVariables(*ctx.keywords, *ctx.geometry);
}

double ElasticityHyperelasticityImage::getFieldNorm() const {
  const std::array<double, 6> w6 = normWeights();
  const std::uint64_t width = componentsPerPoint;
  const std::uint64_t points = pointsPerVoxel();
  const auto& rule = mainRule;
  double sum = 0.0;
  const FFTImage& image = *this;
#pragma omp parallel reduction(+ : sum)
  {
    const IndexRange range = image.threadFirstRange();
    for (std::uint64_t x = range.begin; x < range.end; ++x)
      for (std::uint64_t y = 0; y < image.nSecond; ++y) {
        const double* row =
            image.data() + (x - image.firstOffset) * image.planeStride + y * image.rowStride;
        for (std::uint64_t z = 0; z < image.nThird; ++z) {
          const double* v = row + z * image.nComponents;
          for (std::uint64_t p = 0; p < points; ++p) {
            double s = 0.0;
            for (std::uint64_t c = 0; c < width; ++c)
              s += (c < 6 ? w6[c] : 1.0) * v[p * width + c] * v[p * width + c];
            sum += rule.weights[p] * s;
          }
        }
      }
  }
  return std::sqrt(sum);
}

double ElasticityHyperelasticityImage::getDivergenceNorm(FFTImage& work, const StepContext& ctx) {
  if (stateMark == 2) return cachedDivergenceError;
  computeStress(work, ctx);
  work.forwardTransform();
  const std::array<double, 6> w6 = dualNormWeights();
  double meanSquared = 0.0;
  for (std::uint64_t p = 0; p < pointsPerVoxel(); ++p) {
    double s = 0.0;
    for (std::uint64_t c = 0; c < componentsPerPoint; ++c) {
      const double v = work.realPart(p * componentsPerPoint + c, 0, 0, 0);
      s += (componentsPerPoint == 6 ? w6[c] : 1.0) * v * v;
    }
    meanSquared += mainRule.weights[p] * s;
  }
  const double m = std::sqrt(meanSquared);
  ctx.greenOperator->applyDivergence(work);
  work.backwardTransform();
  double sum = 0.0;
  const double* data = work.data();
  const std::uint64_t nc = work.nComponents;
  const FFTImage& w = work;
#pragma omp parallel reduction(+ : sum)
  {
    const IndexRange range = w.threadFirstRange();
    for (std::uint64_t x = range.begin; x < range.end; ++x)
      for (std::uint64_t y = 0; y < w.nSecond; ++y) {
        const double* row = data + (x - w.firstOffset) * w.planeStride + y * w.rowStride;
        for (std::uint64_t i = 0; i < w.nThird * nc; ++i) sum += row[i] * row[i];
      }
  }
  const double d = std::sqrt(sum);
  // The spatial factors of the discrete norms cancel: the error is |div sigma| / |N mean|. A
  // field without mean stress (zero load) is measured by |div sigma| alone, so that an
  // equilibrated zero field gives 0 and not 0 / 0.
  cachedDivergenceError = m > 0.0 ? d / m : d;
  stateMark = 2;
  return cachedDivergenceError;
}

namespace {

std::array<double, 6> firstSix(const std::vector<Real>& v) {
  std::array<double, 6> r{};
  for (std::size_t k = 0; k < 6 && k < v.size(); ++k) r[k] = v[k];
  return r;
}

}  // namespace

ResultAverages ElasticityHyperelasticityImage::computeAverages(const FFTImage& dual,
                                                               const StepContext& ctx) const {
  const ColorImage& colours = ctx.geometry->RealVoxelImage;
  const Subvolume region = subvolumeOf(*ctx.keywords, {nFirst, nSecond, nThird});
  const PointLayout layout = pointLayout();
  const ColourMeans primary = averageOverColours(*this, layout, colours, region);
  const ColourMeans secondary = averageOverColours(dual, layout, colours, region);
  const bool strainIsPrimary = getPrimaryFieldName() == "Strain";
  const ColourMeans& strain = strainIsPrimary ? primary : secondary;
  const ColourMeans& stress = strainIsPrimary ? secondary : primary;
  ResultAverages averages;
  averages.overall.strain = firstSix(strain.overall);
  averages.overall.stress = firstSix(stress.overall);
  for (std::size_t c = 0; c < strain.colours.size(); ++c) {
    MaterialAverages m;
    m.colour = strain.colours[c];
    m.volumeFraction = strain.volumeFractions[c];
    m.values.strain = firstSix(strain.byColour[c]);
    m.values.stress = firstSix(stress.byColour[c]);
    averages.materials.push_back(m);
  }
  return averages;
}

SurfaceForces ElasticityHyperelasticityImage::computeSurfaceForces(const FFTImage& dual,
                                                                   const StepContext&) const {
  const FFTImage& stress = getPrimaryFieldName() == "Stress" ? *this : dual;
  return gridmoor::computeSurfaceForces(stress, pointLayout(), {nFirst, nSecond, nThird});
}

// The listed components of a field: all six go out as one symmetric tensor in the layout of
// the writer's format (the six Voigt values, or the full nine of legacy VTK); a part of them
// goes out as one scalar array per component, "Strain_XX", ..., which every format can hold
// and which keeps the tensor name for the full tensor only.
void ElasticityHyperelasticityImage::addStrainStressToFile(DataWriter& writer,
                                                           const FFTImage& dual,
                                                           const KeywordsElasticity& keywords,
                                                           bool complete) const {
  const unsigned strainMask =
      complete ? kAllVoigtBits
               : voigtMaskOf(keywords.strainComponents(), keywords.strainComponents.key);
  const unsigned stressMask =
      complete ? kAllVoigtBits
               : voigtMaskOf(keywords.stressComponents(), keywords.stressComponents.key);
  const PointLayout layout = pointLayout();
  auto add = [&](const std::string& name, const FFTImage& image, unsigned mask,
                 const std::string& units) {
    if (mask == kAllVoigtBits) {
      writer.addPointMeanField(name, image, layout.componentsPerPoint, layout.weights,
                               writer.symmetricTensorComponents(), DataWriter::Float, units);
      return;
    }
    for (std::uint32_t c = 0; c < 6; ++c)
      if (mask & (1u << c))
        writer.addPointMeanField(name + "_" + std::string(kVoigtWords[c]), image,
                                 layout.componentsPerPoint, layout.weights, {c},
                                 DataWriter::Float, units);
  };
  const std::string primary = getPrimaryFieldName();
  const std::string secondary = getDualFieldName();
  const std::string& stressUnit = keywords.eModulUnit();
  add(primary, *this, primary == "Stress" ? stressMask : strainMask,
      primary == "Stress" ? stressUnit : "");
  add(secondary, dual, secondary == "Stress" ? stressMask : strainMask,
      secondary == "Stress" ? stressUnit : "");
}

ElasticityImage::ElasticityImage(const IntegrationRule& mainRule,
                                 const IntegrationRule& hourglassRule, std::uint64_t n0,
                                 std::uint64_t n1, std::uint64_t n2, const std::string& name)
    : ElasticityHyperelasticityImage(6, mainRule, hourglassRule, n0, n1, n2, name) {}

bool ElasticityImage::isOperatorSpecialized(const DiscreteGreenOperator& op) const {
  return op.isSpecialized();
}

void ElasticityImage::computeMeanForRegularization(const StepContext& ctx,
                                                   const double* regularisationSums,
                                                   double* meanFromLoad) const {
  const std::uint64_t values = nComponents;
  const double scale = ctx.tikhonovAlpha / static_cast<double>(numberOfVoxels());
  for (std::uint64_t i = 0; i < values; ++i)
    meanFromLoad[i] = ctx.tikhonovAlpha != 0.0 ? scale * regularisationSums[i] : 0.0;
}

void ElasticityImage::maskConstrainedComponents(const MacroscopicLoad& load,
                                                double* strainPart) const {
  for (unsigned c = 0; c < 6; ++c)
    strainPart[c] = (load.stressMask & (1u << c)) ? 0.0 : load.values[c];
}

// Passes over the field per step. Before the fusion: the voxel loop, the forward
// transform, the frequency loop, a read of the spectrum for the norm, the backward
// transform and a pass dividing by N: four passes beside the two transforms. Now the
// frequency loop also scales by 1 / N and sums the norm, and the backward transform runs
// unnormalised: two passes (voxel loop, frequency loop) beside the transforms. The field
// leaves the step normalised, as the Krylov methods' field algebra needs it.
StepSums ElasticityImage::fixedPointStep(StepKind kind, const StepContext& ctx,
                                         const MacroscopicLoad& load) {
  // Work vectors of a step: a few doubles per point on the stack, nothing on the heap.
  std::array<double, kMaxValuesPerVoxel> regularisationSums{};
  std::array<double, kMaxValuesPerVoxel> meanFromLoad{};
  std::array<double, kMaxValuesPerVoxel> meanFromSpectrum{};
  std::array<double, kMaxValuesPerVoxel> normWeight{};
  std::array<double, 6> strainPart{};
  stateMark = 0;
  StepSums sums;
  materialPass(kind, ctx, load, regularisationSums.data());
  if (const StepInput* input = stepInput(); input && input->work && !input->work->afterLoop()) {
    sums.transformed = false;
    return sums;
  }
  computeMeanForRegularization(ctx, regularisationSums.data(), meanFromLoad.data());
  forwardTransform();
  maskConstrainedComponents(load, strainPart.data());
  computeMeanFromSpectrum(ctx, load, strainPart.data(), meanFromSpectrum.data());
  for (std::uint64_t i = 0; i < nComponents; ++i) meanFromSpectrum[i] += meanFromLoad[i];

  const std::array<double, 6> w6 = normWeights();
  for (std::uint64_t c = 0; c < nComponents; ++c)
    normWeight[c] = mainRule.weights[c / 6] * w6[c % 6];
  const double n = static_cast<double>(numberOfVoxels());
  const SpectrumPass pass{1.0 / n, normWeight.data()};
  double spectrumSquares = 0.0;
  if (ctx.externalForce) {
    // The norm belongs to the sum of both terms: only the second pass measures.
    applyGreenOperator(ctx, {pass.scale, nullptr});
    spectrumSquares = applyExternalForce(ctx, pass);
  } else {
    spectrumSquares = applyGreenOperator(ctx, pass);
  }
  spectrumSquares += setMean(meanFromSpectrum.data(), normWeight.data());
  // Parseval: the field's sum of squares is the spectrum's over N; the spectrum stands here
  // divided by N, hence the factor N.
  sums.fieldNormSquared = spectrumSquares * n;
  backwardTransformUnnormalised();
  return sums;
}

double ElasticityImage::setMean(const double* mean, const double* normWeights) {
  // Only the part of the grid holding the first plane holds the zero frequency.
  if (firstBegin != 0) return 0.0;
  double squares = 0.0;
  for (std::uint64_t c = 0; c < nComponents; ++c) {
    realPart(c, 0, 0, 0) = mean[c];
    imagPart(c, 0, 0, 0) = 0.0;
    squares += normWeights[c] * mean[c] * mean[c];
  }
  return squares;
}

}  // namespace gridmoor
