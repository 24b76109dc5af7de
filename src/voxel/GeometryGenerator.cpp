#include "voxel/GeometryGenerator.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <map>
#include <numbers>
#include <random>
#include <set>

#include "common/Fatal.h"

namespace gridmoor {

namespace {

const char* const toolName = "gridmoor-geometry";
// Large enough for any example or benchmark, small enough that a typo in --size ends with
// a message instead of an allocation failure.
constexpr std::uint64_t maxVoxels = std::uint64_t(1) << 32;
// Random placement gives up after this many rejected centres in a row: the free space
// left is then too fragmented for another inclusion.
constexpr std::uint64_t maxRejectionsInARow = 200000;

[[noreturn]] void usageError(const std::string& message) {
  fatal(std::string(toolName) + ": " + message + " (see --help)");
}

const std::map<std::string, GeneratorShape>& shapeNames() {
  static const std::map<std::string, GeneratorShape> names{
      {"block", GeneratorShape::Block},
      {"laminate", GeneratorShape::Laminate},
      {"sphere", GeneratorShape::Sphere},
      {"fibre", GeneratorShape::Fibre},
      {"random-spheres", GeneratorShape::RandomSpheres},
      {"random-fibres", GeneratorShape::RandomFibres}};
  return names;
}

bool isRandom(GeneratorShape s) {
  return s == GeneratorShape::RandomSpheres || s == GeneratorShape::RandomFibres;
}
bool isFibre(GeneratorShape s) {
  return s == GeneratorShape::Fibre || s == GeneratorShape::RandomFibres;
}

double parseReal(const std::string& option, const std::string& text) {
  char* end = nullptr;
  errno = 0;
  const double value = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || errno == ERANGE || !std::isfinite(value))
    usageError(option + " needs a number, not \"" + text + "\"");
  return value;
}

std::uint64_t parseCount(const std::string& option, const std::string& text) {
  const bool digits = !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return c >= '0' && c <= '9';
  });
  errno = 0;
  const unsigned long long value = digits ? std::strtoull(text.c_str(), nullptr, 10) : 0;
  if (!digits || errno == ERANGE)
    usageError(option + " needs a whole number, not \"" + text + "\"");
  return value;
}

bool looksLikeCount(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return c >= '0' && c <= '9';
  });
}

int parseAxis(const std::string& option, const std::string& text) {
  if (text == "x") return 0;
  if (text == "y") return 1;
  if (text == "z") return 2;
  usageError(option + " needs x, y or z, not \"" + text + "\"");
}

Colour parseColour(const std::string& option, const std::string& text) {
  const std::uint64_t value = parseCount(option, text);
  if (value > 255) usageError(option + " needs a colour from 0 to 255, not " + text);
  return static_cast<Colour>(value);
}

// Distance of two coordinates on a periodic axis of length n.
double periodicDistance(double a, double b, double n) {
  const double d = std::fmod(std::fabs(a - b), n);
  return std::min(d, n - d);
}

// Uniform in [0, 1) from the top 53 bits, the same on every platform.
double unitUniform(std::mt19937_64& generator) {
  return static_cast<double>(generator() >> 11) * 0x1.0p-53;
}

std::string gridText(const std::array<std::uint64_t, 3>& n) {
  return std::to_string(n[0]) + "x" + std::to_string(n[1]) + "x" + std::to_string(n[2]);
}

}  // namespace

std::string generatorUsage() {
  return "usage: gridmoor-geometry SHAPE --size N|NX NY NZ --output FILE.ldt [options]\n"
         "Writes a periodic colour geometry as an .ldt file.\n"
         "\n"
         "Shapes:\n"
         "  block            every voxel of the matrix colour\n"
         "  laminate         a layer of the inclusion colour with normal --normal and volume\n"
         "                   fraction --fraction (planes from index 0 upwards)\n"
         "  sphere           a centred sphere of --radius, or of volume fraction --fraction\n"
         "  fibre            a centred cylinder along --axis of --radius, or of --fraction\n"
         "  random-spheres   non-overlapping spheres of --radius at random places, added\n"
         "                   until the volume fraction is closest to --fraction\n"
         "  random-fibres    the same with cylinders along --axis\n"
         "Inclusions that cross a face of the grid wrap around to the opposite face.\n"
         "\n"
         "Options:\n"
         "  --size N | --size NX NY NZ   grid size in voxels (required)\n"
         "  --output FILE.ldt            file to write (required)\n"
         "  --voxel-length L             edge length of a voxel (default 1)\n"
         "  --matrix C                   matrix colour, 0 to 255 (default 0)\n"
         "  --inclusion C                inclusion colour, 0 to 255 (default 1)\n"
         "  --normal x|y|z               layer normal of a laminate (default x)\n"
         "  --axis x|y|z                 fibre axis (default z)\n"
         "  --fraction F                 volume fraction of the inclusion colour, 0 to 1\n"
         "  --radius R                   radius in voxel lengths\n"
         "  --seed S                     seed of the random placement (default 1)\n"
         "  --gap G                      least free distance between random inclusions in\n"
         "                               voxel lengths (default 0: they may touch)\n"
         "  --description TEXT           text stored in the file's trailer\n"
         "  --help                       this text\n";
}

