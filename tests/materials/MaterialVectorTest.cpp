#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "MaterialInterfaceTestLaws.h"
#include "input/KeywordsElasticity.h"

namespace gridmoor {
namespace {

using testing_laws::addLaw;
using testing_laws::geometryOf;
using testing_laws::isotropicStiffness;
using testing_laws::LawAnswers;
using testing_laws::TestLaw;

// Keeps state in the formulations it is given, logs the internal-variable calls it receives,
// and answers the per-voxel count of formulation i with 10 * (i + 1) + flag.
class StatefulLaw : public TestLaw {
 public:
  std::set<Formulation> withState;
  std::vector<std::string>* log = nullptr;

#define GRIDMOOR_STATEFUL_MEMBERS(Word)                                                           \
  bool hasInternalVariables##Word() const override {                                              \
    return withState.count(Formulation::Word) > 0;                                                \
  }                                                                                               \
  std::uint64_t totalNumberOfInternalVariablesPerVoxel##Word(unsigned char flag) const override { \
    return 10 * (static_cast<std::uint64_t>(Formulation::Word) + 1) + flag;                       \
  }                                                                                               \
  void initInternalVariables##Word(const KeywordsElasticity&) override { note("init" #Word); }    \
  void updateInternalVariables##Word() override { note("update" #Word); }
  GRIDMOOR_FORMULATIONS(GRIDMOOR_STATEFUL_MEMBERS)
#undef GRIDMOOR_STATEFUL_MEMBERS

 private:
  void note(const std::string& what) { log->push_back(what + std::to_string(colour)); }
};

StatefulLaw* addStatefulLaw(MaterialVector& table, Colour colour, std::set<Formulation> withState,
                            std::vector<std::string>* log) {
  auto* law = new StatefulLaw;
  law->colour = colour;
  law->withState = std::move(withState);
  law->log = log;
  table.addMaterial(colour, std::make_unique<Material>(law, nullptr));
  return law;
}

std::unique_ptr<KeywordsElasticity> keywordsFor(const std::string& primaryUnknown) {
  auto keywords = std::make_unique<KeywordsElasticity>();
  keywords->primaryUnknown.set(primaryUnknown);
  return keywords;
}

TEST(MaterialVector, QueriesSeeOnlyUsedColoursAndSkipHybridsUnlessTold) {
  MaterialElasticVector table;
  auto geometry = geometryOf({1, 2, 2, 4});
  addLaw(table, 1);
  addLaw(table, 2, {.incompressible = true});
  addLaw(table, 3, {.soft = true, .rigid = true, .linear = false});  // registered, not used
  TestLaw* hybrid = addLaw(table, 4, {.soft = true, .isotropic = false, .hybrid = true});

  EXPECT_TRUE(table.allColorsDefined(*geometry));
  EXPECT_TRUE(table.containsHybrid(*geometry));
  EXPECT_FALSE(table.anySoft(*geometry));
  EXPECT_FALSE(table.anyRigid(*geometry));
  EXPECT_TRUE(table.allLinear(*geometry));
  EXPECT_TRUE(table.anyIncompressible(*geometry));
  EXPECT_FALSE(table.allIncompressible(*geometry));
  EXPECT_EQ(table.colorsWithoutInfiniteContrast(*geometry), (std::set<Colour>{1, 2}));
  // The orientation questions look at hybrids too.
  EXPECT_FALSE(table.allIsotropic(*geometry));
  EXPECT_TRUE(table.anyNeedsOrientation(*geometry));
  hybrid->answers.transversalIsotropic = false;
  EXPECT_FALSE(table.allTransversalIsotropic(*geometry));

  hybrid->answers.hybrid = false;
  EXPECT_FALSE(table.containsHybrid(*geometry));
  EXPECT_TRUE(table.anySoft(*geometry));
  EXPECT_EQ(table.colorsWithoutInfiniteContrast(*geometry), (std::set<Colour>{1, 2}));
}

