#include "formats/LufHeader.h"

#include <gtest/gtest.h>

#include <sstream>

#include "FieldFileTestSupport.h"

using namespace gridmoor;

namespace {

class LufHeaderFiles : public gridmoor::testing::ScratchDirectory {
 protected:
  std::string write(const std::string& name, const std::string& bytes) const {
    writeBytes(path(name), bytes);
    return path(name);
  }
};

// A header as the field writers make it, followed by binary data.
std::string makeHeader(const std::string& types) {
  std::ostringstream out;
  LufHeaderWriter writer(out, "mem");
  writer.writeLine("LufVersion", "das1");
  writer.writeHeaderLength();
  writer.writeLine("Nx", "2");
  writer.writeLine("Ny", "3");
  writer.writeLine("Nz", "4");
  writer.writeLine("EntriesOfImages", "3");
  writer.writeLine("Image1:Types", types);
  writer.finish();
  return out.str();
}

}  // namespace

TEST(LufHeader, SplitMergesDelimiterRuns) {
  EXPECT_EQ(split("  a  b c ", " "), (std::vector<std::string>{"a", "b", "c"}));
  EXPECT_EQ(split("x,,y;z", ",;"), (std::vector<std::string>{"x", "y", "z"}));
  EXPECT_TRUE(split("   ", " ").empty());
  EXPECT_TRUE(split("", " ").empty());
}

TEST(LufHeader, WriterAlignsValuesAndBackPatchesLength) {
  EXPECT_EQ(LufHeaderWriter::paddedKey("Nx"), "Nx              ");
  EXPECT_EQ(LufHeaderWriter::paddedKey("Image1:Types"), "Image1:Types    ");
  // The value of an Image key starts 10 characters after the colon.
  EXPECT_EQ(LufHeaderWriter::paddedKey("Image12:Grids"), "Image12:Grids    ");
  EXPECT_EQ(LufHeaderWriter::paddedKey("Image123:Meaning"), "Image123:Meaning  ");
  EXPECT_EQ(LufHeaderWriter::paddedKey("AVeryLongKeyNameHere"), "AVeryLongKeyNameHere ");

  std::ostringstream out;
  LufHeaderWriter writer(out, "mem");
  writer.writeLine("LufVersion", "das1");
  writer.writeHeaderLength();
  writer.writeLine("Nx", "8");
  const std::int64_t length = writer.finish();
  out << "BIN";
  const std::string expected =
      "LufVersion      das1\n"
      "HeaderLength    66       \n"
      "Nx              8\n"
      "\n";
  ASSERT_EQ(static_cast<std::size_t>(length), expected.size());
  EXPECT_EQ(out.str(), expected + "BIN");
}

TEST(LufHeader, FourDigitLengthLeavesFiveBlanks) {
  std::ostringstream out;
  LufHeaderWriter writer(out, "mem");
  writer.writeHeaderLength();
  writer.writeLine("Padding", std::string(1234 - 26 - 16 - 2, 'p'));
  ASSERT_EQ(writer.finish(), 1234);
  EXPECT_EQ(out.str().substr(0, 26), "HeaderLength    1234     \n");
}

TEST_F(LufHeaderFiles, RoundTripLeavesStreamAtBinaryData) {
  const std::string header = makeHeader("float,float,float");
  const std::string path = write("a.lof", header + std::string("\x01\x02\x03", 3));
  LufHeaderReader reader(path);
  reader.require({"HeaderLength", "Nx", "Ny", "Nz", "EntriesOfImages", "Image1:Types"});
  EXPECT_EQ(reader.headerLength(), static_cast<std::int64_t>(header.size()));
  EXPECT_FALSE(reader.truncated());
  EXPECT_EQ(reader.get("Ny"), "3");
  EXPECT_EQ(reader.get("Image1:Types"), "float,float,float");
  char data[3] = {};
  reader.stream().read(data, 3);
  EXPECT_EQ(reader.stream().gcount(), 3);
  EXPECT_EQ(data[0], 1);
  EXPECT_EQ(data[2], 3);
}

TEST_F(LufHeaderFiles, LinesWithBlanksInTheValueVanish) {
  const std::string path = write("b.lsf", makeHeader("float, float, float"));
  LufHeaderReader reader(path);
  EXPECT_TRUE(reader.contains("Nz"));
  EXPECT_FALSE(reader.contains("Image1:Types"));
  EXPECT_EXIT(reader.require({"HeaderLength", "Nx", "Image1:Types", "Image1:Format"}),
              ::testing::ExitedWithCode(1), "^Keyword Image1:Types not found in the header\n$");
}

TEST_F(LufHeaderFiles, BrokenFilesEndWithTheirMessages) {
  EXPECT_EXIT(LufHeaderReader(path("absent.lof")), ::testing::ExitedWithCode(1),
              "^File .*absent.lof can not be opened\n$");

  const std::string noLength = write("d.lof", "Nx 1\nNy 1\n\n\x7f\x00\x01");
  EXPECT_EXIT(LufHeaderReader(noLength).require({"HeaderLength", "Nx"}),
              ::testing::ExitedWithCode(1), "^Keyword HeaderLength not found in the header\n$");

  const std::string empty = write("e.lof", "");
  EXPECT_EXIT(LufHeaderReader(empty).require({"HeaderLength"}), ::testing::ExitedWithCode(1),
              "Keyword HeaderLength not found");
}

TEST_F(LufHeaderFiles, HeaderLengthBeyondTheFileLeavesStreamAtItsEnd) {
  std::string header = makeHeader("double,double,double");
  const std::size_t field = header.find("HeaderLength") + 16;
  header.replace(field, 9, "999999   ");
  const std::string path = write("f.lsf", header);
  LufHeaderReader reader(path);
  EXPECT_TRUE(reader.truncated());
  EXPECT_EQ(reader.headerLength(), 999999);
  EXPECT_EQ(reader.get("Nx"), "2");  // what is there is still read
  double value = 0.0;
  reader.stream().read(reinterpret_cast<char*>(&value), sizeof value);
  EXPECT_EQ(reader.stream().gcount(), 0);
  EXPECT_FALSE(reader.stream());
}

TEST(LufHeader, TypeListsMatchOnlyUniformWellFormedLists) {
  EXPECT_EQ(lufElementSize("float", 1), 4);
  EXPECT_EQ(lufElementSize("double,double,double", 3), 8);
  EXPECT_EQ(lufElementSize("quadruple,quadruple", 2), 16);
  EXPECT_EQ(lufElementSize("double,float", 2), 0);
  EXPECT_EQ(lufElementSize("double,double", 3), 0);
  EXPECT_EQ(lufElementSize("double,,double", 3), 0);
  EXPECT_EQ(lufElementSize("float", -1), 0);
  EXPECT_EQ(lufElementSize("float", 1LL << 60), 0);  // must not build a huge list
  // A count whose list length wraps round to the text's length must not match either.
  EXPECT_EQ(lufElementSize("xx", 5270498306774157605LL), 0);
  EXPECT_EQ(lufRepeat("center", 3), "center,center,center");
  EXPECT_EQ(lufMeaning(1), "scalar");
  EXPECT_EQ(lufMeaning(6), "tensor");
  EXPECT_EQ(lufMeaning(9), "tensor");
  EXPECT_EQ(lufMeaning(2), "");
}
