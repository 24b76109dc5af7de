#include "materials/DiscretizedMaterial.h"

#include <utility>

#include "common/Fatal.h"
#include "input/KeywordsElasticity.h"

namespace gridmoor {

void refuseOperation(const std::string& name) {
  fatal("The function " + name + " has not be implemented for all used materials!");
}

DiscretizedMaterial::DiscretizedMaterial(std::string name, Colour colour,
                                         const KeywordsElasticity& keywords,
                                         std::shared_ptr<const LoadCaseTable> loadCases,
                                         std::shared_ptr<InternalVariablesStore> store,
                                         Geometry* geometry)
    : name(std::move(name)),
      colour(colour),
      maxIterNRMaterialLaw(keywords.maxIterNRMaterialLaw()),
      convergenceCriterionNRMaterialLaw(keywords.convergenceCriterionNRMaterialLaw()),
      loadCases(std::move(loadCases)),
      internalVariablesStore(std::move(store)),
      geometry(geometry) {}

}  // namespace gridmoor
