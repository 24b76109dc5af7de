#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "LinearElasticTestSupport.h"
#include "input/KeywordsElasticity.h"
#include "input/XmlNode.h"
#include "materials/AnisotropicLinearElasticMaterial.h"
#include "materials/IsotropicLinearElasticMaterial.h"
#include "materials/OrthotropicLinearElasticMaterial.h"
#include "materials/TransversalIsotropicLinearElasticMaterial.h"
#include "materials/VoigtRotation.h"
#include "voxel/ColorImage.h"
#include "voxel/EulerAnglesImage.h"
#include "voxel/Geometry.h"

namespace gridmoor {
namespace {

using namespace linear_elastic_test;
using Entries = std::vector<std::pair<std::string, std::string>>;

// A "MaterialParameters" element, each value under a "value" child.
XmlNode parametersOf(Entries entries, const Entries& more = {}) {
  entries.insert(entries.end(), more.begin(), more.end());
  std::string xml = "<MaterialParameters>";
  for (const auto& [key, value] : entries)
    xml += "<" + key + "><value>" + value + "</value></" + key + ">";
  return XmlNode::parseString(xml + "</MaterialParameters>");
}

std::string text(double v) {
  std::ostringstream out;
  out.precision(17);
  out << v;
  return out.str();
}

const Entries fibreParameters{
    {"E1", "230"}, {"E2", "15"}, {"nu12", "0.27"}, {"nu23", "0.4"}, {"G12", "24"}};
const Entries woodParameters{{"E1", "12"},     {"E2", "0.9"},    {"E3", "0.5"},
                             {"nu12", "0.38"}, {"nu13", "0.45"}, {"nu23", "0.51"},
                             {"G12", "0.7"},   {"G13", "0.6"},   {"G23", "0.04"}};

// Voxels in a row along z with their colours, and an orientation field on the same grid.
struct OrientedRow {
  StaticGeometry geometry;
  EulerAnglesImage angles;
  OrientedRow(const std::vector<Colour>& colours, std::uint64_t components)
      : angles(components, 1, 1, colours.size(), "EulerAnglesImage") {
    geometry.RealVoxelImage = ColorImage(1, 1, colours.size(), 0, "RealVoxelImage");
    for (std::uint64_t z = 0; z < colours.size(); ++z)
      geometry.RealVoxelImage.at(0, 0, z) = colours[z];
    geometry.RealVoxelImage.collectColors();
  }
  void set(std::uint64_t z, std::vector<double> values) {
    for (std::size_t c = 0; c < values.size(); ++c)
      angles.data()[angles.elementIndex(c, 0, 0, z)] = values[c];
  }
  void attach(LinearElasticMaterial& law) {
    law.orientation = &angles;
    law.prepareVoxelData();
  }
};

class LinearElasticLaw : public ::testing::Test {
 protected:
  KeywordsElasticity keywords;
  std::mt19937 rng{4242};
  std::string uniform(double lo, double hi) {
    return text(std::uniform_real_distribution<double>(lo, hi)(rng));
  }

