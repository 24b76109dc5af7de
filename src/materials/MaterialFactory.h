// Building the material table of a run: one law per listed colour from the entries of the
// material source, with automatic entries for the hybrid colours that the file leaves open.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "common/Types.h"
#include "input/XmlNode.h"
#include "materials/DiscretizedMaterial.h"
#include "materials/MaterialFactoryHybridEntries.h"
#include "materials/MaterialFileParser.h"
#include "materials/MaterialVector.h"

namespace gridmoor {

class Geometry;
class KeywordsElasticity;

// The mechanical table of a run. inputFile is the parameter file: its suffix chooses the
// source and its directory is where material files are looked for. geometry may be null
// (the colours 0 to 15 are then served).
std::unique_ptr<MaterialElasticVector> makeMaterialElasticVector(
    const XmlNode& inputTree, const std::string& inputFile, Geometry* geometry,
    const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
    std::shared_ptr<InternalVariablesStore> internalVariablesStore);

// The heat table: the same reading with the heat type names.
std::unique_ptr<MaterialVector> makeHeatMaterialVector(
    const XmlNode& inputTree, const std::string& inputFile, Geometry* geometry,
    const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
    std::shared_ptr<InternalVariablesStore> internalVariablesStore);

class MaterialFactory {
 public:
  // The key of the switch that gives every hybrid colour an automatic entry, even where the
  // material file has one of its own. It is a material-table setting read here, next to the
  // table, rather than a solver setting of the keyword store; off by default, so that a file
  // can tune the law of a particular hybrid colour.
  static constexpr const char* forceAutomaticHybridsKey =
      "input/Mesh/ForceAutomaticHybridMaterials";

  MaterialFactory(MaterialKind kind, MaterialVector& vector, Geometry* geometry,
                  const KeywordsElasticity& keywords, std::shared_ptr<const LoadCaseTable> loadCases,
                  std::shared_ptr<InternalVariablesStore> internalVariablesStore);

  // Reads the source of the parameter file and builds the whole table.
  void build(const XmlNode& inputTree, const std::string& inputFile);
  // Builds the table from entries already read: the served colours first, then the hybrid
  // colours (by the file's entries unless forced, then automatically).
  void build(const MaterialSource& source, bool forceAutomaticHybrids);
  // The factory for one entry and colour; a second law for a colour ends the run.
  void buildEntry(const XmlNode& entry, Colour colour);

  // Colours whose entries are built in the first pass: the geometry's used colours without
  // the hybrid ones, or 0 to 15 without a geometry.
  std::vector<Colour> servedColours() const;

  // Place of a type name in a list by exact comparison. A name not found gives 0 (the
  // isotropic law) in the mechanical list and the last place (the mixed hybrid law) in the
  // heat list.
  static int typeIndexOf(const std::vector<std::string>& typeNames, const std::string& name,
                         MaterialKind kind);

 private:
  void passEntries(const std::vector<XmlNode>& entries, const std::vector<Colour>& colours);
  DiscretizedElasticMaterial* makeElasticLaw(int typeIndex, const std::string& name,
                                             const XmlNode& parameters, Colour colour) const;
  DiscretizedHeatMaterial* makeHeatLaw(int typeIndex, const std::string& name,
                                       const XmlNode& parameters, Colour colour) const;

  MaterialKind kind_;
  MaterialVector& vector_;
  Geometry* geometry_;
  const KeywordsElasticity& keywords_;
  std::shared_ptr<const LoadCaseTable> loadCases_;
  std::shared_ptr<InternalVariablesStore> internalVariablesStore_;
  // Where the user-routine laws will look for their sources, next to the parameter file.
  std::string directory_;
};

}  // namespace gridmoor
