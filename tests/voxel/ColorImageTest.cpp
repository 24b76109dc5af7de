#include "voxel/ColorImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <set>
#include <unordered_set>

#include "../formats/FieldFileTestSupport.h"
#include "formats/VtiWriter.h"

using namespace gridmoor;
using gridmoor::testing::stdoutOf;
using gridmoor::testing::uint32Bytes;

namespace {

class ColorImageFiles : public gridmoor::testing::ScratchDirectory {
 protected:
  // A geometry file with a float field in front of the colour arrays, as result files have.
  std::string writeVti(const std::string& name,
                       const std::vector<std::pair<std::string, const ColorImage*>>& fields) {
    const ColorImage& first = *fields.front().second;
    VtiWriter writer(path(name), {2, 2 + std::int64_t(first.sizeX), 0, std::int64_t(first.sizeY), -1,
                                  std::int64_t(first.sizeZ) - 1},
                     {0.5, 0.5, 0.75}, {-1, 0, 4}, true, 3);
    const Image<double> distractor = gridmoor::testing::patternImage(1, first.sizeX, first.sizeY, first.sizeZ);
    writer.addImageField("density", distractor, {0}, DataWriter::Float);
    for (const auto& [field, image] : fields) writer.addImageField(field, *image, {0}, DataWriter::UInt8);
    writer.write();
    return writer.indexFileName();
  }
};

std::string ldtHeader(std::uint32_t nx, std::uint32_t ny, std::uint32_t nz, std::uint32_t offset = 20) {
  return "ldt1" + uint32Bytes(offset) + uint32Bytes(nx) + uint32Bytes(ny) + uint32Bytes(nz);
}

std::string pairs(std::initializer_list<std::pair<int, int>> runs) {
  std::string s;
  for (auto [count, colour] : runs) {
    s += static_cast<char>(count);
    s += static_cast<char>(colour);
  }
  return s;
}

ColorImage randomImage(std::uint64_t nx, std::uint64_t ny, std::uint64_t nz, int colours,
                       unsigned seed) {
  ColorImage image(nx, ny, nz, 0, "random");
  std::mt19937 gen(seed);
  // Short runs of random length, so that runs of every length up to a few voxels occur.
  Colour c = 0;
  for (std::size_t i = 0; i < image.size(); ++i) {
    if (gen() % 3 == 0) c = static_cast<Colour>(gen() % colours);
    image[i] = c;
  }
  return image;
}

}  // namespace

TEST_F(ColorImageFiles, LdtRoundTripKeepsEveryVoxel) {
  struct Case {
    std::uint64_t nx, ny, nz;
    int colours;
  };
  for (const Case& c : {Case{5, 7, 3, 4}, Case{1, 1, 1, 1}, Case{3, 2, 600, 2}, Case{9, 11, 13, 200},
                        Case{4, 3, 1, 3}}) {
    ColorImage image = randomImage(c.nx, c.ny, c.nz, c.colours, static_cast<unsigned>(c.nz));
    image.resolutionX = image.resolutionY = image.resolutionZ = 0.25;
    image.description = "ConstituentMaterials:m";
    const std::string file = path("round.ldt");
    stdoutOf([&] { image.writeLdt(file); });

    ColorImage back("back");
    stdoutOf([&] { back.readLdt(file, 0, "None"); });
    ASSERT_EQ(back.getGlobalSizeX(), c.nx);
    ASSERT_EQ(back.sizeY, c.ny);
    ASSERT_EQ(back.sizeZ, c.nz);
    EXPECT_EQ(back.getSizeX(), c.nx);
    EXPECT_EQ(back.resolutionZ, 0.25);
    // The size lines of the trailer are read back as part of the description.
    EXPECT_EQ(back.description, "NX " + std::to_string(c.nx) + " NY " + std::to_string(c.ny) + " NZ " +
                                    std::to_string(c.nz) + " ConstituentMaterials:m\n");
    ASSERT_EQ(back.size(), image.size());
    for (std::size_t i = 0; i < image.size(); ++i) ASSERT_EQ(back[i], image[i]) << "voxel " << i;
  }
}

