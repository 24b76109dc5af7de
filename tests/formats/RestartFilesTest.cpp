// Names of stored states and the binary file of internal variables: its exact layout, and
// the refusal of a file written for another table before any value is taken from it.
#include <gtest/gtest.h>

#include <cstring>

#include "FieldFileTestSupport.h"
#include "formats/RestartFiles.h"
#include "input/KeywordsElasticity.h"

namespace gridmoor {
namespace {

using ::testing::ExitedWithCode;

TEST(RestartFileName, CarriesLoadCaseAndKindBeforeTheExtension) {
  KeywordsElasticity kw;
  kw.saveRestartFile.set("state.gmr");
  EXPECT_EQ(restartFileName(kw, "run/", -1, 0), "run/state.gmr");
  EXPECT_EQ(restartFileName(kw, "run/", 3, 1), "run/state_YZ_correspondingStrainStressTensor.gmr");
  EXPECT_EQ(restartFileName(kw, "run/", 6, 2), "run/state_Thermal_correspondingStressStrainTensor.gmr");
  EXPECT_TRUE(savesRestartStates(kw));
  for (const char* off : {"", "0"}) {
    kw.saveRestartFile.set(off);
    EXPECT_FALSE(savesRestartStates(kw)) << off;
  }
}

TEST(RestartFileName, OnlyGmrFilesAreWritten) {
  KeywordsElasticity kw;
  kw.saveRestartFile.set("state.das");
  EXPECT_EXIT(savesRestartStates(kw), ExitedWithCode(1),
              "^Saving in DAS format for restart is not supported anymore...\n$");
  // The extension is that of the last path element: "run.gmr/state" has none.
  for (const char* other : {"state.txt", "1", "run.gmr/state"}) {
    kw.saveRestartFile.set(other);
    EXPECT_EXIT(savesRestartStates(kw), ExitedWithCode(1),
                "^Restart is supported only for gmr files.\n$")
        << other;
  }
}

class InternalVariablesFile : public testing::ScratchDirectory {
 protected:
  static InternalVariables table(std::uint64_t variables, std::vector<Colour> indices,
                                 std::size_t values) {
    InternalVariables t(variables, std::move(indices), values, "InternalVariables");
    for (std::size_t i = 0; i < values; ++i) t[i] = 1.0 / 3.0 + 0.1 * static_cast<double>(i);
    return t;
  }
};

TEST_F(InternalVariablesFile, HasCountsIndexBytesAndValuesInThatOrder) {
  const InternalVariables saved = table(2, {0, 3, 255}, 5);
  saved.save(path("s.gmr"));
  const std::string bytes = readBytes(path("s.gmr"));
  ASSERT_EQ(bytes.size(), 16u + 3u + 5u * 8u);
  EXPECT_EQ(bytes.substr(0, 16), std::string("\x02\0\0\0\0\0\0\0\x03\0\0\0\0\0\0\0", 16));
  EXPECT_EQ(bytes.substr(16, 3), std::string("\x00\x03\xff", 3));
  double last = 0.0;
  std::memcpy(&last, bytes.data() + 16 + 3 + 4 * 8, 8);
  EXPECT_EQ(last, saved[4]);

  InternalVariables loaded(2, {0, 3, 255}, 5, "loaded");
  loaded.load(path("s.gmr"));
  for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(loaded[i], saved[i]) << i;

  // No variables and no indices: the header alone, and it reads back.
  table(0, {}, 0).save(path("empty.gmr"));
  EXPECT_EQ(readBytes(path("empty.gmr")).size(), 16u);
  InternalVariables empty(0, {}, 0, "empty");
  empty.load(path("empty.gmr"));
  EXPECT_TRUE(empty.empty());
}

TEST_F(InternalVariablesFile, AFileOfAnotherTableIsRefused) {
  table(2, {1, 2}, 4).save(path("s.gmr"));
  // Only the header of a file with another count: refused on the count, not on the
  // missing values.
  writeBytes(path("header.gmr"), readBytes(path("s.gmr")).substr(0, 16));
  InternalVariables three(3, {1, 2}, 4, "three");
  EXPECT_EXIT(three.load(path("header.gmr")), ExitedWithCode(1),
              "^Number of internal variables in file .*header.gmr does not match the one the "
              "object was initialized with.\n$");

  for (const std::vector<Colour>& other : {std::vector<Colour>{1, 3}, std::vector<Colour>{1}}) {
    InternalVariables t(2, other, 4, "t");
    EXPECT_EXIT(t.load(path("s.gmr")), ExitedWithCode(1),
                "^The material index vector in file .*s.gmr does not match the one the object "
                "was initialized with.\n$");
  }
  InternalVariables more(2, {1, 2}, 5, "more");
  EXPECT_EXIT(more.load(path("s.gmr")), ExitedWithCode(1), "^Failed to read the file .*s.gmr\n$");
  EXPECT_EXIT(more.load(path("absent.gmr")), ExitedWithCode(1),
              "^File .*absent.gmr can not be opened\n$");
}

}  // namespace
}  // namespace gridmoor
