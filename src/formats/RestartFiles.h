// Files that let a long load history stop and go on: the names of stored states, the binary
// file of the materials' internal variables, and the lock that marks output being written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/Types.h"
#include "voxel/Vector.h"

namespace gridmoor {

class Keywords;

// True when SaveRestartFile asks for stored states ("state.gmr"); false when it is empty or
// "0". Any other value ends the run with the message of restartFileName.
bool savesRestartStates(const Keywords& keywords);

// The stored state named by SaveRestartFile: its name without extension in `directory`,
// then the load case suffix when loadCase is not -1, then "_correspondingStrainStressTensor"
// for kind 1 or "_correspondingStressStrainTensor" for kind 2, then ".gmr". Only "gmr" files
// are written; a "das" name and any other extension end the run.
std::string restartFileName(const Keywords& keywords, const std::string& directory,
                            int loadCase, int kind);

// Per-voxel history values of the laws with internal variables, as one table whose entries
// each belong to a material index. The file is little-endian: the variable count and the
// index count (8 bytes each), one byte per index, then the values.
class InternalVariables : public Vector<Real> {
 public:
  InternalVariables(std::uint64_t numberOfInternalVariables, std::vector<Colour> materialIndices,
                    std::size_t values, const std::string& name);

  std::uint64_t numberOfInternalVariables = 0;
  std::vector<Colour> materialIndices;

  void save(const std::string& fileName) const;
  // The file must have been written for a table of the same layout: the variable count and
  // the index vector are compared before any value is read.
  void load(const std::string& fileName);
};

// "outputLock" in the output directory exists while a step writes its output files: one that
// is left behind means that the files of a step may be incomplete.
std::string outputLockName(const std::string& directory);
void createOutputLock(const std::string& directory);
void removeOutputLock(const std::string& directory);

}  // namespace gridmoor