TEST_F(ColorImageFiles, LdtWriterSplitsLongRunsAndPatchesTheOffset) {
  ColorImage image(1, 2, 300, 7, "long");
  for (std::uint64_t z = 0; z < 300; ++z) image.at(0, 1, z) = z < 10 ? 3 : 4;
  image.description = "ConstituentMaterials:a,b";
  image.resolutionX = 0.5;
  const std::string file = path("long.ldt");
  const std::string out = stdoutOf([&] { image.writeLdt(file); });
  EXPECT_EQ(out, "###EXPORT### " + file + "\nOffset 30\nExport o.k.\n");

  const std::string bytes = readBytes(file);
  const std::string runs = pairs({{255, 7}, {45, 7}, {10, 3}, {255, 4}, {35, 4}});
  const std::string trailer = "\nNX 1\nNY 2\nNZ 300\nConstituentMaterials:a,b\nVoxelLength 5.000000e-01\n";
  EXPECT_EQ(bytes, ldtHeader(1, 2, 300, 30) + runs + trailer);
}

TEST_F(ColorImageFiles, LdtReaderAcceptsZeroCountsAndRunsAcrossLinesButNotPlanes) {
  // Plane 0 (2 x 3 voxels): a zero pair, then one run of 4 over a line end, then a run of 9
  // that overflows the plane and is cut. Plane 1 starts with its own pair.
  const std::string file = fileWith(
      "runs.ldt", ldtHeader(2, 2, 3) + pairs({{0, 9}, {4, 1}, {9, 2}, {6, 5}}) +
                      "\nNX 2 ConstituentMaterials:x,y ConstituentMaterialsZ tail VoxelLength 2.5e-3 ignored");
  ColorImage image("runs");
  const std::string out = stdoutOf([&] { image.readLdt(file, 0, "None"); });
  EXPECT_EQ(out, "Size is: 2 2 3\nSize of Geometry: 2 x 2 x 3\nResolution of Geometry: 0.0025\n\n");
  const Colour expected[12] = {1, 1, 1, 1, 2, 2, 5, 5, 5, 5, 5, 5};
  for (int i = 0; i < 12; ++i) EXPECT_EQ(image[i], expected[i]) << i;
  EXPECT_EQ(image.resolutionY, 2.5e-3);
  EXPECT_EQ(image.description, "NX 2 ConstituentMaterials:x,y\nConstituentMaterialsZ\ntail ");

  // The first token of an empty description is taken as it stands.
  const std::string first = fileWith("first.ldt", ldtHeader(1, 1, 1) + pairs({{1, 0}}) +
                                                        "ConstituentMaterials:a next");
  ColorImage other("first");
  stdoutOf([&] { other.readLdt(first, 0, "None"); });
  EXPECT_EQ(other.description, "ConstituentMaterials:anext ");
}

TEST_F(ColorImageFiles, LdtWithoutTrailerHasUnitResolution) {
  const std::string file = fileWith("bare.ldt", ldtHeader(1, 1, 4) + pairs({{4, 6}}));
  ColorImage image("bare");
  image.resolutionX = 3.0;
  const std::string out = stdoutOf([&] { image.readLdt(file, 0, "None"); });
  EXPECT_NE(out.find("No resolution found in ldt-File. Setting resolution to 1\n\n"), std::string::npos);
  EXPECT_EQ(image.resolutionX, 1.0);
  EXPECT_EQ(image.getColors(), std::vector<Colour>{6});
}

