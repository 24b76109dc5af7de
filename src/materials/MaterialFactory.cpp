#include "materials/MaterialFactory.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "common/Fatal.h"
#include "input/KeywordsElasticity.h"
#include "input/Parameter.h"
#include "materials/AnisotropicLinearElasticMaterial.h"
#include "materials/IsotropicLinearElasticMaterial.h"
#include "materials/MaterialFactoryTypeNames.h"
#include "materials/OrthotropicLinearElasticMaterial.h"
#include "materials/TransversalIsotropicLinearElasticMaterial.h"
#include "voxel/Geometry.h"

namespace gridmoor {

namespace {

// Without a geometry the colours in use are unknown; the first sixteen are served.
constexpr int coloursWithoutGeometry = 16;

[[noreturn]] void notImplemented() { fatal("Material Type not implemented"); }

// Every number among a law's parameters must be finite: the C library reads "nan", "inf" and
// an overflowing 1e400 without complaint, and such a law makes the solve iterate to its limit
// and write fields of NaN. Lists are checked token by token; words are not numbers and pass.
void requireFiniteParameters(const XmlNode& parameters, Colour colour, const std::string& name) {
  for (int i = 0; parameters && i < parameters.childCount(); ++i) {
    const std::string key = parameters.child(i).name();
    const std::string text = readParameterText(parameters, key, std::string());
    for (const std::string& token : splitTokens(text, " \t\r\n,;")) {
      char* stop = nullptr;
      const double value = std::strtod(token.c_str(), &stop);
      if (*stop == '\0' && !std::isfinite(value))
        fatal("Material " + std::to_string(int{colour}) + " (" + name + "): the parameter " +
              key + " is not a finite number: \"" + token + "\"");
    }
  }
}

// What every law constructor of the table takes.
struct LawArguments {
  const std::string& name;
  Colour colour;
  const XmlNode& parameters;
  Geometry* geometry;
  const KeywordsElasticity& keywords;
  const std::shared_ptr<const LoadCaseTable>& loadCases;
  const std::shared_ptr<InternalVariablesStore>& internalVariablesStore;
};

template <class Law>
DiscretizedElasticMaterial* newLaw(const LawArguments& a) {
  return new Law(a.name, a.colour, a.parameters, a.geometry, a.keywords, a.loadCases,
                 a.internalVariablesStore);
}

}  // namespace

MaterialFactory::MaterialFactory(MaterialKind kind, MaterialVector& vector, Geometry* geometry,
                                 const KeywordsElasticity& keywords,
                                 std::shared_ptr<const LoadCaseTable> loadCases,
                                 std::shared_ptr<InternalVariablesStore> internalVariablesStore)
    : kind_(kind),
      vector_(vector),
      geometry_(geometry),
      keywords_(keywords),
      loadCases_(std::move(loadCases)),
      internalVariablesStore_(std::move(internalVariablesStore)) {
  vector_.typeNames = kind == MaterialKind::Mechanical ? mechanicalTypeNames() : heatTypeNames();
}

void MaterialFactory::build(const XmlNode& inputTree, const std::string& inputFile) {
  const MaterialSource source = readMaterialSource(inputTree, inputFile, vector_);
  bool force = false;
  parseValue(readParameterText(inputTree, forceAutomaticHybridsKey, "0"), force);
  build(source, force);
}

void MaterialFactory::build(const MaterialSource& source, bool forceAutomaticHybrids) {
  directory_ = source.directory;
  vector_.materialFilePath = source.materialFile;
  vector_.fortranCompiler = source.fortranCompiler;
  vector_.fortranCompilerOptions = source.fortranCompilerOptions;

  passEntries(source.entries, servedColours());
  if (!geometry_ || geometry_->hybridColorList.empty()) return;

  const std::vector<Colour>& hybrids = geometry_->hybridColorList;
  if (!forceAutomaticHybrids) passEntries(source.entries, hybrids);
  std::vector<Colour> open;
  for (Colour colour : hybrids)
    if (!vector_.materialOf(colour)) open.push_back(colour);
  if (open.empty()) return;
  // A wrong word gets its own message before any hybrid law is attempted.
  const std::string word = keywords_.hybridMixingFormula();
  checkMixingFormula(kind_, word);
  for (Colour colour : open) buildEntry(autoHybridEntry(kind_, colour, word), colour);
}

std::vector<Colour> MaterialFactory::servedColours() const {
  std::vector<Colour> colours;
  if (!geometry_) {
    for (int c = 0; c < coloursWithoutGeometry; ++c) colours.push_back(static_cast<Colour>(c));
    return colours;
  }
  // Hybrid colours get their own pass; serving them here too would make every file entry for
  // a hybrid colour a duplicate of itself.
  for (Colour c : geometry_->getUsedColors())
    if (!geometry_->isHybrid(c)) colours.push_back(c);
  return colours;
}

void MaterialFactory::passEntries(const std::vector<XmlNode>& entries,
                                  const std::vector<Colour>& colours) {
  for (const XmlNode& entry : entries) {
    int number = 0;
    parseValue(readParameterText(entry, vector_.materNumberElement, "0"), number);
    // Entries for colours that are not served are passed over without a word.
    const auto served = std::find_if(colours.begin(), colours.end(),
                                     [number](Colour c) { return int{c} == number; });
    if (served != colours.end()) buildEntry(entry, *served);
  }
}

int MaterialFactory::typeIndexOf(const std::vector<std::string>& typeNames,
                                 const std::string& name, MaterialKind kind) {
  const auto found = std::find(typeNames.begin(), typeNames.end(), name);
  if (found != typeNames.end()) return static_cast<int>(found - typeNames.begin());
  return kind == MaterialKind::Mechanical ? 0 : static_cast<int>(typeNames.size()) - 1;
}

void MaterialFactory::buildEntry(const XmlNode& entry, Colour colour) {
  const std::string type = readParameterText(entry, vector_.typeElement, "");
  const std::string name = readParameterText(entry, vector_.materNameElement, "");
  const XmlNode parameters = entry.childByName(vector_.materialParametersElement);
  const int index = typeIndexOf(vector_.typeNames, type, kind_);

  auto holder = std::make_unique<Material>();
  if (kind_ == MaterialKind::Mechanical) {
    if (index == static_cast<int>(MechanicalType::FLUID) && colour != keywords_.fluidColor()) {
      std::printf("Warning: IncompressibleFluid used for color %d\n", int{colour});
      std::printf("         Fluid color should be equal to %d\n", keywords_.fluidColor());
      std::fflush(stdout);
    }
    requireFiniteParameters(parameters, colour, name);
    holder->elastic = makeElasticLaw(index, name, parameters, colour);
  } else {
    holder->heat = makeHeatLaw(index, name, parameters, colour);
  }
  if (vector_.materialOf(colour))
    fatal("Specifying the same material number multiple times in the material file is not "
          "supported");
  vector_.addMaterial(colour, std::move(holder));
}

DiscretizedElasticMaterial* MaterialFactory::makeElasticLaw(int typeIndex, const std::string& name,
                                                            const XmlNode& parameters,
                                                            Colour colour) const {
  const LawArguments a{name, colour, parameters, geometry_, keywords_, loadCases_,
                      internalVariablesStore_};
  using enum MechanicalType;
  switch (static_cast<MechanicalType>(typeIndex)) {
    case LE:
    case LEH:
      return newLaw<IsotropicLinearElasticMaterial>(a);
    case LETE:
      return newLaw<IsotropicLinearElasticMaterialWithThermalExpansion>(a);
    case LETI:
    case LEHTI:
      return newLaw<TransversalIsotropicLinearElasticMaterial>(a);
    case LETITE:
      return newLaw<TransversalIsotropicLinearElasticMaterialWithThermalExpansion>(a);
    case LEORTH:
      return newLaw<OrthotropicLinearElasticMaterial>(a);
    case LEORTHTE:
      return newLaw<OrthotropicLinearElasticMaterialWithThermalExpansion>(a);
    case LEANISO:
      return newLaw<AnisotropicLinearElasticMaterial>(a);
    case LEANISOTE:
      return newLaw<AnisotropicLinearElasticMaterialWithThermalExpansion>(a);
    default:
      // Fluids, limit, viscoelastic, damage, hyperelastic, UMAT and hybrid laws come later.
      notImplemented();
  }
}

// No heat law exists in this build yet: every heat type ends the run.
DiscretizedHeatMaterial* MaterialFactory::makeHeatLaw(int, const std::string&, const XmlNode&,
                                                      Colour) const {
  notImplemented();
}

std::unique_ptr<MaterialElasticVector> makeMaterialElasticVector(
    const XmlNode& inputTree, const std::string& inputFile, Geometry* geometry,
    const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
    std::shared_ptr<InternalVariablesStore> internalVariablesStore) {
  auto vector = std::make_unique<MaterialElasticVector>();
  MaterialFactory(MaterialKind::Mechanical, *vector, geometry, keywords, std::move(loadCases),
                  std::move(internalVariablesStore))
      .build(inputTree, inputFile);
  return vector;
}

std::unique_ptr<MaterialVector> makeHeatMaterialVector(
    const XmlNode& inputTree, const std::string& inputFile, Geometry* geometry,
    const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
    std::shared_ptr<InternalVariablesStore> internalVariablesStore) {
  auto vector = std::make_unique<MaterialVector>();
  MaterialFactory(MaterialKind::Heat, *vector, geometry, keywords, std::move(loadCases),
                  std::move(internalVariablesStore))
      .build(inputTree, inputFile);
  return vector;
}

}  // namespace gridmoor
