// The fully anisotropic linear elastic law (21 stiffness values in its own frame, turned by
// three orientation angles) and its form with thermal expansion along the three axes.
#pragma once

#include <memory>
#include <string>

#include "materials/OrientedLinearElasticMaterial.h"

namespace gridmoor {

class AnisotropicLinearElasticMaterial : public OrientedLinearElasticMaterial {
 public:
  static constexpr const char* stiffnessKey = "C";
  static constexpr const char* isotropicKey = "IsotropicMaterialLaw";

  // The upper triangle of the stiffness, row by row in Voigt order (11, 22, 33, 23, 13, 12).
  std::array<double, 21> stiffnessValues{};
  // Declared by the material file; the law takes it as given and does not check it.
  bool isotropicMaterialLaw = false;

  AnisotropicLinearElasticMaterial(std::string name, Colour colour, const XmlNode& parameters,
                                   Geometry* geometry, const KeywordsElasticity& keywords,
                                   std::shared_ptr<const LoadCaseTable> loadCases,
                                   std::shared_ptr<InternalVariablesStore> internalVariablesStore);

  bool isIsotropic() const override { return isotropicMaterialLaw; }
  bool isTransversalIsotropic() const override { return isIsotropic(); }
  bool isSoft() const override { return false; }
  // The stiffness is given directly, so it is always defined.
  bool isIncompressible() const override { return false; }

  // cVoigt from the 21 values; the compliance comes from the LU of the base class.
  void updateMatrices() override;
};

class AnisotropicLinearElasticMaterialWithThermalExpansion
    : public OrientedThermalForm<AnisotropicLinearElasticMaterial> {
 public:
  double alpha1 = 0.0, alpha2 = 0.0, alpha3 = 0.0;

  AnisotropicLinearElasticMaterialWithThermalExpansion(
      std::string name, Colour colour, const XmlNode& parameters, Geometry* geometry,
      const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
      std::shared_ptr<InternalVariablesStore> internalVariablesStore);

};

}  // namespace gridmoor
