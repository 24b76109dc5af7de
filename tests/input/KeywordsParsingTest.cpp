#include <gtest/gtest.h>

#include "input/Parameter.h"

namespace gridmoor {
namespace {

bool asBool(const std::string& text) {
  bool value = false;
  parseValue(text, value);
  return value;
}

TEST(KeywordsParsing, BoolAcceptsTrueTrueCapitalisedAndAnythingAtoiReadsAsOne) {
  EXPECT_TRUE(asBool("true"));
  EXPECT_TRUE(asBool("True"));
  EXPECT_TRUE(asBool("1"));
  EXPECT_TRUE(asBool("1.9"));  // atoi stops at the dot
  EXPECT_TRUE(asBool(" 1"));
  EXPECT_FALSE(asBool("TRUE"));
  EXPECT_FALSE(asBool("yes"));
  EXPECT_FALSE(asBool("2"));
  EXPECT_FALSE(asBool("0"));
  EXPECT_FALSE(asBool(""));
  // A parsed false must overwrite an earlier true.
  bool value = true;
  parseValue("false", value);
  EXPECT_FALSE(value);
}

TEST(KeywordsParsing, NumbersReadLikeAtoiAndAtof) {
  int count = -1;
  parseValue("12abc", count);
  EXPECT_EQ(count, 12);
  parseValue("abc", count);
  EXPECT_EQ(count, 0);
  double number = -1;
  parseValue("1e-3", number);
  EXPECT_DOUBLE_EQ(number, 1e-3);
  parseValue("", number);
  EXPECT_EQ(number, 0.0);
}

TEST(KeywordsParsing, ListsSplitAtBlankCommaSemicolonAndLineEndDroppingEmptyTokens) {
  DoubleList numbers{9.0};
  parseValue("0.1, 0.2;;0.3\n-4,", numbers);
  EXPECT_EQ(numbers, (DoubleList{0.1, 0.2, 0.3, -4.0}));
  parseValue("", numbers);
  EXPECT_TRUE(numbers.empty());

  IntList voxel;
  parseValue("3,4 5", voxel);
  EXPECT_EQ(voxel, (IntList{3, 4, 5}));

  WordList words;
  parseValue("XX YY,ZZ;\nXY", words);
  EXPECT_EQ(words, (WordList{"XX", "YY", "ZZ", "XY"}));
}

TEST(KeywordsParsing, TablesSplitRowsAtSemicolonAndValuesAtComma) {
  Table table;
  parseValue("0.0,0.0;1.0,0.5", table);
  EXPECT_EQ(table, (Table{{0.0, 0.0}, {1.0, 0.5}}));
  // Rows over several lines, blank values and a trailing separator.
  parseValue("0, 1, 2;\n 1, 3, 4 ;\n", table);
  EXPECT_EQ(table, (Table{{0, 1, 2}, {1, 3, 4}}));
  parseValue("", table);
  EXPECT_TRUE(table.empty());
  EXPECT_EQ(formatValue(Table{{0, 1}, {2.5, 3}}), "0,1;2.5,3");
}

TEST(KeywordsParsing, EnumerationWordsMapToTheirValuesAndUnknownWordsKeepThePrevious) {
  GreenOperatorType green = GreenOperatorType::Basic;
  const std::pair<const char*, int> greenWords[] = {
      {"Basic", 0},         {"ForwardDifference", 1}, {"CentralDifference", 2},
      {"BackwardDifference", 3}, {"StaggeredGrid", 4},  {"TrilinearFE", 5},
      {"Q1FE", 6},          {"Hex8RHourGlassControl", 7}, {"Helmholtz", 8},
      {"Bilaplacian", 9}};
  for (const auto& [word, number] : greenWords) {
    parseValue(word, green);
    EXPECT_EQ(static_cast<int>(green), number) << word;
    EXPECT_EQ(formatValue(green), word);
  }
  parseValue("staggeredgrid", green);  // words are compared exactly
  EXPECT_EQ(green, GreenOperatorType::Bilaplacian);

  FilterType filter = FilterType::Periodize;
  parseValue("Bogus", filter);
  EXPECT_EQ(filter, FilterType::Periodize);
  parseValue("NonConsistent", filter);
  EXPECT_EQ(static_cast<int>(filter), 2);
  EXPECT_EQ(formatValue(static_cast<FilterType>(7)), "unset");

  ExtrapolationType extrapolation = ExtrapolationType::None;
  parseValue("AffinLinear", extrapolation);
  EXPECT_EQ(static_cast<int>(extrapolation), 2);
  parseValue("MemoryEfficient", extrapolation);
  EXPECT_EQ(static_cast<int>(extrapolation), 3);

  TimeStepType steps = TimeStepType::UserDefined;
  parseValue("None", steps);
  EXPECT_EQ(static_cast<int>(steps), 2);
  parseValue("Logarithmic", steps);
  EXPECT_EQ(static_cast<int>(steps), 3);
  parseValue("Constant", steps);
  EXPECT_EQ(static_cast<int>(steps), 1);
  EXPECT_EQ(formatValue(steps), "Constant");
}

}  // namespace
}  // namespace gridmoor