  template <class Law>
  std::unique_ptr<Law> make(const XmlNode& parameters, Geometry* geometry = nullptr) {
    return std::make_unique<Law>("law", 1, parameters, geometry, keywords, nullptr, nullptr);
  }
};

TEST_F(LinearElasticLaw, StiffnessTimesComplianceIsTheIdentityForEveryUnrotatedLaw) {
  for (int trial = 0; trial < 20; ++trial) {
    std::vector<std::unique_ptr<LinearElasticMaterial>> laws;
    // Moduli by their first letter: E and G in a wide range, Poisson numbers small.
    const auto randomOf = [&](const auto& keys) {
      Entries entries;
      for (const std::string key : keys)
        entries.push_back({key, key[0] == 'n' ? uniform(0, 0.3) : uniform(1, 400)});
      return parametersOf(entries);
    };
    laws.push_back(make<IsotropicLinearElasticMaterial>(
        parametersOf({{"E", uniform(1, 400)}, {"nu", uniform(-0.5, 0.45)}})));
    laws.push_back(make<TransversalIsotropicLinearElasticMaterial>(
        randomOf(TransversalIsotropicLinearElasticMaterial::parameterKeys)));
    laws.push_back(make<OrthotropicLinearElasticMaterial>(
        randomOf(OrthotropicLinearElasticMaterial::parameterKeys)));
    // Symmetric and diagonally dominant: positive definite and fully populated.
    std::string values;
    for (int a = 0; a < 6; ++a)
      for (int b = a; b < 6; ++b) values += (a == b ? uniform(50, 100) : uniform(-5, 5)) + ",";
    laws.push_back(make<AnisotropicLinearElasticMaterial>(parametersOf({{"C", values}})));
    for (const auto& law : laws) {
      EXPECT_LT(distanceToIdentity(multiply(law->cVoigt, law->cVoigtInverse)), 1e-9) << trial;
      const double strain[6] = {1e-3, -2e-3, 5e-4, 3e-3, -1e-3, 2e-3};
      double stress[6], back[6];
      law->S(0, 0, 0, 0, strain, stress);
      law->E(0, 0, 0, 0, stress, back);
      for (int a = 0; a < 6; ++a) EXPECT_NEAR(back[a], strain[a], 1e-12);
    }
  }
}

TEST_F(LinearElasticLaw, ParametersComeFromTheMaterialParametersElement) {
  // A "values" child counts like "value"; a missing key reads as 0.
  const auto law = make<IsotropicLinearElasticMaterialWithThermalExpansion>(
      XmlNode::parseString("<MaterialParameters><E><values>70</values></E><alpha><value>2e-5</"
                           "value></alpha></MaterialParameters>"));
  EXPECT_EQ(law->youngsModulus, 70.0);
  EXPECT_EQ(law->alpha, 2e-5);
  EXPECT_EQ(law->mu, 35.0);
  EXPECT_EQ(law->lambda, 0.0);

  // The 21 stiffness values fill the upper triangle row by row, mirrored below.
  std::string values;
  for (int k = 1; k <= 21; ++k) values += std::to_string(k) + ",";
  const auto aniso = make<AnisotropicLinearElasticMaterial>(
      parametersOf({{"C", values}, {"IsotropicMaterialLaw", "true"}}));
  EXPECT_EQ(aniso->cVoigt(0, 5), 6.0);
  EXPECT_EQ(aniso->cVoigt(5, 0), 6.0);
  EXPECT_EQ(aniso->cVoigt(1, 1), 7.0);
  EXPECT_EQ(aniso->cVoigt(3, 4), 17.0);
  EXPECT_EQ(aniso->cVoigt(5, 5), 21.0);
  EXPECT_TRUE(aniso->isIsotropic());
  EXPECT_FALSE(
      make<AnisotropicLinearElasticMaterial>(parametersOf({{"C", values}}))->isIsotropic());
  EXPECT_EXIT(make<AnisotropicLinearElasticMaterial>(parametersOf({{"C", "1,2,3"}})),
              ::testing::ExitedWithCode(1), "needs 21 values, found 3");
}

TEST_F(LinearElasticLaw, ExactComparisonsDecideSoftIncompressibleAndIsotropic) {
  const auto isotropic = [&](const char* E, const char* nu) {
    return make<IsotropicLinearElasticMaterial>(parametersOf({{"E", E}, {"nu", nu}}));
  };
  EXPECT_FALSE(isotropic("1e-300", "0.3")->isSoft());
  EXPECT_FALSE(isotropic("10", "0.4999999")->isIncompressible());
  EXPECT_TRUE(isotropic("10", "0.5")->isIncompressible());

  const auto soft = isotropic("0", "0.3");
  EXPECT_TRUE(soft->isSoft());
  EXPECT_TRUE(std::isinf(soft->cVoigtInverse(0, 0)));
  // A soft law answers an eigenstrain with zero stress, without its infinite compliance.
  const IsotropicLinearElasticMaterial reference("reference", 1.0, 2.0);
  const double eta[6] = {1, 2, 3, 4, 5, 6};
  double stress[6] = {9, 9, 9, 9, 9, 9};
  soft->eigenstrainStress(0, 0, 0, 0, reference, eta, stress);
  for (double s : stress) EXPECT_EQ(s, 0.0);

  const auto ti = make<TransversalIsotropicLinearElasticMaterial>(parametersOf(
      {{"E1", "10"}, {"E2", "1e-300"}, {"nu12", "0.5"}, {"nu23", "0.2"}, {"G12", "0"}}));
  EXPECT_TRUE(ti->isSoft());
  EXPECT_TRUE(ti->isIncompressible());
  // The orthotropic stiffness is undefined only when the normal compliance block is singular.
  const Entries allHalf{{"E1", "8"},     {"E2", "8"},     {"E3", "8"},
                        {"nu12", "0.5"}, {"nu13", "0.5"}, {"nu23", "0.5"},
                        {"G12", "1"},    {"G13", "1"},    {"G23", "1"}};
  EXPECT_TRUE(make<OrthotropicLinearElasticMaterial>(parametersOf(allHalf))->isIncompressible());
  EXPECT_FALSE(
      make<OrthotropicLinearElasticMaterial>(parametersOf(woodParameters))->isIncompressible());

  // Isotropic parameters make isotropic laws; a shear modulus one bit off does not.
  const double g = 70.0 / ((1.0 + 0.3) + (1.0 + 0.3));
  const Entries iso{{"E1", "70"},    {"E2", "70"},    {"E3", "70"},     {"nu12", "0.3"},
                    {"nu13", "0.3"}, {"nu23", "0.3"}, {"G13", text(g)}, {"G23", text(g)}};
  EXPECT_TRUE(make<OrthotropicLinearElasticMaterial>(parametersOf(iso, {{"G12", text(g)}}))
                  ->isTransversalIsotropic());
  EXPECT_TRUE(make<TransversalIsotropicLinearElasticMaterial>(parametersOf(iso, {{"G12", text(g)}}))
                  ->isIsotropic());
  const auto off = make<TransversalIsotropicLinearElasticMaterial>(
      parametersOf(iso, {{"G12", text(std::nextafter(g, 0.0))}}));
  EXPECT_FALSE(off->isIsotropic());
  EXPECT_TRUE(off->needsOrientation());
}

TEST_F(LinearElasticLaw, RotatedLawsEqualTheIndependentlyRotatedTensor) {
  OrientedRow row({1, 1, 1}, 3);
  const double angles[3][3] = {{0.4, -1.1, 2.3}, {-2.9, 0.7, 0.25}, {1.3, 2.2, -0.6}};
  for (int z = 0; z < 3; ++z) row.set(z, {angles[z][0], angles[z][1], angles[z][2]});
  const auto ti =
      make<TransversalIsotropicLinearElasticMaterial>(parametersOf(fibreParameters), &row.geometry);
  const auto orth =
      make<OrthotropicLinearElasticMaterial>(parametersOf(woodParameters), &row.geometry);
  for (LinearElasticMaterial* law : {static_cast<LinearElasticMaterial*>(ti.get()),
                                     static_cast<LinearElasticMaterial*>(orth.get())}) {
    row.attach(*law);
    for (int z = 0; z < 3; ++z) {
      // The fibre law reads two angles: R = Rx(t1) Rz(t2).
      const double t3 = law == ti.get() ? 0.0 : angles[z][2];
      const VoigtMatrix expected =
          rotatedThroughTensor(law->cVoigt, xzxRotation(angles[z][0], angles[z][1], t3));
      const VoigtMatrix c = law->getCVoigtOfVoxel(0, 0, 0, z);
      EXPECT_LT(maxDifference(c, expected), 1e-11 * 230.0) << z;
      EXPECT_LT(distanceToIdentity(multiply(law->getCVoigtInverseOfVoxel(0, 0, 0, z), c)), 1e-10);
      const double strain[6] = {1, -2, 0.5, 3, -1, 2};
      double stress[6], expectedStress[6];
      law->S(0, 0, 0, z, strain, stress);
      expected.multiply(strain, expectedStress);
      for (int a = 0; a < 6; ++a) EXPECT_NEAR(stress[a], expectedStress[a], 1e-10 * 230.0);
      // Saint Venant-Kirchhoff with the rotated stiffness: (xy, xx) and (yz, zy).
      const TensorMatrix t = law->dSdE(0, 0, 0, z, nullptr);
      EXPECT_NEAR(t(1, 0), expected(5, 0), 1e-10 * 230.0);
      EXPECT_NEAR(t(5, 7), expected(3, 3), 1e-10 * 230.0);
    }
  }
}

TEST_F(LinearElasticLaw, OrientationMapHasOneEntryPerDistinctOrientation) {
  const double a = 0.7853981633974483;
  OrientedRow row({1, 1, 1, 2, 1}, 3);
  row.set(0, {a, 0.5, 0.1});
  row.set(1, {std::nextafter(a, 1.0), 0.5, 0.1});  // differs in the last bit
  row.set(2, {a, 0.5, 0.1});                       // same as voxel 0
  row.set(3, {1.0, 1.0, 1.0});                     // another colour
  row.set(4, {a, 0.5, 0.9});                       // only the third angle differs
  const auto orth =
      make<OrthotropicLinearElasticMaterial>(parametersOf(woodParameters), &row.geometry);
  row.attach(*orth);
  EXPECT_EQ(orth->numberOfOrientations(), 3u);
  // A voxel of another colour is turned on the spot.
  EXPECT_LT(maxDifference(orth->getCVoigtOfVoxel(0, 0, 0, 3),
                          rotatedThroughTensor(orth->cVoigt, xzxRotation(1, 1, 1))),
            1e-10 * 12.0);
  // The average over the colour is the mean over its voxels.
  VoigtMatrix mean;
  for (int z : {0, 1, 2, 4})
    for (int i = 0; i < 36; ++i) mean.m[i] += orth->getCVoigtOfVoxel(0, 0, 0, z).m[i] / 4.0;
  EXPECT_LT(maxDifference(orth->getCVoigtAverageStrain(row.geometry.RealVoxelImage, 0), mean),
            1e-12);

  // A two-angle law ignores the third angle: voxels 0, 2 and 4 are one orientation.
  const auto ti =
      make<TransversalIsotropicLinearElasticMaterial>(parametersOf(fibreParameters), &row.geometry);
  row.attach(*ti);
  EXPECT_EQ(ti->numberOfOrientations(), 2u);

  // Enough orientations to make the table grow: each voxel still finds its own entry.
  OrientedRow many(std::vector<Colour>(300, 1), 3);
  for (int z = 0; z < 300; ++z) many.set(z, {0.01 * (z % 150), 0.2, z < 150 ? 0.0 : 1.0});
  const auto grown =
      make<OrthotropicLinearElasticMaterial>(parametersOf(woodParameters), &many.geometry);
  many.attach(*grown);
  EXPECT_EQ(grown->numberOfOrientations(), 300u);
  for (int z = 0; z < 300; ++z)
    ASSERT_EQ(grown->getCVoigtOfVoxel(0, 0, 0, z).m,
              rotateStiffnessXZX(grown->cVoigt, 0.01 * (z % 150), 0.2, z < 150 ? 0.0 : 1.0).m)
        << z;

  EulerAnglesImage small(3, 1, 1, 2, "EulerAnglesImage");
  orth->orientation = &small;
  EXPECT_EXIT(orth->prepareVoxelData(), ::testing::ExitedWithCode(1),
              "orientation field .* does not match the geometry");
}

TEST_F(LinearElasticLaw, MissingAnglesAndIsotropicLawsAreNotTurned) {
  // One component for a two-angle law: the second angle reads as 0.
  OrientedRow row({1}, 1);
  row.set(0, {0.9});
  const auto ti =
      make<TransversalIsotropicLinearElasticMaterial>(parametersOf(fibreParameters), &row.geometry);
  row.attach(*ti);
  EXPECT_LT(maxDifference(ti->getCVoigtOfVoxel(0, 0, 0, 0),
                          rotatedThroughTensor(ti->cVoigt, axisRotation(0, 0.9))),
            1e-10 * 230.0);
  // No orientation field: all angles 0.
  ti->orientation = nullptr;
  EXPECT_EQ(ti->getCVoigtOfVoxel(0, 0, 0, 0).m, ti->cVoigt.m);

  // Laws that say they are isotropic need no map, whatever the field holds; for the
  // anisotropic law the flag of the file decides.
  OrientedRow turned({1}, 3);
  turned.set(0, {0.3, 1.2, -0.4});
  std::string values;
  for (int k = 1; k <= 21; ++k) values += std::to_string(k % 6 == 1 ? 50 : k) + ",";
  const auto aniso = make<AnisotropicLinearElasticMaterial>(
      parametersOf({{"C", values}, {"IsotropicMaterialLaw", "1"}}), &turned.geometry);
  turned.attach(*aniso);
  EXPECT_EQ(aniso->numberOfOrientations(), 0u);
  EXPECT_EQ(aniso->getCVoigtOfVoxel(0, 0, 0, 0).m, aniso->cVoigt.m);
}

TEST_F(LinearElasticLaw, DifferenceInverseAgainstAnIsotropicReference) {
  const auto differenceOf = [](const VoigtMatrix& p, const VoigtMatrix& q) {
    VoigtMatrix d = p;
    for (int i = 0; i < 36; ++i) d.m[i] -= q.m[i];
    return d;
  };
  // Closed form, then cache, and the compliance difference, for random pairs; the first pair
  // has dl + dm = 0 with an invertible difference: (lambda, mu) = (2, 1) against (1, 2).
  std::uniform_real_distribution<double> modulus(0.5, 100.0);
  for (int trial = 0; trial < 20; ++trial) {
    const double la = modulus(rng), ma = modulus(rng), lb = modulus(rng), mb = modulus(rng);
    IsotropicLinearElasticMaterial a("a", trial ? la : 2.0, trial ? ma : 1.0),
        b("b", trial ? lb : 1.0, trial ? mb : 2.0);
    const VoigtMatrix dc = differenceOf(a.cVoigt, b.cVoigt),
                      dd = differenceOf(a.cVoigtInverse, b.cVoigtInverse);
    EXPECT_LT(distanceToIdentity(multiply(a.getCVoigtMinusC0InverseOfVoxel(b, 0, 0, 0, 0), dc)),
              1e-9);
    a.setReferenceMaterial(b);
    EXPECT_LT(distanceToIdentity(multiply(a.getCVoigtMinusC0InverseOfVoxel(b, 0, 0, 0, 0), dc)),
              1e-9);
    EXPECT_LT(distanceToIdentity(multiply(a.getDVoigtMinusD0InverseOfVoxel(b, 0, 0, 0, 0), dd)),
              1e-9);
    // A reference whose constants change after the cache was made is not answered from it.
    b.setLameConstants(3.0, 2.0);
    EXPECT_LT(distanceToIdentity(multiply(a.getCVoigtMinusC0InverseOfVoxel(b, 0, 0, 0, 0),
                                          differenceOf(a.cVoigt, b.cVoigt))),
              1e-9);
  }
}

TEST_F(LinearElasticLaw, PolarizationAndEigenstrainOfARotatedLaw) {
  OrientedRow row({1}, 3);
  row.set(0, {0.3, -0.8, 1.9});
  const auto orth =
      make<OrthotropicLinearElasticMaterial>(parametersOf(woodParameters), &row.geometry);
  row.attach(*orth);
  const IsotropicLinearElasticMaterial reference("reference", 0.0, 5.0);
  const double tau[6] = {1, 2, -1, 0.5, 0.25, -0.75};
  // (C - C0) eps = tau and (D - D0) sigma = eta, with the voxel's matrices.
  double strain[6], stress[6], check[6];
  orth->polarizationStrain(0, 0, 0, 0, reference, tau, strain);
  orth->eigenstrainStress(0, 0, 0, 0, reference, tau, stress);
  VoigtMatrix dc = orth->getCVoigtOfVoxel(0, 0, 0, 0),
              dd = orth->getCVoigtInverseOfVoxel(0, 0, 0, 0);
  for (int i = 0; i < 36; ++i) {
    dc.m[i] -= reference.cVoigt.m[i];
    dd.m[i] -= reference.cVoigtInverse.m[i];
  }
  dc.multiply(strain, check);
  for (int a = 0; a < 6; ++a) EXPECT_NEAR(check[a], tau[a], 1e-10);
  dd.multiply(stress, check);
  for (int a = 0; a < 6; ++a) EXPECT_NEAR(check[a], tau[a], 1e-10);
}

TEST_F(LinearElasticLaw, ThermalStrains) {
  const auto iso = make<IsotropicLinearElasticMaterialWithThermalExpansion>(
      parametersOf({{"E", "70"}, {"nu", "0.3"}, {"alpha", "2e-5"}}));
  EXPECT_TRUE(iso->hasThermalExpansion());
  EXPECT_FALSE(iso->isLinearStrain());
  EXPECT_TRUE(iso->isAffinLinearStrain());
  double eps[6], eps9[9];
  iso->thermalStrainTensor(0, 0, 0, 0, 50.0, eps9);
  for (int p = 0; p < 9; ++p) EXPECT_DOUBLE_EQ(eps9[p], p % 4 == 0 ? 1e-3 : 0.0);
  // The thermal wrapper takes the thermal strain off before the law.
  const double total[6] = {1e-3, 1e-3, 1e-3, 0, 0, 0};
  double stress[6];
  iso->thermalS(0, 0, 0, 0, 50.0, total, stress);
  for (double s : stress) EXPECT_NEAR(s, 0.0, 1e-15);
  const auto cold = make<IsotropicLinearElasticMaterialWithThermalExpansion>(
      parametersOf({{"E", "70"}, {"alpha", "0"}}));
  EXPECT_FALSE(cold->hasThermalExpansion());
  EXPECT_TRUE(cold->isLinearStress());

  // Turned laws turn their thermal strain with the voxel: T R diag(alpha) R^T.
  OrientedRow row({1}, 3);
  row.set(0, {0.6, -1.2, 2.1});
  const auto ti = make<TransversalIsotropicLinearElasticMaterialWithThermalExpansion>(
      parametersOf(fibreParameters, {{"alpha1", "-1e-6"}, {"alpha2", "3e-5"}}), &row.geometry);
  const auto orth = make<OrthotropicLinearElasticMaterialWithThermalExpansion>(
      parametersOf(woodParameters, {{"alpha1", "4e-6"}, {"alpha2", "3e-5"}, {"alpha3", "5e-5"}}),
      &row.geometry);
  row.attach(*ti);
  row.attach(*orth);
  const double tiLocal[6] = {-1e-5, 3e-4, 3e-4, 0, 0, 0};
  const double orthLocal[6] = {4e-5, 3e-4, 5e-4, 0, 0, 0};
  const auto tiExpected = rotatedStrain(tiLocal, xzxRotation(0.6, -1.2, 0.0));
  const auto orthExpected = rotatedStrain(orthLocal, xzxRotation(0.6, -1.2, 2.1));
  ti->thermalStrainVoigt(0, 0, 0, 0, 10.0, eps);
  for (int a = 0; a < 6; ++a) EXPECT_NEAR(eps[a], tiExpected[a], 1e-18);
  orth->thermalStrainVoigt(0, 0, 0, 0, 10.0, eps);
  for (int a = 0; a < 6; ++a) EXPECT_NEAR(eps[a], orthExpected[a], 1e-18);
  orth->thermalStrainTensor(0, 0, 0, 0, 10.0, eps9);
  EXPECT_NEAR(eps9[1], 0.5 * orthExpected[5], 1e-18);
  EXPECT_NEAR(eps9[7], 0.5 * orthExpected[3], 1e-18);
}

TEST_F(LinearElasticLaw, SaintVenantKirchhoffAndEigenvalueRange) {
  IsotropicLinearElasticMaterial law("law", 3.0, 2.0);
  const double E9[9] = {0.1, 0.02, -0.03, 0.04, -0.2, 0.05, 0.01, 0.06, 0.3};
  double S9[9];
  law.secondPiolaKirchhoff(0, 0, 0, 0, E9, S9);
  // The closed form against the 9x9 stiffness-form product.
  for (int p = 0; p < 9; ++p) {
    double s = 0.0;
    for (int q = 0; q < 9; ++q) s += law.cTensor(p, q) * E9[q];
    EXPECT_NEAR(S9[p], s, 1e-15);
  }
  EXPECT_NEAR(S9[0], 3.0 * 0.2 + 4.0 * 0.1, 1e-15);

  // Mandel eigenvalues: 2 mu and 3 K for the stiffness, their inverses for the compliance.
  double lo, hi;
  law.getMinMaxEigenvalueStrain(0, nullptr, lo, hi);
  EXPECT_NEAR(lo, 4.0, 1e-12);
  EXPECT_NEAR(hi, 13.0, 1e-12);
  law.getMinMaxEigenvalueStress(0, nullptr, lo, hi);
  EXPECT_NEAR(lo, 1.0 / 13.0, 1e-12);
  EXPECT_NEAR(hi, 0.25, 1e-12);
}

}  // namespace
}  // namespace gridmoor
