#include "input/XmlNode.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>

#include "../formats/FieldFileTestSupport.h"

using namespace gridmoor;
using gridmoor::testing::readFile;

namespace {

XmlResults parse(const std::string& text, XmlNode* node = nullptr, const std::string& root = "") {
  XmlResults r;
  XmlNode n = XmlNode::parseString(text, root, &r);
  if (node) *node = n;
  return r;
}

}  // namespace

TEST(XmlErrorTable, TextsOfEveryCodeAndEncodingWords) {
  EXPECT_STREQ(XmlNode::getError(0), "No error");
  EXPECT_STREQ(XmlNode::getError(1), "Warning: Unmatched end tag");
  EXPECT_STREQ(XmlNode::getError(9), "Error: No elements found");
  EXPECT_STREQ(XmlNode::getError(13),
               "Error: Character code above 255 is forbidden in MultiByte char mode.");
  EXPECT_STREQ(XmlNode::getError(14), "Error: unable to convert between WideChar and MultiByte chars");
  EXPECT_STREQ(XmlNode::getError(20), "Error: Base64 decode output buffer is too small");
  EXPECT_STREQ(XmlNode::getError(21), "Unknown");
  EXPECT_STREQ(XmlNode::getError(-1), "Unknown");
  for (int code = 0; code <= 20; ++code) EXPECT_STRNE(XmlNode::getError(code), "Unknown");

  using enum XmlCharEncoding;
  const std::pair<const char*, XmlCharEncoding> words[] = {
      {"UTF-8", UTF8}, {"utf8", UTF8},   {"Shift-JIS", ShiftJIS}, {"SJIS", ShiftJIS},    {"gb2312", GB2312},
      {"BIG5", Big5},  {"gbk", GBK},     {"ISO-8859-1", Legacy},  {"utf-16", Legacy}};
  for (const auto& [word, encoding] : words) EXPECT_EQ(XmlNode::encodingFromName(word), encoding) << word;
}

TEST(XmlParseErrors, CodesAndPositions) {
  struct Case {
    std::string text;
    int code, line, column;
  };
  const Case cases[] = {
      {"", 3, 1, 1},
      {" \n\t", 3, 2, 2},
      {"  hello", 2, 1, 3},
      {"<?xml version=\"1.0\"?>\n<!-- only a comment -->\n", 9, 3, 1},
      {"<a><>", 4, 1, 4},
      {"<a>< b/></a>", 4, 1, 4},
      {"<a></></a>", 5, 1, 4},
      {"</a>", 6, 1, 1},
      {"<a></b>", 6, 1, 4},
      {"<a>\n  <b>\r\n</c>", 6, 3, 1},
      {"<a><!-- never closed", 7, 1, 4},
      {"<?xml version='1.0'", 7, 1, 1},
      {"<!DOCTYPE a [ <!ENTITY x 'y'> ", 7, 1, 1},
      {"<a attr=\"x", 8, 1, 9},
      {"<a attr", 8, 1, 8},
      {"<a b></a>", 8, 1, 5},
      {"<a x=\"1\"y=\"2\"/>", 8, 1, 9},
      {"<a x=\"1\" x=\"2\"/>", 8, 1, 10},
      {"<a x='<'/>", 8, 1, 7},
      {"<a/ >", 8, 1, 3},
      {"<a/><b/>", 8, 1, 5},
      {"<a/>tail", 8, 1, 5},
      {"<a><![CDATA[x]]></a><![CDATA[y]]>", 8, 1, 21},
      {"<a>&am", 12, 1, 4},
      {"<a>x &bogus; y</a>", 12, 1, 6},
      {"<a>&#;</a>", 12, 1, 4},
      {"<a>&#0;</a>", 12, 1, 4},
      {"<a v='&#x100;'/>", 13, 1, 7},
      {"<a>&#99999999999999999999;</a>", 13, 1, 4},
      // Columns count characters of the declared encoding, not bytes.
      {"<a>\xC3\xA4\xC3\xA4&x;</a>", 12, 1, 6},
      {"<?xml version='1.0' encoding='Shift_JIS'?><a>\x82\xA0&x;</a>", 12, 1, 48},
      {"<?xml version='1.0' encoding='SJIS'?><a>\x82\xA0&x;</a>", 12, 1, 42},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    XmlNode node = XmlNode::createRoot("stale");
    const XmlResults r = parse(c.text, &node);
    EXPECT_EQ(r.error, c.code);
    EXPECT_EQ(r.line, c.line);
    EXPECT_EQ(r.column, c.column);
    EXPECT_FALSE(node);
  }
}

