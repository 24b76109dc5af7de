#include "operators/FrequencyVectors.h"

#include <cmath>
#include <numbers>
#include <string>

#include "common/Fatal.h"
#include "operators/FFTImage.h"
#include "operators/FrequencyFilter.h"

namespace gridmoor {

void computeAxisFactors(GreenOperatorType value, long double x, long double h, double& re,
                        double& im) {
  switch (value) {
    case GreenOperatorType::Basic:
    case GreenOperatorType::Q1FE:
    case GreenOperatorType::Helmholtz:
      re = 0.0;
      im = 0.0;
      return;
    case GreenOperatorType::ForwardDifference:
    case GreenOperatorType::StaggeredGrid:
      re = static_cast<double>((std::cos(x) - 1.0L) / h);
      im = static_cast<double>(std::sin(x) / h);
      return;
    case GreenOperatorType::CentralDifference:
      re = 0.0;
      im = static_cast<double>(std::sin(x) / h);
      return;
    case GreenOperatorType::BackwardDifference:
      re = static_cast<double>((1.0L - std::cos(x)) / h);
      im = static_cast<double>(std::sin(x) / h);
      return;
    case GreenOperatorType::TrilinearFE:
    case GreenOperatorType::Hex8RHourGlassControl:
      re = static_cast<double>(std::cos(x / 2.0L));
      im = static_cast<double>(std::sin(x / 2.0L) / h);
      return;
    default:
      break;
  }
  fatal("Unknown finite difference " + std::to_string(static_cast<int>(value)));
}

AxisTables::AxisTables(GreenOperatorType value, FilterType filter,
                       const std::array<std::uint64_t, 3>& extents,
                       const std::array<double, 3>& voxelLength)
    : extents_(extents), voxelLength_(voxelLength) {
  for (std::size_t d = 0; d < 3; ++d) {
    const std::uint64_t n = extents[d];
    const auto signedN = static_cast<std::int64_t>(n);
    const long double h = voxelLength[d];
    factors_[d].resize(3 * n);
    for (int alias = -1; alias <= 1; ++alias)
      for (std::uint64_t m = 0; m < n; ++m) {
        const std::int64_t index = static_cast<std::int64_t>(m) + alias * signedN;
        const long double f = static_cast<long double>(signedFrequency(index, signedN));
        const long double xi =
            2.0L * f * std::numbers::pi_v<long double> / static_cast<long double>(n) / h;
        const long double x = xi * h;
        AxisFactor& a = factors_[d][static_cast<std::size_t>(alias + 1) * n + m];
        a.xi = static_cast<double>(xi);
        computeAxisFactors(value, x, h, a.re, a.im);
        a.halfSin = static_cast<double>(std::sin(x / 2.0L));
        a.cosX = static_cast<double>(std::cos(x));
        a.sinX = static_cast<double>(std::sin(x));
        a.filter = getFilterValue(filter, static_cast<std::int64_t>(m), signedN, alias);
      }
  }
}

}  // namespace gridmoor
