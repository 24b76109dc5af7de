#include "formats/StringMap.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <stdexcept>

using gridmoor::StringMap;

namespace {
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

TEST(StringMapDeathTest, BrokenPrefixInvariantAborts) {
  StringMap map;
  EXPECT_DEATH(map.setPrefix("NoColon"), "_curPrefix.empty\\(\\) \\|\\| _curPrefix.back\\(\\) == ':'");
  StringMap other;
  other.setPrefix(":");
  EXPECT_DEATH(other.popPrefix(), "_curPrefix.size\\(\\) >= 2 && _curPrefix.back\\(\\) == ':'");
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
