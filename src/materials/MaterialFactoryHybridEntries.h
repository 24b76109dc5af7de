// The material entries made for hybrid colours that the material file leaves without a law,
// and the mixing-rule words that the hybrid laws and those entries carry.
#pragma once

#include <string>

#include "common/Types.h"
#include "input/XmlNode.h"

namespace gridmoor {

enum class MaterialKind { Mechanical, Heat };

enum class ElasticMixingRule {
  boundsPreserving = 0,
  harmonicMean = 1,
  arithmeticMean = 2,
  avgHarmonicArithmeticMean = 3,
  maximum = 4,
  rotatedLaminate = 5
};

enum class HeatMixingRule {
  boundsPreserving = 0,
  harmonicMean = 1,
  arithmeticMean = 2,
  avgHarmonicArithmeticMean = 3,
  rotatedLaminate = 4
};

// The rule of a word; any other word ends the run with "Could not convert the mixing formula "
// + word + " to a known mixing rule".
ElasticMixingRule elasticMixingRuleOf(const std::string& word);
HeatMixingRule heatMixingRuleOf(const std::string& word);
// Checks the word against the rules of the kind (ends the run the same way).
void checkMixingFormula(MaterialKind kind, const std::string& word);

// The text of an automatic entry: type "MHE" (mechanical) or "MHH" (heat), name "AutoHybrid",
// and the mixing formula word as its only parameter.
std::string autoHybridEntryText(MaterialKind kind, Colour colour, const std::string& mixingWord);
// That text read back by the XML reader; the element "Material" of the entry.
XmlNode autoHybridEntry(MaterialKind kind, Colour colour, const std::string& mixingWord);

}  // namespace gridmoor
