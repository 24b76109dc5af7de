// The material table of a run: one Material per colour, and the queries, checks and loops
// that solvers run over the colours the geometry uses. MaterialElasticVector is the mechanical
// form.
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "common/Types.h"
#include "materials/Formulations.h"
#include "materials/Material.h"
#include "materials/VoigtMatrix.h"
#include "voxel/Geometry.h"

namespace gridmoor {

class KeywordsElasticity;

class MaterialVector {
 public:
  // Index is the colour; a gap is null. Grown with nulls up to the largest registered colour.
  std::vector<Material*> materialsByColour;
  // In the order of creation; deleted with the vector.
  std::vector<Material*> ownedMaterials;

  // Keys and element names of the material table in the parameter tree.
  std::string materParamFileKey = "input/MaterialData/MaterParamFile";
  std::string materialListKey = "input/MaterialData/Material";
  std::string cffParamFileKey = "input/MaterParamValues/MaterParamFile";
  std::string fortranCompilerPdeKey = "input/FortranCompiler";
  std::string fortranCompilerKey = "input/MaterialData/FortranCompiler";
  std::string fortranCompilerOptionsKey = "input/MaterialData/FortranCompilerOptions";
  std::string materialElement = "Material";
  std::string materNameElement = "MaterName";
  std::string materNumberElement = "MaterNumber";
  std::string typeElement = "Type";
  std::string materialParametersElement = "MaterialParameters";
  // Filled while the table is read.
  std::string materialFilePath;
  std::string fortranCompiler;
  std::string fortranCompilerOptions;
  // Short type names of the laws this vector can build.
  std::vector<std::string> typeNames;

  MaterialVector() = default;
  MaterialVector(const MaterialVector&) = delete;
  MaterialVector& operator=(const MaterialVector&) = delete;
  virtual ~MaterialVector();

  // Takes ownership and makes the material the entry of its colour. Refusing a colour listed
  // twice is the reader's business; here the later entry simply wins the slot.
  Material* addMaterial(Colour colour, std::unique_ptr<Material> material);
  // The entry of a colour, or null.
  Material* materialOf(Colour colour) const {
    return colour < materialsByColour.size() ? materialsByColour[colour] : nullptr;
  }
  // The law of a holder that this kind of run uses: the heat law here.
  virtual DiscretizedMaterial* lawOf(const Material& material) const { return material.heat; }

  // Every used colour has an entry with a law.
  bool allColorsDefined(const Geometry& geometry) const;
  bool containsHybrid(const Geometry& geometry) const;

 protected:
  // The law for a used colour, or null when the colour has no entry or no law.
  DiscretizedMaterial* usedLaw(Colour colour) const;
};

// The eight volume averages of the mechanical table, one per average of the law interface.
struct VoigtAverages {
  VoigtMatrix strain;
  VoigtMatrix inverseStrain;
  VoigtMatrix inverseStress;
  VoigtMatrix stress;
  VoigtMatrix polarization;
  VoigtMatrix inversePolarization;
  VoigtMatrix inverseEigenstrain;
  VoigtMatrix eigenstrain;
};

// Range of per-law minima and maxima of an eigenvalue (or trace) question over the table.
struct EigenvalueRange {
  double minOfMinima = 0.0;
  double maxOfMinima = 0.0;
  double minOfMaxima = 0.0;
  double maxOfMaxima = 0.0;
};

class MaterialElasticVector : public MaterialVector {
 public:
  DiscretizedMaterial* lawOf(const Material& material) const override { return material.elastic; }
  // The mechanical law of a colour for the voxel loops (null for a gap).
  DiscretizedElasticMaterial* elasticLaw(Colour colour) const {
    const Material* m = materialOf(colour);
    return m ? m->elastic : nullptr;
  }

