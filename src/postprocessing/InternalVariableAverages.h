// The result-file lines of the internal variables of laws with history: their mean, least
// and greatest value over the voxels of each colour.
#pragma once

#include <iosfwd>
#include <string>

namespace gridmoor {

class Geometry;
class MaterialElasticVector;

// For each colour in use whose law has internal variables in `formulation`, in the order of
// the material table, and each output variable of the law (getOutputVariables):
// "Scalar:InternalVariables:Average<name>OfMaterial_<colour> v" for a variable of one value
// per voxel, "Vector:..." with the means of each value for a wider one. A store holds the
// values of the colour's voxels in a row, the block of the plain solve first (the further
// blocks of the homogenization load cases follow it and are not averaged).
void writeInternalVariableAverages(std::ostream& out, const MaterialElasticVector& materials,
                                   const Geometry& geometry, const std::string& formulation);
// The same walk, with "...:Min<name>OfMaterial_<colour>" and "...:Max<name>..." lines.
void writeInternalVariableMinMax(std::ostream& out, const MaterialElasticVector& materials,
                                 const Geometry& geometry, const std::string& formulation);

}  // namespace gridmoor
