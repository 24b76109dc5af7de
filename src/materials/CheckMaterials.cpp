// The material checks that run once after the table is read and before any field exists: a
// forbidden combination of laws, formulation, load and method ends the run here.
#include <iostream>
#include <set>
#include <string>

#include "common/Fatal.h"
#include "input/KeywordsElasticity.h"
#include "materials/MaterialVector.h"
#include "voxel/Geometry.h"

namespace gridmoor {

namespace {

// Mechanical load cases the homogenization computes: all six, or the words "1" to "6" of
// the load-case list ("7" is the thermal case and does not count).
int numberOfMechanicalLoadCases(const KeywordsElasticity& keywords) {
  if (keywords.computeAllLoadCases()) return 6;
  std::set<std::string> cases;
  for (const std::string& word : keywords.computeLoadCaseList())
    if (word.size() == 1 && word[0] >= '1' && word[0] <= '6') cases.insert(word);
  return static_cast<int>(cases.size());
}

// The basic discretization without the variational filter.
bool usesBasicScheme(const KeywordsElasticity& keywords) {
  const FilterType filter = keywords.filter();
  return keywords.greenOperator() == GreenOperatorType::Basic &&
         (filter == FilterType::None || filter == FilterType::NonConsistent);
}

// Two-part messages whose first part is a sentence of its own go out as two lines.
std::string twoLines(const std::string& first, const std::string& second) {
  return first + "\n" + second;
}

}  // namespace

void MaterialElasticVector::checkMaterials(KeywordsElasticity& keywords,
                                           const Geometry& geometry) const {
  runChecks(keywords, geometry, false);
}

void MaterialElasticVector::checkMaterialsForBounds(KeywordsElasticity& keywords,
                                                    const Geometry& geometry) const {
  runChecks(keywords, geometry, true);
}

void MaterialElasticVector::runChecks(KeywordsElasticity& keywords, const Geometry& geometry,
                                      bool strictBounds) const {
  const std::string formulation = keywords.problemFormulation();
  const std::string prescribed = keywords.typeOfMacroscopicLoadPolarizationEigenstrain();
  const std::string load = keywords.typeOfMacroscopicLoadStrainStress();
  const std::string& method = keywords.iterativeMethod();
  const bool effective = keywords.writeEffectiveMatrix();
  const bool fewerThanSixCases = numberOfMechanicalLoadCases(keywords) < 6;
  const bool prescribedField = (formulation == "Polarization" && prescribed == "Polarization") ||
                               (formulation == "Eigenstrain" && prescribed == "Eigenstrain");
  const bool large = formulation == "DeformationGradient";
  const bool macroscopicLoad = formulation == "Strain" || formulation == "Stress" || large;

  if ((prescribedField || large) && effective && fewerThanSixCases)
    fatal(
        "It is not possible to calculate the effective Matrix (or parts of it) for prescribed "
        "polarization, eigenstrain or deformationGradient if not all six mechanical loadcases "
        "are computed.");
  if (prescribedField && effective && fewerThanSixCases && keywords.computeThermalExpansion())
    fatal(
        "It is not possible to calculate the effective thermal expansion for prescribed "
        "polarization, eigenstrain or deformationGradient if not all six mechanical loadcases "
        "are computed.");
  if (((formulation == "Strain" && (load == "Stress" || load == "Mixed")) ||
       (formulation == "Stress" && (load == "Strain" || load == "Mixed"))) &&
      effective && fewerThanSixCases)
    fatal(
        "It is not possible to calculate the effective Matrix (or parts of it) for prescribed "
        "stress/strain if the primary unknown is strain/stress unless all six mechanical "
        "loadcases are computed.");

  if (!allColorsDefined(geometry)) fatal("Not for all colors are the material parameters defined!");

  if (!large && anyLaw(geometry, [](const DiscretizedElasticMaterial& l) {
        return !l.usableForSmallDeformations();
      }))
    fatal("Not all materials can be used in the regime of small deformations!");
  if (large && anyLaw(geometry, [](const DiscretizedElasticMaterial& l) {
        return !l.usableForLargeDeformations();
      }))
    fatal("Not all materials can be used in the regime of large deformations!");

  const bool affineLinear = allLinearForFormulation(keywords, geometry);
  if (!affineLinear && method != "NeumannSeries" && !keywords.linearizeWithNR())
    std::cout << "For a non-affin-linear problem, the convergence of the CG or BiCGSTAB "
                 "iteration is not clear\n"
              << "Use the Neummann Series iteration or the NR-linearization\n";

  if (method != "NeumannSeries" && (formulation == "Polarization" || formulation == "Eigenstrain"))
    fatal("For the polarization scheme only the Neumann Series does make sense.");
  if (method == "slowCG" && formulation != "Strain" && !large)
    fatal(
        "The Nesterov method (slowCG) can only be used for the strain or deformation gradient "
        "formulation.");

  const bool soft = anySoft(geometry);
  const bool rigid = anyRigid(geometry);
  if (macroscopicLoad && soft && rigid)
    fatal(
        "It is not possible to solve a problem with both soft (E=0) and rigid (E=infinity) "
        "materials, when applying macroscopic strain, stress, or deformationGradient.");
  if (usesBasicScheme(keywords) && macroscopicLoad && (soft || rigid))
    std::cout << "Infinite contrast of materials. Using variational scheme in case of "
                 "convergence problems.\n";

  if (formulation == "Stress" && soft)
    fatal(twoLines("Soft material (E=0) used.",
                   "This is not possible for the stress formulation, because the compliance "
                   "matrix is not defined for soft materials."));
  if (formulation == "Strain" || large) {
    if (anyIncompressible(geometry))
      fatal(twoLines("Incompressible material (nu = 0.5) used.",
                     "This is not possible for the strain or deformationGradient formulation, "
                     "because the stiffness Matrix C is not defined for incompressible "
                     "materials."));
    if (rigid)
      fatal(twoLines("Rigid material (E=infinity) used.",
                     "This is not possible for the strain of deformationGradient formulation, "
                     "because the stiffness matrix C is not defined for rigid materials."));
  }

  if (strictBounds) {
    // Called when bounds are to be computed analytically: nothing else will serve.
    if (!affineLinear || !allTransversalIsotropic(geometry))
      fatal(
          "All materials need to be linear and transversal isotropic to calculate analytically "
          "the Voigt/Reuss bounds...");
  } else if (keywords.calculateBounds() && !affineLinear) {
    std::cout << "Voigt/Reuss bounds can only be calculated for linear elastic materials.\n";
    keywords.calculateBounds.set(false);
  }
}

void MaterialElasticVector::checkMaterialsForStressFormulation(KeywordsElasticity& keywords,
                                                               const Geometry& geometry) const {
  if (!allColorsDefined(geometry)) fatal("Not for all colors are the material parameters defined!");
  if (anySoft(geometry))
    fatal(twoLines("Soft material (E=0) used.",
                   "This is not possible for the stress formulation, because the flexibility "
                   "matrix is not defined for soft materials."));
  if (usesBasicScheme(keywords) && anyRigid(geometry)) {
    std::cout << "Infinite contrast of materials too high for basic scheme. Using variational "
                 "scheme.\n";
    keywords.filter.set(FilterType::Periodize);
  }
}

}  // namespace gridmoor
