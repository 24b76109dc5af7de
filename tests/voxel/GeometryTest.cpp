#include "voxel/Geometry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include "../formats/FieldFileTestSupport.h"
#include "voxel/GeometryGenerator.h"

namespace fs = std::filesystem;
using namespace gridmoor;
using ::testing::HasSubstr;
using gridmoor::testing::stdoutOf;

namespace {

class GeometryFiles : public gridmoor::testing::ScratchDirectory {
 protected:
  // A 6 x 10 x 4 laminate, normal y: planes y < 3 of colour 9, the rest colour 4.
  std::string writeLaminate() {
    GeneratorOptions options;
    options.shape = GeneratorShape::Laminate;
    options.size = {6, 10, 4};
    options.axis = 1;
    options.fraction = 0.3;
    options.matrixColor = 4;
    options.inclusionColor = 9;
    options.voxelLength = 0.5;
    ColorImage image("laminate");
    generateGeometry(options, image);
    const std::string file = path("laminate.ldt");
    stdoutOf([&] { image.writeLdt(file); });
    return file;
  }
};

// Reading the geometry file ends the run with the message.
void readingDies(const std::string& mode, std::array<std::uint64_t, 3> target, const std::string& file,
                 const std::string& message) {
  EXPECT_EXIT(StaticGeometry().readAndResample(1, mode, target, false, file), ::testing::ExitedWithCode(1),
              message)
      << file;
}

// A 2 x 1 x 2 grid of colours 1 and 2 with one hybrid voxel of colour 5 mixing them.
template <class G>
void makeHybridGeometry(G& g) {
  ColorImage image(2, 1, 2, 1, "hybrid");
  image.at(1, 0, 0) = 2;
  image.at(1, 0, 1) = 5;
  image.collectColors();
  g.RealVoxelImage = image;
  g.originalColors = {1, 2};
  g.colorIndex = {{1, 0}, {2, 1}};
  g.hybridColors = {{5, {1, 2}}};
  g.hybridColorList = {5};
}

}  // namespace

TEST_F(GeometryFiles, LaminateFractionsAndDominatingColourAreExact) {
  const std::string file = writeLaminate();
  // The reader's lines are end-to-end cases.
  const auto g = std::make_unique<StaticGeometry>();
  stdoutOf([&] { g->readAndResample(1, "None", {0, 0, 0}, true, file); });
  EXPECT_EQ(g->getSizeX(), 6u);
  EXPECT_EQ(g->getSizeY(), 10u);
  EXPECT_EQ(g->getSizeZ(), 4u);
  EXPECT_EQ(g->getResolutionZ(), 0.5);
  ASSERT_EQ(g->originalColors.size(), 2u);
  for (std::size_t i = 0; i < g->originalColors.size(); ++i)
    EXPECT_EQ(g->colorIndex.at(g->originalColors[i]), i);

  double sum4 = 0, sum9 = 0;
  for (std::uint64_t x = 0; x < 6; ++x)
    for (std::uint64_t y = 0; y < 10; ++y)
      for (std::uint64_t z = 0; z < 4; ++z) {
        const Colour expected = y < 3 ? 9 : 4;
        sum4 += g->getVolumeFraction(x, y, z, 4);
        sum9 += g->getVolumeFraction(x, y, z, 9);
        EXPECT_EQ(g->getVolumeFraction(x, y, z, 7), 0.0);
        EXPECT_EQ(g->getHybridColorFraction(x, y, z, expected), 0.0);
        ASSERT_EQ(g->getDominatingColor(x, y, z), expected);
      }
  EXPECT_EQ(sum4 / 240.0, 0.7);
  EXPECT_EQ(sum9 / 240.0, 0.3);
}

TEST_F(GeometryFiles, ResamplingModesAndTargetSizes) {
  const std::string file = writeLaminate();
  // Equal sizes mean no resampling whatever the mode text; 0 keeps an axis.
  for (const auto& [mode, target] :
       std::vector<std::pair<std::string, std::array<std::uint64_t, 3>>>{
           {"Bogus", {6, 10, 4}}, {"HybridVoxels", {0, 10, 0}}, {"None", {3, 5, 2}}}) {
    StaticGeometry g;
    const std::string out = stdoutOf([&] { g.readAndResample(1, mode, target, false, file); });
    EXPECT_THAT(out, HasSubstr("(Geometry) No resampling.\n")) << mode;
    EXPECT_EQ(g.getSizeY(), 10u);
    EXPECT_EQ(std::vector<Colour>(g.RealVoxelImage.begin(), g.RealVoxelImage.end()),
              std::vector<Colour>(g.originalVoxelImage.begin(), g.originalVoxelImage.end()));
  }
  readingDies("Bogus", {3, 0, 0}, file, "^ERROR: \\(Geometry\\) Unknown resampling mode.\n$");
  readingDies("Naive", {3, 0, 0}, file, "^ERROR: \\(Geometry\\) Resampling to another grid is not available");
}

