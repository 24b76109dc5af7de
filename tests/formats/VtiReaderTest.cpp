#include "formats/VtiReader.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>

#include "FieldFileTestSupport.h"
#include "formats/VtiWriter.h"

using namespace gridmoor;
using gridmoor::testing::patternImage;
using gridmoor::testing::patternValue;

namespace {

constexpr std::uint64_t NX = 30, NY = 20, NZ = 20;  // 6 floats a voxel: 9 compressed blocks

class VtiFiles : public gridmoor::testing::ScratchDirectory {
 protected:
  // Writes "stress" (6 floats) and "marker" (UInt8).
  std::string writeFields(const std::string& name, bool compressed, bool big,
                          std::uint32_t pieces) {
    const std::string file = path(name);
    VtiWriter writer(file, {4, 4 + std::int64_t(NX), 0, NY, -3, std::int64_t(NZ) - 3},
                     {0.5, 0.25, 0.125}, {1, 2, 3}, compressed, pieces);
    writer.setBigEndian(big);
    writer.addImageField("stress", stress_, {0, 1, 2, 3, 4, 5}, DataWriter::Float);
    writer.addImageField("marker", marker_, {0}, DataWriter::UInt8);
    writer.write();
    return pieces > 1 ? writer.indexFileName() : file + ".vti";
  }

  // Reads the planes [x0, x1) of every field back and compares them with what was written.
  void expectFieldsReadBack(const std::string& file, std::uint64_t x0, std::uint64_t x1) {
    VtiReader reader(file);
    EXPECT_EQ(reader.getSize(0), NX);
    EXPECT_EQ(reader.getSize(2), NZ);
    EXPECT_EQ(reader.getWholeExtent()[4], -3);
    EXPECT_EQ(reader.getSpacing()[2], 0.125);
    EXPECT_EQ(reader.getOrigin()[1], 2.0);
    VoxelBox box;
    box.begin = {x0, 0, 0};
    box.end = {x1, NY, NZ};

    Image<double> stress(6, x1 - x0, NY, NZ, "stress");
    stress.xOffset = x0;
    reader.setField("stress", "Float32", 6);
    reader.readFields(stress, box, {});
    Image<Colour> marker(1, x1 - x0, NY, NZ, "marker");
    marker.xOffset = x0;
    reader.setField("marker");
    reader.readFields(marker, box, {0});

    std::uint64_t wrong = 0;
    for (std::uint64_t x = x0; x < x1; ++x)
      for (std::uint64_t y = 0; y < NY; ++y)
        for (std::uint64_t z = 0; z < NZ; ++z) {
          for (std::uint64_t c = 0; c < 6; ++c)
            wrong += *stress.elementPointer(c, x, y, z) !=
                     static_cast<float>(patternValue(c, x, y, z));
          wrong += *marker.voxelPointer(x, y, z) != *marker_.voxelPointer(x, y, z);
        }
    EXPECT_EQ(wrong, 0u) << file;
  }

  void SetUp() override {
    ScratchDirectory::SetUp();
    for (std::uint64_t x = 0; x < NX; ++x)
      for (std::uint64_t y = 0; y < NY; ++y)
        for (std::uint64_t z = 0; z < NZ; ++z) *marker_.voxelPointer(x, y, z) = (x * y + z) % 251;
  }

