// The header store (StringMap) and the text header of the .lof, .lsf and DAS files.
#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <stdexcept>

#include "FieldFileTestSupport.h"
#include "formats/LufHeader.h"
#include "formats/StringMap.h"

using namespace gridmoor;

namespace {

using LufHeaderFiles = gridmoor::testing::ScratchDirectory;

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

template <class F>
std::string thrownText(F f) {
  try {
    f();
  } catch (const std::exception& e) {
    return e.what();
  }
  return "nothing thrown";
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
  const std::string path = fileWith("a.lof", header + std::string("\x01\x02\x03", 3));
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
  const std::string path = fileWith("b.lsf", makeHeader("float, float, float"));
  LufHeaderReader reader(path);
  EXPECT_TRUE(reader.contains("Nz"));
  EXPECT_FALSE(reader.contains("Image1:Types"));
  EXPECT_EXIT(reader.require({"HeaderLength", "Nx", "Image1:Types", "Image1:Format"}),
              ::testing::ExitedWithCode(1), "^Keyword Image1:Types not found in the header\n$");
}

TEST_F(LufHeaderFiles, BrokenFilesEndWithTheirMessages) {
  EXPECT_EXIT(LufHeaderReader(path("absent.lof")), ::testing::ExitedWithCode(1),
              "^File .*absent.lof can not be opened\n$");

  const std::string noLength = fileWith("d.lof", "Nx 1\nNy 1\n\n\x7f\x00\x01");
  EXPECT_EXIT(LufHeaderReader(noLength).require({"HeaderLength", "Nx"}),
              ::testing::ExitedWithCode(1), "^Keyword HeaderLength not found in the header\n$");

  const std::string empty = fileWith("e.lof", "");
  EXPECT_EXIT(LufHeaderReader(empty).require({"HeaderLength"}), ::testing::ExitedWithCode(1),
              "Keyword HeaderLength not found");
}

// The search for the length line keeps only a bounded piece of each line: a line longer than
// that is skipped whole, so text deep inside it never reads as a line of its own.
TEST_F(LufHeaderFiles, HeaderLengthLineIsFoundAfterLongLinesButNeverInsideThem) {
  for (const std::size_t prefix : {std::size_t(4095), std::size_t(4096), std::size_t(10000)}) {
    SCOPED_TRACE(prefix);
    const std::string file = fileWith("long.lof", std::string(prefix, 'x') + "HeaderLength 7\n" +
                                                      "HeaderLength 40\nNx 1\n\n");
    EXPECT_EQ(LufHeaderReader(file).headerLength(), 40);
  }
  // Binary data without any line end has no length line.
  const std::string binary = fileWith("binary.lof", std::string(5'000'000, '\0'));
  EXPECT_EQ(LufHeaderReader(binary).headerLength(), 0);
}

TEST_F(LufHeaderFiles, HeaderLengthBeyondTheFileLeavesStreamAtItsEnd) {
  std::string header = makeHeader("double,double,double");
  const std::size_t field = header.find("HeaderLength") + 16;
  header.replace(field, 9, "999999   ");
  const std::string path = fileWith("f.lsf", header);
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

TEST(StringMap, PrefixStackAddressesNestedKeys) {
  StringMap map;
  map.set("Image1:Types", "float,float");
  map.pushPrefix("Image1");
  EXPECT_STREQ(map.get("Types"), "float,float");
  map.set("Units", "GPa");
  map.setPrefix("");
  EXPECT_STREQ(map.get("Image1:Units"), "GPa");

  map.setPrefix("A:B:");
  map.popPrefix();
  EXPECT_EQ(map.prefix(), "A:");
  map.popPrefix();
  EXPECT_EQ(map.prefix(), "");
  map.pushPrefix("X");
  map.pushPrefix("Y");
  EXPECT_EQ(map.prefix(), "X:Y:");

  EXPECT_EQ(thrownText([&] { map.pushPrefix(""); }), "StringMap::pushPrefix(): Empty prefix!");
  map.setPrefix("");
  EXPECT_EQ(thrownText([&] { map.popPrefix(); }), "StringMap::popPrefix(): Empty prefix!");
}

TEST(StringMap, LookupOrderRemoveAndMissingKeys) {
  StringMap map;
  map.set("a", "1");
  map.set("b", "2");
  map.set("c", "3");
  map.set("a", "4");  // replaces in place, keeps the order
  EXPECT_EQ(map.find("a"), 0);
  EXPECT_EQ(map.find("c"), 2);
  EXPECT_EQ(map.find("ab"), -1);  // whole keys only
  map.remove("b");
  ASSERT_EQ(map.size(), 2u);
  EXPECT_EQ(map.getEntries()[1].first, "c");
  EXPECT_STREQ(map.get("a"), "4");
  EXPECT_EQ(map.get("b"), nullptr);

  map.setThrowOnMissing(true);
  EXPECT_EQ(thrownText([&] { map.get("missing"); }), "Key missing not found!");
  EXPECT_THROW(map.get<double>("missing"), StringMap::KeyNotFound);
  EXPECT_EQ(map.get("missing", 7), 7);  // a default never throws
}

TEST(StringMap, TypedGettersConvertLikeTheCLibrary) {
  StringMap map;
  map.set("d", "2.5e3");
  map.set("i", "-42abc");
  map.set("hex", "0x1F");
  map.set("oct", "010");
  map.set("big", "18446744073709551615");
  map.set("neg64", "-9000000000");
  map.set("flag", "2");
  EXPECT_DOUBLE_EQ(map.get<double>("d"), 2500.0);
  EXPECT_EQ(map.get<int>("i"), -42);
  EXPECT_EQ(map.get<unsigned int>("hex"), 31u);
  EXPECT_EQ(map.get<unsigned int>("oct"), 8u);
  EXPECT_EQ(map.get<unsigned long long>("big"), 18446744073709551615ull);
  EXPECT_EQ(map.get<std::int64_t>("neg64"), -9000000000ll);
  EXPECT_TRUE(map.get<bool>("flag"));
  EXPECT_EQ(map.get<int>("absent"), 0);

  int status = 5;
  EXPECT_EQ(map.get("absent", 3.5, status), 3.5);
  EXPECT_EQ(status, -1);
  EXPECT_EQ(map.get("i", 3, status), -42);
  EXPECT_EQ(status, 0);
}

TEST(StringMap, ReadSplitsRecordsAtTheFirstSeparator) {
  std::istringstream in(
      "alpha 1 2 3\r\n"
      "beta\t  spaced value \t\n"
      "\n"
      " leadingBlankMeansEmptyKey\n"
      "lonely\n"
      "gamma   \n"
      "last no-newline");
  StringMap map;
  map.set("stale", "x");
  map.setPrefix("P:");
  map.read(in, true);
  EXPECT_EQ(map.prefix(), "");
  EXPECT_EQ(map.get("stale"), nullptr);
  ASSERT_EQ(map.size(), 5u);
  EXPECT_STREQ(map.get("alpha"), "1 2 3");  // carriage return dropped
  EXPECT_STREQ(map.get("beta"), "spaced value");
  EXPECT_STREQ(map.get("lonely"), "");  // no separator: stored with an empty value
  EXPECT_STREQ(map.get("gamma"), "");   // all-blank value trims to empty
  EXPECT_STREQ(map.get("last"), "no-newline");

  std::istringstream untrimmed("beta\t  spaced \n");
  map.read(untrimmed, false);
  EXPECT_STREQ(map.get("beta"), "  spaced ");
}

TEST(StringMap, WriteReadRoundTripAndTextForms) {
  StringMap map;
  map.set("k1", "v1");
  map.set("k2", 0.1);  // %.16g writes 0.1, which reads back exactly
  std::ostringstream out;
  map.write(out);
  EXPECT_EQ(out.str(), "k1 v1\nk2 0.1\n");
  std::string text;
  map.toText(text);
  EXPECT_EQ(text, "k1 v1\nk2 0.1\n");

  StringMap back;
  std::istringstream in(out.str());
  back.read(in, false);
  EXPECT_EQ(back.getEntries(), map.getEntries());
}

TEST(StringMap, CopyWithPrefixSelectsAndStrips) {
  StringMap source;
  source.set("Mat:E", "210");
  source.set("Mat:nu", "0.3");
  source.set("Other:E", "1");
  source.set("Matrix", "x");

  StringMap stripped;
  source.copyWithPrefix("Mat:", stripped, true);
  ASSERT_EQ(stripped.size(), 2u);
  EXPECT_STREQ(stripped.get("E"), "210");
  EXPECT_STREQ(stripped.get("nu"), "0.3");

  StringMap kept;
  kept.pushPrefix("Copy");
  source.copyWithPrefix("Mat", kept, false);
  kept.setPrefix("");
  EXPECT_EQ(kept.size(), 3u);
  EXPECT_STREQ(kept.get("Copy:Mat:E"), "210");
  EXPECT_STREQ(kept.get("Copy:Matrix"), "x");
}
