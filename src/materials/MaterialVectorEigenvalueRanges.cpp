// Spectral ranges of the material table for the choice of the reference material: the
// per-law eigenvalue (or trace) ranges of all finite, non-hybrid laws in use, widened together.
#include <string>

#include "common/Fatal.h"
#include "materials/MaterialVector.h"

namespace gridmoor {

namespace {

using RangeQuestion = void (DiscretizedElasticMaterial::*)(int, const Image<Real>*, double&,
                                                           double&) const;

// messageName is the name the refusal gives, which is not always the asking operation's.
EigenvalueRange widenOverLaws(const MaterialElasticVector& table, const Geometry& geometry,
                              int loadCase, const Image<Real>* field, RangeQuestion question,
                              const char* messageName) {
  EigenvalueRange range;
  bool first = true;
  for (Colour c : geometry.getUsedColors()) {
    const DiscretizedElasticMaterial* law = table.elasticLaw(c);
    // Limit laws have no finite spectrum, hybrids are bounded by their sources.
    if (!law || law->isRigid() || law->isSoft() || law->isHybrid()) continue;
    double minimum = 0.0, maximum = 0.0;
    (law->*question)(loadCase, field, minimum, maximum);
    if (first) {
      range = {minimum, minimum, maximum, maximum};
      first = false;
      continue;
    }
    if (minimum < range.minOfMinima) range.minOfMinima = minimum;
    if (minimum > range.maxOfMinima) range.maxOfMinima = minimum;
    if (maximum < range.minOfMaxima) range.minOfMaxima = maximum;
    if (maximum > range.maxOfMaxima) range.maxOfMaxima = maximum;
  }
  if (first)
    fatal(std::string("Only rigid Materials. The function MaterialVector::") + messageName +
          "() should not be called in this case!");
  return range;
}

}  // namespace

EigenvalueRange MaterialElasticVector::getMinMaxEigenvalueStrain(const Geometry& geometry,
                                                                 int loadCase,
                                                                 const Image<Real>* field) const {
  return widenOverLaws(*this, geometry, loadCase, field,
                       &DiscretizedElasticMaterial::getMinMaxEigenvalueStrain,
                       "getMinMaxEigenvalueStrain");
}

EigenvalueRange MaterialElasticVector::getMinMaxEigenvalueStress(const Geometry& geometry,
                                                                 int loadCase,
                                                                 const Image<Real>* field) const {
  return widenOverLaws(*this, geometry, loadCase, field,
                       &DiscretizedElasticMaterial::getMinMaxEigenvalueStress,
                       "getMinMaxEigenvalueStress");
}

// The polarization and eigenstrain ranges keep the wording of their strain and stress
// counterparts in the refusal: the host application matches these texts.
EigenvalueRange MaterialElasticVector::getMinMaxEigenvaluePolarisation(
    const Geometry& geometry, int loadCase, const Image<Real>* field) const {
  return widenOverLaws(*this, geometry, loadCase, field,
                       &DiscretizedElasticMaterial::getMinMaxEigenvaluePolarisation,
                       "getMinMaxEigenvalueStrain");
}

EigenvalueRange MaterialElasticVector::getMinMaxEigenvalueEigenstrain(
    const Geometry& geometry, int loadCase, const Image<Real>* field) const {
  return widenOverLaws(*this, geometry, loadCase, field,
                       &DiscretizedElasticMaterial::getMinMaxEigenvalueEigenstrain,
                       "getMinMaxEigenvalueStress");
}

EigenvalueRange MaterialElasticVector::getMinMaxEigenvalueDeformationGradient(
    const Geometry& geometry, int loadCase, const Image<Real>* field) const {
  return widenOverLaws(*this, geometry, loadCase, field,
                       &DiscretizedElasticMaterial::getMinMaxEigenvalueDeformationGradient,
                       "getMinMaxEigenvalueDeformationGradient");
}

EigenvalueRange MaterialElasticVector::getMinMaxTraceDeformationGradient(
    const Geometry& geometry, int loadCase, const Image<Real>* field) const {
  return widenOverLaws(*this, geometry, loadCase, field,
                       &DiscretizedElasticMaterial::getMinMaxTraceDeformationGradient,
                       "getMinMaxTraceDeformationGradient");
}

}  // namespace gridmoor
