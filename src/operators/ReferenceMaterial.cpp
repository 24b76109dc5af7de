#include "operators/ReferenceMaterial.h"

#include <array>
#include <cmath>
#include <iostream>

#include "common/Fatal.h"
#include "input/KeywordsElasticity.h"
#include "materials/Formulations.h"
#include "materials/IsotropicLinearElasticMaterial.h"

namespace gridmoor {

namespace {

using Law = DiscretizedElasticMaterial;
using RangeQuery = EigenvalueRange (MaterialElasticVector::*)(const Geometry&, int,
                                                              const Image<Real>*) const;

// What sets the formulations apart. Compliance variants run the same rules on compliance
// eigenvalues and invert the chosen operator at the end; the large-strain variant has its own
// choice of mu0 from the tangent's range.
struct FormulationRules {
  RangeQuery range;
  bool (Law::*isAffinLinear)() const;
  bool compliance;
  bool slowCGRule;  // the method is refused for the stress and polarization schemes
  bool largeStrain;
};

// In the order of the Formulation enumeration.
const std::array<FormulationRules, 5> rulesByFormulation = {{
    {&MaterialElasticVector::getMinMaxEigenvalueStrain, &Law::isAffinLinearStrain, false, true,
     false},
    {&MaterialElasticVector::getMinMaxEigenvalueStress, &Law::isAffinLinearStress, true, false,
     false},
    {&MaterialElasticVector::getMinMaxEigenvaluePolarisation, &Law::isAffinLinearPolarization,
     false, false, false},
    {&MaterialElasticVector::getMinMaxEigenvalueEigenstrain, &Law::isAffinLinearEigenstrain,
     true, true, false},
    {&MaterialElasticVector::getMinMaxEigenvalueDeformationGradient,
     &Law::isAffinLinearDeformationGradient, false, true, true},
}};

const FormulationRules& rulesOf(const std::string& formulation) {
  return rulesByFormulation[static_cast<std::size_t>(formulationOf(formulation))];
}

// The extreme eigenvalues by their meaning. Per law the shear eigenvalue 2 mu of a stiffness
// is its smallest and the volumetric one 3 K its largest (for nu >= 0); a compliance has them
// the other way round, so its per-law maxima are the shear values.
struct Spectrum {
  double minShear2, maxShear2, minBulk3, maxBulk3;
  double lo, hi;  // extremes of the whole family
};

Spectrum spectrumOf(const EigenvalueRange& r, bool compliance) {
  if (compliance)
    return {r.minOfMaxima, r.maxOfMaxima, r.minOfMinima, r.maxOfMinima, r.minOfMinima,
            r.maxOfMaxima};
  return {r.minOfMinima, r.maxOfMinima, r.minOfMaxima, r.maxOfMaxima, r.minOfMinima,
          r.maxOfMaxima};
}

// mu and K of the reference operator (stiffness or compliance, as the range), and the part
// of K subtracted to give lambda.
struct Moduli {
  double mu, K, base;
};

Moduli isotropicMean(double mu) { return {mu, 2.0 * mu / 3.0, 2.0 * mu / 3.0}; }

bool isBasicScheme(GreenOperatorType op, FilterType filter) {
  return op == GreenOperatorType::Basic &&
         (filter == FilterType::None || filter == FilterType::NonConsistent);
}

// Operators with a rule: "Basic" and the values 1 to 7 of the enumeration.
void requireSupportedOperator(GreenOperatorType op) {
  const int value = static_cast<int>(op);
  if (value < 0 || value > static_cast<int>(GreenOperatorType::Hex8RHourGlassControl))
    fatal("Reference material not implemented for Green operator " + wordOf(op));
}

// Small-strain rules, on whichever operator the range describes.
Moduli smallStrainModuli(const Spectrum& s, const ReferenceMaterialFacts& facts,
                         const KeywordsElasticity& keywords) {
  const GreenOperatorType op = keywords.greenOperator();
  const FilterType filter = keywords.filter();
  // A soft phase pulls the mean to zero; the regularised scheme wants the reference near the
  // stiffest law instead.
  const bool regularised = keywords.tikhonovRegularization() && facts.hasSoft;
  const double regularisedMu = s.hi / (2.0 * (2.0 - keywords.tikhonovRegularizationAlpha()));

  if (isBasicScheme(op, filter)) {
    if (facts.linearMaterials && facts.isotropicMaterials && !regularised) {
      // Shear and bulk separately: identical laws are their own reference.
      const double mu = (s.minShear2 + s.maxShear2) / 4.0;
      return {mu, (s.minBulk3 + s.maxBulk3) / 6.0, 2.0 * mu / 3.0};
    }
    return isotropicMean(regularised ? regularisedMu : (s.lo + s.hi) / 4.0);
  }
  if (op == GreenOperatorType::Basic && filter == FilterType::Periodize) {
    if (!facts.linearMaterials) return isotropicMean((s.lo + s.hi) / 4.0);
    if (!keywords.calculateBounds()) return isotropicMean(std::sqrt(s.lo * s.hi) / 2.0);
    const double mu = s.maxShear2 / 2.0;
    return {mu, s.hi / 3.0, 2.0 * mu / 3.0};
  }
  return isotropicMean((s.lo + s.hi) / 4.0);
}

// Large strain: the tangent's range, with a wider step when every law shares the same
// extreme eigenvalues.
Moduli largeStrainModuli(const EigenvalueRange& r, const ReferenceMaterialFacts& facts,
                         const KeywordsElasticity& keywords) {
  const double lo = r.minOfMinima, hi = r.maxOfMaxima;
  double mu = (lo + hi) / 4.0;
  if (keywords.tikhonovRegularization() && facts.hasSoft)
    mu = hi / (2.0 * (2.0 - keywords.tikhonovRegularizationAlpha()));
  if (hi == r.minOfMaxima && lo == r.maxOfMinima) mu = (lo + hi) / 2.0;
  return isotropicMean(mu);
}

void printConstants(const char* heading, const char* suffix, double lambda, double mu,
                    double K) {
  std::cout << heading << "\n"
            << "Lambda" << suffix << " = " << lambda << "\n"
            << "    Mu" << suffix << " = " << mu << "\n"
            << "     K" << suffix << " = " << K << "\n";
}

}  // namespace

ReferenceMaterialFacts gatherReferenceMaterialFacts(const std::string& formulation,
                                                    const MaterialElasticVector& materials,
                                                    const Geometry& geometry, int loadCase,
                                                    const Image<Real>* field) {
  const FormulationRules& rules = rulesOf(formulation);
  ReferenceMaterialFacts facts;
  facts.range = (materials.*rules.range)(geometry, loadCase, field);
  const auto isAffinLinear = rules.isAffinLinear;
  // Limit laws have no finite spectrum and no say in linearity.
  facts.linearMaterials = !materials.anyLaw(geometry, [isAffinLinear](const Law& l) {
    return !l.isSoft() && !l.isRigid() && !(l.*isAffinLinear)();
  });
  facts.isotropicMaterials = materials.allIsotropic(geometry);
  facts.hasSoft = materials.anySoft(geometry);
  facts.allIncompressible = materials.allIncompressible(geometry);
  return facts;
}

ReferenceMaterialChoice chooseReferenceMaterial(const std::string& formulation,
                                                const ReferenceMaterialFacts& facts,
                                                const KeywordsElasticity& keywords) {
  const FormulationRules& rules = rulesOf(formulation);
  const GreenOperatorType op = keywords.greenOperator();
  const std::string& method = keywords.iterativeMethod();
  requireSupportedOperator(op);

  const Spectrum s = spectrumOf(facts.range, rules.compliance);
  Moduli m = rules.largeStrain ? largeStrainModuli(facts.range, facts, keywords)
                               : smallStrainModuli(s, facts, keywords);
  double lambda = m.K - m.base;
  if (facts.allIncompressible) {
    std::cout << "Warning: Only incompressible materials used. Reference material can not be "
                 "incompressible.\n"
              << "Setting lambda0 = 0\n";
    lambda = 0.0;
  }
  // The Krylov methods need the reference to be a multiple of the identity on strains.
  if (method != "NeumannSeries" && method != "slowCG" && isBasicScheme(op, keywords.filter()))
    lambda = 0.0;
  if (rules.slowCGRule && method == "slowCG") {
    m.mu = s.hi / 2.0;
    std::cout << "restart_min= " << keywords.restartMinIter() << "\n"
              << "restart_max= " << keywords.restartMaxIter() << "\n";
    m.K = 2.0 * m.mu / 3.0;
    lambda = 0.0;
  }

  ReferenceMaterialChoice choice{lambda, m.mu, m.K};
  double smallestStiffness = s.lo;
  if (rules.compliance) {
    // The rules chose a compliance D0 with eigenvalues 2 mu (shear) and 3 lambda + 2 mu
    // (volumetric); the reference law is its inverse. An eigenvalue of zero would make the
    // reference infinitely stiff.
    const double shear = 2.0 * m.mu, bulk = 3.0 * lambda + 2.0 * m.mu;
    if (!(shear > 0.0) || !(bulk > 0.0) || !std::isfinite(shear) || !std::isfinite(bulk))
      fatal("No finite reference material for the compliance range of the used materials.");
    choice.mu0 = 1.0 / (2.0 * shear);
    choice.K0 = 1.0 / (3.0 * bulk);
    // (1 / bulk - 1 / shear) / 3, written so that a scalar compliance gives lambda0 = 0 exactly.
    choice.lambda0 = -lambda / (shear * bulk);
    smallestStiffness = 1.0 / s.hi;
  }

  if (keywords.noisy())
    printConstants("Reference Material:", "", choice.lambda0, choice.mu0, choice.K0);

  if (op == GreenOperatorType::Hex8RHourGlassControl) {
    choice.muHourglass = keywords.hourGlassControl() * smallestStiffness / 2.0;
    choice.KHourglass = 2.0 * choice.muHourglass / 3.0;
    choice.lambdaHourglass = choice.KHourglass - choice.KHourglass;
    if (keywords.noisy())
      printConstants("Hourglass Control Stiffness:", "_hg", choice.lambdaHourglass,
                     choice.muHourglass, choice.KHourglass);
  }
  return choice;
}

void storeReferenceMaterial(const ReferenceMaterialChoice& choice,
                            IsotropicLinearElasticMaterial& reference) {
  reference.setLameConstants(choice.lambda0, choice.mu0);
}

ReferenceMaterialChoice setupReferenceMaterial(const std::string& formulation,
                                               const KeywordsElasticity& keywords,
                                               const MaterialElasticVector& materials,
                                               const Geometry& geometry, int loadCase,
                                               const Image<Real>* field,
                                               IsotropicLinearElasticMaterial& reference) {
  const ReferenceMaterialFacts facts =
      gatherReferenceMaterialFacts(formulation, materials, geometry, loadCase, field);
  const ReferenceMaterialChoice choice = chooseReferenceMaterial(formulation, facts, keywords);
  storeReferenceMaterial(choice, reference);
  return choice;
}

bool referenceMaterialDue(const KeywordsElasticity& keywords, int step) {
  return step == 0 || keywords.updateReferenceMaterial();
}

bool switchToVariationalScheme(KeywordsElasticity& keywords,
                               const MaterialElasticVector& materials, const Geometry& geometry) {
  if (!isBasicScheme(keywords.greenOperator(), keywords.filter())) return false;
  if (materials.anySoft(geometry) || !materials.anyRigid(geometry)) return false;
  std::cout << "Infinite contrast of materials too high for basic scheme. Using variational "
               "scheme.\n";
  keywords.filter.set(FilterType::Periodize);
  return true;
}

}  // namespace gridmoor
