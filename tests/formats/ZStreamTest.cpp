#include "formats/ZStream.h"

#include <gtest/gtest.h>
#include <omp.h>
#include <zlib.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "FieldFileTestSupport.h"

using namespace gridmoor;
using gridmoor::testing::uint32At;

namespace {

const std::string marker = "<AppendedData encoding=\"raw\">_";
const std::string trailer = "\n  </AppendedData>\n</VTKFile>\n";

// The raw file of the arrays: a header with their raw offsets, then size word and bytes of each.
std::string rawFile(const std::vector<std::string>& arrays, bool big) {
  std::string text = "<VTKFile type=\"ImageData\" version=\"0.1\" byte_order=\"" +
                     std::string(big ? "BigEndian" : "LittleEndian") + "\">\n";
  std::uint32_t offset = 0;
  for (const std::string& a : arrays) {
    text += "  <DataArray offset=\"" + std::to_string(offset) + "\"/>\n";
    offset += 4 + static_cast<std::uint32_t>(a.size());
  }
  text += marker;
  for (const std::string& a : arrays) text += gridmoor::testing::uint32Bytes(static_cast<std::uint32_t>(a.size()), big) + a;
  return text + trailer;
}

class ZStreamFiles : public gridmoor::testing::ScratchDirectory {};

TEST_F(ZStreamFiles, BlockHeadersAndBlocksMatchZlibOfEachBlock) {
  // One exact block, one byte, ten blocks with a short last one, an empty array. Half random,
  // half runs: compressible, but not to nothing.
  std::mt19937 random(7);
  std::vector<std::string> arrays;
  for (const std::size_t n : {32768, 1, 9 * 32768 + 1696, 0}) {
    std::string bytes(n, '\0');
    for (std::size_t i = 0; i < n; ++i)
      bytes[i] = (i / 512) % 2 ? static_cast<char>(random()) : static_cast<char>(i / 4096);
    arrays.push_back(bytes);
  }
  const int threads = omp_get_max_threads();
  for (const bool big : {false, true}) {
    SCOPED_TRACE(big ? "big-endian" : "little-endian");
    const std::string raw = rawFile(arrays, big);
    // Fed in odd pieces, so that marker, size words and blocks arrive split. A batch holds
    // 8 blocks per thread: with one thread the ten blocks take two batches.
    omp_set_num_threads(big ? 1 : 3);
    zstream out(path("packed.vti"));
    const std::size_t pieces[] = {7, 1, 3, 40000, 2};
    for (std::size_t at = 0, i = 0; at < raw.size(); at += pieces[i++ % 5])
      out.write(raw.data() + at, std::min<std::int64_t>(pieces[i % 5], raw.size() - at));
    ASSERT_TRUE(out.close());
    omp_set_num_threads(threads);
    EXPECT_FALSE(std::filesystem::exists(path("packed.vti.zblocks")));
    const std::string packed = readBytes(path("packed.vti"));

    const std::size_t base = packed.find(marker) + marker.size();
    std::size_t at = base, attribute = 0;
    for (const std::string& plain : arrays) {
      // The offset attribute is the array's true place in the appended data.
      attribute = packed.find("offset=\"", attribute) + 8;
      EXPECT_EQ(packed.substr(attribute, packed.find('"', attribute) - attribute),
                std::to_string(at - base));
      const std::uint32_t blocks = uint32At(packed, at, big);
      ASSERT_EQ(blocks, (plain.size() + 32767) / 32768);
      EXPECT_EQ(uint32At(packed, at + 4, big), 32768u);
      EXPECT_EQ(uint32At(packed, at + 8, big), plain.size() % 32768 ? plain.size() % 32768 : 32768);
      std::size_t block = at + 12 + 4 * blocks;
      for (std::uint32_t b = 0; b < blocks; ++b) {
        const std::uint32_t packedSize = uint32At(packed, at + 12 + 4 * b, big);
        const std::string expected = plain.substr(32768 * b, 32768);
        std::string got(expected.size(), '\0');
        uLongf gotSize = got.size();
        ASSERT_EQ(uncompress(reinterpret_cast<Bytef*>(got.data()), &gotSize,
                             reinterpret_cast<const Bytef*>(packed.data() + block), packedSize),
                  Z_OK);
        EXPECT_TRUE(gotSize == expected.size() && got == expected) << "block " << b;
        block += packedSize;
      }
      at = block;
    }
    EXPECT_EQ(packed.substr(at), trailer);
  }
}

}  // namespace
