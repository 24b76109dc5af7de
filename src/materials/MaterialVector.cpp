#include "materials/MaterialVector.h"

#include <array>
#include <utility>

#include "input/KeywordsElasticity.h"
#include "voxel/Geometry.h"
#include "voxel/Image.h"
#include "voxel/Vector.h"

namespace gridmoor {

namespace {

using Law = DiscretizedElasticMaterial;

// The members of the law interface that the table's loops reach by formulation word.
struct FormulationMembers {
  bool (Law::*hasInternalVariables)() const;
  std::uint64_t (Law::*perVoxel)(unsigned char) const;
  bool (Law::*isAffinLinear)() const;
  void (Law::*initInternalVariables)(const KeywordsElasticity&);
  void (Law::*restoreInternalVariables)(const std::string&);
  void (Law::*initializeInternalVariables)(const KeywordsElasticity&, int, Image<Real>&);
  void (Law::*updateInternalSolution)(int, const Image<Real>&);
  void (Law::*updateInternalVariables)();
  void (Law::*initLinearization)();
  void (Law::*updateLinearization)(int, const Image<Real>&);
};

#define GRIDMOOR_MEMBER_ROW(Word)                                        \
  FormulationMembers{&Law::hasInternalVariables##Word,                   \
                     &Law::totalNumberOfInternalVariablesPerVoxel##Word, \
                     &Law::isAffinLinear##Word,                          \
                     &Law::initInternalVariables##Word,                  \
                     &Law::restoreInternalVariables##Word,               \
                     &Law::initializeInternalVariables##Word,            \
                     &Law::updateInternalSolution##Word,                 \
                     &Law::updateInternalVariables##Word,                \
                     &Law::initLinearization##Word,                      \
                     &Law::updateLinearization##Word},
const std::array<FormulationMembers, 5> membersByFormulation = {
    GRIDMOOR_FORMULATIONS(GRIDMOOR_MEMBER_ROW)};
#undef GRIDMOOR_MEMBER_ROW

const FormulationMembers& membersOf(Formulation f) {
  return membersByFormulation[static_cast<std::size_t>(f)];
}

// Voxels of each colour in this process's slab of the computation grid.
std::array<std::uint64_t, 256> voxelCountsByColour(const Geometry& geometry) {
  std::array<std::uint64_t, 256> counts{};
  const ColorImage& image = geometry.RealVoxelImage;
  for (std::uint64_t x = image.localXBegin; x < image.localXEnd; ++x)
    for (std::uint64_t y = 0; y < image.sizeY; ++y)
      for (std::uint64_t z = 0; z < image.sizeZ; ++z) ++counts[image.at(x, y, z)];
  return counts;
}

}  // namespace

// ---- MaterialVector -------------------------------------------------------------------------

MaterialVector::~MaterialVector() {
  for (Material* m : ownedMaterials) delete m;
}

Material* MaterialVector::addMaterial(Colour colour, std::unique_ptr<Material> material) {
  if (materialsByColour.size() <= colour) materialsByColour.resize(colour + 1u, nullptr);
  Material* m = material.release();
  ownedMaterials.push_back(m);
  materialsByColour[colour] = m;
  return m;
}

DiscretizedMaterial* MaterialVector::usedLaw(Colour colour) const {
  const Material* m = materialOf(colour);
  return m ? lawOf(*m) : nullptr;
}

bool MaterialVector::allColorsDefined(const Geometry& geometry) const {
  for (Colour c : geometry.getUsedColors())
    if (!usedLaw(c)) return false;
  return true;
}

bool MaterialVector::containsHybrid(const Geometry& geometry) const {
  for (Colour c : geometry.getUsedColors()) {
    const DiscretizedMaterial* law = usedLaw(c);
    if (law && law->isHybrid()) return true;
  }
  return false;
}

// ---- Queries --------------------------------------------------------------------------------

bool MaterialElasticVector::allIsotropic(const Geometry& geometry) const {
  return !anyLaw(
      geometry, [](const Law& l) { return !l.isIsotropic(); }, Hybrids::Include);
}

bool MaterialElasticVector::allTransversalIsotropic(const Geometry& geometry) const {
  return !anyLaw(
      geometry, [](const Law& l) { return !l.isTransversalIsotropic(); }, Hybrids::Include);
}

bool MaterialElasticVector::anySoft(const Geometry& geometry) const {
  return anyLaw(geometry, [](const Law& l) { return l.isSoft(); });
}

bool MaterialElasticVector::anyRigid(const Geometry& geometry) const {
  return anyLaw(geometry, [](const Law& l) { return l.isRigid(); });
}

bool MaterialElasticVector::anyIncompressible(const Geometry& geometry) const {
  return anyLaw(geometry, [](const Law& l) { return l.isIncompressible(); });
}

bool MaterialElasticVector::allIncompressible(const Geometry& geometry) const {
  return !anyLaw(geometry, [](const Law& l) { return !l.isIncompressible(); });
}

bool MaterialElasticVector::anyNeedsOrientation(const Geometry& geometry) const {
  return anyLaw(
      geometry, [](const Law& l) { return l.needsOrientation(); }, Hybrids::Include);
}

bool MaterialElasticVector::anyHasThermalExpansion(const Geometry& geometry) const {
  return anyLaw(geometry, [](const Law& l) { return l.hasThermalExpansion(); });
}

std::set<Colour> MaterialElasticVector::colorsWithoutInfiniteContrast(
    const Geometry& geometry) const {
  std::set<Colour> colours;
  for (Colour c : geometry.getUsedColors()) {
    const Law* law = elasticLaw(c);
    if (law && !law->isSoft() && !law->isRigid() && !law->isHybrid()) colours.insert(c);
  }
  return colours;
}

bool MaterialElasticVector::allLinear(const Geometry& geometry) const {
  return !anyLaw(geometry, [](const Law& l) { return !l.isLinear(); });
}

bool MaterialElasticVector::allLinearForFormulation(const KeywordsElasticity& keywords,
                                                    const Geometry& geometry) const {
  const auto isAffinLinear = membersOf(formulationOf(keywords.problemFormulation())).isAffinLinear;
  return !anyLaw(geometry, [isAffinLinear](const Law& l) { return !(l.*isAffinLinear)(); });
}

bool MaterialElasticVector::anyHasResidualStress(const KeywordsElasticity& keywords,
                                                 const Geometry& geometry) const {
  if (keywords.typeOfDeformation() == "Large")
    return anyLaw(geometry, [](const Law& l) { return l.hasResidualStressAtIdentity(); });
  return anyLaw(geometry, [](const Law& l) { return l.hasResidualStressAtZeroStrain(); });
}

// Internal variables: hybrid laws keep state of their own, so they are never skipped here.
bool MaterialElasticVector::hasInternalVariables(const Geometry& geometry,
                                                 const std::string& formulation) const {
  const auto has = membersOf(formulationOf(formulation)).hasInternalVariables;
  return anyLaw(
      geometry, [has](const Law& l) { return (l.*has)(); }, Hybrids::Include);
}

std::uint64_t MaterialElasticVector::totalNumberOfInternalVariables(const Geometry& geometry,
                                                                    const std::string& formulation,
                                                                    unsigned char flag) const {
  const Formulation f = formulationOf(formulation);
  // Large-strain laws keep their state like eigenstrain laws, so the question of whether a
  // colour has any is asked in the eigenstrain family; only the size is the large-strain one.
  const auto has = membersOf(f == Formulation::DeformationGradient ? Formulation::Eigenstrain : f)
                       .hasInternalVariables;
  const auto perVoxel = membersOf(f).perVoxel;
  const std::array<std::uint64_t, 256> counts = voxelCountsByColour(geometry);
  std::uint64_t total = 0;
  for (Colour c : geometry.getUsedColors()) {
    const Law* law = elasticLaw(c);
    if (law && (law->*has)()) total += counts[c] * (law->*perVoxel)(flag);
  }
  return total;
}

VoigtAverages MaterialElasticVector::voigtAverages(const Geometry& geometry, int loadCase) const {
  VoigtAverages sums;
  const std::array<std::uint64_t, 256> counts = voxelCountsByColour(geometry);
  const double voxels = static_cast<double>(geometry.getSizeX()) *
                        static_cast<double>(geometry.getSizeY()) *
                        static_cast<double>(geometry.getSizeZ());
  // An infinite phase makes the matching average undefined; it stays the zero matrix, and the
  // refusing averages of the limit laws are never called.
  const bool rigid = anyRigid(geometry);
  const bool soft = anySoft(geometry);
  const ColorImage& image = geometry.RealVoxelImage;
  auto accumulate = [&](VoigtMatrix& sum, const VoigtMatrix& average, std::uint64_t count) {
    for (int i = 0; i < 36; ++i) sum.m[i] += static_cast<double>(count) * average.m[i] / voxels;
  };
  for (Colour c : geometry.getUsedColors()) {
    const Law* law = elasticLaw(c);
    if (!law) continue;
    if (!rigid) {
      accumulate(sums.strain, law->getCVoigtAverageStrain(image, loadCase), counts[c]);
      accumulate(sums.stress, law->getCVoigtAverageStress(image, loadCase), counts[c]);
      accumulate(sums.polarization, law->getCVoigtAveragePolarization(image, loadCase), counts[c]);
      accumulate(sums.eigenstrain, law->getCVoigtAverageEigenstrain(image, loadCase), counts[c]);
    }
    if (!soft) {
      accumulate(sums.inverseStrain, law->getCVoigtInverseAverageStrain(image, loadCase),
                 counts[c]);
      accumulate(sums.inverseStress, law->getCVoigtInverseAverageStress(image, loadCase),
                 counts[c]);
      accumulate(sums.inversePolarization,
                 law->getCVoigtInverseAveragePolarization(image, loadCase), counts[c]);
      accumulate(sums.inverseEigenstrain, law->getCVoigtInverseAverageEigenstrain(image, loadCase),
                 counts[c]);
    }
  }
  return sums;
}

// ---- Internal-variable loops ------------------------------------------------------------------

std::vector<Law*> MaterialElasticVector::lawsWithInternalVariables(const Geometry& geometry,
                                                                   Formulation formulation) const {
  const auto has = membersOf(formulation).hasInternalVariables;
  std::vector<Law*> laws;
  for (Colour c : geometry.getUsedColors()) {
    Law* law = elasticLaw(c);
    if (law && (law->*has)()) laws.push_back(law);
  }
  return laws;
}

namespace {
Formulation runFormulation(const KeywordsElasticity& keywords) {
  return formulationOf(keywords.problemFormulation());
}
}  // namespace

void MaterialElasticVector::initInternalVariables(const KeywordsElasticity& keywords,
                                                  const Geometry& geometry) const {
  const Formulation f = runFormulation(keywords);
  for (Law* law : lawsWithInternalVariables(geometry, f))
    (law->*membersOf(f).initInternalVariables)(keywords);
}

void MaterialElasticVector::initializeInternalVariables(const KeywordsElasticity& keywords,
                                                        const Geometry& geometry, int loadCase,
                                                        Image<Real>& field) const {
  const Formulation f = runFormulation(keywords);
  for (Law* law : lawsWithInternalVariables(geometry, f))
    (law->*membersOf(f).initializeInternalVariables)(keywords, loadCase, field);
}

void MaterialElasticVector::updateInternalSolution(const KeywordsElasticity& keywords,
                                                   const Geometry& geometry, int loadCase,
                                                   const Image<Real>& solution) const {
  const Formulation f = runFormulation(keywords);
  for (Law* law : lawsWithInternalVariables(geometry, f))
    (law->*membersOf(f).updateInternalSolution)(loadCase, solution);
}

void MaterialElasticVector::updateInternalVariables(const KeywordsElasticity& keywords,
                                                    const Geometry& geometry) const {
  const Formulation f = runFormulation(keywords);
  for (Law* law : lawsWithInternalVariables(geometry, f))
    (law->*membersOf(f).updateInternalVariables)();
}

void MaterialElasticVector::initLinearization(const KeywordsElasticity& keywords,
                                              const Geometry& geometry) const {
  const Formulation f = runFormulation(keywords);
  for (Law* law : lawsWithInternalVariables(geometry, f)) (law->*membersOf(f).initLinearization)();
}

void MaterialElasticVector::updateLinearization(const KeywordsElasticity& keywords,
                                                const Geometry& geometry, int loadCase,
                                                const Image<Real>& solution) const {
  const Formulation f = runFormulation(keywords);
  for (Law* law : lawsWithInternalVariables(geometry, f))
    (law->*membersOf(f).updateLinearization)(loadCase, solution);
}

void MaterialElasticVector::restoreInternalVariables(const KeywordsElasticity& keywords,
                                                     const Geometry& geometry,
                                                     const std::string& fileName) const {
  const Formulation f = runFormulation(keywords);
  for (Law* law : lawsWithInternalVariables(geometry, f))
    (law->*membersOf(f).restoreInternalVariables)(fileName);
}

namespace {
std::string stateFileName(const std::string& fileName, Colour colour, const std::string& store) {
  return fileName + "_" + std::to_string(colour) + "_" + store;
}
}  // namespace

void MaterialElasticVector::saveState(const KeywordsElasticity& keywords, const Geometry& geometry,
                                      const std::string& fileName) const {
  std::vector<Vector<Real>*> stores;
  std::vector<std::string> names;
  for (Law* law : lawsWithInternalVariables(geometry, runFormulation(keywords))) {
    law->getStateVariables(stores, names);
    for (std::size_t i = 0; i < stores.size(); ++i)
      stores[i]->writeToFile(stateFileName(fileName, law->getColour(), names[i]));
  }
}

void MaterialElasticVector::loadState(const KeywordsElasticity& keywords, const Geometry& geometry,
                                      const std::string& fileName) const {
  std::vector<Vector<Real>*> stores;
  std::vector<std::string> names;
  for (Law* law : lawsWithInternalVariables(geometry, runFormulation(keywords))) {
    law->getStateVariables(stores, names);
    for (std::size_t i = 0; i < stores.size(); ++i)
      stores[i]->readFromFile(stateFileName(fileName, law->getColour(), names[i]));
  }
}

// ---- Run hooks ----------------------------------------------------------------------------------

#define GRIDMOOR_FOR_EACH_USED_LAW(statement) \
  for (Colour c : geometry.getUsedColors())   \
    if (Law* law = elasticLaw(c)) statement;

void MaterialElasticVector::prepareVoxelData(const Geometry& geometry) const {
  GRIDMOOR_FOR_EACH_USED_LAW(law->prepareVoxelData())
}

void MaterialElasticVector::setReferenceMaterial(
    const Geometry& geometry, const DiscretizedElasticMaterial& reference) const {
  GRIDMOOR_FOR_EACH_USED_LAW(law->setReferenceMaterial(reference))
}

void MaterialElasticVector::setOrientation(const Geometry& geometry,
                                           const EulerAnglesImage* orientation) const {
  GRIDMOOR_FOR_EACH_USED_LAW(law->orientation = orientation)
}

void MaterialElasticVector::setStepLength(const Geometry& geometry, Real stepLength) const {
  GRIDMOOR_FOR_EACH_USED_LAW(law->setStepLength(stepLength))
}

void MaterialElasticVector::setStepNumber(const Geometry& geometry, int step) const {
  GRIDMOOR_FOR_EACH_USED_LAW(law->setStepNumber(step))
}

#undef GRIDMOOR_FOR_EACH_USED_LAW

}  // namespace gridmoor
