#include <gtest/gtest.h>

#include "MaterialInterfaceTestLaws.h"
#include "input/KeywordsElasticity.h"

namespace gridmoor {
namespace {

using testing_laws::TestLaw;

TEST(MaterialInterfaceDeathTest, UnansweredFamiliesEndTheRunNamingTheOperation) {
  TestLaw law;
  KeywordsElasticity keywords;
  EXPECT_EXIT(law.initInternalVariablesStrain(keywords), ::testing::ExitedWithCode(1),
              "^The function initInternalVariablesStrain\\(\\) has not be implemented for all "
              "used materials!\n$");
}

}  // namespace
}  // namespace gridmoor