TEST_F(ColorImageFiles, BrokenLdtFilesEndTheRun) {
  const auto dies = [&](const std::string& name, const std::string& bytes, const std::string& message) {
    const std::string file = fileWith(name, bytes);
    EXPECT_EXIT(
        {
          ColorImage image("bad");
          image.readLdt(file, 0, "None");
        },
        ::testing::ExitedWithCode(1), message)
        << name;
  };
  dies("short.ldt", ldtHeader(2, 1, 1).substr(0, 12), "header is incomplete");
  dies("empty.ldt", ldtHeader(0, 4, 4), "empty grid: 0 x 4 x 4");
  // Headers that promise more voxels than a run can address, or than the file's runs can
  // hold, must not make the reader allocate them.
  dies("huge.ldt", ldtHeader(0xffffffffu, 0xffffffffu, 0xffffffffu) + pairs({{255, 1}}),
       "grid too large to solve: 4294967295 x 4294967295 x 4294967295");
  dies("promise.ldt", ldtHeader(4096, 4096, 4096) + pairs({{255, 1}}), "is truncated");
  // Enough bytes for the minimum of 255-voxel runs, but the runs are shorter.
  dies("cut.ldt", ldtHeader(2, 1, 4) + pairs({{2, 1}, {2, 1}, {1, 1}, {0, 0}}),
       "truncated: its run data end in plane 1 of 2");
  dies("length.ldt", ldtHeader(1, 1, 1) + pairs({{1, 1}}) + " VoxelLength -2", "invalid VoxelLength");
  // Squared frequencies of a denormal length overflow.
  dies("tiny.ldt", ldtHeader(1, 1, 1) + pairs({{1, 1}}) + " VoxelLength 1e-320", "invalid VoxelLength");
}

TEST_F(ColorImageFiles, RekVolumesReadXFastest) {
  std::string header(2048, '\0');
  const auto put16 = [&](int at, int v) {
    header[at] = static_cast<char>(v & 0xff);
    header[at + 1] = static_cast<char>(v >> 8);
  };
  put16(0, 3);  // sizeX
  put16(2, 2);  // sizeY
  put16(6, 2);  // sizeZ
  put16(4, 8);
  std::string data;
  for (int z = 0; z < 2; ++z)
    for (int y = 0; y < 2; ++y)
      for (int x = 0; x < 3; ++x) data += static_cast<char>(100 * z + 10 * y + x);
  const std::string file8 = fileWith("a.rek", header + data);
  ColorImage image("rek");
  stdoutOf([&] { image.readRek(file8, 0, "None"); });  // its lines are an end-to-end case
  for (int z = 0; z < 2; ++z)
    for (int y = 0; y < 2; ++y)
      for (int x = 0; x < 3; ++x) EXPECT_EQ(image.at(x, y, z), 100 * z + 10 * y + x);

  put16(4, 16);  // two bytes per voxel, the first one is the colour
  std::string wide;
  for (char c : data) wide += std::string{c, '\x7f'};
  ColorImage image16("rek16");
  stdoutOf([&] { image16.readRek(fileWith("b.rek", header + wide), 0, "None"); });
  EXPECT_EQ(image16.at(2, 1, 1), 112);
  EXPECT_EQ(image16.at(1, 0, 1), 101);

  const std::string cut = fileWith("c.rek", header + wide.substr(0, wide.size() - 1));
  EXPECT_EXIT(ColorImage("x").readRek(cut, 0, "None"), ::testing::ExitedWithCode(1), "rek file .* is truncated");
  EXPECT_EXIT(ColorImage("x").readRek(fileWith("d.rek", "\x03\x00\x02"), 0, "None"),
              ::testing::ExitedWithCode(1), "header is incomplete");
  EXPECT_EXIT(ColorImage("x").readRek(path("none.rek"), 0, "None"), ::testing::ExitedWithCode(1),
              "^COULD NOT OPEN THE FILE!");
}

