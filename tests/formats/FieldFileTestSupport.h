// Helpers of the field file tests: a scratch directory per test and images whose every
// value tells its voxel and component, exactly representable as 32-bit floats.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

#include "voxel/Image.h"

namespace gridmoor::testing {

// Directories still present when the process ends are removed then: a death test's child
// process ends through exit() inside the test and never reaches TearDown.
inline void removeAtExit(const std::filesystem::path& dir) {
  struct Registry {
    std::vector<std::filesystem::path> dirs;
    ~Registry() {
      std::error_code ignored;
      for (const auto& d : dirs) std::filesystem::remove_all(d, ignored);
    }
  };
  static Registry registry;
  registry.dirs.push_back(dir);
}

class ScratchDirectory : public ::testing::Test {
 protected:
  void SetUp() override {
    // The writers' OpenMP team outlives a parallel region: death tests must not fork it.
    // The style is given back in TearDown, so that later suites keep theirs.
    deathTestStyle_ = GTEST_FLAG_GET(death_test_style);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    std::string pattern = (std::filesystem::temp_directory_path() / "fieldfilesXXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    dir_ = pattern;
    removeAtExit(dir_);
  }
  void TearDown() override {
    std::filesystem::remove_all(dir_);
    GTEST_FLAG_SET(death_test_style, deathTestStyle_);
  }
  std::string path(const std::string& name) const { return (dir_ / name).string(); }
  static std::string readBytes(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  static void writeBytes(const std::string& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
  }
  std::filesystem::path dir_;
  std::string deathTestStyle_;
};

// A value that differs for every voxel and component of grids up to 64 per axis and is
// exact in float: the writers narrow to 32 bits.
inline double patternValue(std::uint64_t c, std::uint64_t x, std::uint64_t y, std::uint64_t z) {
  return static_cast<double>(c) * 262144.0 + static_cast<double>(x) * 4096.0 +
         static_cast<double>(y) * 64.0 + static_cast<double>(z) + 0.25 - 3.0e5;
}

inline Image<double> patternImage(std::uint64_t components, std::uint64_t nx, std::uint64_t ny,
                                  std::uint64_t nz) {
  Image<double> image(components, nx, ny, nz, "pattern");
  for (std::uint64_t x = 0; x < nx; ++x)
    for (std::uint64_t y = 0; y < ny; ++y)
      for (std::uint64_t z = 0; z < nz; ++z)
        for (std::uint64_t c = 0; c < components; ++c)
          *image.elementPointer(c, x, y, z) = patternValue(c, x, y, z);
  return image;
}

}  // namespace gridmoor::testing