TEST(MaterialVector, InternalVariableCountsWeighVoxelsAndKeepTheLargeStrainAsymmetry) {
  std::vector<std::string> log;
  MaterialElasticVector table;
  auto geometry = geometryOf({1, 1, 1, 2, 3, 3});
  addStatefulLaw(table, 1, {Formulation::Strain, Formulation::Eigenstrain}, &log);
  addStatefulLaw(table, 2, {Formulation::DeformationGradient}, &log);
  addStatefulLaw(table, 3, {}, &log);

  EXPECT_TRUE(table.hasInternalVariables(*geometry, "Strain"));
  EXPECT_FALSE(table.hasInternalVariables(*geometry, "Stress"));
  // Strain: colour 1 only, 3 voxels of 10 + flag values each.
  EXPECT_EQ(table.totalNumberOfInternalVariables(*geometry, "Strain", 2), 3u * 12u);
  // Large strain asks the eigenstrain family whether a colour has variables, then counts
  // with the large-strain size: colour 1 counts (3 voxels of 50 + 1), colour 2 does not.
  EXPECT_TRUE(table.hasInternalVariables(*geometry, "DeformationGradient"));
  EXPECT_EQ(table.totalNumberOfInternalVariables(*geometry, "DeformationGradient", 1), 3u * 51u);
  EXPECT_EQ(table.totalNumberOfInternalVariables(*geometry, "Polarization", 0), 0u);
}

TEST(MaterialVector, InternalVariableLoopsReachTheLawsWithStateInTheRunsFormulation) {
  std::vector<std::string> log;
  MaterialElasticVector table;
  auto geometry = geometryOf({1, 2, 3});
  addStatefulLaw(table, 1, {Formulation::Strain}, &log);
  addStatefulLaw(table, 2, {Formulation::Stress}, &log);
  addStatefulLaw(table, 3, {Formulation::Strain, Formulation::Stress}, &log);
  addStatefulLaw(table, 4, {Formulation::Strain}, &log);  // not in the geometry

  table.initInternalVariables(*keywordsFor("Strain"), *geometry);
  table.updateInternalVariables(*keywordsFor("Stress"), *geometry);
  // The loops follow the geometry's colour list, whose order is not ascending.
  std::sort(log.begin(), log.end());
  EXPECT_EQ(log, (std::vector<std::string>{"initStrain1", "initStrain3", "updateStress2",
                                           "updateStress3"}));
}

// Averages of C are value times the identity, averages of the compliance its reciprocal.
class AveragingLaw : public TestLaw {
 public:
  AveragingLaw(double value, LawAnswers answers) : TestLaw(answers), value_(value) {}
#define GRIDMOOR_AVERAGE(Name, factor) \
  VoigtMatrix Name(const ColorImage&, int) const override { return scaled(factor); }
  GRIDMOOR_AVERAGE(getCVoigtAverageStrain, value_)
  GRIDMOOR_AVERAGE(getCVoigtAverageStress, value_)
  GRIDMOOR_AVERAGE(getCVoigtAveragePolarization, value_)
  GRIDMOOR_AVERAGE(getCVoigtAverageEigenstrain, value_)
  GRIDMOOR_AVERAGE(getCVoigtInverseAverageStrain, 1.0 / value_)
  GRIDMOOR_AVERAGE(getCVoigtInverseAverageStress, 1.0 / value_)
  GRIDMOOR_AVERAGE(getCVoigtInverseAveragePolarization, 1.0 / value_)
  GRIDMOOR_AVERAGE(getCVoigtInverseAverageEigenstrain, 1.0 / value_)
#undef GRIDMOOR_AVERAGE

 private:
  static VoigtMatrix scaled(double factor) {
    VoigtMatrix m;
    for (int a = 0; a < 6; ++a) m(a, a) = factor;
    return m;
  }
  double value_;
};