TEST_F(ColorImageFiles, VtkCellAndPointData) {
  const std::string head =
      "# vtk DataFile Version 3.0\ngeometry\nBINARY\nDATASET STRUCTURED_POINTS\n"
      "DIMENSIONS 3 2 2\nORIGIN 1 2 3\nSPACING 0.5 0.25 2\n";
  std::string values;
  for (int i = 0; i < 12; ++i) values += static_cast<char>(i);
  const std::string cells = fileWith(
      "cells.vtk", head + "CELL_DATA 12\nSCALARS Materials unsigned_char\nLOOKUP_TABLE default\n" + values);
  ColorImage cellImage("cells");
  const std::string out = stdoutOf([&] { cellImage.readVtk(cells, 0, "None"); });
  EXPECT_EQ(out, "Size of Geometry: 3 x 2 x 2\n");
  EXPECT_EQ(cellImage.at(2, 1, 1), 11);
  EXPECT_EQ(cellImage.at(1, 0, 1), 7);
  EXPECT_EQ(cellImage.originY, 2.0);
  EXPECT_EQ(cellImage.resolutionX, 0.5);
  EXPECT_EQ(cellImage.resolutionZ, 2.0);

  // Point data: 3 x 2 x 2 points make 2 x 1 x 1 voxels, and the last point of each axis
  // overwrites the last voxel.
  const std::string points = fileWith(
      "points.vtk", head + "POINT_DATA 12\nSCALARS Materials unsigned_char\nLOOKUP_TABLE default\n" + values);
  ColorImage pointImage("points");
  stdoutOf([&] { pointImage.readVtk(points, 0, "None"); });
  ASSERT_EQ(pointImage.size(), 2u);
  EXPECT_EQ(pointImage.at(0, 0, 0), 9);
  EXPECT_EQ(pointImage.at(1, 0, 0), 11);
}

TEST_F(ColorImageFiles, MetaImageAndRawExportTransposeToXFastest) {
  ColorImage image(2, 3, 2, 0, "meta");
  for (int x = 0; x < 2; ++x)
    for (int y = 0; y < 3; ++y)
      for (int z = 0; z < 2; ++z) image.at(x, y, z) = static_cast<Colour>(100 * z + 10 * y + x);
  image.resolutionX = 0.5;
  image.resolutionY = 0.5;
  image.resolutionZ = 0.5;
  image.originZ = 4;
  const std::string header = path("out.mhd");
  const std::string out = stdoutOf([&] { image.writeMetaImage(header); });
  EXPECT_EQ(out, "EXPORT DAT: " + header + "\nEXPORT DAT: " + path("out.raw") + "\n");
  EXPECT_EQ(readBytes(header),
            "NDims = 3\nDimSize = 2 3 2\nOffset = 0 0 4\nElementSize  = 0.5 0.5 0.5\n"
            "ElementSpacing  = 0.5 0.5 0.5\nElementType = MET_UCHAR\nElementByteOrderMSB = False\n"
            "ElementDataFile = out.raw\n");
  const std::string raw = readBytes(path("out.raw"));
  ASSERT_EQ(raw.size(), 12u);
  for (int z = 0, i = 0; z < 2; ++z)
    for (int y = 0; y < 3; ++y)
      for (int x = 0; x < 2; ++x, ++i) EXPECT_EQ(static_cast<unsigned char>(raw[i]), 100 * z + 10 * y + x);
}

TEST(ColorImage, CollectColorsFollowsAHashSetFilledInMemoryOrder) {
  for (int colours : {1, 5, 40, 256}) {
    ColorImage image = randomImage(6, 5, 9, colours, 7u + colours);
    image.collectColors();
    std::unordered_set<Colour> reference(10);
    for (Colour c : image) reference.insert(c);
    EXPECT_EQ(image.getColors(), std::vector<Colour>(reference.begin(), reference.end()));
    EXPECT_EQ(image.getNumberOfColors(), reference.size());
  }
}

