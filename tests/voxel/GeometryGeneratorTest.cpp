#include "voxel/GeometryGenerator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace gridmoor;

namespace {

std::uint64_t countColour(const ColorImage& image, Colour c) {
  return static_cast<std::uint64_t>(std::count(image.begin(), image.end(), c));
}

GeneratorOptions parse(std::vector<std::string> args) { return parseGeneratorArguments(args); }

GeneratedGeometry make(const std::vector<std::string>& args, ColorImage& image) {
  return generateGeometry(parse(args), image);
}

// Periodic distance of two centres in the axes that count.
double distance(const std::array<double, 3>& a, const std::array<double, 3>& b,
                const std::array<std::uint64_t, 3>& n, int skipAxis) {
  double d2 = 0;
  for (int i = 0; i < 3; ++i) {
    if (i == skipAxis) continue;
    double d = std::fabs(a[i] - b[i]);
    d = std::min(d, static_cast<double>(n[i]) - d);
    d2 += d * d;
  }
  return std::sqrt(d2);
}

}  // namespace

// Shapes, sizes, axes and seeds are read by the tests of the shapes below.
TEST(GeometryGenerator, ParsesColoursVoxelLengthAndDefaults) {
  const GeneratorOptions o = parse({"sphere", "--size", "30", "20", "10", "--radius", "3", "--inclusion",
                                    "255", "--voxel-length", "1e-3", "--output", "a.ldt", "--description", "f"});
  EXPECT_EQ(o.inclusionColor, 255);
  EXPECT_EQ(o.voxelLength, 1e-3);
  const GeneratorOptions cube = parse({"--size", "16", "laminate", "--fraction", "0.5", "--output", "l.ldt"});
  EXPECT_EQ(cube.size, (std::array<std::uint64_t, 3>{16, 16, 16}));
  EXPECT_EQ(cube.axis, 0);  // laminate normal defaults to x
  EXPECT_TRUE(parse({"--help"}).help);
}

TEST(GeometryGeneratorDeathTest, BadArgumentsEndWithOneLine) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
      {{}, "no shape given"},
      {{"block", "--output", "a.ldt"}, "--size is required"},
      {{"block", "--size", "4", "--output", "a.vtk"}, "must end in .ldt"},
      {{"block", "--size", "0", "4", "4", "--output", "a.ldt"}, "positive in every axis"},
      {{"block", "--size", "4x", "--output", "a.ldt"}, "--size needs a whole number, not \"4x\""},
      {{"block", "--size", "100000", "--output", "a.ldt"}, "larger than 2\\^32 voxels"},
      {{"block", "--size", "4", "--output", "a.ldt", "--matrix", "256"}, "colour from 0 to 255"},
      {{"block", "--size", "4", "--output", "a.ldt", "--radius", "2"}, "--radius does not apply to block"},
      {{"laminate", "--size", "4", "--output", "a.ldt"}, "laminate needs --fraction"},
      {{"sphere", "--size", "4", "--output", "a.ldt", "--fraction", "0.1", "--radius", "1"}, "either --radius or --fraction"},
      {{"random-spheres", "--size", "8", "--output", "a.ldt", "--fraction", "0.1", "--radius", "0.5"}, "at least 1"},
      {{"sphere", "--size", "4", "--output", "a.ldt", "--radius", "1", "--inclusion", "0"}, "colours must differ"},
      {{"sphere", "--size", "4", "--size", "5"}, "--size given twice"},
  };
  for (const auto& [args, message] : cases)
    EXPECT_EXIT(parse(args), ::testing::ExitedWithCode(1), "^gridmoor-geometry: .*" + message + ".*\n$")
        << message;

  // Checks that need the shape's size.
  ColorImage image("g");
  EXPECT_EXIT(make({"sphere", "--size", "8", "--radius", "5", "--output", "a.ldt"}, image),
              ::testing::ExitedWithCode(1), "does not fit a grid of 8x8x8");
  EXPECT_EXIT(make({"random-fibres", "--size", "8", "--radius", "3", "--gap", "2", "--fraction", "0.2",
                    "--output", "a.ldt"}, image),
              ::testing::ExitedWithCode(1), "do not fit a grid");
  // Random spheres cannot reach 60 %: the placement gives up with a message, not a hang.
  EXPECT_EXIT(make({"random-spheres", "--size", "12", "--radius", "2", "--fraction", "0.6",
                    "--output", "a.ldt"}, image),
              ::testing::ExitedWithCode(1), "no room for more inclusions after [0-9]+");
}

TEST(GeometryGenerator, BlockAndLaminateOnNonCubicGrids) {
  ColorImage block("block");
  make({"block", "--size", "3", "5", "7", "--matrix", "12", "--output", "b.ldt"}, block);
  EXPECT_EQ(countColour(block, 12), 105u);

  for (int axis = 0; axis < 3; ++axis) {
    const std::string normal(1, "xyz"[axis]);
    ColorImage lam("laminate");
    const auto made = make({"laminate", "--size", "10", "6", "5", "--normal", normal, "--fraction",
                            "0.6", "--output", "l.ldt"}, lam);
    const std::array<std::uint64_t, 3> n{10, 6, 5};
    const auto layers = static_cast<std::uint64_t>(std::llround(0.6 * n[axis]));
    EXPECT_EQ(made.inclusionVoxels, layers * 300 / n[axis]) << normal;
    EXPECT_EQ(countColour(lam, 1), made.inclusionVoxels);
    for (std::uint64_t x = 0; x < 10; ++x)
      for (std::uint64_t y = 0; y < 6; ++y)
        for (std::uint64_t z = 0; z < 5; ++z) {
          const std::uint64_t c[3] = {x, y, z};
          ASSERT_EQ(lam.at(x, y, z), c[axis] < layers ? 1 : 0) << normal;
        }
  }
}

