// The orthotropic linear elastic law (nine engineering constants in its own frame, turned by
// three orientation angles) and its form with thermal expansion along the three axes.
#pragma once

#include <array>
#include <memory>
#include <string>

#include "materials/LinearElasticMaterialMatrices.h"
#include "materials/OrientedLinearElasticMaterial.h"

namespace gridmoor {

class OrthotropicLinearElasticMaterial : public OrientedLinearElasticMaterial {
 public:
  static constexpr std::array<const char*, 9> parameterKeys{"E1",   "E2",  "E3",  "nu12", "nu13",
                                                            "nu23", "G12", "G13", "G23"};

  double E1 = 0.0, E2 = 0.0, E3 = 0.0;
  double nu12 = 0.0, nu13 = 0.0, nu23 = 0.0;
  double G12 = 0.0, G13 = 0.0, G23 = 0.0;

  OrthotropicLinearElasticMaterial(std::string name, Colour colour, const XmlNode& parameters,
                                   Geometry* geometry, const KeywordsElasticity& keywords,
                                   std::shared_ptr<const LoadCaseTable> loadCases,
                                   std::shared_ptr<InternalVariablesStore> internalVariablesStore);

  // All by exact comparison.
  bool isIsotropic() const override {
    return E1 == E2 && E2 == E3 && nu12 == nu13 && nu13 == nu23 &&
           G12 == E1 / ((1.0 + nu12) + (1.0 + nu12)) && G12 == G13 && G13 == G23;
  }
  bool isTransversalIsotropic() const override { return isIsotropic(); }
  // A zero modulus makes the compliance infinite.
  bool isSoft() const override {
    return E1 == 0.0 || E2 == 0.0 || E3 == 0.0 || G12 == 0.0 || G13 == 0.0 || G23 == 0.0;
  }
  // The stiffness is undefined exactly when the normal block of the compliance is singular;
  // for equal Poisson numbers that is nu = 0.5, but a single nu of 0.5 is a valid law here.
  bool isIncompressible() const override;

  OrthotropicConstants constants() const { return {E1, E2, E3, nu12, nu13, nu23, G12, G13, G23}; }
  void updateMatrices() override;
  void updateInverseMatrices() override;
};

class OrthotropicLinearElasticMaterialWithThermalExpansion
    : public OrientedThermalForm<OrthotropicLinearElasticMaterial> {
 public:
  double alpha1 = 0.0, alpha2 = 0.0, alpha3 = 0.0;

  OrthotropicLinearElasticMaterialWithThermalExpansion(
      std::string name, Colour colour, const XmlNode& parameters, Geometry* geometry,
      const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
      std::shared_ptr<InternalVariablesStore> internalVariablesStore);

};

}  // namespace gridmoor
