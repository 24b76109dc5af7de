// Command-line tool that writes synthetic .ldt geometries (blocks, laminates, spheres,
// fibres, random inclusions) for examples, tests and benchmarks.
#include <cstdio>
#include <string>
#include <vector>

#include "voxel/ColorImage.h"
#include "voxel/GeometryGenerator.h"

int main(int argc, char** argv) {
  using namespace gridmoor;
  const GeneratorOptions options = parseGeneratorArguments(std::vector<std::string>(argv + 1, argv + argc));
  if (options.help) {
    std::fputs(generatorUsage().c_str(), stdout);
    return 0;
  }
  ColorImage image("GeneratedGeometry");
  const GeneratedGeometry made = generateGeometry(options, image);
  std::printf("%llu x %llu x %llu voxels, %zu inclusions, inclusion volume fraction %.6f\n",
              static_cast<unsigned long long>(options.size[0]),
              static_cast<unsigned long long>(options.size[1]),
              static_cast<unsigned long long>(options.size[2]), made.centres.size(),
              made.volumeFraction);
  std::fflush(stdout);
  image.writeLdt(options.output);
  return 0;
}