GeneratorOptions parseGeneratorArguments(const std::vector<std::string>& args) {
  GeneratorOptions options;
  bool shapeGiven = false;
  std::set<std::string> given;
  bool normalGiven = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg == "--help" || arg == "-h") {
      GeneratorOptions help;
      help.help = true;
      return help;
    }
    if (arg.rfind("--", 0) != 0) {
      const auto it = shapeNames().find(arg);
      if (it == shapeNames().end()) usageError("unknown shape \"" + arg + "\"");
      if (shapeGiven) usageError("more than one shape given");
      options.shape = it->second;
      shapeGiven = true;
      continue;
    }
    if (!given.insert(arg).second) usageError(arg + " given twice");
    const auto value = [&]() -> const std::string& {
      if (i + 1 >= args.size()) usageError(arg + " needs a value");
      return args[++i];
    };
    if (arg == "--size") {
      const std::uint64_t first = parseCount(arg, value());
      if (i + 2 < args.size() && looksLikeCount(args[i + 1]) && looksLikeCount(args[i + 2])) {
        options.size = {first, parseCount(arg, args[i + 1]), parseCount(arg, args[i + 2])};
        i += 2;
      } else {
        options.size = {first, first, first};
      }
    } else if (arg == "--output") {
      options.output = value();
    } else if (arg == "--voxel-length") {
      options.voxelLength = parseReal(arg, value());
    } else if (arg == "--matrix") {
      options.matrixColor = parseColour(arg, value());
    } else if (arg == "--inclusion") {
      options.inclusionColor = parseColour(arg, value());
    } else if (arg == "--normal") {
      options.axis = parseAxis(arg, value());
      normalGiven = true;
    } else if (arg == "--axis") {
      options.axis = parseAxis(arg, value());
    } else if (arg == "--fraction") {
      options.fraction = parseReal(arg, value());
      if (options.fraction < 0.0 || options.fraction > 1.0)
        usageError("--fraction must lie between 0 and 1");
    } else if (arg == "--radius") {
      options.radius = parseReal(arg, value());
      if (options.radius <= 0.0) usageError("--radius must be positive");
    } else if (arg == "--seed") {
      options.seed = parseCount(arg, value());
    } else if (arg == "--gap") {
      options.gap = parseReal(arg, value());
      if (options.gap < 0.0) usageError("--gap must not be negative");
    } else if (arg == "--description") {
      options.description = value();
    } else {
      usageError("unknown option " + arg);
    }
  }

  if (!shapeGiven) usageError("no shape given");
  const GeneratorShape shape = options.shape;
  std::string shapeName;
  for (const auto& [name, s] : shapeNames())
    if (s == shape) shapeName = name;
  // Options that do not apply to the shape are refused rather than silently ignored.
  const auto applies = [&](const std::string& option, bool ok) {
    if (given.count(option) && !ok) usageError(option + " does not apply to " + shapeName);
  };
  applies("--inclusion", shape != GeneratorShape::Block);
  applies("--normal", shape == GeneratorShape::Laminate);
  applies("--axis", isFibre(shape));
  applies("--fraction", shape != GeneratorShape::Block);
  applies("--radius", shape != GeneratorShape::Block && shape != GeneratorShape::Laminate);
  applies("--seed", isRandom(shape));
  applies("--gap", isRandom(shape));
  if (shape == GeneratorShape::Laminate && !normalGiven) options.axis = 0;

  if (!given.count("--size")) usageError("--size is required");
  if (options.output.empty()) usageError("--output is required");
  if (options.output.size() < 4 || options.output.compare(options.output.size() - 4, 4, ".ldt") != 0)
    usageError("the output file must end in .ldt");
  const auto& n = options.size;
  if (n[0] == 0 || n[1] == 0 || n[2] == 0) usageError("--size must be positive in every axis");
  if (n[0] > maxVoxels || n[1] > maxVoxels || n[2] > maxVoxels ||
      n[0] * n[1] > maxVoxels || n[0] * n[1] * n[2] > maxVoxels)
    usageError("a grid of " + gridText(n) + " voxels is larger than 2^32 voxels");
  if (options.voxelLength <= 0.0) usageError("--voxel-length must be positive");
  if (shape != GeneratorShape::Block && options.matrixColor == options.inclusionColor)
    usageError("matrix and inclusion colours must differ");

  switch (shape) {
    case GeneratorShape::Block:
      break;
    case GeneratorShape::Laminate:
      if (options.fraction < 0.0) usageError("laminate needs --fraction");
      break;
    case GeneratorShape::Sphere:
    case GeneratorShape::Fibre:
      if ((options.radius > 0.0) == (options.fraction >= 0.0))
        usageError(shapeName + " needs either --radius or --fraction");
      break;
    case GeneratorShape::RandomSpheres:
    case GeneratorShape::RandomFibres:
      if (options.fraction < 0.0 || options.radius <= 0.0)
        usageError(shapeName + " needs --fraction and --radius");
      // A smaller inclusion may cover no voxel centre at all and add nothing to the fraction.
      if (options.radius < 1.0) usageError("--radius of random inclusions must be at least 1");
      break;
  }
  return options;
}

