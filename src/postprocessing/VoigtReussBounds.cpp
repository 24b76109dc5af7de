#include "postprocessing/VoigtReussBounds.h"

#include <array>
#include <cstdint>

#include "common/Fatal.h"
#include "materials/MaterialVector.h"
#include "voxel/Geometry.h"

namespace gridmoor {

namespace {

enum class Bound { Stiffness, Compliance };

VoigtMatrix matrixOfVoxel(DiscretizedElasticMaterial& law, Bound bound, VoxelIndex x,
                          VoxelIndex y, VoxelIndex z) {
  return bound == Bound::Stiffness ? law.getCVoigtLinearizedOfVoxel(0, x, y, z)
                                   : law.getCVoigtInverseOfVoxel(0, x, y, z);
}

// Laws that need no orientation answer the same matrix at every voxel: they are asked once
// and weighted by their voxel count; rotated laws are asked voxel by voxel.
EffectiveMatrix volumeMean(const MaterialElasticVector& materials, const Geometry& geometry,
                           Bound bound) {
  const ColorImage& image = geometry.RealVoxelImage;
  std::array<std::uint64_t, 256> counts{};
  std::array<VoxelIndex, 256 * 3> firstVoxel{};
  std::array<double, 36> sum{};
  for (std::uint64_t x = image.localXBegin; x < image.localXEnd; ++x)
    for (std::uint64_t y = 0; y < image.sizeY; ++y)
      for (std::uint64_t z = 0; z < image.sizeZ; ++z) {
        const Colour c = image.at(x, y, z);
        DiscretizedElasticMaterial* law = materials.elasticLaw(c);
        if (!law) fatal("Not for all colors are the material parameters defined!");
        if (counts[c]++ == 0) firstVoxel[3 * c] = x, firstVoxel[3 * c + 1] = y, firstVoxel[3 * c + 2] = z;
        if (!law->needsOrientation()) continue;
        const VoigtMatrix m = matrixOfVoxel(*law, bound, x, y, z);
        for (int i = 0; i < 36; ++i) sum[i] += m.m[i];
      }
  double voxels = 0.0;
  for (int c = 0; c < 256; ++c) {
    voxels += static_cast<double>(counts[c]);
    DiscretizedElasticMaterial* law = materials.elasticLaw(static_cast<Colour>(c));
    if (counts[c] == 0 || law->needsOrientation()) continue;
    const VoigtMatrix m =
        matrixOfVoxel(*law, bound, firstVoxel[3 * c], firstVoxel[3 * c + 1], firstVoxel[3 * c + 2]);
    for (int i = 0; i < 36; ++i) sum[i] += static_cast<double>(counts[c]) * m.m[i];
  }
  EffectiveMatrix mean;
  if (voxels == 0.0) return mean;
  for (int i = 0; i < 36; ++i) mean.values[i] = sum[i] / voxels;
  return mean;
}

}  // namespace

EffectiveMatrix computeVoigtBound(const MaterialElasticVector& materials, const Geometry& geometry) {
  return volumeMean(materials, geometry, Bound::Stiffness);
}

EffectiveMatrix computeReussBound(const MaterialElasticVector& materials, const Geometry& geometry) {
  return volumeMean(materials, geometry, Bound::Compliance);
}

}  // namespace gridmoor