TEST(XmlParseErrors, MissingEndTagsKeepTheTreeAndRootNameSearches) {
  XmlNode node;
  XmlResults r = parse("<a>\n<b>text", &node);
  EXPECT_EQ(r.error, eXMLErrorMissingEndTag);
  EXPECT_EQ(r.line, 2);
  EXPECT_EQ(r.column, 8);
  ASSERT_TRUE(node);
  EXPECT_EQ(node.getChildByPath("b").text(), "text");

  const std::string doc = "<?xml version='1.0'?>\n<top><x><want id='1'/></x><want id='2'/></top>";
  EXPECT_EQ(parse(doc, &node, "want").error, eXMLErrorNone);
  EXPECT_EQ(node.attributeValue("id"), "1");  // depth first: the nested one comes first
  EXPECT_EQ(parse(doc, &node, "top").error, eXMLErrorNone);
  EXPECT_EQ(node.name(), "top");
  r = parse(doc, &node, "missing");
  EXPECT_EQ(r.error, eXMLErrorFirstTagNotFound);
  EXPECT_EQ(r.line, 2);
  EXPECT_EQ(r.column, 1);
  EXPECT_FALSE(node);
}

TEST(XmlParseTree, TextItemsEntitiesAndSkippedMarkup) {
  const std::string doc =
      "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
      "<!DOCTYPE r [ <!ELEMENT r ANY> <!-- a '> in a comment --> ]>\n"
      "<r a='1 &amp; \"2\"' b=\"it&apos;s\tx\">\r\n"
      "  first &lt;&gt; &#65;&#x42;&#xe9; \r\n"
      "  <c/>\n  <?pi ignored?>\n"
      "  second<!-- splits -->third<![CDATA[ <raw> &amp; ]]>\n"
      "  <c>in c</c> multi\r\nline \n"
      "</r>\n<!-- trailing -->\n";
  XmlNode r;
  ASSERT_EQ(parse(doc, &r).error, eXMLErrorNone);
  EXPECT_EQ(r.name(), "r");
  EXPECT_EQ(r.attributeValue("a"), "1 & \"2\"");
  EXPECT_EQ(r.attributeValue("b"), "it's x");  // tab normalised to a blank
  bool found = true;
  EXPECT_EQ(r.attributeValue("none", &found), "");
  EXPECT_FALSE(found);
  ASSERT_EQ(r.textCount(), 5);
  EXPECT_EQ(r.text(0), "first <> AB\xE9");
  EXPECT_EQ(r.text(1), "second");
  EXPECT_EQ(r.text(2), "third");
  EXPECT_EQ(r.text(3), " <raw> &amp; ");
  EXPECT_EQ(r.text(4), "multi\nline");
  ASSERT_EQ(r.childCount(), 2);
  EXPECT_EQ(r.child(1).text(0), "in c");
  EXPECT_EQ(r.child(0).textCount(), 0);
  EXPECT_EQ(r.child(0).parent(), r);
  EXPECT_FALSE(r.parent());
  EXPECT_FALSE(r.child(2));
  EXPECT_EQ(r.text(5), "");
  // A zero byte ends the text, so binary data behind it is never looked at.
  EXPECT_EQ(parse(std::string("<a/>\0\x01<<", 8)).error, eXMLErrorNone);
}

