// A small DOM reader and writer for parameter and material files (banner "v2.42").
// A node is a handle with shared ownership of its data; copies refer to the same node.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace gridmoor {

enum class XmlCharEncoding { UTF8 = 1, Legacy = 2, ShiftJIS = 3, GB2312 = 4, Big5 = 5, GBK = 6 };

// Error codes of the reader; getError() gives their texts.
enum XmlError {
  eXMLErrorNone = 0,
  eXMLErrorMissingEndTag = 1,
  eXMLErrorNoXMLTagFound = 2,
  eXMLErrorEmpty = 3,
  eXMLErrorMissingTagName = 4,
  eXMLErrorMissingEndTagName = 5,
  eXMLErrorUnmatchedEndTag = 6,
  eXMLErrorUnmatchedEndClearTag = 7,
  eXMLErrorUnexpectedToken = 8,
  eXMLErrorNoElements = 9,
  eXMLErrorFileNotFound = 10,
  eXMLErrorFirstTagNotFound = 11,
  eXMLErrorUnknownCharacterEntity = 12,
  eXMLErrorCharacterCodeAbove255 = 13,
  eXMLErrorCharConversionError = 14,
  eXMLErrorCannotOpenWriteFile = 15,
  eXMLErrorCannotWriteFile = 16,
  eXMLErrorBase64DataSizeIsNotMultipleOf4 = 17,
  eXMLErrorBase64DecodeIllegalCharacter = 18,
  eXMLErrorBase64DecodeTruncatedData = 19,
  eXMLErrorBase64DecodeBufferTooSmall = 20
};

// Outcome of a parse. line and column are 1-based; both stay 0 when there is nothing to point
// at (success, a file that cannot be read). Codes 1 and 2 are warnings: with code 1 (end tags
// missing at the end of the text) the tree read so far is still returned.
struct XmlResults {
  int error = eXMLErrorNone;
  int line = 0;
  int column = 0;
};

struct XmlAttribute {
  std::string name;
  std::string value;
};

class XmlNode {
 public:
  // The empty node: tests false, has no name, children or text.
  XmlNode() = default;

  // Parse a file or a text. With a non-empty rootName the result is the first element of that
  // name (error 11 when there is none); with an empty rootName it is the document element.
  // On error the empty node is returned and results (when given) holds code, line and column.
  static XmlNode parseFile(const std::string& path, const std::string& rootName = "",
                           XmlResults* results = nullptr);
  static XmlNode parseString(const std::string& text, const std::string& rootName = "",
                             XmlResults* results = nullptr);
  // parseFile that reports an error on the error stream and ends the process with status 255.
  static XmlNode openFile(const std::string& path, const std::string& rootName = "");
  // A new detached element, the root of a tree built in code.
  static XmlNode createRoot(const std::string& name);
  // Text of an error code; "Unknown" for codes outside the table.
  static const char* getError(int code);
  // The encoding named in an XML declaration's encoding text.
  static XmlCharEncoding encodingFromName(const std::string& word);

  explicit operator bool() const { return data_ != nullptr; }
  bool isEmpty() const { return data_ == nullptr; }

  std::string name() const;
  XmlNode parent() const;

  int childCount() const;
  XmlNode child(int i) const;
  // First child with that name, or the empty node.
  XmlNode childByName(const std::string& name) const;
  XmlNode addChild(const std::string& name);

  int textCount() const;
  std::string text(int i = 0) const;
  // Insert a text item at position (-1 appends).
  void addText(const std::string& text, int position = -1);

  int attributeCount() const;
  XmlAttribute attribute(int i) const;
  // Value of the named attribute, or the empty text; found tells whether it exists.
  std::string attributeValue(const std::string& name, bool* found = nullptr) const;
  // An attribute of the same name is given the new value, so that written trees stay well formed.
  void addAttribute(const std::string& name, const std::string& value);

  // Walk the names of path split at separator; with createMissing, absent nodes are added.
  // Returns the empty node when a step is missing and nothing is created.
  XmlNode getChildByPath(const std::string& path, bool createMissing = false,
                         char separator = '/') const;

  // Serialise the subtree (entities encoded). With format, children are indented.
  std::string createXMLString(bool format = true) const;
  // Write the subtree with an XML declaration naming the encoding; returns an XmlError code.
  int writeToFile(const std::string& path, XmlCharEncoding encoding = XmlCharEncoding::UTF8,
                  bool format = true) const;

  // Table-driven Base64 decoding: white space is skipped, '=' pads, byte 0 ends the text.
  // error receives 0 or one of the codes 17 to 19.
  static std::vector<unsigned char> decodeBase64(const std::string& text, int* error = nullptr);

  bool operator==(const XmlNode& other) const { return data_ == other.data_; }

 private:
  struct Data;
  class Parser;
  explicit XmlNode(std::shared_ptr<Data> data) : data_(std::move(data)) {}
  static void writeElement(const Data& root, bool format, std::string& out);
  std::shared_ptr<Data> data_;
};

}  // namespace gridmoor
