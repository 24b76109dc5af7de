#include "formats/LufHeader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <istream>
#include <ostream>

#include "common/Fatal.h"

namespace gridmoor {

namespace {

// Longest header whose length fits the 9-character HeaderLength field.
constexpr std::int64_t maxHeaderLength = 999999999;
constexpr std::size_t valueColumn = 16;
constexpr std::size_t imageValueOffset = 10;  // from the colon of an "Image<n>:" key

// The value of the first "HeaderLength <n>" line, or 0. The line lies inside the header, so
// the search reads no further than the longest header, and it keeps no more of a line than
// such a line can hold: a wrong binary file, or a device without line ends, is neither read
// whole nor held in memory.
std::int64_t findHeaderLength(std::istream& in) {
  constexpr std::streamsize longestKeyLine = 4096;
  std::array<char, longestKeyLine> line;
  std::uint64_t scanned = 0;
  bool atLineStart = true;  // whether the buffer holds the beginning of a line
  while (scanned <= static_cast<std::uint64_t>(maxHeaderLength)) {
    in.getline(line.data(), longestKeyLine);
    const std::streamsize count = in.gcount();
    if (count == 0 && in.fail()) break;  // nothing left
    scanned += static_cast<std::uint64_t>(count);
    const bool cut = in.fail() && !in.eof();  // the line goes on beyond the buffer
    if (atLineStart && !cut) {
      const std::vector<std::string> tokens = split(line.data(), " ");
      if (tokens.size() == 2 && tokens[0] == "HeaderLength") return std::atoi(tokens[1].c_str());
    }
    if (in.eof()) break;
    if (cut) in.clear();
    atLineStart = !cut;
  }
  return 0;
}

}  // namespace

std::vector<std::string> split(const std::string& text, const std::string& delimiters) {
  std::vector<std::string> tokens;
  std::size_t begin = text.find_first_not_of(delimiters);
  while (begin != std::string::npos) {
    const std::size_t end = text.find_first_of(delimiters, begin);
    tokens.push_back(text.substr(begin, end == std::string::npos ? std::string::npos : end - begin));
    if (end == std::string::npos) break;
    begin = text.find_first_not_of(delimiters, end);
  }
  return tokens;
}

std::string lufRepeat(const std::string& word, std::uint64_t count) {
  std::string list;
  for (std::uint64_t i = 0; i < count; ++i) {
    if (i) list += ',';
    list += word;
  }
  return list;
}

std::string lufMeaning(std::uint64_t components) {
  switch (components) {
    case 1: return "scalar";
    case 3: return "vector";
    case 6:
    case 9: return "tensor";
    default: return "";
  }
}

int lufElementSize(const std::string& types, long long entries) {
  if (entries < 0) return 0;
  // A list can only match when its length fits; this also keeps a huge entry count from
  // building a huge comparison text.
  const auto fits = [&](std::size_t wordLength) {
    const auto n = static_cast<unsigned long long>(entries);
    // n <= size first, so that the product below cannot wrap for a corrupt entry count.
    return n == 0 ? types.empty()
                  : n <= types.size() && types.size() == n * wordLength + (n - 1);
  };
  if (fits(5) && types == lufRepeat("float", entries)) return 4;
  if (fits(6) && types == lufRepeat("double", entries)) return 8;
  if (fits(9) && types == lufRepeat("quadruple", entries)) return 16;
  return 0;
}

LufHeaderReader::LufHeaderReader(const std::string& fileName)
    : fileName_(fileName), stream_(fileName, std::ios::binary) {
  if (!stream_) fatal("File " + fileName + " can not be opened");
  stream_.seekg(0, std::ios::end);
  fileSize_ = static_cast<std::uint64_t>(stream_.tellg());
  stream_.seekg(0);

  headerLength_ = findHeaderLength(stream_);
  stream_.clear();
  stream_.seekg(0);

  // A negative length reads as no header at all; a length beyond the file reads what is
  // there and leaves the stream at the end, so that the binary reads that follow fail.
  const std::uint64_t wanted = headerLength_ > 0 ? static_cast<std::uint64_t>(headerLength_) : 0;
  truncated_ = wanted > fileSize_;
  std::string text(std::min(wanted, fileSize_), '\0');
  stream_.read(text.data(), static_cast<std::streamsize>(text.size()));

  for (const std::string& headerLine : split(text, "\n")) {
    std::vector<std::string> tokens = split(headerLine, " ");
    if (tokens.size() == 2) table_[tokens[0]] = std::move(tokens[1]);
  }
}

void LufHeaderReader::require(const std::vector<std::string>& keys) const {
  for (const std::string& key : keys)
    if (!contains(key)) fatal("Keyword " + key + " not found in the header");
}

const std::string& LufHeaderReader::get(const std::string& key) const {
  const auto it = table_.find(key);
  if (it == table_.end()) fatal("Keyword " + key + " not found in the header");
  return it->second;
}

LufHeaderWriter::LufHeaderWriter(std::ostream& out, std::string fileName)
    : out_(out), fileName_(std::move(fileName)), start_(out.tellp()) {}

std::string LufHeaderWriter::paddedKey(const std::string& key) {
  std::size_t column = valueColumn;
  // "Image<n>:" keys align their values 10 characters after the colon, so that images with
  // numbers of several digits shift only their own lines.
  if (key.size() > 5 && key.compare(0, 5, "Image") == 0) {
    std::size_t i = 5;
    while (i < key.size() && std::isdigit(static_cast<unsigned char>(key[i]))) ++i;
    if (i > 5 && i < key.size() && key[i] == ':') column = i + imageValueOffset;
  }
  std::string padded = key;
  padded.append(key.size() < column ? column - key.size() : 1, ' ');
  return padded;
}

void LufHeaderWriter::writeLine(const std::string& key, const std::string& value) {
  out_ << paddedKey(key) << value << '\n';
}

void LufHeaderWriter::writeHeaderLength() {
  out_ << paddedKey("HeaderLength");
  lengthField_ = out_.tellp();
  out_ << "         \n";
}

std::int64_t LufHeaderWriter::finish() {
  out_ << '\n';
  const std::streampos end = out_.tellp();
  const std::int64_t length = static_cast<std::int64_t>(end - start_);
  if (lengthField_ == std::streampos(-1))
    fatal("Header of file " + fileName_ + " has no HeaderLength line");
  if (length > maxHeaderLength)
    fatal("Header of file " + fileName_ + " is longer than 999999999 bytes");
  out_.seekp(lengthField_);
  out_ << length;
  out_.seekp(end);
  if (!out_) fatal("Failed to write the file " + fileName_);
  return length;
}

}  // namespace gridmoor