  // ---- Queries over the used colours (hybrid colours skipped unless told) ---------------
  enum class Hybrids { Skip, Include };
  // True as soon as the law of some used colour satisfies the predicate; colours without a
  // law are passed over.
  template <class Predicate>
  bool anyLaw(const Geometry& geometry, Predicate predicate,
              Hybrids hybrids = Hybrids::Skip) const {
    for (Colour c : geometry.getUsedColors()) {
      const DiscretizedElasticMaterial* law = elasticLaw(c);
      if (!law || (hybrids == Hybrids::Skip && law->isHybrid())) continue;
      if (predicate(*law)) return true;
    }
    return false;
  }
  bool allIsotropic(const Geometry& geometry) const;             // hybrids included
  bool allTransversalIsotropic(const Geometry& geometry) const;  // hybrids included
  bool anySoft(const Geometry& geometry) const;
  bool anyRigid(const Geometry& geometry) const;
  bool anyIncompressible(const Geometry& geometry) const;
  bool allIncompressible(const Geometry& geometry) const;
  bool anyNeedsOrientation(const Geometry& geometry) const;  // hybrids included
  bool anyHasThermalExpansion(const Geometry& geometry) const;
  // Colours that are neither soft nor rigid nor hybrid.
  std::set<Colour> colorsWithoutInfiniteContrast(const Geometry& geometry) const;
  bool allLinear(const Geometry& geometry) const;
  // All laws affine linear in the run's formulation.
  bool allLinearForFormulation(const KeywordsElasticity& keywords, const Geometry& geometry) const;
  bool anyHasResidualStress(const KeywordsElasticity& keywords, const Geometry& geometry) const;
  bool hasInternalVariables(const Geometry& geometry, const std::string& formulation) const;
  std::uint64_t totalNumberOfInternalVariables(const Geometry& geometry,
                                               const std::string& formulation,
                                               unsigned char flag) const;
  VoigtAverages voigtAverages(const Geometry& geometry, int loadCase) const;

  // ---- Checks before any image exists ---------------------------------------------------
  // May switch CalculateBounds off (with a warning) for laws that are not affine linear.
  void checkMaterials(KeywordsElasticity& keywords, const Geometry& geometry) const;
  // The same, but bounds need affine linear, transversally isotropic laws or the run ends.
  void checkMaterialsForBounds(KeywordsElasticity& keywords, const Geometry& geometry) const;
  // The stress formulation's own check; may switch the basic scheme to the variational one.
  void checkMaterialsForStressFormulation(KeywordsElasticity& keywords,
                                          const Geometry& geometry) const;

  // ---- Eigenvalue ranges for the reference material -------------------------------------
  // Rigid, soft and hybrid colours are skipped; with none left the run ends.
  EigenvalueRange getMinMaxEigenvalueStrain(const Geometry& geometry, int loadCase,
                                            const Image<Real>* field) const;
  EigenvalueRange getMinMaxEigenvalueStress(const Geometry& geometry, int loadCase,
                                            const Image<Real>* field) const;
  EigenvalueRange getMinMaxEigenvaluePolarisation(const Geometry& geometry, int loadCase,
                                                  const Image<Real>* field) const;
  EigenvalueRange getMinMaxEigenvalueEigenstrain(const Geometry& geometry, int loadCase,
                                                 const Image<Real>* field) const;
  EigenvalueRange getMinMaxEigenvalueDeformationGradient(const Geometry& geometry, int loadCase,
                                                         const Image<Real>* field) const;
  EigenvalueRange getMinMaxTraceDeformationGradient(const Geometry& geometry, int loadCase,
                                                    const Image<Real>* field) const;

  // ---- Loops over the colours with internal variables in the formulation ----------------
  void initInternalVariables(const KeywordsElasticity& keywords, const Geometry& geometry) const;
  void initializeInternalVariables(const KeywordsElasticity& keywords, const Geometry& geometry,
                                   int loadCase, Image<Real>& field) const;
  void updateInternalSolution(const KeywordsElasticity& keywords, const Geometry& geometry,
                              int loadCase, const Image<Real>& solution) const;
  void updateInternalVariables(const KeywordsElasticity& keywords, const Geometry& geometry) const;
  void initLinearization(const KeywordsElasticity& keywords, const Geometry& geometry) const;
  void updateLinearization(const KeywordsElasticity& keywords, const Geometry& geometry,
                           int loadCase, const Image<Real>& solution) const;
  void restoreInternalVariables(const KeywordsElasticity& keywords, const Geometry& geometry,
                                const std::string& fileName) const;
  // Each state store of each such colour to (from) fileName + "_" + colour + "_" + store name.
  void saveState(const KeywordsElasticity& keywords, const Geometry& geometry,
                 const std::string& fileName) const;
  void loadState(const KeywordsElasticity& keywords, const Geometry& geometry,
                 const std::string& fileName) const;

  // ---- Run hooks over all used laws ------------------------------------------------------
  void prepareVoxelData(const Geometry& geometry) const;
  void setReferenceMaterial(const Geometry& geometry,
                            const DiscretizedElasticMaterial& reference) const;
  void setOrientation(const Geometry& geometry, const EulerAnglesImage* orientation) const;
  void setStepLength(const Geometry& geometry, Real stepLength) const;
  void setStepNumber(const Geometry& geometry, int step) const;

 private:
  // The laws of used colours with internal variables in the formulation, in colour-list order.
  std::vector<DiscretizedElasticMaterial*> lawsWithInternalVariables(const Geometry& geometry,
                                                                     Formulation formulation) const;
  void runChecks(KeywordsElasticity& keywords, const Geometry& geometry, bool strictBounds) const;
};

}  // namespace gridmoor
