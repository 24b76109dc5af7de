#include "formats/ZStream.h"

#include <gtest/gtest.h>
#include <omp.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "FieldFileTestSupport.h"

using namespace gridmoor;

namespace {

const std::string marker = "<AppendedData encoding=\"raw\">_";
const std::string trailer = "\n  </AppendedData>\n</VTKFile>\n";

std::string word(std::uint32_t v, bool big) {
  std::string s(4, '\0');
  for (int i = 0; i < 4; ++i) s[big ? 3 - i : i] = static_cast<char>(v >> (8 * i));
  return s;
}

std::uint32_t wordAt(const std::string& s, std::size_t at, bool big) {
  std::uint32_t v = 0;
  for (int i = 0; i < 4; ++i)
    v |= std::uint32_t(static_cast<unsigned char>(s.at(at + i))) << (8 * (big ? 3 - i : i));
  return v;
}

// Half random, half runs: compressible, but not to nothing.
std::string arrayBytes(std::size_t n, unsigned seed) {
  std::mt19937 random(seed);
  std::string s(n, '\0');
  for (std::size_t i = 0; i < n; ++i)
    s[i] = (i / 512) % 2 ? static_cast<char>(random()) : static_cast<char>(i / 4096);
  return s;
}

// The raw file for the arrays: header with raw offsets, then size word and bytes of each.
std::string rawFile(const std::vector<std::string>& arrays, bool big) {
  std::string text = "<?xml version=\"1.0\"?>\n<VTKFile type=\"ImageData\" version=\"0.1\" byte_order=\"";
  text += big ? "BigEndian" : "LittleEndian";
  text += "\" compressor=\"vtkZLibDataCompressor\">\n";
  std::uint32_t offset = 0;
  for (std::size_t i = 0; i < arrays.size(); ++i) {
    text += "  <DataArray Name=\"a" + std::to_string(i) + "\" offset=\"" +
            std::to_string(offset) + "\"/>\n";
    offset += 4 + static_cast<std::uint32_t>(arrays[i].size());
  }
  text += marker;
  for (const std::string& a : arrays) text += word(static_cast<std::uint32_t>(a.size()), big) + a;
  return text + trailer;
}

std::string withoutOffsets(std::string text) {
  for (std::size_t at = text.find("offset=\""); at != std::string::npos;
       at = text.find("offset=\"", at + 1)) {
    const std::size_t digits = at + 8;
    text.erase(digits, text.find('"', digits) - digits);
  }
  return text;
}

class ZStreamFiles : public gridmoor::testing::ScratchDirectory {
 protected:
  // Feeds the raw file in pieces of the given sizes (cycled), so that the marker, size words
  // and blocks arrive split.
  std::string compressThrough(const std::string& raw, std::vector<std::size_t> pieces) {
    const std::string file = path("packed.vti");
    zstream out(file);
    for (std::size_t at = 0, i = 0; at < raw.size(); ++i) {
      const std::size_t n = std::min(pieces[i % pieces.size()], raw.size() - at);
      out.write(raw.data() + at, static_cast<std::int64_t>(n));
      at += n;
    }
    EXPECT_TRUE(out.close());
    EXPECT_FALSE(std::filesystem::exists(file + ".zblocks"));
    return readBytes(file);
  }

  // Checks every array against zlib's own uncompress of each block, the block header's
  // counts, the offsets in the header and the text around the data.
  void expectCompressedArrays(const std::string& packed, const std::vector<std::string>& arrays,
                              bool big) {
    const std::size_t dataStart = packed.find(marker);
    ASSERT_NE(dataStart, std::string::npos);
    const std::size_t base = dataStart + marker.size();
    std::size_t at = base;
    std::size_t searchFrom = 0;
    for (std::size_t i = 0; i < arrays.size(); ++i) {
      SCOPED_TRACE("array " + std::to_string(i));
      const std::size_t attribute = packed.find("offset=\"", searchFrom);
      ASSERT_LT(attribute, dataStart);
      const std::size_t digits = attribute + 8;
      searchFrom = digits;
      EXPECT_EQ(packed.substr(digits, packed.find('"', digits) - digits),
                std::to_string(at - base));

      const std::string& plain = arrays[i];
      const std::uint32_t blocks = wordAt(packed, at, big);
      const std::uint32_t expectedBlocks = static_cast<std::uint32_t>((plain.size() + 32767) / 32768);
      ASSERT_EQ(blocks, expectedBlocks);
      EXPECT_EQ(wordAt(packed, at + 4, big), 32768u);
      const std::uint32_t rest = plain.size() % 32768;
      EXPECT_EQ(wordAt(packed, at + 8, big), rest ? rest : 32768u);
      std::size_t block = at + 12 + 4 * blocks;
      for (std::uint32_t b = 0; b < blocks; ++b) {
        const std::uint32_t packedSize = wordAt(packed, at + 12 + 4 * b, big);
        const std::size_t plainSize = std::min<std::size_t>(32768, plain.size() - 32768 * b);
        std::vector<unsigned char> out(plainSize);
        uLongf got = static_cast<uLongf>(plainSize);
        ASSERT_LE(block + packedSize, packed.size());
        ASSERT_EQ(uncompress(out.data(), &got,
                             reinterpret_cast<const Bytef*>(packed.data() + block), packedSize),
                  Z_OK);
        ASSERT_EQ(got, plainSize);
        EXPECT_EQ(std::string(out.begin(), out.end()), plain.substr(32768 * b, plainSize))
            << "block " << b;
        block += packedSize;
      }
      at = block;
    }
    EXPECT_EQ(packed.substr(at), trailer);
  }
};

TEST_F(ZStreamFiles, BlockHeadersAndBlocksMatchZlibForEveryArraySize) {
  // One exact block, one byte, several batches with a short last block, an empty array.
  const std::vector<std::string> arrays = {arrayBytes(32768, 1), arrayBytes(1, 2),
                                           arrayBytes(5 * 32768 + 1696, 3), std::string()};
  const std::string raw = rawFile(arrays, false);
  const int threads = omp_get_max_threads();
  // Three threads make batches of three blocks, so the six-block array spans two batches.
  omp_set_num_threads(3);
  const std::string packed = compressThrough(raw, {7, 1, 3, 40000, 2});
  omp_set_num_threads(threads);
  expectCompressedArrays(packed, arrays, false);
  // Apart from the offsets' digits, the text before the data passes through unchanged.
  EXPECT_EQ(withoutOffsets(packed.substr(0, packed.find(marker))),
            withoutOffsets(raw.substr(0, raw.find(marker))));
}

TEST_F(ZStreamFiles, BigEndianFilesGetBigEndianSizesAndHeaders) {
  const std::vector<std::string> arrays = {arrayBytes(70000, 4), arrayBytes(65536, 5)};
  const std::string packed = compressThrough(rawFile(arrays, true), {1 << 20});
  expectCompressedArrays(packed, arrays, true);
}

TEST_F(ZStreamFiles, AnArrayCutShortFailsOnClose) {
  std::string raw = rawFile({arrayBytes(1000, 6)}, false);
  raw.resize(raw.size() - trailer.size() - 10);
  zstream out(path("short.vti"));
  out.write(raw.data(), static_cast<std::int64_t>(raw.size()));
  EXPECT_FALSE(out.close());
  EXPECT_FALSE(std::filesystem::exists(path("short.vti.zblocks")));
}

}  // namespace