TEST(GeometryGenerator, SphereAndFibreMatchTheirAnalyticVolumes) {
  // Counting voxel centres inside a ball or disc misses its volume by a boundary term; a
  // shell a quarter voxel thick over the surface bounds it generously at these radii, while
  // a radius one voxel off changes the volume by several such shells.
  ColorImage sphere("sphere");
  const auto s = make({"sphere", "--size", "32", "30", "28", "--radius", "11", "--output", "s.ldt"}, sphere);
  const double ball = 4.0 / 3.0 * std::numbers::pi * std::pow(11.0, 3);
  EXPECT_NEAR(static_cast<double>(s.inclusionVoxels), ball, 0.25 * 4 * std::numbers::pi * 11 * 11);
  EXPECT_EQ(countColour(sphere, 1), s.inclusionVoxels);

  ColorImage fibre("fibre");
  const auto f = make({"fibre", "--size", "24", "30", "26", "--axis", "y", "--radius", "9.5",
                       "--output", "f.ldt"}, fibre);
  const double cylinder = std::numbers::pi * 9.5 * 9.5 * 30;
  EXPECT_NEAR(static_cast<double>(f.inclusionVoxels), cylinder, 0.25 * 2 * std::numbers::pi * 9.5 * 30);
  // Every line along the axis is uniform.
  for (std::uint64_t x = 0; x < 24; ++x)
    for (std::uint64_t z = 0; z < 26; ++z)
      for (std::uint64_t y = 1; y < 30; ++y) ASSERT_EQ(fibre.at(x, y, z), fibre.at(x, 0, z));

  ColorImage byFraction("byFraction");
  const auto g = make({"sphere", "--size", "40", "--fraction", "0.2", "--output", "s.ldt"}, byFraction);
  EXPECT_NEAR(g.volumeFraction, 0.2, 0.004);
  EXPECT_NEAR(g.radius, std::cbrt(0.2 * 64000 * 3 / (4 * std::numbers::pi)), 1e-12);
}

TEST(GeometryGenerator, InclusionsWrapAroundThePeriodicFaces) {
  // A sphere on the corner of the grid is the centred sphere moved by half a period, so it
  // covers as many voxels, split over the eight corners.
  ColorImage centred(20, 20, 20, 0, "centred");
  ColorImage corner(20, 20, 20, 0, "corner");
  const std::uint64_t inside = rasterizeInclusion(centred, {10, 10, 10}, 6.3, -1, 1);
  EXPECT_EQ(rasterizeInclusion(corner, {0, 0, 0}, 6.3, -1, 1), inside);
  for (std::uint64_t x = 0; x < 20; ++x)
    for (std::uint64_t y = 0; y < 20; ++y)
      for (std::uint64_t z = 0; z < 20; ++z)
        ASSERT_EQ(corner.at(x, y, z), centred.at((x + 10) % 20, (y + 10) % 20, (z + 10) % 20));
  // Colouring again changes nothing.
  EXPECT_EQ(rasterizeInclusion(corner, {0, 0, 0}, 6.3, -1, 1), 0u);
}

TEST(GeometryGenerator, RandomInclusionsAreReproducibleAndNeverOverlap) {
  struct Case {
    std::vector<std::string> args;
    int axis;  // -1 for spheres
  };
  const std::vector<Case> cases{
      {{"random-spheres", "--size", "40", "36", "32", "--radius", "4", "--fraction", "0.25", "--seed", "3"}, -1},
      {{"random-fibres", "--size", "48", "40", "8", "--axis", "z", "--radius", "3.5", "--gap", "1",
        "--fraction", "0.3", "--seed", "9"}, 2},
      {{"random-fibres", "--size", "8", "40", "40", "--axis", "x", "--radius", "3", "--fraction", "0.4"}, 0},
  };
  for (const Case& c : cases) {
    std::vector<std::string> args = c.args;
    args.insert(args.end(), {"--output", "r.ldt"});
    const GeneratorOptions options = parse(args);
    ColorImage first("first"), second("second");
    const auto a = generateGeometry(options, first);
    const auto b = generateGeometry(options, second);
    ASSERT_GT(a.centres.size(), 3u);
    EXPECT_TRUE(std::equal(first.begin(), first.end(), second.begin(), second.end()));
    EXPECT_EQ(a.centres, b.centres);
    GeneratorOptions reseeded = options;
    reseeded.seed += 1;
    ColorImage third("third");
    generateGeometry(reseeded, third);
    EXPECT_FALSE(std::equal(first.begin(), first.end(), third.begin(), third.end()));

    // The nearest whole inclusion to the target: within one inclusion's volume.
    const double voxels = static_cast<double>(first.size());
    const double oneInclusion = static_cast<double>(a.inclusionVoxels) / a.centres.size();
    EXPECT_NEAR(a.volumeFraction * voxels, options.fraction * voxels, oneInclusion);
    EXPECT_EQ(countColour(first, 1), a.inclusionVoxels);

    // No two inclusions share a voxel: each one alone covers as many voxels as it adds to
    // the image, and their centres keep the distance.
    std::uint64_t separately = 0;
    for (const auto& centre : a.centres) {
      ColorImage alone(options.size[0], options.size[1], options.size[2], 0, "alone");
      separately += rasterizeInclusion(alone, centre, options.radius, c.axis, 1);
    }
    EXPECT_EQ(separately, a.inclusionVoxels);
    for (std::size_t i = 0; i < a.centres.size(); ++i)
      for (std::size_t j = 0; j < i; ++j)
        ASSERT_GT(distance(a.centres[i], a.centres[j], options.size, c.axis),
                  2 * options.radius + options.gap);
  }
}
