#include "formats/DataWriter.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "FieldFileTestSupport.h"
#include "formats/VtiReader.h"
#include "formats/VtiWriter.h"
#include "formats/VtkWriter.h"

using namespace gridmoor;
using ::testing::internal::CaptureStderr;
using ::testing::internal::GetCapturedStderr;

namespace {

const std::string sizeWarning =
    "Too many geometry points, exceeds VTI capabilities\nThe file will be saved anyway, but it "
    "is a broken file and maybe cannot be opened correctly.\n";

std::size_t occurrences(const std::string& text, const std::string& part) {
  std::size_t n = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
  return n;
}

class DataWriterFiles : public gridmoor::testing::ScratchDirectory {};

TEST_F(DataWriterFiles, GridsAbove1290CubedMinusOneWarnOnceAndAreWritten) {
  // Without fields a grid of any size is a small file.
  CaptureStderr();
  VtiWriter huge(path("huge"), {0, 1290, 0, 1290, 0, 1290}, {1, 1, 1}, {0, 0, 0});
  huge.write();
  EXPECT_EQ(GetCapturedStderr(), sizeWarning);
  VtiReader reader(path("huge.vti"));
  EXPECT_EQ(reader.getSize(2), 1290u);

  CaptureStderr();
  VtiWriter below(path("below"), {0, 1290, 0, 1290, 0, 1289}, {1, 1, 1}, {0, 0, 0});
  below.write();
  EXPECT_TRUE(DataWriter::warnIfTooLarge(2146689000, 1, 1));
  EXPECT_FALSE(DataWriter::warnIfTooLarge(2146688999, 1, 1));
  EXPECT_EQ(occurrences(GetCapturedStderr(), "Too many geometry points"), 1u);
}

TEST_F(DataWriterFiles, HooksRunOncePerFieldAroundAllPieces) {
  // Each field's values are asked for only between its own hooks, once for every piece.
  std::vector<std::string> calls;
  const auto filler = [&calls](const std::string& name) {
    return [&calls, name](const VoxelBox& box, char* buffer) {
      calls.push_back(name + " values x" + std::to_string(box.begin[0]));
      for (std::uint64_t i = 0; i < box.count(); ++i) reinterpret_cast<float*>(buffer)[i] = 1.0f;
    };
  };
  VtiWriter writer(path("hooks"), {0, 4, 0, 2, 0, 2}, {1, 1, 1}, {0, 0, 0}, false, 2);
  for (const std::string name : {"a", "b"})
    writer.addField(
        name, [&calls, name] { calls.push_back(name + " before"); },
        [&calls, name] { calls.push_back(name + " after"); }, filler(name), {0},
        DataWriter::Float);
  writer.write();
  const std::vector<std::string> expected = {"a before", "a values x0", "a values x2", "a after",
                                             "b before", "b values x0", "b values x2", "b after"};
  EXPECT_EQ(calls, expected);
}

TEST_F(DataWriterFiles, UnwritableFilesEndTheRun) {
  const Image<double> small(3, 2, 2, 2, "small");
  // Plain or through the compressing stream.
  for (const bool compressed : {false, true})
    EXPECT_EXIT(
        {
          VtiWriter writer(path("no/such/dir/f.vti"), {0, 2, 0, 2, 0, 2}, {1, 1, 1}, {0, 0, 0},
                           compressed);
          writer.addImageField("f", small, {0}, DataWriter::Float);
          writer.write();
        },
        ::testing::ExitedWithCode(1),
        "^Error while writing the VTI-file .*no/such/dir/f.vti \\(or one of the child files.\n$");
  EXPECT_EXIT(
      {
        VtkWriter lost(path("no/such/dir/x.vtk"), {0, 2, 0, 1, 0, 1}, {1, 1, 1}, {0, 0, 0});
        lost.write();
      },
      ::testing::ExitedWithCode(1), "^.*no/such/dir/x.vtk can not be opened \n$");
}

}  // namespace
