// Translation of the line-oriented material parameter file (".cff") into the tree of
// "Material" entries that XML input carries, so that the factory reads one shape only.
#pragma once

#include <istream>
#include <string>

#include "input/XmlNode.h"

namespace gridmoor {

// Reads the ".cff" file at path. The result is an element "MaterialData" whose "Material"
// children are the entries in the order of their first line, each with "MaterNumber",
// "MaterName", "Type" (a short name of the mechanical list) and "MaterialParameters".
// An unreadable file, an unknown type or parameter word and broken name/value pairs end the run.
XmlNode translateCffFile(const std::string& path);

// The same over an open stream.
XmlNode translateCff(std::istream& in);

}  // namespace gridmoor
