#include <gtest/gtest.h>

#include "input/Parameter.h"

namespace gridmoor {
namespace {

TEST(KeywordsParsing, ScalarsFollowAtoiAndAtof) {
  for (const char* text : {"true", "True", "1", "1.9", " 1"}) {
    bool value = false;
    parseValue(text, value);
    EXPECT_TRUE(value) << text;
  }
  for (const char* text : {"TRUE", "yes", "2", "0", "", "false"}) {
    bool value = true;
    parseValue(text, value);
    EXPECT_FALSE(value) << text;
  }
  int count = -1;
  parseValue("12abc", count);
  EXPECT_EQ(count, 12);
  double number = -1;
  parseValue("1e-3", number);
  EXPECT_DOUBLE_EQ(number, 1e-3);
  parseValue("abc", number);
  EXPECT_EQ(number, 0.0);
}

TEST(KeywordsParsing, ListsAndTablesDropEmptyTokens) {
  DoubleList numbers{9.0};
  parseValue("0.1, 0.2;;0.3\n-4,", numbers);
  EXPECT_EQ(numbers, (DoubleList{0.1, 0.2, 0.3, -4.0}));
  WordList words;
  parseValue("XX YY,ZZ;\nXY", words);
  EXPECT_EQ(words, (WordList{"XX", "YY", "ZZ", "XY"}));
  Table table;
  parseValue("0, 1, 2;\n 1, 3, 4 ;\n", table);  // rows over lines, trailing separator
  EXPECT_EQ(table, (Table{{0, 1, 2}, {1, 3, 4}}));
  EXPECT_EQ(formatValue(Table{{0, 1}, {2.5, 3}}), "0,1;2.5,3");
  EXPECT_EQ(formatValue(WordList{"XX", "YY"}), "XX,YY");
}

TEST(KeywordsParsing, EnumerationWordsAndUnknownWordsKeepingThePreviousValue) {
  const char* const greenWords[] = {"Basic", "ForwardDifference", "CentralDifference",
                                    "BackwardDifference", "StaggeredGrid", "TrilinearFE", "Q1FE",
                                    "Hex8RHourGlassControl", "Helmholtz", "Bilaplacian"};
  GreenOperatorType green = GreenOperatorType::Helmholtz;
  for (int number = 0; number < 10; ++number) {
    parseValue(greenWords[number], green);
    EXPECT_EQ(static_cast<int>(green), number) << greenWords[number];
    EXPECT_EQ(formatValue(green), greenWords[number]);
  }
  parseValue("bilaplacian", green);  // compared exactly
  EXPECT_EQ(green, GreenOperatorType::Bilaplacian);

  FilterType filter = FilterType::Periodize;
  parseValue("Bogus", filter);
  EXPECT_EQ(filter, FilterType::Periodize);
  parseValue("NonConsistent", filter);
  EXPECT_EQ(static_cast<int>(filter), 2);
  EXPECT_EQ(formatValue(static_cast<FilterType>(7)), "unset");
  TimeStepType steps = TimeStepType::UserDefined;
  parseValue("Logarithmic", steps);
  EXPECT_EQ(static_cast<int>(steps), 3);
}

TEST(KeywordsParsing, TextComesFromTheNodeOrItsLastValueChild) {
  XmlNode root = XmlNode::createRoot("Settings");
  XmlNode plain = root.getChildByPath("input/Plain", true);
  plain.addText("plain");
  plain.addText("second");
  XmlNode listed = root.getChildByPath("input/Listed", true);
  listed.addChild("value").addText("first");
  listed.addChild("comment").addText("ignored");
  listed.addChild("values").addText("last");
  listed.addChild("value");  // no text: does not clear the result
  root.getChildByPath("input/Foreign", true).addChild("entry").addText("7");
  root.getChildByPath("input/Bare", true);

  EXPECT_EQ(readParameterText(root, "input/Plain", "default"), "plain");
  EXPECT_EQ(readParameterText(root, "input/Listed", "default"), "last");
  // Other children make the node read as empty, not as its default.
  EXPECT_EQ(readParameterText(root, "input/Foreign", "default"), "");
  EXPECT_EQ(readParameterText(root, "input/Bare", "default"), "");
  EXPECT_EQ(readParameterText(root, "input/Absent", "default"), "default");
}

}  // namespace
}  // namespace gridmoor
