// The parameter store that the run builds: the mechanical store under the host
// application's flat key spelling, plus the licence file, output switches and method list.
#pragma once

#include <string>

#include "input/KeywordsElasticity.h"

namespace gridmoor {

class KeyWordsLattora : public KeywordsElasticity {
 public:
  // Flat key texts and parsed defaults only, for a caller that reads later.
  KeyWordsLattora();
  // Flat key texts, then every setting read from the tree.
  explicit KeyWordsLattora(const XmlNode& tree);

  using KeywordsElasticity::printParameters;
  void printParameters(std::ostream& out) override;

  bool writeVtkOutput() const override { return writeSolutionVtk(); }
  bool writeDasOutput() const override { return writeDasFile(); }
  // Bounds are wanted by the output switch and computed for either method word.
  bool computeVoigtReussBounds() const override {
    return voigtReussBounds() && (useVoigt() || useReuss());
  }

  // Flags of the method list; each word is compared in full.
  bool useSolver() const { return hasMethod(cel); }
  bool useVoigt() const { return hasMethod(voigt); }
  bool useReuss() const { return hasMethod(reuss); }

  // The method words.
  std::string cel = "CEL";
  std::string voigt = "Voigt";
  std::string reuss = "Reuss";

  Parameter<std::string> licenseFileName{parameters_, Lattora, "input/LicenseFileName", required};
  Parameter<bool> writeSolutionVtk{parameters_, Lattora, "output/WriteSolutionVtk", required};
  Parameter<bool> writeDasFile{parameters_, Lattora, "output/WriteDasFile", required};
  Parameter<WordList> methodList{parameters_, Lattora, "input/MethodList", required};

 private:
  void useFlatSchema();
  bool hasMethod(const std::string& word) const;
};

}  // namespace gridmoor
