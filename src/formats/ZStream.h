// Compressing output stream for VTI files: takes the bytes of an uncompressed file with raw
// appended data and writes each array as zlib blocks of 32768 bytes with VTK's block header.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace gridmoor {

// The text before "<AppendedData encoding=\"raw\">_" is held back until the compressed sizes
// are known, because every array's offset attribute changes. The compressed arrays wait in
// a scratch file beside the target ("<name>.zblocks") meanwhile, so that a large field is
// never held in memory whole; close() puts header, arrays and trailer together.
class zstream {
 public:
  static constexpr std::uint32_t blockSize = 32768;

  explicit zstream(std::string fileName);
  zstream(const zstream&) = delete;
  zstream& operator=(const zstream&) = delete;
  ~zstream();

  void write(const char* data, std::int64_t length);
  // Finishes the file. False when a stream failed or the bytes did not form complete arrays.
  bool close();
  bool isOpen() const { return open_; }
  const std::string& fileName() const { return fileName_; }

 private:
  enum class State { Header, Size, Data, Trailer };

  void takeHeader(const char*& data, std::int64_t& length);
  void beginArray(std::uint32_t bytes);
  void compressBatch();
  void endArray();
  void putNumber(std::uint32_t value);

  std::string fileName_;
  std::string scratchName_;
  std::fstream scratch_;
  bool open_ = false;
  bool failed_ = false;

  State state_ = State::Header;
  std::string header_;
  std::string trailer_;
  // Where each offset's digits stand in header_: [begin, end).
  std::vector<std::pair<std::size_t, std::size_t>> offsetFields_;
  bool swap_ = false;

  std::size_t arraysDone_ = 0;
  std::vector<std::uint64_t> arrayBytes_;  // compressed bytes of each array, header included
  char sizeBytes_[4] = {};
  int sizeBytesHeld_ = 0;

  // The array being compressed.
  std::uint64_t remaining_ = 0;
  std::uint32_t lastBlockSize_ = 0;
  std::vector<std::uint32_t> compressedSizes_;
  std::streamoff headerPosition_ = 0;  // of the block header in the scratch file

  // One batch of blocks, compressed together, each by one thread.
  std::vector<char> batch_;
  std::uint64_t batchFilled_ = 0;
  std::vector<std::vector<unsigned char>> output_;
  std::vector<unsigned long> outputSizes_;
  std::vector<int> results_;
};

}  // namespace gridmoor
