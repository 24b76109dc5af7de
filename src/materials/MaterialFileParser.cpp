#include "materials/MaterialFileParser.h"

#include <filesystem>

#include "common/Fatal.h"
#include "input/Parameter.h"
#include "materials/CffFile.h"

namespace gridmoor {

namespace {

std::string suffixOf(const std::string& path) {
  const std::size_t nameStart = path.find_last_of("/\\");
  const std::size_t dot = path.rfind('.');
  if (dot == std::string::npos || (nameStart != std::string::npos && dot < nameStart)) return "";
  return path.substr(dot + 1);
}

std::vector<XmlNode> materialChildren(const XmlNode& parent) {
  std::vector<XmlNode> entries;
  for (int i = 0; i < parent.childCount(); ++i)
    if (parent.child(i).name() == MaterialKeys::entryName) entries.push_back(parent.child(i));
  return entries;
}

// Inline entries: every "Material" element below "input/MaterialData".
std::vector<XmlNode> inlineEntries(const XmlNode& tree) {
  const std::string path = MaterialKeys::material;
  const XmlNode parent = tree.getChildByPath(path.substr(0, path.rfind('/')), false, '/');
  return parent ? materialChildren(parent) : std::vector<XmlNode>();
}

void readXmlSource(const XmlNode& tree, MaterialSource& source) {
  source.fortranCompiler = readParameterText(tree, MaterialKeys::fortranCompiler, "");
  source.fortranCompilerOptions = readParameterText(tree, MaterialKeys::fortranCompilerOptions, "");
  const std::string name = readParameterText(tree, MaterialKeys::materParamFile, "");
  const std::string path = joinMaterialPath(source.directory, name);
  source.entries = inlineEntries(tree);
  if (!source.entries.empty()) {
    source.document = tree;
    return;
  }
  std::error_code ignored;
  if (name.empty() || !std::filesystem::is_regular_file(path, ignored))
    fatal("Material parameter file " + path + " does not exist!");
  source.materialFile = path;
  // A broken material file is reported like a broken parameter file, by the XML reader.
  source.document = XmlNode::openFile(path);
  // The file holds the entries at its top level; a copy of a parameter file's material block
  // (entries below "input/MaterialData") is accepted as well.
  source.entries = materialChildren(source.document);
  if (source.entries.empty()) source.entries = inlineEntries(source.document);
}

void readCffSource(const XmlNode& tree, MaterialSource& source) {
  source.fortranCompiler = readParameterText(tree, MaterialKeys::cffFortranCompiler, "");
  const std::string name = readParameterText(tree, MaterialKeys::cffMaterParamFile, "");
  source.materialFile = joinMaterialPath(source.directory, name);
  source.document = translateCffFile(source.materialFile);
  source.entries = materialChildren(source.document);
}

}  // namespace

std::string materialDirectoryOf(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string joinMaterialPath(const std::string& directory, const std::string& name) {
  const bool absolute =
      !name.empty() && (name[0] == '/' || name[0] == '\\' || (name.size() > 1 && name[1] == ':'));
  return absolute ? name : directory + name;
}

MaterialSource readMaterialSource(const XmlNode& inputTree, const std::string& inputFile) {
  MaterialSource source;
  source.directory = materialDirectoryOf(inputFile);
  if (suffixOf(inputFile) == "pde")
    readCffSource(inputTree, source);
  else
    readXmlSource(inputTree, source);
  return source;
}

}  // namespace gridmoor
