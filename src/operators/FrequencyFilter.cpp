#include "operators/FrequencyFilter.h"

#include <cmath>
#include <numbers>

#include "common/Fatal.h"
#include "operators/FFTImage.h"

namespace gridmoor {

double getFilterValue(FilterType filter, std::int64_t m, std::int64_t n, int alias) {
  const long double pi = std::numbers::pi_v<long double>;
  const auto f = static_cast<long double>(signedFrequency(m, n));
  const auto extent = static_cast<long double>(n);
  switch (filter) {
    case FilterType::None:
      return 1.0;
    case FilterType::Periodize: {
      if (m == 0) return 1.0;
      const long double t = f * pi / extent;
      const long double sinc = std::sin(t) / t;
      return static_cast<double>(sinc * sinc);
    }
    case FilterType::NonConsistent: {
      const long double t = (f + static_cast<long double>(alias) * extent) * pi / (2.0L * extent);
      const long double c = std::cos(t);
      return static_cast<double>(c * c);
    }
  }
  fatal("The filter is not known.");
}

}  // namespace gridmoor
