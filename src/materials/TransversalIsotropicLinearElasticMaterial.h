// The transversally isotropic linear elastic law (axis x in its own frame, turned by two
// orientation angles) and its form with thermal expansion along and across the axis.
#pragma once

#include <array>
#include <memory>
#include <string>

#include "materials/OrientedLinearElasticMaterial.h"

namespace gridmoor {

class TransversalIsotropicLinearElasticMaterial : public OrientedLinearElasticMaterial {
 public:
  static constexpr std::array<const char*, 5> parameterKeys{"E1", "E2", "nu12", "nu23", "G12"};

  double E1 = 0.0;  // along the axis
  double E2 = 0.0;  // across it
  double nu12 = 0.0;
  double nu23 = 0.0;
  double G12 = 0.0;

  TransversalIsotropicLinearElasticMaterial(
      std::string name, Colour colour, const XmlNode& parameters, Geometry* geometry,
      const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
      std::shared_ptr<InternalVariablesStore> internalVariablesStore);

  // All by exact comparison.
  bool isIsotropic() const override {
    return E1 == E2 && nu12 == nu23 && G12 == E1 / ((1.0 + nu12) + (1.0 + nu12));
  }
  bool isSoft() const override { return E1 == 0.0 || E2 == 0.0 || G12 == 0.0; }
  bool isIncompressible() const override { return nu12 == 0.5 || nu23 == 0.5; }

  void updateMatrices() override;
  void updateInverseMatrices() override;
};

class TransversalIsotropicLinearElasticMaterialWithThermalExpansion
    : public OrientedThermalForm<TransversalIsotropicLinearElasticMaterial> {
 public:
  double alpha1 = 0.0;  // along the axis
  double alpha2 = 0.0;  // across it

  TransversalIsotropicLinearElasticMaterialWithThermalExpansion(
      std::string name, Colour colour, const XmlNode& parameters, Geometry* geometry,
      const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
      std::shared_ptr<InternalVariablesStore> internalVariablesStore);

};

}  // namespace gridmoor
