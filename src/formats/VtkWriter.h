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

  // The format knows no symmetric tensors: a Voigt tensor goes out as the full tensor, row by
  // row, each shear value in both of its places. The values are those of the field as they
  // are, so a strain's off-diagonal entries hold engineering shear, as its six Voigt values
  // do in the XML files, and reading the 9 values back by 0, 4, 8, 7, 6, 3 gives the six.
  std::vector<std::uint32_t> symmetricTensorComponents() const override {
    return {0, 5, 4, 5, 1, 3, 4, 3, 2};
  }
};

}  // namespace gridmoor
