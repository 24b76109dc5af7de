#include "materials/CffFile.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "common/Fatal.h"
#include "materials/MaterialFactoryTypeNames.h"

namespace gridmoor {

namespace {

struct TypeWord {
  std::string_view word;
  MechanicalType type;
};

// A longer word must come before every word it contains ("IsotropicTE" before "Isotropic"),
// since the first hit of a substring search decides.
constexpr TypeWord typeWords[] = {
    {"OrthotropicHeat", MechanicalType::OrthotropicHeat},
    {"OrthotropicTE", MechanicalType::LEORTHTE},
    {"Orthotropic", MechanicalType::LEORTH},
    {"AnisotropicTE", MechanicalType::LEANISOTE},
    {"Anisotropic", MechanicalType::LEANISO},
    {"TransverseIsotropicHeat", MechanicalType::LHTI},
    {"TransverseIsotropicTE", MechanicalType::LETITE},
    {"TransverseIsotropic", MechanicalType::LETI},
    {"IsotropicTE", MechanicalType::LETE},
    {"Isotropic", MechanicalType::LE},
    {"CompressibleFluidTE", MechanicalType::COMPRESSIBLE_FLUID_TE},
    {"CompressibleFluid", MechanicalType::COMPRESSIBLE_FLUID},
    {"UMATTE", MechanicalType::UMATTE},
    {"UMAT", MechanicalType::UMAT},
    {"NeoHookeTE", MechanicalType::NHTE},
    {"NeoHooke", MechanicalType::NH},
    {"MooneyRivlinTE", MechanicalType::MRTE},
    {"MooneyRivlin", MechanicalType::MR},
};

enum class Pairing { None, Parameters, Internal };

struct ParameterWord {
  std::string_view word;
  std::string_view target;  // below "MaterialParameters", ':' between levels
  Pairing pairing = Pairing::None;
};

// Same rule as for the type words: "YoungInDirection" and "YoungX" are caught before
// "Young", "ShearXY" before "Shear", "AlphaX" before "Alpha".
constexpr ParameterWord parameterWords[] = {
    {"StiffnessMatrix", ":C"},
    {"YoungX", ":E1"},
    {"YoungY", ":E2"},
    {"YoungZ", ":E3"},
    {"ShearXY", ":G12"},
    {"ShearXZ", ":G13"},
    {"ShearYZ", ":G23"},
    {"PoissonsXY", ":nu12"},
    {"PoissonsXZ", ":nu13"},
    {"PoissonsYZ", ":nu23"},
    {"AlphaX", ":alpha1"},
    {"AlphaY", ":alpha2"},
    {"AlphaZ", ":alpha3"},
    {"YoungInDirection", ":E1"},
    {"YoungOrthogonal", ":E2"},
    {"PoissonsOrthogonal", ":nu23"},
    {"PoissonsParallel", ":nu12"},
    {"Shear", ":G12"},
    {"AlphaInDirection", ":alpha1"},
    {"AlphaOrthogonal", ":alpha2"},
    {"Alpha", ":alpha"},
    {"Young", ":E"},
    {"Poisson", ":nu"},
    {"BulkModulus", ":K"},
    {"UMATFile", ":UMat"},
    {"NameMaterialLaw", ":MaterialLaw"},
    {"IsoMaterialLaw", ":IsotropicMaterialLaw"},
    {"Precision", ":Precision"},
    {"ParametersNames", ":Parameters", Pairing::Parameters},
    {"InternalNames", ":InternalVariables", Pairing::Internal},
    {"ConductivityInDirection", ":kappa1"},
    {"ConductivityOrthogonal", ":kappa2"},
    {"ConductivityX", ":kappa1"},
    {"ConductivityY", ":kappa2"},
    {"ConductivityZ", ":kappa3"},
};

// Splits at every single blank, so that two blanks in a row make an empty token and the line
// no longer has two tokens.
std::vector<std::string> splitAt(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  std::size_t begin = 0;
  while (true) {
    const std::size_t end = text.find(separator, begin);
    pieces.push_back(text.substr(begin, end == std::string::npos ? end : end - begin));
    if (end == std::string::npos) return pieces;
    begin = end + 1;
  }
}

// One entry as it is being collected: every path keeps the value of its last line.
struct Entry {
  std::string number;
  std::vector<std::pair<std::string, std::string>> values;  // path below the entry, value

