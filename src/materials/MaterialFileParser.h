// Where the material table of a run comes from: inline entries of XML input, a separate XML
// material file, or the ".cff" file of line input, delivered as one list of "Material" entries.
#pragma once

#include <string>
#include <vector>

#include "input/XmlNode.h"

namespace gridmoor {

// Key and element names of the material table.
struct MaterialKeys {
  static constexpr const char* materParamFile = "input/MaterialData/MaterParamFile";
  static constexpr const char* material = "input/MaterialData/Material";
  static constexpr const char* cffMaterParamFile = "input/MaterParamValues/MaterParamFile";
  static constexpr const char* cffFortranCompiler = "input/FortranCompiler";
  static constexpr const char* fortranCompiler = "input/MaterialData/FortranCompiler";
  static constexpr const char* fortranCompilerOptions = "input/MaterialData/FortranCompilerOptions";
  static constexpr const char* entryName = "Material";
  static constexpr const char* materName = "MaterName";
  static constexpr const char* materNumber = "MaterNumber";
  static constexpr const char* type = "Type";
  static constexpr const char* materialParameters = "MaterialParameters";
};

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
// must exist). Every failure ends the run with its message.
MaterialSource readMaterialSource(const XmlNode& inputTree, const std::string& inputFile);

// Directory part of a path with its separator ('/' or '\\'); empty without one.
std::string materialDirectoryOf(const std::string& path);
// A name from the parameter file taken relative to directory unless it is absolute.
std::string joinMaterialPath(const std::string& directory, const std::string& name);

}  // namespace gridmoor
