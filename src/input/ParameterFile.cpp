#include "input/ParameterFile.h"

#include <filesystem>
#include <fstream>
#include <vector>

#include "common/Fatal.h"
#include "input/Parameter.h"

namespace gridmoor {

namespace {

// Extension of the file name part, without the dot; empty when there is none.
std::string extensionOf(const std::string& path) {
  const std::size_t nameStart = path.find_last_of("/\\");
  const std::size_t dot = path.rfind('.');
  if (dot == std::string::npos || (nameStart != std::string::npos && dot < nameStart)) return "";
  return path.substr(dot + 1);
}

}  // namespace

XmlNode readPdeTree(std::istream& in) {
  XmlNode root = XmlNode::createRoot("gridmoor");
  std::string line;
  bool firstLine = true;
  while (std::getline(in, line)) {
    // An editor's byte-order mark would otherwise become part of the first key.
    if (firstLine && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);
    firstLine = false;
    if (line.find('#') != std::string::npos) continue;
    // '\r' counts as a blank so that files with Windows line ends read the same.
    const std::vector<std::string> tokens = splitTokens(line, " \t\r");
    if (tokens.size() != 2) continue;
    XmlNode node = root.getChildByPath(tokens[0], true, ':');
    if (!node) continue;
    // A key given twice takes the later value: the new text goes first, where it is read.
    node.addText(tokens[1], 0);
  }
  return root;
}

XmlNode readParameterTree(const std::string& path) {
  const std::string extension = extensionOf(path);
  if (extension == "xml") return XmlNode::openFile(path);
  if (extension == "pde") {
    // A device or pipe in place of the file may never end (and a pipe blocks the opening).
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) fatal(path + " can not be opened");
    std::ifstream in(path);
    if (!in) fatal(path + " can not be opened");
    return readPdeTree(in);
  }
  // No settings at all: every required key then reports itself when read.
  return XmlNode::createRoot("gridmoor");
}

}  // namespace gridmoor
