"""Opens field files with VTK's own readers and compares them with an expectation file.

Usage: vtk_read_check.py EXPECTATIONS

The expectation file holds blocks of lines:
    file PATH
    dims NX NY NZ            voxels per axis: cells for cell data, points for point data
    origin X Y Z
    spacing X Y Z
    section cell|point
    field NAME COMPONENTS TUPLES
    VALUES...                one line, x fastest, components of a voxel adjacent
Prints one line per file and exits with 0 when every file matches, 1 on a mismatch and
2 when VTK cannot be imported.
"""
import sys

try:
    import vtk
except ImportError as error:
    print("VTK-IMPORT-FAILED", error)
    sys.exit(2)


def message_catcher(messages):
    @vtk.calldata_type(vtk.VTK_STRING)
    def catch(caller, event, text):
        messages.append("%s: %s" % (event, (text or "").strip()))
    return catch


def read_expectations(path):
    blocks = []
    with open(path) as f:
        lines = [line.rstrip("\n") for line in f]
    i = 0
    while i < len(lines):
        words = lines[i].split(" ")
        key = words[0]
        if key == "file":
            blocks.append({"file": " ".join(words[1:]), "fields": []})
        elif key in ("dims", "origin", "spacing"):
            blocks[-1][key] = [float(w) for w in words[1:4]]
        elif key == "section":
            blocks[-1]["section"] = words[1]
        elif key == "field":
            i += 1
            values = [float(w) for w in lines[i].split()]
            blocks[-1]["fields"].append((words[1], int(words[2]), int(words[3]), values))
        i += 1
    return blocks


def open_file(path):
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
    catcher = message_catcher(messages)
    reader.AddObserver("ErrorEvent", catcher)
    reader.AddObserver("WarningEvent", catcher)
    reader.SetFileName(path)
    reader.Update()
    return reader.GetOutput(), messages


# The legacy files carry the format version 5.2, which VTK 9.1's reader (version 5.1) reads
# fully but announces with a warning.
TOLERATED = "with older reader version"


def check(block):
    path = block["file"]
    image, messages = open_file(path)
    messages = [m for m in messages if TOLERATED not in m]
    if messages:
        return "VTK reported %s" % messages
    if image is None:
        return "no output"
    point = block["section"] == "point"
    dims = image.GetDimensions()
    voxels = [d if point else d - 1 for d in dims]
    if voxels != [int(v) for v in block["dims"]]:
        return "dims %s, expected %s" % (voxels, block["dims"])
    for key, got in (("origin", image.GetOrigin()), ("spacing", image.GetSpacing())):
        want = block[key]
        if any(abs(g - w) > 1e-12 * max(1.0, abs(w)) for g, w in zip(got, want)):
            return "%s %s, expected %s" % (key, list(got), want)
    data = image.GetPointData() if point else image.GetCellData()
    if data.GetNumberOfArrays() != len(block["fields"]):
        return "%d arrays, expected %d" % (data.GetNumberOfArrays(), len(block["fields"]))
    for name, components, tuples, values in block["fields"]:
        array = data.GetArray(name)
        if array is None:
            return "array %s missing" % name
        if array.GetNumberOfComponents() != components or array.GetNumberOfTuples() != tuples:
            return "array %s has %d x %d values, expected %d x %d" % (
                name, array.GetNumberOfTuples(), array.GetNumberOfComponents(), tuples,
                components)
        for i, want in enumerate(values):
            got = array.GetValue(i)
            if got != want:
                return "array %s value %d is %r, expected %r" % (name, i, got, want)
    return None


def main():
    failed = False
    for block in read_expectations(sys.argv[1]):
        problem = check(block)
        if problem:
            failed = True
            print("MISMATCH", block["file"], problem)
        else:
            print("OK", block["file"])
    sys.exit(1 if failed else 0)


main()
