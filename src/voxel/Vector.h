// Named contiguous array that holds all bulk data: bytes counted in allocatedBytes, raw
// block-wise file transfer, and element-wise arithmetic split statically over the threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

#include "common/Fatal.h"
#include "voxel/ByteOrder.h"
#include "voxel/DebugAllocator.h"
#include "voxel/StaticPartition.h"

namespace gridmoor {

template <class T>
class Vector : public std::vector<T, DebugAllocator<T>> {
 public:
  using Base = std::vector<T, DebugAllocator<T>>;

  // Files move through one fixed block, so a field larger than is wise to copy never
  // needs a second buffer of its own size.
  static constexpr std::size_t blockBytes = 262144;
  static constexpr std::size_t elementsPerBlock = blockBytes / sizeof(T);

  explicit Vector(const std::string& name) : Base(DebugAllocator<T>(name)) {}
  Vector(std::size_t size, const std::string& name) : Vector(size, T{}, name) {}
  Vector(std::size_t size, const T& value, const std::string& name)
      : Base(DebugAllocator<T>(name)) {
    if (estimateOnly())
      allocatedBytes += size * sizeof(T);
    else
      Base::assign(size, value);
  }
  Vector(const Vector&) = default;
  Vector(Vector&&) noexcept = default;
  Vector& operator=(const Vector&) = default;
  Vector& operator=(Vector&&) = default;
  virtual ~Vector() = default;

  std::string getName() const { return this->get_allocator().name(); }
  // True for a vector built in memory-estimate mode: it never holds data.
  bool estimateOnly() const { return this->get_allocator().memoryEstimateMode(); }

  void resize(std::size_t n) {
    if (estimateOnly()) {
      Base::clear();
      allocatedBytes += n * sizeof(T);
      return;
    }
    // g++ 12 at -O3 sees the growth of a small vector of bytes of constant size and warns
    // falsely about the relocation loop inside the standard library.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wstringop-overflow"
#endif
    Base::resize(n);
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
  }

  // Gives the storage back, not only the elements: the capacity becomes 0.
  void clear() {
    Base empty(this->get_allocator());
    Base::swap(empty);
  }

  Vector& operator=(const T& value) {
    T* p = this->data();
    parallelForStatic(this->size(), [=](std::uint64_t b, std::uint64_t e) {
      for (std::uint64_t i = b; i < e; ++i) p[i] = value;
    });
    return *this;
  }
  Vector& operator*=(const T& value) {
    T* p = this->data();
    parallelForStatic(this->size(), [=](std::uint64_t b, std::uint64_t e) {
      for (std::uint64_t i = b; i < e; ++i) p[i] *= value;
    });
    return *this;
  }
  // A true division per element: multiplying by the inverse would change the last bit.
  Vector& operator/=(const T& value) {
    T* p = this->data();
    parallelForStatic(this->size(), [=](std::uint64_t b, std::uint64_t e) {
      for (std::uint64_t i = b; i < e; ++i) p[i] /= value;
    });
    return *this;
  }
  Vector& operator+=(const Vector& other) {
    requireSameSize(other, "operator+=");
    T* p = this->data();
    const T* q = other.data();
    parallelForStatic(this->size(), [=](std::uint64_t b, std::uint64_t e) {
      for (std::uint64_t i = b; i < e; ++i) p[i] += q[i];
    });
    return *this;
  }
  Vector& operator-=(const Vector& other) {
    requireSameSize(other, "operator-=");
    T* p = this->data();
    const T* q = other.data();
    parallelForStatic(this->size(), [=](std::uint64_t b, std::uint64_t e) {
      for (std::uint64_t i = b; i < e; ++i) p[i] -= q[i];
    });
    return *this;
  }
  // this += factor * other
  Vector& addScaled(const Vector& other, const T& factor) {
    requireSameSize(other, "addScaled");
    T* p = this->data();
    const T* q = other.data();
    parallelForStatic(this->size(), [=](std::uint64_t b, std::uint64_t e) {
      for (std::uint64_t i = b; i < e; ++i) p[i] += factor * q[i];
    });
    return *this;
  }

  // Raw elements in native (little-endian) order, no header and no count: the reader must
  // have sized the vector. (bytes / block) + 1 rounds, the last one possibly of 0 bytes.
  void writeBinary(std::ostream& stream) const {
    const char* bytes = reinterpret_cast<const char*>(this->data());
    const std::uint64_t total = this->size() * sizeof(T);
    for (std::uint64_t round = 0, done = 0; round <= total / blockBytes; ++round) {
      const std::uint64_t n = total - done < blockBytes ? total - done : blockBytes;
      stream.write(bytes + done, static_cast<std::streamsize>(n));
      done += n;
    }
  }
  void readBinary(std::istream& stream) {
    char* bytes = reinterpret_cast<char*>(this->data());
    const std::uint64_t total = this->size() * sizeof(T);
    for (std::uint64_t round = 0, done = 0; round <= total / blockBytes; ++round) {
      const std::uint64_t n = total - done < blockBytes ? total - done : blockBytes;
      stream.read(bytes + done, static_cast<std::streamsize>(n));
      done += n;
    }
  }

  virtual void writeToFile(const std::string& fileName) const {
    std::ofstream stream(fileName, std::ios::out | std::ios::binary | std::ios::trunc);
    if (!stream.is_open()) fatal("File " + fileName + " can not be opened");
    writeBinary(stream);
    stream.flush();
    if (!stream) fatal("Failed to write the file " + fileName);
  }
  virtual void readFromFile(const std::string& fileName) {
    std::ifstream stream(fileName, std::ios::in | std::ios::binary);
    if (!stream.is_open()) fatal("File " + fileName + " can not be opened");
    readBinary(stream);
    if (!stream) fatal("Failed to read the file " + fileName);
  }

  // this -= the field stored in the file, one block at a time: the whole stored field is
  // never in memory.
  void subtractFromFile(const std::string& fileName) {
    std::ifstream stream(fileName, std::ios::in | std::ios::binary);
    if (!stream.is_open()) fatal("File " + fileName + " can not be opened");
    subtractFromStream(stream);
    if (!stream) fatal("Failed to read the file " + fileName);
  }
  void subtractFromStream(std::istream& stream) {
    Vector<T> scratch(elementsPerBlock, "blocksize_temporary");
    const std::uint64_t total = this->size();
    T* p = this->data();
    for (std::uint64_t round = 0, done = 0; round <= total / elementsPerBlock; ++round) {
      const std::uint64_t n = total - done < elementsPerBlock ? total - done : elementsPerBlock;
      stream.read(reinterpret_cast<char*>(scratch.data()),
                  static_cast<std::streamsize>(n * sizeof(T)));
      if (!stream) break;  // the caller reports the short file
      for (std::uint64_t i = 0; i < n; ++i) p[done + i] -= scratch[i];
      done += n;
    }
    scratch.clear();
  }

  static void writeDouble(std::ostream& stream, double value, bool swap) {
    gridmoor::writeDouble(stream, value, swap);
  }
  static double readDouble(std::istream& stream, bool swap) {
    return gridmoor::readDouble(stream, swap);
  }
  static void writeFloat(std::ostream& stream, double value, bool swap) {
    gridmoor::writeFloat(stream, value, swap);
  }
  static void writeInt(std::ostream& stream, std::int32_t value, bool swap) {
    gridmoor::writeInt(stream, value, swap);
  }

 private:
  void requireSameSize(const Vector& other, const char* operation) const {
    if (other.size() != this->size())
      fatal(std::string("Function Vector::") + operation +
            " can not be called for two Vectors with different size.");
  }
};

}  // namespace gridmoor
