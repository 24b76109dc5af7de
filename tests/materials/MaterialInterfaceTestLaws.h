// Small mechanical laws for the interface and table tests: an isotropic stiffness and
// capability answers that each test sets, a geometry built from a colour list, and the
// pattern of an exact message line for death tests.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "materials/DiscretizedElasticMaterial.h"
#include "materials/MandelEigenvalues.h"
#include "materials/Material.h"
#include "materials/MaterialVector.h"
#include "voxel/Geometry.h"

namespace gridmoor::testing_laws {

// Matches exactly this one line on standard error; messages are full of regex characters.
inline std::string exactLine(const std::string& message) {
  std::string pattern = "^";
  for (char c : message) {
    if (std::string(".^$|()[]{}*+?\\").find(c) != std::string::npos) pattern += '\\';
    pattern += c;
  }
  return pattern + "\n$";
}

inline VoigtMatrix isotropicStiffness(double lambda, double mu) {
  VoigtMatrix c;
  for (int a = 0; a < 3; ++a) {
    for (int b = 0; b < 3; ++b) c(a, b) = lambda;
    c(a, a) = lambda + 2.0 * mu;
    c(a + 3, a + 3) = mu;
  }
  return c;
}

struct LawAnswers {
  bool soft = false;
  bool rigid = false;
  bool incompressible = false;
  bool isotropic = true;
  bool transversalIsotropic = true;
  bool linear = true;
  bool affinLinear = true;
  bool small = true;
  bool large = true;
  bool hybrid = false;
  bool thermal = false;
};

// S = C E, E = 2 S, and the identity for the polarization and eigenstrain responses. The
// history forms add the old value, so a test can see which form ran; the tangent differs
// from C for the same reason.
class TestLaw : public DiscretizedElasticMaterial {
 public:
  LawAnswers answers;
  VoigtMatrix stiffness = isotropicStiffness(1.0, 1.0);
  VoigtMatrix tangent = isotropicStiffness(10.0, 5.0);
  double alpha = 0.0;  // thermal strain T alpha on the normal components

  explicit TestLaw(LawAnswers a = {}) : answers(a) {}

  bool usableForSmallDeformations() const override { return answers.small; }
  bool usableForLargeDeformations() const override { return answers.large; }
  bool isLinear() const override { return answers.linear; }
#define GRIDMOOR_TEST_ANSWER(Word, Name, Field) \
  bool Name##Word() const override { return answers.Field; }
  GRIDMOOR_FOR_EACH_FORMULATION(GRIDMOOR_TEST_ANSWER, isLinear, linear)
  GRIDMOOR_FOR_EACH_FORMULATION(GRIDMOOR_TEST_ANSWER, isAffinLinear, affinLinear)
#undef GRIDMOOR_TEST_ANSWER
  bool hasResidualStressAtZeroStrain() const override { return false; }
  bool hasResidualStressAtIdentity() const override { return false; }
  bool isSoft() const override { return answers.soft; }
  bool isIncompressible() const override { return answers.incompressible; }
  bool isRigid() const override { return answers.rigid; }
  bool isIsotropic() const override { return answers.isotropic; }
  bool isTransversalIsotropic() const override { return answers.transversalIsotropic; }
  bool hasThermalExpansion() const override { return answers.thermal; }
  bool isHybrid() const override { return answers.hybrid; }

  using DiscretizedElasticMaterial::E;
  using DiscretizedElasticMaterial::eigenstrainStress;
  using DiscretizedElasticMaterial::polarizationStrain;
  using DiscretizedElasticMaterial::S;
  using Ref = const DiscretizedElasticMaterial&;

  void S(int, VoxelIndex, VoxelIndex, VoxelIndex, const double* e, double* s) override {
    stiffness.multiply(e, s);
  }
  void E(int, VoxelIndex, VoxelIndex, VoxelIndex, const double* s, double* e) override {
    for (int a = 0; a < 6; ++a) e[a] = 2.0 * s[a];
  }
  void polarizationStrain(int, VoxelIndex, VoxelIndex, VoxelIndex, Ref, const double* tau,
                          double* e) override {
    sum(tau, nullptr, e);
  }
  void eigenstrainStress(int, VoxelIndex, VoxelIndex, VoxelIndex, Ref, const double* eta,
                         double* s) override {
    sum(eta, nullptr, s);
  }
  void S(int, VoxelIndex, VoxelIndex, VoxelIndex, const double* eOld, const double* e,
         double* s) override {
    stiffness.multiply(e, s);
    sum(s, eOld, s);
  }
  void E(int, VoxelIndex, VoxelIndex, VoxelIndex, const double* sOld, const double* s,
         double* e) override {
    for (int a = 0; a < 6; ++a) e[a] = 2.0 * s[a] + sOld[a];
  }
  void polarizationStrain(int, VoxelIndex, VoxelIndex, VoxelIndex, Ref, const double* tauOld,
                          const double* tau, double* e) override {
    sum(tau, tauOld, e);
  }
  void eigenstrainStress(int, VoxelIndex, VoxelIndex, VoxelIndex, Ref, const double* etaOld,
                         const double* eta, double* s) override {
    sum(eta, etaOld, s);
  }
  VoigtMatrix getCVoigtLinearizedOfVoxel(int, VoxelIndex, VoxelIndex, VoxelIndex) override {
    return tangent;
  }
  void getMinMaxEigenvalueStrain(int, const Image<Real>*, double& minimum,
                                 double& maximum) const override {
    stiffnessEigenvalueRange(stiffness, minimum, maximum);
  }
  void thermalStrainVoigt(int, VoxelIndex, VoxelIndex, VoxelIndex, double T,
                          double* eps) const override {
    for (int a = 0; a < 6; ++a) eps[a] = a < 3 ? T * alpha : 0.0;
  }

 private:
  static void sum(const double* a, const double* b, double* out) {
    for (int i = 0; i < 6; ++i) out[i] = a[i] + (b ? b[i] : 0.0);
  }
};

// A geometry whose computation grid is one row of voxels with the given colours.
inline std::unique_ptr<StaticGeometry> geometryOf(const std::vector<Colour>& voxels) {
  auto geometry = std::make_unique<StaticGeometry>();
  geometry->RealVoxelImage = ColorImage(1, 1, voxels.size(), 0, "RealVoxelImage");
  for (std::uint64_t z = 0; z < voxels.size(); ++z)
    geometry->RealVoxelImage.at(0, 0, z) = voxels[z];
  geometry->RealVoxelImage.collectColors();
  return geometry;
}

// Registers a law for a colour and returns it for further setup.
inline TestLaw* addLaw(MaterialVector& table, Colour colour, LawAnswers answers = {}) {
  auto* law = new TestLaw(answers);
  law->colour = colour;
  table.addMaterial(colour, std::make_unique<Material>(law, nullptr));
  return law;
}

}  // namespace gridmoor::testing_laws