  void set(const std::string& path, const std::string& value) {
    for (auto& [p, v] : values)
      if (p == path) {
        v = value;
        return;
      }
    values.emplace_back(path, value);
  }
};

class Translator {
 public:
  explicit Translator(std::istream& in) {
    std::string line;
    bool first = true;
    while (std::getline(in, line)) {
      // An editor's byte-order mark and Windows line ends are not part of any token.
      if (first && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);
      first = false;
      if (!line.empty() && line.back() == '\r') line.pop_back();
      lines_.push_back(std::move(line));
    }
  }

  XmlNode translate() {
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      const std::vector<std::string> tokens = splitAt(lines_[i], ' ');
      if (tokens.size() != 2) continue;
      i += readLine(tokens[0], tokens[1], i);
    }
    return emit();
  }

 private:
  // Handles one line of two tokens; returns the number of following lines it consumed.
  std::size_t readLine(const std::string& key, const std::string& value, std::size_t index) {
    if (const std::size_t at = key.find("Type"); at != std::string::npos) {
      entry(key.substr(at + 4)).set("Type", typeNameOf(value));
      return 0;
    }
    for (const ParameterWord& p : parameterWords) {
      const std::size_t at = key.find(p.word);
      if (at == std::string::npos) continue;
      Entry& e = entry(key.substr(at + p.word.size()));
      const std::string path = "MaterialParameters" + std::string(p.target);
      if (p.pairing == Pairing::None) {
        e.set(path, value);
        return 0;
      }
      e.set(path, pairedValue(p.pairing, value, index));
      return 1;
    }
    if (key.find("Materials") != std::string::npos) return 0;
    fatal("unknown parameter in cff-File: " + key);
  }

  static std::string typeNameOf(const std::string& value) {
    for (const TypeWord& t : typeWords)
      if (value.find(t.word) != std::string::npos)
        return mechanicalTypeNames()[static_cast<std::size_t>(t.type)];
    fatal("unknown material Type " + value + " in cff-File");
  }

  // "ParametersNames a,b" followed by "ParametersValues 1,2" give "a,1;b,2".
  std::string pairedValue(Pairing pairing, const std::string& namesText, std::size_t index) {
    const bool parameters = pairing == Pairing::Parameters;
    const std::string names = parameters ? "ParametersNames" : "InternalNames";
    const std::string values = parameters ? "ParametersValues" : "InternalValues";
    if (index + 1 >= lines_.size() || lines_[index + 1].find(values) == std::string::npos)
      fatal("Error in cff-File: The keyword " + names + " is not followed by the keyword " +
            values);
    const std::vector<std::string> next = splitAt(lines_[index + 1], ' ');
    const std::vector<std::string> nameList = splitAt(namesText, ',');
    const std::vector<std::string> valueList = splitAt(next.size() > 1 ? next[1] : "", ',');
    if (nameList.size() != valueList.size())
      fatal("Error in cff-File: The number of " + names + " and " + values +
            " do not coincide.");
    std::string joined;
    for (std::size_t k = 0; k < nameList.size(); ++k) {
      if (k > 0) joined += ';';
      joined += nameList[k] + ',' + valueList[k];
    }
    return joined;
  }

  // Entries are keyed by the text of the number, so "Young03" and "Young3" make two entries
  // that both claim colour 3; the factory reports that as a duplicate.
  Entry& entry(const std::string& number) {
    auto [it, added] = indexOf_.try_emplace(number, entries_.size());
    if (added) entries_.push_back(Entry{number, {}});
    return entries_[it->second];
  }

  XmlNode emit() const {
    XmlNode root = XmlNode::createRoot("MaterialData");
    for (const Entry& e : entries_) {
      XmlNode material = root.addChild("Material");
      material.addChild("MaterNumber").addText(e.number);
      material.addChild("MaterName").addText("Material " + e.number);
      for (const auto& [path, value] : e.values)
        material.getChildByPath(path, true, ':').addText(value);
    }
    return root;
  }

  std::vector<std::string> lines_;
  std::vector<Entry> entries_;
  std::map<std::string, std::size_t> indexOf_;
};

}  // namespace

XmlNode translateCff(std::istream& in) { return Translator(in).translate(); }

XmlNode translateCffFile(const std::string& path) {
  // A directory opens as a stream on this platform but reads nothing; a device or pipe in
  // place of the file may never end (and a pipe blocks the opening).
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) fatal(path + " can not be opened");
  std::ifstream in(path);
  if (!in) fatal(path + " can not be opened");
  return translateCff(in);
}

}  // namespace gridmoor