std::uint64_t rasterizeInclusion(ColorImage& image, const std::array<double, 3>& centre,
                                 double radius, int axis, Colour colour) {
  const std::array<std::uint64_t, 3> n{image.getGlobalSizeX(), image.sizeY, image.sizeZ};
  // Per axis the voxel indices whose centres (index + 0.5) may lie within the radius, with
  // their wrapped index and squared distance; the fibre axis takes every index at distance 0.
  std::array<std::vector<std::pair<std::uint64_t, double>>, 3> span;
  for (int a = 0; a < 3; ++a) {
    if (a == axis) {
      for (std::uint64_t i = 0; i < n[a]; ++i) span[a].emplace_back(i, 0.0);
      continue;
    }
    const auto lo = static_cast<long long>(std::floor(centre[a] - radius - 0.5));
    const auto hi = static_cast<long long>(std::ceil(centre[a] + radius - 0.5));
    const auto size = static_cast<long long>(n[a]);
    for (long long i = lo; i <= hi; ++i) {
      const double d = static_cast<double>(i) + 0.5 - centre[a];
      if (d * d > radius * radius) continue;
      span[a].emplace_back(static_cast<std::uint64_t>(((i % size) + size) % size), d * d);
    }
  }
  const double r2 = radius * radius;
  std::uint64_t changed = 0;
  for (const auto& [x, dx] : span[0])
    for (const auto& [y, dy] : span[1]) {
      if (dx + dy > r2) continue;
      for (const auto& [z, dz] : span[2]) {
        if (dx + dy + dz > r2 || x < image.localXBegin || x >= image.localXEnd) continue;
        Colour& voxel = image.at(x, y, z);
        if (voxel != colour) ++changed;
        voxel = colour;
      }
    }
  return changed;
}