  Image<double> stress_ = patternImage(6, NX, NY, NZ);
  Image<Colour> marker_{1, NX, NY, NZ, "marker"};
};

TEST_F(VtiFiles, RoundTripInEveryByteOrderCompressionAndPieceCount) {
  for (const bool compressed : {false, true})
    for (const bool big : {false, true})
      for (const std::uint32_t pieces : {1u, 3u}) {
        const std::string name = std::string("f") + (compressed ? "z" : "r") + (big ? "b" : "l") +
                                 std::to_string(pieces);
        SCOPED_TRACE(name);
        const std::string file = writeFields(name, compressed, big, pieces);
        // One piece is one file named after the base, several get an index. A name without
        // suffix finds the index when there is no .vti of that name.
        EXPECT_EQ(std::filesystem::exists(path(name + ".pvti")), pieces > 1);
        expectFieldsReadBack(pieces > 1 ? path(name) : file, 0, NX);
        // A slab that starts inside one piece and ends inside another.
        expectFieldsReadBack(file, 7, 23);
      }
}

TEST_F(VtiFiles, ReadFieldFromVtiTakesTheSymmetricPartOfNineComponents) {
  const Image<double> full = patternImage(9, 4, 3, 2);
  VtiWriter writer(path("tensor"), {0, 4, 0, 3, 0, 2}, {1, 1, 1}, {0, 0, 0}, true);
  writer.addImageField("F", full, {0, 1, 2, 3, 4, 5, 6, 7, 8}, DataWriter::Float);
  writer.write();

  Image<double> voigt(6, 4, 3, 2, "voigt");
  readFieldFromVti(voigt, path("tensor.vti"), "F");
  Image<double> whole("whole");
  readFieldFromVti(whole, path("tensor"), "F");
  ASSERT_EQ(whole.getNumberOfComponents(), 9u);
  ASSERT_EQ(whole.size(), full.size());
  const std::uint32_t picked[6] = {0, 4, 8, 7, 6, 3};
  for (std::uint64_t x = 0; x < 4; ++x)
    for (std::uint64_t y = 0; y < 3; ++y)
      for (std::uint64_t z = 0; z < 2; ++z) {
        for (std::uint64_t c = 0; c < 6; ++c)
          ASSERT_EQ(*voigt.elementPointer(c, x, y, z),
                    static_cast<float>(patternValue(picked[c], x, y, z)));
        for (std::uint64_t c = 0; c < 9; ++c)
          ASSERT_EQ(*whole.elementPointer(c, x, y, z),
                    static_cast<float>(patternValue(c, x, y, z)));
      }

  EXPECT_EXIT(
      {
        Image<double> vector(3, 4, 3, 2, "vector");
        readFieldFromVti(vector, path("tensor.vti"), "F");
      },
      ::testing::ExitedWithCode(1), "^The field F of .*tensor.vti has 9 components, the image vector needs 3\n$");
}

TEST_F(VtiFiles, FieldsAreSelectedByNameTypeAndComponents) {
  const std::string file = writeFields("select", false, false, 1);
  EXPECT_EXIT(VtiReader(file).setField("strain"), ::testing::ExitedWithCode(1),
              "^Could not set the field strain since it does not exist in this VTI file.\n$");
  EXPECT_EXIT(VtiReader(file).setField("stress", "Float64"), ::testing::ExitedWithCode(1),
              "^Could not set the field stress since it does not exist with the exact parameters "
              "in this VTI file.\n$");
  EXPECT_EXIT(VtiReader(file).setField("stress", "Float32", 9), ::testing::ExitedWithCode(1),
              "exact parameters");
  EXPECT_EXIT(VtiReader(path("absent")), ::testing::ExitedWithCode(1),
              "^Could neither open the vti file .*absent.vti nor the pvti file .*absent.pvti\n$");
}

TEST_F(VtiFiles, DamagedFilesEndTheRunWithAMessage) {
  const auto readStress = [](const std::string& file) {
    VtiReader reader(file);
    reader.setField("stress");
    Image<double> image(6, NX, NY, NZ, "stress");
    VoxelBox box;
    box.end = {NX, NY, NZ};
    reader.readFields(image, box, {});
  };
  for (const bool compressed : {false, true}) {
    SCOPED_TRACE(compressed ? "compressed" : "raw");
    const std::string file = writeFields(compressed ? "damaged_z" : "damaged", compressed, false, 1);
    const std::string bytes = readBytes(file);
    const std::size_t data = bytes.find("raw\">_") + 6;

    // Cut inside the first array: its size word or block header promises more than is there.
    writeBytes(path("cut.vti"), bytes.substr(0, data + 5000));
    EXPECT_EXIT(readStress(path("cut.vti")), ::testing::ExitedWithCode(1),
                "^VTI file .*cut.vti is truncated: the data of the array stress run past the "
                "end of the file\n$");
  }

  // Overwritten bytes inside the second compressed block of the first array.
  std::string bytes = readBytes(path("damaged_z.vti"));
  const std::size_t data = bytes.find("raw\">_") + 6;
  const auto word = [&](std::size_t at) { return gridmoor::testing::uint32At(bytes, at); };
  const std::uint32_t blocks = word(data);
  ASSERT_EQ(blocks, 9u);
  ASSERT_GT(word(data + 16), 100u);
  const std::size_t second = data + 12 + 4 * blocks + word(data + 12);
  for (std::size_t i = 10; i < 60; ++i) bytes[second + i] ^= 0x5a;
  writeBytes(path("garbled.vti"), bytes);
  EXPECT_EXIT(readStress(path("garbled.vti")), ::testing::ExitedWithCode(1),
              "^VTI file .*garbled.vti: the compressed data of the array stress are corrupt");

  // An index whose piece file is gone.
  writeFields("lost", false, false, 2);
  std::filesystem::remove(path("lost_1.vti"));
  EXPECT_EXIT(VtiReader(path("lost.pvti")), ::testing::ExitedWithCode(1),
              "^Could not open the vti file .*lost_1.vti, a piece of .*lost.pvti\n$");
}

}  // namespace
