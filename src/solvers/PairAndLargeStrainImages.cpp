#include "solvers/PairAndLargeStrainImages.h"

#include "common/Fatal.h"
#include "operators/DiscreteGreenOperator.h"

namespace gridmoor {

namespace {

[[noreturn]] void pairMissing() {
  fatal("The polarization and eigenstrain formulations can not be solved yet: use PrimaryUnknown "
        "Strain");
}

[[noreturn]] void largeStrainMissing() {
  fatal("The large-strain formulation can not be solved yet: use TypeOfDeformation Small");
}

}  // namespace

void PolarizationEigenstrainImage::computeStress(FFTImage&, const StepContext&) const {
  pairMissing();
}
void PolarizationEigenstrainImage::setInitialCondition(const MacroscopicLoad&,
                                                       const StepContext&) {
  pairMissing();
}
double PolarizationEigenstrainImage::getStressNormSquared(const StepContext&) const {
  pairMissing();
}
void PolarizationEigenstrainImage::materialPass(StepKind, const StepContext&,
                                                const MacroscopicLoad&, double*) {
  pairMissing();
}
void PolarizationEigenstrainImage::computeMeanFromSpectrum(const StepContext&,
                                                           const MacroscopicLoad&, const double*,
                                                           double*) const {
  pairMissing();
}
double PolarizationEigenstrainImage::applyGreenOperator(const StepContext&, const SpectrumPass&) {
  pairMissing();
}
double PolarizationEigenstrainImage::applyExternalForce(const StepContext&, const SpectrumPass&) {
  pairMissing();
}

bool DeformationGradientImage::isOperatorSpecialized(const DiscreteGreenOperator& op) const {
  return op.isSpecialized();
}
void DeformationGradientImage::computeStress(FFTImage&, const StepContext&) const {
  largeStrainMissing();
}
void DeformationGradientImage::setInitialCondition(const MacroscopicLoad&, const StepContext&) {
  largeStrainMissing();
}
StepSums DeformationGradientImage::linearStep(const StepContext&, const MacroscopicLoad&) {
  largeStrainMissing();
}
StepSums DeformationGradientImage::nonlinearStep(const StepContext&, const MacroscopicLoad&) {
  largeStrainMissing();
}
StepSums DeformationGradientImage::linearizedStep(const StepContext&, const MacroscopicLoad&) {
  largeStrainMissing();
}
StepSums DeformationGradientImage::eyreMiltonStep(const StepContext&, const MacroscopicLoad&) {
  largeStrainMissing();
}
double DeformationGradientImage::getStressNormSquared(const StepContext&) const {
  largeStrainMissing();
}

}  // namespace gridmoor
