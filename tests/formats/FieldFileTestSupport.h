// Helpers of the file tests: whole files read, a scratch directory per test, images whose every
// value tells its voxel and component (exactly representable as 32-bit floats), 32-bit words of
// either byte order, and the standard output of a call.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
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

// The whole content of a file; empty when it does not open.
inline std::string readFile(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
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
  static std::string readBytes(const std::string& file) { return readFile(file); }
  static void writeBytes(const std::string& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
  }
  // A file of the directory with the bytes; returns its path.
  std::string fileWith(const std::string& name, const std::string& bytes) const {
    writeBytes(path(name), bytes);
    return path(name);
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

// A 32-bit word as four bytes, and back from four bytes of s.
inline std::string uint32Bytes(std::uint32_t v, bool big = false) {
  std::string s(4, '\0');
  for (int i = 0; i < 4; ++i) s[big ? 3 - i : i] = static_cast<char>(v >> (8 * i));
  return s;
}
inline std::uint32_t uint32At(const std::string& s, std::size_t at, bool big = false) {
  std::uint32_t v = 0;
  for (int i = 0; i < 4; ++i)
    v |= std::uint32_t(static_cast<unsigned char>(s.at(at + i))) << (8 * (big ? 3 - i : i));
  return v;
}

inline std::string stdoutOf(const std::function<void()>& f) {
  ::testing::internal::CaptureStdout();
  f();
  return ::testing::internal::GetCapturedStdout();
}

}  // namespace gridmoor::testing
