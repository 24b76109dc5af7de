// Byte sinks the field writers write through: a buffer in memory sized by the writer, or
// a stream on disk (plain or compressing) that the writer opens and closes.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "common/Fatal.h"
#include "voxel/Vector.h"

namespace gridmoor {

class AbstractFile {
 public:
  virtual void write(const char* data, std::int64_t length) = 0;
  virtual ~AbstractFile() = default;
};

class MemoryFile : public AbstractFile, public Vector<char> {
 public:
  MemoryFile() : Vector<char>("DataWriterMemoryFile") {}
  explicit MemoryFile(std::uint64_t size) : Vector<char>(size, "DataWriterMemoryFile") {}

  // The writer sizes the buffer beforehand; it is never grown here, so a write that does
  // not fit is a fault of the caller and ends the run rather than run past the end.
  void write(const char* data, std::int64_t length) override {
    if (length < 0 || static_cast<std::uint64_t>(length) > size() - position)
      fatal("MemoryFile: a write of " + std::to_string(length) + " bytes at position " +
            std::to_string(position) + " does not fit into the buffer of " +
            std::to_string(size()) + " bytes");
    if (length > 0) std::memcpy(Vector<char>::data() + position, data, static_cast<std::size_t>(length));
    position += static_cast<std::uint64_t>(length);
  }
  // Bytes written so far.
  std::uint64_t getPosition() const { return position; }

 private:
  std::uint64_t position = 0;
};

// Forwards to a stream that it does not own: the plain output file stream, or the
// compressing stream of the field writers.
template <class Stream>
class DiskFile : public AbstractFile {
 public:
  explicit DiskFile(Stream* stream) : stream_(stream) {}
  void write(const char* data, std::int64_t length) override { stream_->write(data, length); }

 private:
  Stream* stream_;
};

}  // namespace gridmoor
