// Turns a parameter file into the parameter tree: XML documents as they are, ".pde" files of
// "path:to:key value" lines under a root named "gridmoor", anything else as an empty tree.
#pragma once

#include <istream>
#include <string>

#include "input/XmlNode.h"

namespace gridmoor {

XmlNode readParameterTree(const std::string& path);

// The ".pde" line rules over an open stream.
XmlNode readPdeTree(std::istream& in);

}  // namespace gridmoor
