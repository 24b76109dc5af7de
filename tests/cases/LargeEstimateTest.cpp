// A memory estimate for a grid whose fields would not fit this machine: the run must answer
// with the figure and stay small itself, since it only counts what it would allocate.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

void putLe32(std::ofstream& out, std::uint32_t v) {
  const char bytes[4] = {static_cast<char>(v), static_cast<char>(v >> 8),
                         static_cast<char>(v >> 16), static_cast<char>(v >> 24)};
  out.write(bytes, 4);
}

// One colour everywhere: runs of 255 voxels, a plane's last run shorter.
void writeUniformLdt(const fs::path& path, std::uint32_t n) {
  const std::uint64_t planeVoxels = std::uint64_t{n} * n;
  std::vector<char> plane;
  for (std::uint64_t left = planeVoxels; left > 0;) {
    const std::uint64_t run = std::min<std::uint64_t>(left, 255);
    plane.push_back(static_cast<char>(run));
    plane.push_back(0);
    left -= run;
  }
  const std::uint32_t trailerOffset = 20 + static_cast<std::uint32_t>(plane.size()) * n;
  std::ofstream out(path, std::ios::binary);
  out.write("ldt1", 4);
  putLe32(out, trailerOffset);
  for (int axis = 0; axis < 3; ++axis) putLe32(out, n);
  for (std::uint32_t x = 0; x < n; ++x) out.write(plane.data(), static_cast<std::streamsize>(plane.size()));
  const std::string size = std::to_string(n);
  out << "\nNX " << size << "\nNY " << size << "\nNZ " << size << "\n\nVoxelLength 1.0\n";
}

// The number of the line "label N" + unit; 0 when there is no such line.
std::uint64_t numberAfter(const std::string& text, const std::string& label,
                          const std::string& unit) {
  std::smatch match;
  if (!std::regex_search(text, match, std::regex(label + " ([0-9]+)" + unit + "\n"))) return 0;
  return std::stoull(match[1].str());
}

TEST(LargeEstimate, GridBeyondTheMachineIsCountedNotAllocated) {
  const fs::path work = fs::temp_directory_path() /
                        ("gridmoor-large-estimate-" + std::to_string(::getpid()));
  fs::remove_all(work);
  fs::create_directories(work);
  writeUniformLdt(work / "geometry.ldt", 1024);
  {
    std::ifstream in(fs::path(GRIDMOOR_CASES_DIR) / "memory_estimate" / "run.xml");
    std::ofstream(work / "run.xml") << in.rdbuf();
  }
  const std::string command = "cd '" + work.string() + "' && '" GRIDMOOR_BINARY "' run.xml >/dev/null 2>&1";
  const int status = std::system(command.c_str());
  ASSERT_TRUE(WIFEXITED(status));
  ASSERT_EQ(WEXITSTATUS(status), 0);
  std::ifstream log(work / "stdout.txt");
  std::stringstream text;
  text << log.rdbuf();
  const std::uint64_t estimate = numberAfter(text.str(), "###EstimatedMemoryRequirement###", " KB");
  const std::uint64_t occupied = numberAfter(text.str(), "Currently occupying", "");
  // 2^30 voxels of six doubles: 48 GiB for the strain field alone.
  EXPECT_GT(estimate, std::uint64_t{48} << 20);
  // The colour images (1 GiB each, read and resampled) are the only large blocks the run
  // really holds.
  EXPECT_GT(occupied, 0u);
  EXPECT_LT(occupied, std::uint64_t{3} << 20);
  fs::remove_all(work);
}

}  // namespace
