"""Writes a small image with VTK's own XML writer for our reader to read back.

Usage: vtk_write_sample.py OUTFILE none|zlib UInt32|UInt64 little|big
Cell data on the extent 1 6 0 4 0 3, origin (0.5, 0, 0), spacing (1, 2, 3): "strain", 3 floats
c * 262144 + x * 4096 + y * 64 + z + 0.25 - 3e5 for component c of cell (x, y, z), and
"phase", 16-bit integers x - 2 y + z. Exits with 2 without VTK.
"""
import sys

try:
    import vtk
except ImportError as error:
    print("VTK-IMPORT-FAILED", error)
    sys.exit(2)

path, compressor, header_type, order = sys.argv[1:5]
image = vtk.vtkImageData()
image.SetExtent(1, 6, 0, 4, 0, 3)
image.SetOrigin(0.5, 0, 0)
image.SetSpacing(1, 2, 3)
strain = vtk.vtkFloatArray()
strain.SetName("strain")
strain.SetNumberOfComponents(3)
strain.SetNumberOfTuples(60)
phase = vtk.vtkShortArray()
phase.SetName("phase")
phase.SetNumberOfTuples(60)
cells = [(x, y, z) for z in range(3) for y in range(4) for x in range(5)]
for i, (x, y, z) in enumerate(cells):
    for c in range(3):
        strain.SetComponent(i, c, c * 262144 + x * 4096 + y * 64 + z + 0.25 - 3e5)
    phase.SetValue(i, x - 2 * y + z)
image.GetCellData().AddArray(strain)
image.GetCellData().AddArray(phase)

writer = vtk.vtkXMLImageDataWriter()
writer.SetInputData(image)
writer.SetFileName(path)
writer.SetDataModeToAppended()
writer.EncodeAppendedDataOff()
writer.SetCompressorTypeToZLib() if compressor == "zlib" else writer.SetCompressorTypeToNone()
writer.SetHeaderTypeToUInt64() if header_type == "UInt64" else writer.SetHeaderTypeToUInt32()
writer.SetByteOrderToBigEndian() if order == "big" else writer.SetByteOrderToLittleEndian()
sys.exit(0 if writer.Write() == 1 else 1)
