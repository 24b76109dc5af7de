// Synthetic colour geometries for examples, tests and benchmarks: homogeneous blocks,
// laminates, a centred sphere or fibre, and random non-overlapping spheres or fibres.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "common/Types.h"
#include "voxel/ColorImage.h"

namespace gridmoor {

enum class GeneratorShape { Block, Laminate, Sphere, Fibre, RandomSpheres, RandomFibres };

struct GeneratorOptions {
  GeneratorShape shape = GeneratorShape::Block;
  std::array<std::uint64_t, 3> size{0, 0, 0};
  double voxelLength = 1.0;
  Colour matrixColor = 0;
  Colour inclusionColor = 1;
  // Layer normal of a laminate or axis of fibres: 0, 1, 2 for x, y, z.
  int axis = 2;
  // Volume fraction of the inclusion colour; negative when not given.
  double fraction = -1.0;
  // Radius of spheres and fibres in voxel lengths; negative when not given.
  double radius = -1.0;
  std::uint64_t seed = 1;
  // Least free distance between two random inclusions, in voxel lengths.
  double gap = 0.0;
  std::string output;
  std::string description;
  bool help = false;
};

struct GeneratedGeometry {
  // Centres of the inclusions in voxel lengths, the grid's corner at 0; for fibres the
  // coordinate along the axis is 0.
  std::vector<std::array<double, 3>> centres;
  double radius = 0.0;
  std::uint64_t inclusionVoxels = 0;
  double volumeFraction = 0.0;
};

// Reads the arguments after the program name. A bad argument ends the run with one line.
// With --help only help is set.
GeneratorOptions parseGeneratorArguments(const std::vector<std::string>& args);
std::string generatorUsage();

// Fills image (resized to the grid) with the shape; voxel length and description are set.
GeneratedGeometry generateGeometry(const GeneratorOptions& options, ColorImage& image);

// Voxels whose centres lie within radius of the centre, through the periodic faces, set to
// colour; returns how many of them had another colour before. A fibre (axis 0 to 2) ignores
// the centre's coordinate along its axis; axis -1 makes a sphere.
std::uint64_t rasterizeInclusion(ColorImage& image, const std::array<double, 3>& centre,
                                 double radius, int axis, Colour colour);

}  // namespace gridmoor
