#include "formats/ZStream.h"

#include <omp.h>
#include <zlib.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>

#include "common/Fatal.h"

namespace gridmoor {

namespace {

const std::string appendedMarker = "<AppendedData encoding=\"raw\">_";

// Blocks per thread in one batch. Each block is compressed by one thread; several blocks per
// thread keep the parallel regions, and their joins, few on a loaded machine.
constexpr int blocksPerThread = 8;

std::uint32_t swapped(std::uint32_t v) {
  return (v >> 24) | ((v >> 8) & 0xff00u) | ((v << 8) & 0xff0000u) | (v << 24);
}

}  // namespace

zstream::zstream(std::string fileName)
    : fileName_(std::move(fileName)), scratchName_(fileName_ + ".zblocks") {
  scratch_.open(scratchName_, std::ios::in | std::ios::out | std::ios::binary | std::ios::trunc);
  open_ = scratch_.is_open();
  failed_ = !open_;
  const int blocks = std::max(1, omp_get_max_threads()) * blocksPerThread;
  batch_.resize(static_cast<std::size_t>(blocks) * blockSize);
  output_.assign(blocks, std::vector<unsigned char>(compressBound(blockSize)));
  outputSizes_.assign(blocks, 0);
  results_.assign(blocks, Z_OK);
}

zstream::~zstream() {
  if (scratch_.is_open()) scratch_.close();
  if (open_) std::remove(scratchName_.c_str());
}

void zstream::write(const char* data, std::int64_t length) {
  if (failed_) return;
  while (length > 0) {
    switch (state_) {
      case State::Header:
        takeHeader(data, length);
        break;
      case State::Size: {
        const int take = static_cast<int>(std::min<std::int64_t>(4 - sizeBytesHeld_, length));
        std::memcpy(sizeBytes_ + sizeBytesHeld_, data, take);
        sizeBytesHeld_ += take;
        data += take;
        length -= take;
        if (sizeBytesHeld_ == 4) {
          std::uint32_t n;
          std::memcpy(&n, sizeBytes_, 4);
          sizeBytesHeld_ = 0;
          beginArray(swap_ ? swapped(n) : n);
        }
        break;
      }
      case State::Data: {
        const std::uint64_t space = batch_.size() - batchFilled_;
        const std::uint64_t take =
            std::min<std::uint64_t>({space, remaining_, static_cast<std::uint64_t>(length)});
        std::memcpy(batch_.data() + batchFilled_, data, take);
        batchFilled_ += take;
        remaining_ -= take;
        data += take;
        length -= static_cast<std::int64_t>(take);
        if (batchFilled_ == batch_.size()) compressBatch();
        if (remaining_ == 0) endArray();
        break;
      }
      case State::Trailer:
        trailer_.append(data, static_cast<std::size_t>(length));
        length = 0;
        break;
    }
  }
}

void zstream::takeHeader(const char*& data, std::int64_t& length) {
  // Only the new bytes and the marker's length before them can complete the marker.
  const std::size_t searchFrom = header_.size() > appendedMarker.size()
                                     ? header_.size() - appendedMarker.size()
                                     : 0;
  header_.append(data, static_cast<std::size_t>(length));
  const std::size_t at = header_.find(appendedMarker, searchFrom);
  if (at == std::string::npos) {
    length = 0;
    return;
  }
  // Bytes after the marker belong to the arrays: hand them back to the caller's loop.
  const std::size_t end = at + appendedMarker.size();
  const std::size_t beyond = header_.size() - end;
  data += length - static_cast<std::int64_t>(beyond);
  length = static_cast<std::int64_t>(beyond);
  header_.resize(end);

  // The arrays are those that the header gives offsets for, in order.
  const std::string key = "offset=\"";
  for (std::size_t p = header_.find(key); p < at; p = header_.find(key, p + 1)) {
    const std::size_t begin = p + key.size();
    const std::size_t close = header_.find('"', begin);
    if (close == std::string::npos || close > at) break;
    offsetFields_.emplace_back(begin, close);
  }
  const bool bigEndianFile = header_.find("BigEndian") < at;
  swap_ = bigEndianFile != (std::endian::native == std::endian::big);
  state_ = offsetFields_.empty() ? State::Trailer : State::Size;
}

void zstream::putNumber(std::uint32_t value) {
  if (swap_) value = swapped(value);
  scratch_.write(reinterpret_cast<const char*>(&value), 4);
}

void zstream::beginArray(std::uint32_t bytes) {
  const std::uint32_t rest = bytes % blockSize;
  const std::uint32_t blocks = bytes / blockSize + (rest > 0 ? 1 : 0);
  lastBlockSize_ = rest > 0 ? rest : blockSize;
  remaining_ = bytes;
  compressedSizes_.clear();
  compressedSizes_.reserve(blocks);
  // Number of blocks, block size, last block size, then one compressed size per block:
  // reserved as zeros now, filled in when the array is complete.
  headerPosition_ = scratch_.tellp();
  for (std::uint32_t i = 0; i < 3 + blocks; ++i) putNumber(0);
  state_ = State::Data;
  if (remaining_ == 0) endArray();
}

void zstream::compressBatch() {
  if (batchFilled_ == 0) return;
  const int blocks = static_cast<int>((batchFilled_ + blockSize - 1) / blockSize);
  const std::uint64_t filled = batchFilled_;
#pragma omp parallel for schedule(static)
  for (int b = 0; b < blocks; ++b) {
    const std::uint64_t begin = static_cast<std::uint64_t>(b) * blockSize;
    const uLong sourceBytes = static_cast<uLong>(std::min<std::uint64_t>(blockSize, filled - begin));
    uLongf destBytes = static_cast<uLongf>(output_[b].size());
    results_[b] = compress(output_[b].data(), &destBytes,
                           reinterpret_cast<const Bytef*>(batch_.data() + begin), sourceBytes);
    outputSizes_[b] = destBytes;
  }
  for (int b = 0; b < blocks; ++b) {
    if (results_[b] != Z_OK) fatal("Error while compressing data with zlib");
    scratch_.write(reinterpret_cast<const char*>(output_[b].data()),
                   static_cast<std::streamsize>(outputSizes_[b]));
    compressedSizes_.push_back(static_cast<std::uint32_t>(outputSizes_[b]));
  }
  batchFilled_ = 0;
}

void zstream::endArray() {
  compressBatch();
  const std::streamoff end = scratch_.tellp();
  scratch_.seekp(headerPosition_);
  putNumber(static_cast<std::uint32_t>(compressedSizes_.size()));
  putNumber(blockSize);
  putNumber(lastBlockSize_);
  for (const std::uint32_t size : compressedSizes_) putNumber(size);
  scratch_.seekp(end);
  if (!scratch_) failed_ = true;
  arrayBytes_.push_back(static_cast<std::uint64_t>(end - headerPosition_));
  ++arraysDone_;
  state_ = arraysDone_ == offsetFields_.size() ? State::Trailer : State::Size;
}

bool zstream::close() {
  if (!open_) return false;
  bool ok = !failed_ && state_ == State::Trailer && scratch_.good();
  if (ok) {
    // The offsets of the compressed arrays replace those of the raw ones, last first so
    // that the recorded positions of the earlier ones stay valid.
    std::vector<std::uint64_t> offsets(arrayBytes_.size(), 0);
    for (std::size_t i = 1; i < offsets.size(); ++i)
      offsets[i] = offsets[i - 1] + arrayBytes_[i - 1];
    for (std::size_t i = offsetFields_.size(); i-- > 0;) {
      const auto [begin, end] = offsetFields_[i];
      header_.replace(begin, end - begin, std::to_string(offsets[i]));
    }
    std::ofstream out(fileName_, std::ios::binary | std::ios::trunc);
    out.write(header_.data(), static_cast<std::streamsize>(header_.size()));
    scratch_.flush();
    scratch_.seekg(0);
    std::vector<char> chunk(1 << 20);
    while (scratch_ && out) {
      scratch_.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
      out.write(chunk.data(), scratch_.gcount());
    }
    out.write(trailer_.data(), static_cast<std::streamsize>(trailer_.size()));
    out.close();
    ok = !out.fail() && scratch_.eof();
  }
  scratch_.close();
  std::remove(scratchName_.c_str());
  open_ = false;
  return ok;
}

}  // namespace gridmoor
