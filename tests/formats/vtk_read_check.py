"""Opens field files with VTK's own readers and compares them with an expectation file.

Usage: vtk_read_check.py EXPECTATIONS. The file holds blocks of lines:
    file PATH cell|point NX NY NZ OX OY OZ SX SY SZ   (voxels per axis, origin, spacing)
    field NAME COMPONENTS [TOLERANCE]                (relative; exact without)
    VALUES...                                        (one line, x fastest, components adjacent)
Prints a line per file; exits with 0 when all match, 1 on a mismatch, 2 without VTK.
"""
import sys

try:
    import vtk
except ImportError as error:
    print("VTK-IMPORT-FAILED", error)
    sys.exit(2)

# Our legacy files carry the format version 5.2, which VTK 9.1's reader (version 5.1) reads
# fully but announces with a warning.
TOLERATED = "with older reader version"


def read_file(path):
    if path.endswith(".pvti"):
        reader = vtk.vtkXMLPImageDataReader()
    elif path.endswith(".vti"):
        reader = vtk.vtkXMLImageDataReader()
    else:
        reader = vtk.vtkStructuredPointsReader()
        reader.ReadAllScalarsOn()
        reader.ReadAllVectorsOn()
        reader.ReadAllTensorsOn()
    messages = []

    @vtk.calldata_type(vtk.VTK_STRING)
    def catch(caller, event, text):
        if TOLERATED not in (text or ""):
            messages.append("%s: %s" % (event, (text or "").strip()))

    reader.AddObserver("ErrorEvent", catch)
    reader.AddObserver("WarningEvent", catch)
    reader.SetFileName(path)
    reader.Update()
    return reader.GetOutput(), messages


def check(head, fields):
    image, messages = read_file(head[0])
    if messages:
        return "VTK reported %s" % messages
    point = head[1] == "point"
    voxels = [d if point else d - 1 for d in image.GetDimensions()]
    if voxels != [int(w) for w in head[2:5]]:
        return "voxels %s, expected %s" % (voxels, head[2:5])
    geometry = list(image.GetOrigin()) + list(image.GetSpacing())
    if geometry != [float(w) for w in head[5:11]]:
        return "origin and spacing %s, expected %s" % (geometry, head[5:11])
    data = image.GetPointData() if point else image.GetCellData()
    if data.GetNumberOfArrays() != len(fields):
        return "%d arrays, expected %d" % (data.GetNumberOfArrays(), len(fields))
    for name, components, tolerance, values in fields:
        array = data.GetArray(name)
        if array is None or array.GetNumberOfComponents() != components:
            return "array %s missing or of other component count" % name
        if array.GetNumberOfValues() != len(values):
            return "array %s has %d values, expected %d" % (name, array.GetNumberOfValues(), len(values))
        for i, want in enumerate(values):
            if abs(array.GetValue(i) - want) > tolerance * abs(want):
                return "array %s value %d is %r, expected %r" % (name, i, array.GetValue(i), want)
    return None


blocks = []
with open(sys.argv[1]) as f:
    lines = f.read().splitlines()
for i, line in enumerate(lines):
    words = line.split(" ")
    if words[0] == "file":
        blocks.append((words[1:], []))
    elif words[0] == "field":
        tolerance = float(words[3]) if len(words) > 3 else 0.0
        blocks[-1][1].append((words[1], int(words[2]), tolerance,
                              [float(w) for w in lines[i + 1].split()]))
failed = False
for head, fields in blocks:
    problem = check(head, fields)
    failed = failed or problem is not None
    print("MISMATCH %s %s" % (head[0], problem) if problem else "OK %s" % head[0])
sys.exit(1 if failed else 0)
