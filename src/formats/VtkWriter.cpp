#include "formats/VtkWriter.h"

#include <fstream>

#include "common/Fatal.h"
#include "voxel/MpiExchange.h"

namespace gridmoor {

namespace {

const char* attributeKind(std::size_t components) {
  switch (components) {
    case 1: return "SCALARS";
    case 3: return "VECTORS";
    case 9: return "TENSORS";
    default: return nullptr;
  }
}

}  // namespace

VtkWriter::VtkWriter(std::string name, const std::array<std::int64_t, 6>& extent,
                     const std::array<double, 3>& s, const std::array<double, 3>& o)
    : DataWriter(std::move(name), extent, s, o) {}

void VtkWriter::write() {
  const MpiExchange mpi;
  if (mpi.getNumberOfProcesses() > 1)
    fatal("Cannot save to VTK when running with more than one process. Please consider using "
          "VTI to save your files.");
  for (const Field& field : fields)
    if (!attributeKind(field.components.size()))
      fatal("Invalid number of components for VTK specified");

  std::ofstream out(fileName, std::ios::binary | std::ios::trunc);
  if (!out) fatal(fileName + " can not be opened \n");

  // DIMENSIONS counts points: one more than the cells on each axis.
  const std::uint64_t cellsX = static_cast<std::uint64_t>(gridExtent[1] - gridExtent[0]);
  const std::uint64_t cellsY = static_cast<std::uint64_t>(gridExtent[3] - gridExtent[2]);
  const std::uint64_t cellsZ = static_cast<std::uint64_t>(gridExtent[5] - gridExtent[4]);
  VoxelBox all;
  all.end = {gridSize(0), gridSize(1), gridSize(2)};
  out << "# vtk DataFile Version 5.2\n";
  out << "Volume Image\n";
  out << "BINARY\n";
  out << "DATASET STRUCTURED_POINTS\n";
  out << "DIMENSIONS " << cellsX + 1 << " " << cellsY + 1 << " " << cellsZ + 1 << "\n";
  out << "ORIGIN " << formatNumber(origin[0]) << " " << formatNumber(origin[1]) << " "
      << formatNumber(origin[2]) << "\n";
  out << "SPACING " << formatNumber(spacing[0]) << " " << formatNumber(spacing[1]) << " "
      << formatNumber(spacing[2]) << "\n";
  out << (isPointData() ? "POINT_DATA " : "CELL_DATA ") << all.count() << "\n";

  DiskFile<std::ofstream> sink(&out);
  for (const Field& field : fields) {
    const std::size_t components = field.components.size();
    out << attributeKind(components) << " " << field.name << " " << vtkTypeName(field.dataType)
        << "\n";
    if (components == 1) out << "LOOKUP_TABLE default\n";
    if (field.beforeWrite) field.beforeWrite();
    writeFieldValues(field, all, sink, true);
    if (field.afterWrite) field.afterWrite();
    out << "\n";
  }
  out.close();
  if (out.fail()) fatal("Error while saving the VTK file " + fileName);
}

}  // namespace gridmoor
