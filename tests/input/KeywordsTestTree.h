// Helpers of the parameter-store tests: building small parameter trees in code and
// splitting captured error output into lines.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "input/XmlNode.h"

namespace gridmoor::testing {

// Sets the text of the node at a "/" path below root, creating the nodes on the way. The
// text goes first, where it is read, so a later call overrides an earlier one.
inline void setKey(XmlNode& root, const std::string& path, const std::string& text) {
  root.getChildByPath(path, true).addText(text, 0);
}

inline std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// A tree that holds every required setting of the path schema, so that nothing is reported.
inline XmlNode completePathTree() {
  XmlNode root = XmlNode::createRoot("Settings");
  for (const char* key :
       {"input/Mesh/ResolutionX", "input/Mesh/ResolutionY", "input/Mesh/ResolutionZ",
        "input/Mesh/InputLdtFile", "input/Mesh/BoxelUnits", "input/MaterialData/EModulUnit",
        "input/Solution/Noisy", "input/Solution/IterativeMethod", "input/Solution/GreenOperator",
        "input/Solution/maxIter", "input/Solution/maxRunTime",
        "input/Solution/ConvergenceCriterion", "input/Solution/EstimateMemory",
        "Postprocessing/WriteEffectiveMatrix", "Postprocessing/EffectiveMatrixFilename",
        "Postprocessing/SaveRestartFile", "Postprocessing/StressComponents",
        "Postprocessing/StrainComponents", "Postprocessing/DisplacementComponents",
        "Postprocessing/EquivalencePrinciple", "Postprocessing/ComputeLoadCaseList"}) {
    setKey(root, key, "1");
  }
  return root;
}

}  // namespace gridmoor::testing
