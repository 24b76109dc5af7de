// State common to every constitutive law of a colour (name, colour, inner Newton settings,
// shared run tables, geometry) and the refusal that an unanswered operation ends the run with.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/Types.h"

namespace gridmoor {

class Geometry;
class KeywordsElasticity;

// Voxel indices: x runs over the local slab and is the slowest index.
using VoxelIndex = std::uint64_t;

// Declaration helpers for the families (one member per formulation word). A refusing
// member ends the run naming itself with "()"; parameters are unnamed there because the
// default never reads them.
#define GRIDMOOR_PURE_MEMBER(Word, Ret, Name, Params, Qual) virtual Ret Name##Word Params Qual = 0;
#define GRIDMOOR_REFUSING_MEMBER(Word, Ret, Name, Params, Qual) \
  virtual Ret Name##Word Params Qual { refuseOperation(#Name #Word "()"); }
#define GRIDMOOR_NOOP_MEMBER(Word, Ret, Name, Params, Qual) \
  virtual Ret Name##Word Params Qual {}

// Load-case indices of the run for which laws keep state: a law with history holds one state
// per entry. A null table counts as the single load case of the plain solve.
using LoadCaseTable = std::vector<int>;

// Per-voxel stores of all laws of a run, shared so that a saved state can be written in one
// piece. The laws with history fill it; its layout is theirs.
class InternalVariablesStore {
 public:
  virtual ~InternalVariablesStore() = default;
};

// Ends the run with "The function " + name + " has not be implemented for all used
// materials!": an operation of the law interface that the law of some colour doesn't answer.
[[noreturn]] void refuseOperation(const std::string& name);

class DiscretizedMaterial {
 public:
  std::string name;
  std::uint32_t colour = 0;
  std::int32_t maxIterNRMaterialLaw = 1;
  double convergenceCriterionNRMaterialLaw = 1.0;
  std::shared_ptr<const LoadCaseTable> loadCases;
  std::shared_ptr<InternalVariablesStore> internalVariablesStore;
  Geometry* geometry = nullptr;

  DiscretizedMaterial() = default;
  // Copies the inner Newton settings of the keywords.
  DiscretizedMaterial(std::string name, Colour colour, const KeywordsElasticity& keywords,
                      std::shared_ptr<const LoadCaseTable> loadCases,
                      std::shared_ptr<InternalVariablesStore> internalVariablesStore,
                      Geometry* geometry);
  DiscretizedMaterial(const DiscretizedMaterial&) = delete;
  DiscretizedMaterial& operator=(const DiscretizedMaterial&) = delete;
  virtual ~DiscretizedMaterial() = default;

  // Called once after all laws exist; laws that precompute per orientation override it.
  virtual void prepareVoxelData() {}
  virtual bool isHybrid() const { return false; }

  const std::string& getName() const { return name; }
  Colour getColour() const { return static_cast<Colour>(colour); }
  std::size_t numberOfLoadCases() const { return loadCases ? loadCases->size() : 1; }
};

}  // namespace gridmoor