TEST(XmlParseTree, MalformedInputNeverCrashes) {
  const std::string doc =
      "<?xml version='1.0'?><!DOCTYPE d><d k=\"v&lt;\"><e>t&#65;</e><![CDATA[c]]><!--m--><f/></d>";
  for (std::size_t len = 0; len < doc.size(); ++len) {
    SCOPED_TRACE(doc.substr(0, len));
    XmlNode node;
    const XmlResults r = parse(doc.substr(0, len), &node);
    EXPECT_NE(r.error, eXMLErrorNone);
    EXPECT_EQ(r.line, 1);
    EXPECT_GE(r.column, 1);
    EXPECT_LE(r.column, static_cast<int>(len) + 1);
    EXPECT_EQ(bool(node), r.error == eXMLErrorMissingEndTag);
  }
  std::mt19937 random(42);
  std::uniform_int_distribution<int> byte(0, 255), where(0, int(doc.size()) - 1);
  for (int trial = 0; trial < 3000; ++trial) {
    std::string text = doc;
    for (int k = 0; k < 1 + trial % 8; ++k) text[where(random)] = char(byte(random));
    if (trial % 3 == 0) text = text.substr(0, where(random));
    const XmlResults r = parse(text);
    EXPECT_GE(r.error, 0);
    EXPECT_LE(r.error, 13);
  }
  // Deep nesting is neither parsed, written nor freed by recursion.
  const int depth = 200000;
  std::string deep;
  for (int i = 0; i < depth; ++i) deep += "<n>";
  XmlNode node;
  EXPECT_EQ(parse(deep, &node).error, eXMLErrorMissingEndTag);
  EXPECT_EQ(node.createXMLString(false).size(), std::size_t(depth - 1) * 7 + 4);  // ...<n/>...
}

TEST(XmlPath, WalkingAndCreating) {
  XmlNode root = XmlNode::parseString("<r><a><b><c>1</c></b></a><a><x/></a></r>");
  EXPECT_EQ(root.getChildByPath("a/b/c").text(), "1");
  EXPECT_EQ(root.getChildByPath("/a//b/c/").text(), "1");  // empty components are skipped
  EXPECT_EQ(root.getChildByPath(""), root);
  EXPECT_FALSE(root.getChildByPath("a/x"));  // first "a" only
  EXPECT_FALSE(root.getChildByPath("a/missing/c"));
  EXPECT_EQ(root.getChildByPath("a").childCount(), 1);  // nothing created on the way

  XmlNode made = root.getChildByPath("input:Solution:maxIter", true, ':');
  made.addText("100");
  EXPECT_EQ(made.name(), "maxIter");
  EXPECT_EQ(root.getChildByPath("input/Solution/maxIter").text(), "100");
  EXPECT_EQ(root.getChildByPath("input:Solution:tol", true, ':').parent(),
            root.getChildByPath("input/Solution"));
  EXPECT_EQ(root.getChildByPath("input").childCount(), 1);
  EXPECT_EQ(root.getChildByPath("a:b:new", true, ':').parent(), root.getChildByPath("a/b"));
  EXPECT_FALSE(XmlNode().getChildByPath("a", true));
}

TEST(XmlBuild, TextPositionsAttributesAndLifetime) {
  XmlNode root = XmlNode::createRoot("r");
  root.addText("b");
  root.addChild("k");
  root.addText("d");
  root.addText("a", 0);
  root.addText("c", 2);
  root.addAttribute("x", "1");
  root.addAttribute("x", "2");
  ASSERT_EQ(root.textCount(), 4);
  EXPECT_EQ(root.text(0), "a");
  EXPECT_EQ(root.text(2), "c");
  EXPECT_EQ(root.attributeCount(), 1);
  EXPECT_EQ(root.createXMLString(false), "<r x=\"2\">a<!---->b<k/>c<!---->d</r>");
  EXPECT_EQ(root.createXMLString(true), "<r x=\"2\">\n\ta\n\t<!---->b\n\t<k/>\n\tc\n\t<!---->d\n</r>\n");

  // Parent links do not own: a child outlives its dropped root and then has no parent.
  XmlNode child = root.addChild("c");
  EXPECT_EQ(child.parent(), root);
  root = XmlNode();
  EXPECT_TRUE(child);
  EXPECT_FALSE(child.parent());
}

