// Writer of VTK's legacy binary format (structured points, big-endian values): one file for
// the whole grid, so it serves single-process runs only.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "formats/DataWriter.h"

namespace gridmoor {

class VtkWriter : public DataWriter {
 public:
  VtkWriter(std::string fileName, const std::array<std::int64_t, 6>& extent,
            const std::array<double, 3>& spacing, const std::array<double, 3>& origin);

  // Fields of 1, 3 and 9 components become SCALARS, VECTORS and TENSORS; any other count
  // ends the run before the file is opened.
  void write() override;
};

}  // namespace gridmoor
