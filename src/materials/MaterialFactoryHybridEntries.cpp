#include "materials/MaterialFactoryHybridEntries.h"

#include <array>
#include <string_view>
#include <utility>

#include "common/Fatal.h"

namespace gridmoor {

namespace {

constexpr std::array<std::pair<std::string_view, ElasticMixingRule>, 6> elasticWords{{
    {"boundsPreserving", ElasticMixingRule::boundsPreserving},
    {"harmonicMean", ElasticMixingRule::harmonicMean},
    {"arithmeticMean", ElasticMixingRule::arithmeticMean},
    {"avgHarmonicArithmeticMean", ElasticMixingRule::avgHarmonicArithmeticMean},
    {"maximum", ElasticMixingRule::maximum},
    {"rotatedLaminate", ElasticMixingRule::rotatedLaminate},
}};

// The heat laws have no "maximum" rule.
constexpr std::array<std::pair<std::string_view, HeatMixingRule>, 5> heatWords{{
    {"boundsPreserving", HeatMixingRule::boundsPreserving},
    {"harmonicMean", HeatMixingRule::harmonicMean},
    {"arithmeticMean", HeatMixingRule::arithmeticMean},
    {"avgHarmonicArithmeticMean", HeatMixingRule::avgHarmonicArithmeticMean},
    {"rotatedLaminate", HeatMixingRule::rotatedLaminate},
}};

template <class Rule, std::size_t N>
Rule ruleOf(const std::array<std::pair<std::string_view, Rule>, N>& words,
            const std::string& word) {
  for (const auto& [w, rule] : words)
    if (w == word) return rule;
  fatal("Could not convert the mixing formula " + word + " to a known mixing rule");
}

}  // namespace

ElasticMixingRule elasticMixingRuleOf(const std::string& word) { return ruleOf(elasticWords, word); }

HeatMixingRule heatMixingRuleOf(const std::string& word) { return ruleOf(heatWords, word); }

void checkMixingFormula(MaterialKind kind, const std::string& word) {
  if (kind == MaterialKind::Mechanical)
    elasticMixingRuleOf(word);
  else
    heatMixingRuleOf(word);
}

std::string autoHybridEntryText(MaterialKind kind, Colour colour, const std::string& mixingWord) {
  const char* type = kind == MaterialKind::Mechanical ? "MHE" : "MHH";
  return "<Material><MaterNumber>" + std::to_string(colour) +
         "</MaterNumber><MaterName>AutoHybrid</MaterName><Type>" + type +
         "</Type><MaterialParameters><mixingFormula><value>" + mixingWord +
         "</value></mixingFormula></MaterialParameters></Material>";
}

XmlNode autoHybridEntry(MaterialKind kind, Colour colour, const std::string& mixingWord) {
  const std::string text = autoHybridEntryText(kind, colour, mixingWord);
  XmlResults results;
  XmlNode entry = XmlNode::parseString(text, "", &results);
  // Only a word with markup characters in it can break the entry.
  if (results.error != eXMLErrorNone || !entry)
    fatal("The automatic hybrid material entry " + text + " could not be read: " +
          XmlNode::getError(results.error));
  return entry;
}

}  // namespace gridmoor