TEST(XmlWrite, RoundTripThroughFileWithEntities) {
  XmlNode root = XmlNode::createRoot("doc");
  root.addAttribute("q", "a \"b\" 'c' <&> tab\there\nline\r");
  XmlNode item = root.addChild("item");
  item.addText("  x < y && z > \"w\" 'v'  ");
  item.addText("");
  item.addText(" \n");
  root.addText("between");
  root.addChild("empty");
  root.getChildByPath("deep/er", true).addText("A&#65;");
  const std::string path = ::testing::TempDir() + "xml_round_trip.xml";
  for (bool format : {true, false}) {
    ASSERT_EQ(root.writeToFile(path, XmlCharEncoding::UTF8, format), eXMLErrorNone);
    XmlResults r;
    XmlNode back = XmlNode::parseFile(path, "", &r);
    ASSERT_EQ(r.error, eXMLErrorNone) << readFile(path);
    // The written form carries names, attributes, children and the interleaving of texts.
    EXPECT_EQ(back.createXMLString(false), root.createXMLString(false));
  }
  const std::pair<XmlCharEncoding, std::string> headers[] = {
      {XmlCharEncoding::UTF8, "utf-8"},
      {XmlCharEncoding::ShiftJIS, "SHIFT-JIS"},
      {XmlCharEncoding::Legacy, "ISO-8859-1"},
      {XmlCharEncoding::GBK, "ISO-8859-1"}};
  for (const auto& [encoding, word] : headers) {
    ASSERT_EQ(root.writeToFile(path, encoding, false), eXMLErrorNone);
    EXPECT_EQ(readFile(path), "<?xml version=\"1.0\" encoding=\"" + word + "\"?>\n" +
                                  root.createXMLString(false));
  }
  std::remove(path.c_str());

  EXPECT_EQ(root.writeToFile("/nonexistent-dir/x.xml"), eXMLErrorCannotOpenWriteFile);
  EXPECT_EQ(root.writeToFile("/dev/full"), eXMLErrorCannotWriteFile);
  XmlResults r;
  EXPECT_FALSE(XmlNode::parseFile("/nonexistent-dir/x.xml", "", &r));
  EXPECT_EQ(r.error, eXMLErrorFileNotFound);
  EXPECT_FALSE(XmlNode::parseFile(::testing::TempDir(), "", &r));  // a directory
  EXPECT_EQ(r.error, eXMLErrorFileNotFound);
  // A device is no file: /dev/zero would be read for ever.
  EXPECT_FALSE(XmlNode::parseFile("/dev/null", "", &r));
  EXPECT_EQ(r.error, eXMLErrorFileNotFound);
}

TEST(XmlBase64, TableCases) {
  struct Case {
    std::string in, out;
    int error;
  };
  const Case cases[] = {
      {"TWFu", "Man", 0},
      {" TW\tFu\r\nTQ== ", "ManM", 0},
      {"TWE=", "Ma", 0},
      {std::string("TWFu\0!!!!", 9), "Man", 0},  // byte 0 ends the text
      {"", "", 0},
      {"TWFuTQ", "ManM", 17},
      {"TWFuT", "Man", 17},
      {"TWE", "Ma", 17},
      {"TQ=", "M", 17},
      {"TQ=ATWFu", "M", 19},  // data after padding
      {"T===", "", 19},
      {"TWFu====", "Man", 19},
      {"TW-u", "", 18},
      {"TWFu\x80", "", 18},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.in);
    int error = -1;
    const std::vector<unsigned char> bytes = XmlNode::decodeBase64(c.in, &error);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), c.out);
    EXPECT_EQ(error, c.error);
  }
  std::string all;
  for (int i = 0; i < 256; ++i) all += char(i);
  const auto bytes = XmlNode::decodeBase64(
      "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8gISIjJCUmJygpKissLS4vMDEyMzQ1Njc4OTo7PD0+P0BBQkNERUZHSElKS0xNTk9QUVJTVFVWV1hZWltcXV5fYGFiY2RlZmdoaWprbG1ub3BxcnN0dXZ3eHl6e3x9fn+AgYKDhIWGh4iJiouMjY6PkJGSk5SVlpeYmZqbnJ2en6ChoqOkpaanqKmqq6ytrq+wsbKztLW2t7i5uru8vb6/wMHCw8TFxsfIycrLzM3Oz9DR0tPU1dbX2Nna29zd3t/g4eLj5OXm5+jp6uvs7e7v8PHy8/T19vf4+fr7/P3+/w==");
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), all);
}