TEST(Geometry, HybridVoxelsReadTheirFractionTable) {
  StaticGeometry g;
  makeHybridGeometry(g);
  const Real fractions[2] = {0.3, 0.7};
  const Real normal[3] = {0.0, 0.6, 0.8};
  g.setHybridColors({5}, 2);
  g.setVolumeFractions(1, 0, 1, fractions);
  g.setNormal(1, 0, 1, normal);

  EXPECT_EQ(g.getVolumeFraction(1, 0, 1, 1), 0.3);
  EXPECT_EQ(g.getVolumeFraction(1, 0, 1, 2), 0.7);
  EXPECT_EQ(g.getHybridColorFraction(1, 0, 1, 2), 0.7);
  EXPECT_EQ(g.getDominatingColor(1, 0, 1), 2);
  EXPECT_EQ(g.getDominatingColor(1, 0, 0), 2);
  EXPECT_EQ(g.getDominatingColor(0, 0, 1), 1);
  Real n[3] = {9, 9, 9};
  EXPECT_TRUE(g.getNormal(1, 0, 1, n));
  EXPECT_EQ(n[2], 0.8);
  EXPECT_FALSE(g.getNormal(0, 0, 0, n));
  try {
    g.getVolumeFraction(1, 0, 1, 3);
    FAIL() << "unknown colour accepted";
  } catch (const std::out_of_range& e) {
    EXPECT_STREQ(e.what(), "map::at");
  }

  // A tie goes to the first colour of the list.
  const Real even[2] = {0.5, 0.5};
  g.setVolumeFractions(1, 0, 1, even);
  EXPECT_EQ(g.getDominatingColor(1, 0, 1), 1);
  g.originalColors = {2, 1};
  EXPECT_EQ(g.getDominatingColor(1, 0, 1), 2);

  g.originalColors = {1, 2};
  g.setVolumeFractions(1, 0, 1, fractions);
  g.RealVoxelImage.resolutionY = 0.25;
  const auto dominating = g.makeDominatingColorImage();
  EXPECT_EQ(dominating->resolutionY, 0.25);
  EXPECT_EQ(std::vector<Colour>(dominating->begin(), dominating->end()), (std::vector<Colour>{1, 1, 2, 2}));

  g.clearHybridInformation();
  EXPECT_EQ(g.getVolumeFraction(1, 0, 1, 2), 0.0);
  EXPECT_FALSE(g.getNormal(1, 0, 1, n));
}

TEST(Geometry, DynamicGeometrySplitsAHybridVoxelEvenly) {
  std::unique_ptr<DynamicGeometry> g;
  EXPECT_EQ(stdoutOf([&] { g = std::make_unique<DynamicGeometry>(); }),
            "(Geometry) DynamicGeometry Constructor called.\n");
  makeHybridGeometry(*g);
  EXPECT_EQ(g->getVolumeFraction(1, 0, 1, 1), 0.5);
  EXPECT_EQ(g->getVolumeFraction(1, 0, 1, 2), 0.5);
  EXPECT_EQ(g->getVolumeFraction(1, 0, 0, 2), 1.0);
  EXPECT_EQ(g->getHybridColorFraction(1, 0, 0, 2), 0.0);
  EXPECT_EQ(g->getDominatingColor(1, 0, 1), 1);
  EXPECT_THROW(g->getVolumeFraction(1, 0, 1, 7), std::out_of_range);
}

TEST(Geometry, ShippedFibreExampleIsSmallAndAQuarterFibres) {
  const std::string file = std::string(GRIDMOOR_SOURCE_DIR) + "/examples/fibres/geometry.ldt";
  ASSERT_TRUE(fs::exists(file));
  EXPECT_LT(fs::file_size(file), 64u * 1024u);
  StaticGeometry g;
  stdoutOf([&] { g.readAndResample(1, "None", {0, 0, 0}, false, file); });
  ASSERT_EQ(g.getSizeX(), 64u);
  ASSERT_EQ(g.getSizeY(), 64u);
  ASSERT_EQ(g.getSizeZ(), 64u);
  double fibre = 0;
  for (std::uint64_t x = 0; x < 64; ++x)
    for (std::uint64_t y = 0; y < 64; ++y)
      for (std::uint64_t z = 0; z < 64; ++z) fibre += g.getVolumeFraction(x, y, z, 1);
  EXPECT_NEAR(fibre / (64.0 * 64.0 * 64.0), 0.25, 0.02);
  EXPECT_EQ(g.originalColors.size(), 2u);
}
