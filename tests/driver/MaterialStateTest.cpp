// The materials' own stored state: written at the end of a run only with SaveState, read at
// the start only with LoadState, under the names given in the output directory.
#include <gtest/gtest.h>

#include "../formats/FieldFileTestSupport.h"
#include "../materials/MaterialInterfaceTestLaws.h"
#include "driver/RunSequence.h"
#include "input/KeywordsElasticity.h"

namespace gridmoor {
namespace {

// A law with one store of history values.
class LawWithHistory : public testing_laws::TestLaw {
 public:
  Vector<Real> history{3, "history"};
  bool hasInternalVariablesStrain() const override { return true; }
  void getStateVariables(std::vector<Vector<Real>*>& stores,
                         std::vector<std::string>& names) override {
    stores = {&history};
    names = {"history"};
  }
};

using MaterialState = testing::ScratchDirectory;

TEST_F(MaterialState, IsSavedAtTheEndAndLoadedAtTheStartOnlyWhenAsked) {
  MaterialElasticVector table;
  auto* law = new LawWithHistory;
  law->colour = 1;
  table.addMaterial(1, std::make_unique<Material>(law, nullptr));
  const auto geometry = testing_laws::geometryOf({1, 1});
  KeywordsElasticity kw;
  kw.saveStateFilename.set("end");
  kw.loadStateFilename.set("end");
  const std::string directory = path("");
  for (std::size_t i = 0; i < 3; ++i) law->history[i] = 0.5 + static_cast<double>(i);

  saveMaterialState(kw, table, *geometry, directory);
  EXPECT_FALSE(std::filesystem::exists(path("end_1_history")));
  kw.saveState.set(true);
  saveMaterialState(kw, table, *geometry, directory);
  ASSERT_TRUE(std::filesystem::exists(path("end_1_history")));

  law->history = 0.0;
  loadMaterialState(kw, table, *geometry, directory);
  EXPECT_EQ(law->history[2], 0.0);
  kw.loadState.set(true);
  loadMaterialState(kw, table, *geometry, directory);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(law->history[i], 0.5 + static_cast<double>(i));
}

}  // namespace
}  // namespace gridmoor
