// The load cases of homogenization: which of the six unit loads (Voigt order) and the thermal
// load a run with effective matrices walks.
#include "input/KeywordsElasticity.h"

namespace gridmoor {

bool KeywordsElasticity::hasLoadCase(int loadCase) const {
  if (!writeEffectiveMatrix() || loadCase < 0 || loadCase > kThermalLoadCase) return false;
  if (loadCase == kThermalLoadCase) return computeThermalExpansion();
  return (loadCaseMask() & (1u << loadCase)) != 0;
}

unsigned KeywordsElasticity::loadCaseMask() const {
  if (!writeEffectiveMatrix()) return 0;
  if (computeAllLoadCases()) return kAllVoigtBits;
  // Components by word (XX, ..., XY) or by their one-based Voigt slot, as "Loadcases" numbers
  // them in the result file.
  return voigtMaskOf(computeLoadCaseList(), computeLoadCaseList.key);
}

int KeywordsElasticity::numberOfMechanicalLoadCases() const {
  int count = 0;
  for (unsigned mask = loadCaseMask(); mask != 0; mask &= mask - 1) ++count;
  return count;
}

int KeywordsElasticity::numberOfLoadCases() const {
  return numberOfMechanicalLoadCases() + (hasLoadCase(kThermalLoadCase) ? 1 : 0);
}

}  // namespace gridmoor
