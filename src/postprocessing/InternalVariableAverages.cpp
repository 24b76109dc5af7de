#include "postprocessing/InternalVariableAverages.h"

#include <algorithm>
#include <array>
#include <functional>
#include <ostream>
#include <set>
#include <vector>

#include "materials/MaterialVector.h"
#include "postprocessing/ResultFile.h"
#include "voxel/Geometry.h"

namespace gridmoor {

namespace {

bool hasInternalVariables(const DiscretizedElasticMaterial& law, Formulation formulation) {
  switch (formulation) {
#define GRIDMOOR_HAS_IV_CASE(Word) \
  case Formulation::Word: return law.hasInternalVariables##Word();
    GRIDMOOR_FORMULATIONS(GRIDMOOR_HAS_IV_CASE)
#undef GRIDMOOR_HAS_IV_CASE
  }
  return false;
}

// One output variable of one colour: its values per voxel and the plain solve's block.
struct VariableBlock {
  std::string key;  // name + "OfMaterial_" + colour
  std::size_t width = 0;
  const Real* values = nullptr;
  std::uint64_t voxels = 0;
};

// Calls visit for every variable of every colour in use with internal variables.
void forEachVariable(const MaterialElasticVector& materials, const Geometry& geometry,
                     const std::string& formulation,
                     const std::function<void(const VariableBlock&)>& visit) {
  const Formulation f = formulationOf(formulation);
  const ColorImage& colours = geometry.RealVoxelImage;
  std::array<std::uint64_t, 256> counts{};
  for (std::uint64_t x = colours.localXBegin; x < colours.localXEnd; ++x)
    for (std::uint64_t y = 0; y < colours.sizeY; ++y)
      for (std::uint64_t z = 0; z < colours.sizeZ; ++z) ++counts[colours.at(x, y, z)];
  const std::vector<Colour>& used = geometry.getUsedColors();
  std::set<Colour> visited;
  for (Material* material : materials.ownedMaterials) {
    DiscretizedElasticMaterial* law = material ? material->elastic : nullptr;
    if (!law) continue;
    const Colour colour = law->getColour();
    if (std::find(used.begin(), used.end(), colour) == used.end() ||
        !visited.insert(colour).second || !hasInternalVariables(*law, f))
      continue;
    std::vector<Vector<Real>*> stores;
    std::vector<std::string> names, units;
    law->getOutputVariables(stores, names, units);
    const std::uint64_t voxels = counts[colour];
    const std::uint64_t blocks = voxels * law->numberOfLoadCases();
    if (blocks == 0) continue;
    for (std::size_t i = 0; i < stores.size(); ++i) {
      const std::size_t width = stores[i]->size() / blocks;
      if (width == 0) continue;
      visit({names[i] + "OfMaterial_" + std::to_string(colour), width, stores[i]->data(), voxels});
    }
  }
}

void writeLine(std::ostream& out, const std::string& statistic, const VariableBlock& v,
               const std::vector<Real>& values) {
  const std::string kind = v.width == 1 ? "Scalar" : "Vector";
  writeVector(out, kind + ":InternalVariables:" + statistic + v.key, values);
}

}  // namespace

void writeInternalVariableAverages(std::ostream& out, const MaterialElasticVector& materials,
                                   const Geometry& geometry, const std::string& formulation) {
  forEachVariable(materials, geometry, formulation, [&](const VariableBlock& v) {
    std::vector<Real> mean(v.width, 0.0);
    for (std::uint64_t voxel = 0; voxel < v.voxels; ++voxel)
      for (std::size_t k = 0; k < v.width; ++k) mean[k] += v.values[voxel * v.width + k];
    for (Real& m : mean) m /= static_cast<Real>(v.voxels);
    writeLine(out, "Average", v, mean);
  });
}

void writeInternalVariableMinMax(std::ostream& out, const MaterialElasticVector& materials,
                                 const Geometry& geometry, const std::string& formulation) {
  forEachVariable(materials, geometry, formulation, [&](const VariableBlock& v) {
    std::vector<Real> least(v.values, v.values + v.width), greatest = least;
    for (std::uint64_t voxel = 1; voxel < v.voxels; ++voxel)
      for (std::size_t k = 0; k < v.width; ++k) {
        least[k] = std::min(least[k], v.values[voxel * v.width + k]);
        greatest[k] = std::max(greatest[k], v.values[voxel * v.width + k]);
      }
    writeLine(out, "Min", v, least);
    writeLine(out, "Max", v, greatest);
  });
}

}  // namespace gridmoor
