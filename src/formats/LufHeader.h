// The Luf text header that opens orientation, field and DAS files: "key value" lines, a
// back-patched HeaderLength, two line feeds, then binary data. Reader, writer and line splitter.
#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace gridmoor {

// Tokens of text; runs of delimiters count as one and no token is empty (strtok's manner).
std::vector<std::string> split(const std::string& text, const std::string& delimiters);

// word repeated count times, joined by "," ("float,float,float").
std::string lufRepeat(const std::string& word, std::uint64_t count);

// "scalar", "vector" or "tensor" for 1, 3, 6 or 9 components; empty for other counts.
std::string lufMeaning(std::uint64_t components);

// Bytes of one element of a type list that is "float", "double" or "quadruple" repeated
// entries times (tried in that order); 0 when the list is none of them.
int lufElementSize(const std::string& types, long long entries);

class LufHeaderReader {
 public:
  // Opens the file as binary and reads its header; the stream then stands at the first byte
  // of binary data. An unopenable file ends the run with "File <name> can not be opened".
  // When HeaderLength is larger than the file, the stream is left at the end of the file.
  explicit LufHeaderReader(const std::string& fileName);

  // Looks the keys up in the order given; the first one absent ends the run with
  // "Keyword <key> not found in the header".
  void require(const std::vector<std::string>& keys) const;
  // The value of a key; an absent key ends the run as in require.
  const std::string& get(const std::string& key) const;
  bool contains(const std::string& key) const { return table_.count(key) != 0; }

  // As read by atoi from the HeaderLength line; 0 when there is none.
  std::int64_t headerLength() const { return headerLength_; }
  // True when the file ends before HeaderLength bytes.
  bool truncated() const { return truncated_; }
  std::uint64_t fileSize() const { return fileSize_; }
  const std::string& fileName() const { return fileName_; }
  std::ifstream& stream() { return stream_; }

 private:
  std::string fileName_;
  std::ifstream stream_;
  std::map<std::string, std::string> table_;
  std::int64_t headerLength_ = 0;
  std::uint64_t fileSize_ = 0;
  bool truncated_ = false;
};

class LufHeaderWriter {
 public:
  // Writes into a seekable stream from its current position; fileName names the file in
  // messages.
  LufHeaderWriter(std::ostream& out, std::string fileName);

  // One "key value" line, the value aligned by the column rules.
  void writeLine(const std::string& key, const std::string& value);
  // The HeaderLength line with a 9-character field that finish() fills in.
  void writeHeaderLength();
  // Ends the block with the second line feed, writes the header length into its field and
  // leaves the stream at the end of the header. Returns the header length.
  std::int64_t finish();

  // The key followed by the blanks that put its value at the right column.
  static std::string paddedKey(const std::string& key);

 private:
  std::ostream& out_;
  std::string fileName_;
  std::streampos start_;
  std::streampos lengthField_ = -1;
};

}  // namespace gridmoor
