// The Voigt and Reuss bounds of a voxel image: volume means over all voxels of the per-voxel
// stiffness and compliance of the laws. No solve is needed, so they work on a bare geometry.
#pragma once

#include "postprocessing/EffectiveMatrix.h"

namespace gridmoor {

class Geometry;
class MaterialElasticVector;

// Mean of C over all voxels (the laws' tangent at the voxel; C itself for linear laws).
// Every used colour must have a law with a finite stiffness.
EffectiveMatrix computeVoigtBound(const MaterialElasticVector& materials, const Geometry& geometry);
// Mean of C^-1 over all voxels. Every used colour must have a finite compliance.
EffectiveMatrix computeReussBound(const MaterialElasticVector& materials, const Geometry& geometry);

}  // namespace gridmoor