GeneratedGeometry generateGeometry(const GeneratorOptions& options, ColorImage& image) {
  const auto& n = options.size;
  image.setSize(n[0], n[1], n[2], 0, "None");
  std::fill(image.begin(), image.end(), options.matrixColor);
  image.resolutionX = image.resolutionY = image.resolutionZ = options.voxelLength;
  image.description = options.description;

  GeneratedGeometry result;
  const double voxels = static_cast<double>(n[0]) * static_cast<double>(n[1]) * static_cast<double>(n[2]);
  const int axis = options.axis;
  // The plane axes of a fibre, in x, y, z order.
  const int p0 = axis == 0 ? 1 : 0;
  const int p1 = axis == 2 ? 1 : 2;

  switch (options.shape) {
    case GeneratorShape::Block:
      break;
    case GeneratorShape::Laminate: {
      // The layer covers the planes [0, k) along the normal; the fraction is met exactly
      // when fraction * size is whole, otherwise the nearest whole number of planes is taken.
      const auto k = static_cast<std::uint64_t>(std::llround(options.fraction * static_cast<double>(n[axis])));
      for (std::uint64_t x = 0; x < n[0]; ++x)
        for (std::uint64_t y = 0; y < n[1]; ++y)
          for (std::uint64_t z = 0; z < n[2]; ++z) {
            const std::uint64_t c[3] = {x, y, z};
            if (c[axis] < k) {
              image.at(x, y, z) = options.inclusionColor;
              ++result.inclusionVoxels;
            }
          }
      break;
    }
    case GeneratorShape::Sphere:
    case GeneratorShape::Fibre: {
      const bool fibre = options.shape == GeneratorShape::Fibre;
      double radius = options.radius;
      if (radius <= 0.0) {
        radius = fibre ? std::sqrt(options.fraction * static_cast<double>(n[p0] * n[p1]) / std::numbers::pi)
                       : std::cbrt(3.0 * options.fraction * voxels / (4.0 * std::numbers::pi));
      }
      // A larger inclusion would overlap its own periodic image.
      const double room = fibre ? static_cast<double>(std::min(n[p0], n[p1]))
                                : static_cast<double>(std::min({n[0], n[1], n[2]}));
      if (2.0 * radius > room)
        usageError("a radius of " + std::to_string(radius) + " voxels does not fit a grid of " +
                   gridText(n));
      std::array<double, 3> centre{n[0] / 2.0, n[1] / 2.0, n[2] / 2.0};
      if (fibre) centre[axis] = 0.0;
      result.inclusionVoxels = rasterizeInclusion(image, centre, radius, fibre ? axis : -1,
                                                  options.inclusionColor);
      result.centres.push_back(centre);
      result.radius = radius;
      break;
    }
    case GeneratorShape::RandomSpheres:
    case GeneratorShape::RandomFibres: {
      const bool fibre = options.shape == GeneratorShape::RandomFibres;
      const double radius = options.radius;
      const double separation = 2.0 * radius + options.gap;
      const double room = fibre ? static_cast<double>(std::min(n[p0], n[p1]))
                                : static_cast<double>(std::min({n[0], n[1], n[2]}));
      if (separation >= room)
        usageError("inclusions of radius " + std::to_string(radius) + " and gap " +
                   std::to_string(options.gap) + " do not fit a grid of " + gridText(n));
      const double target = options.fraction * voxels;
      std::mt19937_64 generator(options.seed);
      std::uint64_t rejections = 0;
      result.radius = radius;
      while (static_cast<double>(result.inclusionVoxels) < target) {
        std::array<double, 3> centre{};
        for (int a = 0; a < 3; ++a) centre[a] = unitUniform(generator) * static_cast<double>(n[a]);
        if (fibre) centre[axis] = 0.0;
        // Strictly more than twice the radius apart: no voxel centre can then lie in both.
        const bool free = std::none_of(result.centres.begin(), result.centres.end(), [&](const auto& other) {
          double d2 = 0.0;
          for (int a = 0; a < 3; ++a) {
            if (fibre && a == axis) continue;
            const double d = periodicDistance(centre[a], other[a], static_cast<double>(n[a]));
            d2 += d * d;
          }
          return d2 <= separation * separation;
        });
        if (!free) {
          if (++rejections == maxRejectionsInARow)
            fatal(std::string(toolName) + ": no room for more inclusions after " +
                  std::to_string(result.centres.size()) + " (volume fraction " +
                  std::to_string(static_cast<double>(result.inclusionVoxels) / voxels) +
                  "); lower --fraction, --radius or --gap");
          continue;
        }
        rejections = 0;
        const std::uint64_t added = rasterizeInclusion(image, centre, radius, fibre ? axis : -1,
                                                       options.inclusionColor);
        const double before = std::fabs(static_cast<double>(result.inclusionVoxels) - target);
        const double after = std::fabs(static_cast<double>(result.inclusionVoxels + added) - target);
        if (after > before) {
          // The last inclusion would overshoot more than it helps: take it out again. It
          // covers only voxels of the matrix, so this restores them exactly.
          rasterizeInclusion(image, centre, radius, fibre ? axis : -1, options.matrixColor);
          break;
        }
        result.inclusionVoxels += added;
        result.centres.push_back(centre);
      }
      break;
    }
  }
  result.volumeFraction = static_cast<double>(result.inclusionVoxels) / voxels;
  image.collectColors();
  return result;
}

}  // namespace gridmoor
