#include "common/FileNames.h"

#include <array>

#include "common/Fatal.h"
#include "input/KeywordsElasticity.h"

namespace gridmoor {

namespace {

bool isAbsolutePath(const std::string& name) {
  return !name.empty() &&
         (name[0] == '/' || name[0] == '\\' || (name.size() > 1 && name[1] == ':'));
}

std::size_t extensionDot(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  const std::size_t elementStart = slash == std::string::npos ? 0 : slash + 1;
  const std::size_t dot = path.find_last_of('.');
  if (dot == std::string::npos || dot <= elementStart) return std::string::npos;
  return dot;
}

}  // namespace

std::string joinPath(const std::string& directory, const std::string& name) {
  if (directory.empty() || isAbsolutePath(name)) return name;
  const char last = directory.back();
  return (last == '/' || last == '\\') ? directory + name : directory + "/" + name;
}

std::string insertBeforeExtension(const std::string& path, const std::string& text) {
  const std::size_t dot = extensionDot(path);
  if (dot == std::string::npos) return path + text;
  std::string named = path;
  named.insert(dot, text);
  return named;
}

std::string extensionOf(const std::string& path) {
  const std::size_t dot = extensionDot(path);
  return dot == std::string::npos ? std::string() : path.substr(dot + 1);
}

std::string stepFileName(const KeywordsElasticity& keywords, const std::string& path, int step) {
  if (keywords.isSingleStep()) return path;
  std::string suffix(1, '_');
  suffix += std::to_string(step + 1);
  return insertBeforeExtension(path, suffix);
}

const std::string& loadCaseSuffix(int loadCase) {
  static const std::array<std::string, 7> suffixes = {"_XX", "_YY", "_ZZ", "_YZ",
                                                      "_XZ", "_XY", "_Thermal"};
  if (loadCase < 0 || loadCase >= static_cast<int>(suffixes.size()))
    fatal("Load case " + std::to_string(loadCase) + " does not exist");
  return suffixes[static_cast<std::size_t>(loadCase)];
}

std::string solutionFileName(const KeywordsElasticity& keywords, const std::string& directory) {
  std::string name = keywords.exportSolutionVtkFileName();
  if (name.empty()) name = "solution.vti";
  return joinPath(directory, name);
}

namespace {

std::string loadCaseFileName(const KeywordsElasticity& keywords, const std::string& directory,
                             int step, int loadCase, const std::string& extension) {
  std::string name = stepFileName(keywords, solutionFileName(keywords, directory), step);
  const std::size_t dot = extensionDot(name);
  if (dot != std::string::npos) name.erase(dot);
  return name + loadCaseSuffix(loadCase) + extension;
}

}  // namespace

std::string finishedFileName(const KeywordsElasticity& keywords, const std::string& directory,
                             int step, int loadCase) {
  return loadCaseFileName(keywords, directory, step, loadCase, ".finished");
}

std::string loadCaseResponseFileName(const KeywordsElasticity& keywords,
                                     const std::string& directory, int step, int loadCase) {
  return loadCaseFileName(keywords, directory, step, loadCase, ".response");
}

}  // namespace gridmoor
