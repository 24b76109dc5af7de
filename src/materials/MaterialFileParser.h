// Where the material table of a run comes from: inline entries of XML input, a separate XML
// material file, or the ".cff" file of line input, delivered as one list of "Material" entries.
#pragma once

#include <string>
#include <vector>

#include "input/XmlNode.h"
#include "materials/MaterialVector.h"

namespace gridmoor {

struct MaterialSource {
  // The document the entries belong to; holding it keeps them alive.
  XmlNode document;
  // The "Material" elements in document order.
  std::vector<XmlNode> entries;
  // Directory of the parameter file with its trailing separator, empty for the current one.
  std::string directory;
  // The material file as joined to the directory; empty when the entries stand inline.
  std::string materialFile;
  std::string fortranCompiler;
  std::string fortranCompilerOptions;
};

// Chooses the source by the suffix of the parameter file: "pde" reads the ".cff" file named in
// the line input, anything else is XML input (inline entries first, else the named file, which
// must exist). Keys and element names are the table's. Every failure ends the run with its
// message.
MaterialSource readMaterialSource(const XmlNode& inputTree, const std::string& inputFile,
                                  const MaterialVector& table);

// Directory part of a path with its separator ('/' or '\\'); empty without one.
std::string materialDirectoryOf(const std::string& path);
// A name from the parameter file taken relative to directory unless it is absolute.
std::string joinMaterialPath(const std::string& directory, const std::string& name);

}  // namespace gridmoor
