#include "operators/IntegrationRule.h"

#include <cmath>

namespace gridmoor {

IntegrationRule IntegrationRule::centre() {
  IntegrationRule rule;
  rule.count = 1;
  rule.weights[0] = 1.0;
  rule.points[0] = {0.5, 0.5, 0.5};
  return rule;
}

IntegrationRule IntegrationRule::gauss2x2x2() {
  const double offset = 0.5 / std::sqrt(3.0);
  const std::array<double, 2> at = {0.5 - offset, 0.5 + offset};
  IntegrationRule rule;
  rule.count = 8;
  std::size_t n = 0;
  for (double p0 : at)
    for (double p1 : at)
      for (double p2 : at) {
        rule.weights[n] = 0.125;
        rule.points[n] = {p0, p1, p2};
        ++n;
      }
  return rule;
}

IntegrationRule IntegrationRule::mainRuleFor(GreenOperatorType discretisation) {
  return discretisation == GreenOperatorType::Q1FE ? gauss2x2x2() : centre();
}

IntegrationRule IntegrationRule::hourglassRuleFor(GreenOperatorType discretisation) {
  return discretisation == GreenOperatorType::Hex8RHourGlassControl ? gauss2x2x2() : empty();
}

}  // namespace gridmoor
