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

std::vector<XmlNode> materialChildren(const XmlNode& parent, const std::string& entryName) {
  std::vector<XmlNode> entries;
  for (int i = 0; i < parent.childCount(); ++i)
    if (parent.child(i).name() == entryName) entries.push_back(parent.child(i));
  return entries;
}

// Inline entries: every element at the list key ("input/MaterialData/Material"), that is every
// "Material" child of "input/MaterialData".
std::vector<XmlNode> inlineEntries(const XmlNode& tree, const MaterialVector& table) {
  const std::string& key = table.materialListKey;
  const std::size_t slash = key.rfind('/');
  const XmlNode parent =
      slash == std::string::npos ? tree : tree.getChildByPath(key.substr(0, slash), false, '/');
  return parent ? materialChildren(parent, key.substr(slash + 1)) : std::vector<XmlNode>();
}

void readXmlSource(const XmlNode& tree, const MaterialVector& table, MaterialSource& source) {
  source.fortranCompiler = readParameterText(tree, table.fortranCompilerKey, "");
  source.fortranCompilerOptions = readParameterText(tree, table.fortranCompilerOptionsKey, "");
  const std::string name = readParameterText(tree, table.materParamFileKey, "");
  const std::string path = joinMaterialPath(source.directory, name);
  source.entries = inlineEntries(tree, table);
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
  source.entries = materialChildren(source.document, table.materialElement);
  if (source.entries.empty()) source.entries = inlineEntries(source.document, table);
}

void readCffSource(const XmlNode& tree, const MaterialVector& table, MaterialSource& source) {
  source.fortranCompiler = readParameterText(tree, table.fortranCompilerPdeKey, "");
  const std::string name = readParameterText(tree, table.cffParamFileKey, "");
  source.materialFile = joinMaterialPath(source.directory, name);
  source.document = translateCffFile(source.materialFile);
  source.entries = materialChildren(source.document, table.materialElement);
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

MaterialSource readMaterialSource(const XmlNode& inputTree, const std::string& inputFile,
                                  const MaterialVector& table) {
  MaterialSource source;
  source.directory = materialDirectoryOf(inputFile);
  if (suffixOf(inputFile) == "pde")
    readCffSource(inputTree, table, source);
  else
    readXmlSource(inputTree, table, source);
  return source;
}

}  // namespace gridmoor