TEST(MaterialVector, VoigtAveragesWeighByVoxelsAndVanishForInfinitePhases) {
  MaterialElasticVector table;
  auto geometry = geometryOf({1, 1, 1, 2});
  table.addMaterial(1, std::make_unique<Material>(new AveragingLaw(2.0, {}), nullptr));
  auto* second = new AveragingLaw(4.0, {});
  table.addMaterial(2, std::make_unique<Material>(second, nullptr));

  VoigtAverages averages = table.voigtAverages(*geometry, 0);
  EXPECT_DOUBLE_EQ(averages.strain(3, 3), (3 * 2.0 + 4.0) / 4);
  EXPECT_DOUBLE_EQ(averages.inverseEigenstrain(5, 5), (3 * 0.5 + 0.25) / 4);
  EXPECT_EQ(averages.strain(0, 1), 0.0);

  // A rigid phase leaves the stiffness averages at zero, a soft one the compliance averages.
  second->answers.rigid = true;
  averages = table.voigtAverages(*geometry, 0);
  EXPECT_EQ(averages.polarization(0, 0), 0.0);
  EXPECT_DOUBLE_EQ(averages.inverseStrain(0, 0), (3 * 0.5 + 0.25) / 4);
  second->answers = {.soft = true};
  averages = table.voigtAverages(*geometry, 0);
  EXPECT_EQ(averages.inverseStress(0, 0), 0.0);
  EXPECT_DOUBLE_EQ(averages.eigenstrain(0, 0), (3 * 2.0 + 4.0) / 4);
}

TEST(MaterialVector, EigenvalueRangesWidenOverFiniteLawsOnly) {
  MaterialElasticVector table;
  auto geometry = geometryOf({1, 2, 3, 4, 5});
  // Isotropic laws: in Mandel form the stiffness has eigenvalues 2 mu and 3 K.
  addLaw(table, 1)->stiffness = isotropicStiffness(1.0, 1.0);  // 2 mu = 2, 3 K = 5
  addLaw(table, 2)->stiffness = isotropicStiffness(4.0, 0.5);  // 2 mu = 1, 3 K = 13
  addLaw(table, 3)->stiffness = isotropicStiffness(0.5, 3.0);  // 2 mu = 6, 3 K = 7.5
  addLaw(table, 4, {.rigid = true})->stiffness = isotropicStiffness(0.0, 100.0);
  addLaw(table, 5, {.hybrid = true})->stiffness = isotropicStiffness(0.0, 0.01);

  const EigenvalueRange range = table.getMinMaxEigenvalueStrain(*geometry, 0, nullptr);
  EXPECT_NEAR(range.minOfMinima, 1.0, 1e-12);
  EXPECT_NEAR(range.maxOfMinima, 6.0, 1e-12);
  EXPECT_NEAR(range.minOfMaxima, 5.0, 1e-12);
  EXPECT_NEAR(range.maxOfMaxima, 13.0, 1e-12);
}

TEST(MaterialVectorDeathTest, RangesOfOnlyInfiniteLawsEndTheRunWithTheirWording) {
  MaterialElasticVector table;
  auto geometry = geometryOf({1, 2});
  addLaw(table, 1, {.rigid = true});
  addLaw(table, 2, {.soft = true});
  auto message = [](const std::string& name) {
    return testing_laws::exactLine("Only rigid Materials. The function MaterialVector::" + name +
                                   "() should not be called in this case!");
  };
  EXPECT_EXIT(table.getMinMaxEigenvalueStrain(*geometry, 0, nullptr), ::testing::ExitedWithCode(1),
              message("getMinMaxEigenvalueStrain"));
  // The polarization and eigenstrain members speak with the strain and stress wording.
  EXPECT_EXIT(table.getMinMaxEigenvaluePolarisation(*geometry, 0, nullptr),
              ::testing::ExitedWithCode(1), message("getMinMaxEigenvalueStrain"));
  EXPECT_EXIT(table.getMinMaxEigenvalueEigenstrain(*geometry, 0, nullptr),
              ::testing::ExitedWithCode(1), message("getMinMaxEigenvalueStress"));
}

}  // namespace
}  // namespace gridmoor