TEST_F(ColorImageFiles, VtiGeometryTakesMaterialsThenMaterialThenSubstance) {
  // Byte orders, compression and pieces are the reader's own tests; one kind suffices here.
  const ColorImage a = randomImage(9, 7, 5, 5, 1), b = randomImage(9, 7, 5, 5, 2);
  ColorImage read("read");
  const std::string out = stdoutOf([&] {
    read.readVti(writeVti("all", {{"Substance", &a}, {"Material", &a}, {"Materials", &b}}), 0, "None");
  });
  EXPECT_EQ(out, "Size of Geometry: 9 x 7 x 5\n");
  ASSERT_EQ(read.getGlobalSizeX(), 9u);
  ASSERT_EQ(read.sizeY, 7u);
  ASSERT_EQ(read.sizeZ, 5u);
  EXPECT_TRUE(std::equal(read.begin(), read.end(), b.begin(), b.end()));
  EXPECT_EQ(read.extentBeginX, 2u);
  EXPECT_EQ(read.resolutionZ, 0.75);
  EXPECT_EQ(read.originX, -1.0);
  EXPECT_EQ(read.originZ, 4.0);
  EXPECT_EQ(std::set<Colour>(read.getColors().begin(), read.getColors().end()),
            (std::set<Colour>{0, 1, 2, 3, 4}));

  stdoutOf([&] { read.readVti(writeVti("two", {{"Substance", &a}, {"Material", &b}}), 0, "None"); });
  EXPECT_TRUE(std::equal(read.begin(), read.end(), b.begin(), b.end()));
  stdoutOf([&] { read.readVti(writeVti("one", {{"Substance", &a}}), 0, "None"); });
  EXPECT_TRUE(std::equal(read.begin(), read.end(), a.begin(), a.end()));
  const std::string file = writeVti("phases", {{"Phase", &a}});
  EXPECT_EXIT(read.readVti(file, 0, "None"), ::testing::ExitedWithCode(1),
              "^vti-File .*phases.pvti does not contain material information.\n$");
}

// Compressed data can promise any grid in a few bytes: extents whose spans or voxel count
// leave 64 bits, or exceed what a run can address, end the run before anything is allocated;
// so does a spacing that can not be a voxel length.
TEST_F(ColorImageFiles, VtiGridsThatCanNotBeSolvedEndTheRun) {
  const auto vti = [&](const std::string& name, const std::string& whole,
                       const std::string& piece, const std::string& spacing = "1 1 1") {
    return fileWith(name, "<?xml version=\"1.0\"?>\n<VTKFile type=\"ImageData\" version=\"0.1\">"
                          "<ImageData WholeExtent=\"" + whole +
                              "\" Origin=\"0 0 0\" Spacing=\"" + spacing + "\"><Piece Extent=\"" + piece +
                              "\"><CellData><DataArray type=\"UInt8\" Name=\"Materials\" "
                              "format=\"appended\" offset=\"0\"/></CellData></Piece></ImageData>"
                              "<AppendedData encoding=\"raw\">_    </AppendedData></VTKFile>");
  };
  const auto dies = [&](const std::string& file, const std::string& message) {
    EXPECT_EXIT(
        {
          ColorImage image("bad");
          image.readVti(file, 0, "None");
        },
        ::testing::ExitedWithCode(1), message)
        << file;
  };
  const std::string span = "WholeExtent spans more indices than a grid can hold";
  dies(vti("wide.vti", "-9223372036854775808 9223372036854775807 0 1 0 1", "0 1 0 1 0 1"), span);
  dies(vti("long.vti", "0 9223372036854775807 0 4 0 4", "0 1 0 1 0 1"), span);
  // 2^62 x 4 x 4 voxels wrap to 0 in 64 bits.
  dies(vti("wrap.vti", "0 4611686018427387904 0 4 0 4", "0 1 0 1 0 1"),
       "grid too large to solve: 4611686018427387904 x 4 x 4");
  dies(vti("many.vti", "0 4194304 0 4194304 0 4", "0 1 0 1 0 1"),
       "grid too large to solve: 4194304 x 4194304 x 4");
  dies(vti("spacing.vti", "0 4 0 4 0 4", "0 4 0 4 0 4", "1 0 1"), "invalid Spacing: 0.0");
  dies(vti("piece.vti", "-9223372036854775807 -9223372036854775806 0 1 0 1",
           "9223372036854775806 9223372036854775807 0 1 0 1"),
       "a piece's Extent lies outside the WholeExtent");
}
