// Helpers shared by the solver benchmarks: the peak resident set, the sphere composite with
// isotropic laws, and the median time of the transform pair of a planned field.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "common/Timer.h"
#include "materials/IsotropicLinearElasticMaterial.h"
#include "materials/Material.h"
#include "materials/MaterialVector.h"
#include "operators/FFTImage.h"
#include "voxel/Geometry.h"
#include "voxel/GeometryGenerator.h"

namespace gridmoor::bench {

// Peak resident set of the process in KB (VmHWM), 0 when unreadable.
inline std::uint64_t peakResidentKB() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line))
    if (line.rfind("VmHWM:", 0) == 0) return std::strtoull(line.c_str() + 6, nullptr, 10);
  return 0;
}

inline void addIsotropic(MaterialElasticVector& table, Colour colour, double e, double nu) {
  const double lambda = e * nu / ((1 + nu) * (1 - 2 * nu));
  const double mu = e / (2 * (1 + nu));
  auto* law = new IsotropicLinearElasticMaterial("law", lambda, mu);
  law->colour = colour;
  table.addMaterial(colour, std::make_unique<Material>(law, nullptr));
}

// A centred sphere of 20 % volume fraction on an n^3 grid: matrix E = 1, sphere E = contrast,
// both with Poisson's ratio 0.3.
inline void sphereComposite(std::uint64_t n, double contrast, StaticGeometry& geometry,
                            MaterialElasticVector& materials) {
  GeneratorOptions options;
  options.shape = GeneratorShape::Sphere;
  options.size = {n, n, n};
  options.fraction = 0.2;
  generateGeometry(options, geometry.RealVoxelImage);
  geometry.RealVoxelImage.collectColors();
  addIsotropic(materials, options.matrixColor, 1.0, 0.3);
  addIsotropic(materials, options.inclusionColor, contrast, 0.3);
}

// Seconds of a forward+backward transform pair of `field` (planned; values are lost): the two
// plans alone, without the normalisation pass, the floor an iteration can reach; the fastest
// of `repeats`, since on a shared machine the others measure the neighbours as well. The
// unnormalised round trips scale the values by N each time, so they start from zeros.
inline double transformPairSeconds(FFTImage& field, int repeats = 10) {
  static_cast<FFTImage&>(field) = 0.0;
  fftw_execute(field.forwardPlan);
  fftw_execute(field.backwardPlan);
  std::vector<double> pairs;
  for (int i = 0; i < repeats; ++i) {
    Timer t;
    t.start();
    fftw_execute(field.forwardPlan);
    fftw_execute(field.backwardPlan);
    pairs.push_back(t.seconds());
  }
  return *std::min_element(pairs.begin(), pairs.end());
}

// The median of `values` (not empty).
inline double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t n = values.size();
  return n % 2 ? values[n / 2] : 0.5 * (values[n / 2 - 1] + values[n / 2]);
}

}  // namespace gridmoor::bench
