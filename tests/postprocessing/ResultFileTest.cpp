#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <string>

#include "../formats/FieldFileTestSupport.h"
#include "../materials/MaterialInterfaceTestLaws.h"
#include "input/KeywordsElasticity.h"
#include "postprocessing/InternalVariableAverages.h"
#include "postprocessing/ResultFile.h"

namespace gridmoor {
namespace {

std::string headerOf(const KeywordsElasticity& kw, int step) {
  std::ostringstream out;
  writeResultHeader(out, kw, step);
  return out.str();
}

TEST(ResultFileHeader, SeveralStepsRotatedAxesMixedLoadAndLoadCases) {
  KeywordsElasticity kw;
  kw.timeStepType.set(TimeStepType::UserDefined);
  kw.timeSteps.set({0, 1, 3});
  kw.coordinateSystem.set({0, 1, 0, -1, 0, 0, 0, 0, 1});
  kw.macroscopicStrainStressType.set("LinearInterpolation");
  kw.typeOfMacroscopicLoadStrainStress.set("Mixed");
  kw.strainList.set({"XX", "YY", "ZZ"});  // normal parts strain, shear parts stress
  kw.macroscopicStrainStressValues.set({{0, 0, 0, 0, 0, 0, 0}, {3, 0.03, 0, 0, 6, 0, 9}});
  kw.macroscopicTemperatureChangeValues.set({{0, 0}, {3, 30}});
  kw.writeEffectiveMatrix.set(true);
  kw.computeThermalExpansion.set(true);
  kw.computeLoadCaseList.set({"XX", "XY"});
  // Step 1 ends at time 3: the table's last row holds there.
  EXPECT_EQ(headerOf(kw, 1),
            "Parameter:Vector:CoordinateAxisX 0,1,0\n"
            "Parameter:Vector:CoordinateAxisY -1,0,0\n"
            "Parameter:Vector:CoordinateAxisZ 0,0,1\n"
            "Parameter:Scalar:Time 3\n"
            "Parameter:Scalar:TemperatureChange 30\n"
            "Parameter:Scalar:TemperatureChangeIncrementForHomogenization 1\n"
            "Parameter:Scalar:StrainXX 0.03\n"
            "Parameter:Scalar:StrainYY 0\n"
            "Parameter:Scalar:StrainZZ 0\n"
            "Parameter:Scalar:StressYZ 6\n"
            "Parameter:Scalar:StressXZ 0\n"
            "Parameter:Scalar:StressXY 9\n"
            "Parameter:Scalar:StrainStressIncrementForHomogenization 0.01\n"
            "Loadcases 1,6\n");

  // The polarization formulation writes no axes even for a rotated frame.
  kw.primaryUnknown.set("PolarizationEigenstrain");
  kw.typeOfMacroscopicLoadPolarizationEigenstrain.set("Polarization");
  kw.macroscopicPolarizationValues.set({{0, 0, 0, 0, 0, 0, 0}, {3, 1, 2, 3, 4, 5, 6}});
  const std::string header = headerOf(kw, 0);
  EXPECT_EQ(header.find("CoordinateAxis"), std::string::npos);
  EXPECT_NE(header.find("Parameter:Scalar:Time 1\n"), std::string::npos);
  EXPECT_NE(header.find("Parameter:Scalar:PolarizationXY 2\n"), std::string::npos);
  EXPECT_NE(header.find("Parameter:Scalar:PolarizationIncrementForHomogenization 0.01\n"),
            std::string::npos);
}

TEST(ResultFileHeader, LargeStrainWordsFollowTheTensorMask) {
  KeywordsElasticity kw;
  kw.typeOfDeformation.set("Large");
  kw.typeOfMacroscopicLoadDeformationGradient.set("Mixed");
  kw.deformationGradientList.set({"XX", "YY", "ZZ", "XY"});
  kw.macroscopicStrainStressType.set("Constant");
  kw.macroscopicDeformationGradientFirstPK.set({1.1, 0.2, 0, 5, 1, 0, 0, 0, 1});
  EXPECT_EQ(headerOf(kw, 0),
            "Parameter:Scalar:DeformationGradientXX 1.1\n"
            "Parameter:Scalar:DeformationGradientXY 0.2\n"
            "Parameter:Scalar:FirstPKXZ 0\n"
            "Parameter:Scalar:FirstPKYX 5\n"
            "Parameter:Scalar:DeformationGradientYY 1\n"
            "Parameter:Scalar:FirstPKYZ 0\n"
            "Parameter:Scalar:FirstPKZX 0\n"
            "Parameter:Scalar:FirstPKZY 0\n"
            "Parameter:Scalar:DeformationGradientZZ 1\n");
}

class ResultFileOnDisk : public testing::ScratchDirectory {};

TEST_F(ResultFileOnDisk, StepNameHeaderOnceAndPrecision) {
  KeywordsElasticity kw;
  kw.effectiveMatrixFilename.set("result.txt");
  kw.macroscopicStrainStressType.set("Constant");
  kw.macroscopicStrain.set({0.01, 0, 0, 0, 0, 0.02});
  kw.effectiveMatrixPrecision.set(3);
  {
    std::ofstream out = openResultFile(kw, dir_.string(), 0);
    out << "Scalar:X " << 1.0 / 3.0 << '\n';
  }
  { std::ofstream again = openResultFile(kw, dir_.string(), 0); }
  EXPECT_EQ(readBytes(path("result.txt")), headerOf(kw, 0) + "Scalar:X 0.333\n");

  kw.timeStepType.set(TimeStepType::Constant);
  kw.timeStart.set(0);
  kw.timeStop.set(1);
  kw.timeNSteps.set(4);
  EXPECT_EQ(resultFileName(kw, dir_.string(), 2), path("result_3.txt"));
  kw.effectiveMatrixFilename.set("sub.dir/result");
  EXPECT_EQ(resultFileName(kw, "out/", 0), "out/sub.dir/result_1");
  kw.effectiveMatrixFilename.set("/abs/r.txt");
  EXPECT_EQ(resultFileName(kw, "out", 0), "/abs/r_1.txt");
}

TEST(ResultFileLines, VectorMatrixAndMaskedRowFormat) {
  std::array<Real, 12> matrix{};
  for (std::size_t k = 0; k < matrix.size(); ++k) matrix[k] = static_cast<Real>(k) + 0.5;
  std::ostringstream out;
  writeVector(out, "Vector:V", std::array<Real, 3>{1, -2.5, 3});
  writeMatrixRows(out, "Matrix:M", matrix, 4);
  writeMaskedRows(out, "Matrix:K", matrix, 4, 0b101u, 0b1010u);
  EXPECT_EQ(out.str(),
            "Vector:V 1,-2.5,3\n"
            "Matrix:M:1  0.5,1.5,2.5,3.5\n"
            "Matrix:M:2  4.5,5.5,6.5,7.5\n"
            "Matrix:M:3  8.5,9.5,10.5,11.5\n"
            "Matrix:K:1  1.5,3.5\n"
            "Matrix:K:3  9.5,11.5\n");
}

TEST(ResultFileAverages, StrainRunWithTwoColoursAndAnEmptyOne) {
  KeywordsElasticity kw;
  kw.averageStrainStress.set(true);
  ResultAverages averages;
  averages.overall.strain = {0.01, 0, 0, 0, 0, 0.02};
  averages.overall.stress = {100, 0, 0, 0, 0, 10};
  MaterialAverages first{2, 0.25, {}};
  first.values.strain = {0, 0, 0, 0.03, 0, 0};
  first.values.stress = {30, 30, 30, 0, 0, 0};
  MaterialAverages empty{5, 0.0, {}};
  MaterialAverages second{7, 0.75, {}};
  second.values.strain = {0.02, -0.01, -0.01, 0, 0, 0};
  second.values.stress = {0, 0, 0, 0, 4, 0};
  averages.materials = {first, empty, second};

  std::ostringstream out;
  out.precision(6);
  writeAverages(out, kw, averages);
  // By hand: overall strain deviator (2, -1, -1) 0.01 / 3 and tensor shear 0.01, so
  // e_dev:e_dev = 6e-4 / 9 + 2e-4 = 24e-4 / 9 and von Mises sqrt(16e-4 / 9) = 0.04 / 3.
  // Stress: s_dev:s_dev = 2e4 / 3 + 200, von Mises sqrt(10300) = 101.4889.
  EXPECT_EQ(out.str(),
            "Vector:AverageStrain 0.01,0,0,0,0,0.02\n"
            "Vector:AverageStress 100,0,0,0,0,10\n"
            "Scalar:HydrostaticStrainStress:AverageHydrostaticStrain 0.00333333\n"
            "Scalar:HydrostaticStrainStress:AverageHydrostaticStress 33.3333\n"
            "Scalar:VonMisesStrainStress:AverageVonMisesStrain 0.0133333\n"
            "Scalar:VonMisesStrainStress:AverageVonMisesStress 101.489\n"
            "Scalar:VolumeFractions:Material_2 0.25\n"
            "Scalar:VolumeFractions:Material_7 0.75\n"
            "Vector:AverageStrainOfMaterial_2 0,0,0,0.03,0,0\n"
            "Vector:AverageStressOfMaterial_2 30,30,30,0,0,0\n"
            "Scalar:HydrostaticStrainStress:AverageHydrostaticStrainOfMaterial_2 0\n"
            "Scalar:HydrostaticStrainStress:AverageHydrostaticStressOfMaterial_2 30\n"
            "Scalar:VonMisesStrainStress:AverageVonMisesStrainOfMaterial_2 0.0173205\n"
            "Scalar:VonMisesStrainStress:AverageVonMisesStressOfMaterial_2 0\n"
            "Vector:AverageStrainOfMaterial_7 0.02,-0.01,-0.01,0,0,0\n"
            "Vector:AverageStressOfMaterial_7 0,0,0,0,4,0\n"
            "Scalar:HydrostaticStrainStress:AverageHydrostaticStrainOfMaterial_7 0\n"
            "Scalar:HydrostaticStrainStress:AverageHydrostaticStressOfMaterial_7 0\n"
            "Scalar:VonMisesStrainStress:AverageVonMisesStrainOfMaterial_7 0.02\n"
            "Scalar:VonMisesStrainStress:AverageVonMisesStressOfMaterial_7 6.9282\n");

  std::ostringstream off;
  kw.averageStrainStress.set(false);
  writeAverages(off, kw, averages);
  EXPECT_EQ(off.str(), "");
}

TEST(ResultFileAverages, StressAndLargeStrainOrderTheirFamilies) {
  ResultAverages averages;
  averages.overall.strain = {1, 0, 0, 0, 0, 0};
  averages.overall.stress = {2, 0, 0, 0, 0, 0};
  averages.overall.deformationGradient = {1.1, 0.2, 0, 0, 1, 0, 0.3, 0, 1};
  std::ostringstream stress;
  writeAverages(stress, "Stress", averages);
  EXPECT_EQ(stress.str().rfind("Vector:AverageStress 2,0,0,0,0,0\n"
                               "Vector:AverageStrain 1,0,0,0,0,0\n"
                               "Scalar:HydrostaticStrainStress:AverageHydrostaticStrain ",
                               0),
            0u);

  averages.materials = {MaterialAverages{3, 1.0, averages.overall}};
  std::ostringstream large;
  writeAverages(large, "DeformationGradient", averages);
  const std::string text = large.str();
  // Each file row is a column of the row-major tensor.
  EXPECT_EQ(text.rfind("Matrix:AverageDeformationGradient:1  1.1,0,0.3\n"
                       "Matrix:AverageDeformationGradient:2  0.2,1,0\n"
                       "Matrix:AverageDeformationGradient:3  0,0,1\n"
                       "Matrix:AverageFirstPK:1  0,0,0\n",
                       0),
            0u);
  for (const char* line :
       {"Vector:AverageGreenLagrangeStrain 1,0,0,0,0,0\n",
        "Vector:AverageSecondPKStress 2,0,0,0,0,0\n", "Vector:AverageCauchyStress 0,0,0,0,0,0\n",
        "Scalar:VonMisesStrainStress:AverageVonMisesSecondPKStress 2\n",
        "Scalar:HydrostaticStrainStress:AverageHydrostaticCauchyStress 0\n",
        "Scalar:VolumeFractions:Material_3 1\n",
        "Matrix:AverageDeformationGradientOfMaterial_3:1  1.1,0,0.3\n",
        "Scalar:VonMisesStrainStress:AverageVonMisesGreenLagrangeStrainOfMaterial_3 "}) {
    EXPECT_NE(text.find(line), std::string::npos) << line;
  }
}

TEST(ResultFileAverages, SurfaceForcesAndCostsFollowTheirSwitches) {
  KeywordsElasticity kw;
  SurfaceForces forces{{1, 0, 0}, {-1, 0, 0}, {0, 2, 0}, {0, -2, 0}, {0, 0, 3}, {0, 0, -3}};
  std::ostringstream off;
  writeSurfaceForces(off, kw, forces);
  writeComputationalCosts(off, kw, 12, 3);
  EXPECT_EQ(off.str(), "");

  kw.averageSurfaceForces.set(true);
  kw.writeNumberOfMatrixVectorProductsAndNewtonRaphsonSteps.set(true);
  std::ostringstream on;
  writeSurfaceForces(on, kw, forces);
  writeComputationalCosts(on, kw, 12, 3);
  EXPECT_EQ(on.str(),
            "Vector:AverageSurfaceForceX+ 1,0,0\n"
            "Vector:AverageSurfaceForceX- -1,0,0\n"
            "Vector:AverageSurfaceForceY- 0,-2,0\n"
            "Vector:AverageSurfaceForceY+ 0,2,0\n"
            "Vector:AverageSurfaceForceZ- 0,0,-3\n"
            "Vector:AverageSurfaceForceZ+ 0,0,3\n"
            "Scalar:ComputationalCosts:NumberOfMatrixVectorProducts 12\n"
            "Scalar:ComputationalCosts:NumberOfNewtonRaphsonSteps 3\n");
}

// A law with state in the strain formulation whose output variables are a scalar "Damage"
// and a two-valued "Sigma0", each stored for the colour's voxels and two load cases.
class LawWithState : public testing_laws::TestLaw {
 public:
  bool strain = true;
  Vector<Real> damage{"damage"}, sigma0{"sigma0"};
#define GRIDMOOR_STATE_ANSWER(Word)                 \
  bool hasInternalVariables##Word() const override { \
    return strain && Formulation::Word == Formulation::Strain; \
  }
  GRIDMOOR_FORMULATIONS(GRIDMOOR_STATE_ANSWER)
#undef GRIDMOOR_STATE_ANSWER
  void getOutputVariables(std::vector<Vector<Real>*>& variables, std::vector<std::string>& names,
                          std::vector<std::string>& units) override {
    variables = {&damage, &sigma0};
    names = {"Damage", "Sigma0"};
    units = {"1", "GPa"};
  }
};

TEST(ResultFileInternalVariables, MeansAndExtremesOfThePlainSolvesBlockPerColour) {
  MaterialElasticVector table;
  auto geometry = testing_laws::geometryOf({5, 3, 3, 5, 3, 7});
  auto twoCases = std::make_shared<const LoadCaseTable>(LoadCaseTable{0, 1});
  // Listed 5, 3, 7, 9: colour 7 keeps no state, colour 9 has no voxel.
  for (const Colour colour : {5, 3, 7, 9}) {
    auto* law = new LawWithState;
    law->colour = colour;
    law->loadCases = twoCases;
    law->strain = colour != 7;
    const std::size_t voxels = colour == 3 ? 3 : 2;
    // Load case 0 first: voxel v holds colour + v (and minus that in Sigma0's second value);
    // the second case's block holds 100, which the lines must not see.
    law->damage.assign(2 * voxels, 100.0);
    law->sigma0.assign(4 * voxels, 100.0);
    for (std::size_t v = 0; v < voxels; ++v) {
      law->damage[v] = colour + static_cast<double>(v);
      law->sigma0[2 * v] = 1.0;
      law->sigma0[2 * v + 1] = -(colour + static_cast<double>(v));
    }
    table.addMaterial(colour, std::make_unique<Material>(law, nullptr));
  }
  std::ostringstream averages, extremes;
  writeInternalVariableAverages(averages, table, *geometry, "Strain");
  writeInternalVariableMinMax(extremes, table, *geometry, "Strain");
  EXPECT_EQ(averages.str(),
            "Scalar:InternalVariables:AverageDamageOfMaterial_5 5.5\n"
            "Vector:InternalVariables:AverageSigma0OfMaterial_5 1,-5.5\n"
            "Scalar:InternalVariables:AverageDamageOfMaterial_3 4\n"
            "Vector:InternalVariables:AverageSigma0OfMaterial_3 1,-4\n");
  EXPECT_EQ(extremes.str(),
            "Scalar:InternalVariables:MinDamageOfMaterial_5 5\n"
            "Scalar:InternalVariables:MaxDamageOfMaterial_5 6\n"
            "Vector:InternalVariables:MinSigma0OfMaterial_5 1,-6\n"
            "Vector:InternalVariables:MaxSigma0OfMaterial_5 1,-5\n"
            "Scalar:InternalVariables:MinDamageOfMaterial_3 3\n"
            "Scalar:InternalVariables:MaxDamageOfMaterial_3 5\n"
            "Vector:InternalVariables:MinSigma0OfMaterial_3 1,-5\n"
            "Vector:InternalVariables:MaxSigma0OfMaterial_3 1,-3\n");
  std::ostringstream stress;
  writeInternalVariableAverages(stress, table, *geometry, "Stress");
  EXPECT_EQ(stress.str(), "");
}

}  // namespace
}  // namespace gridmoor
