// Conversion of one stored element between the numeric kinds of field files and images:
// integer targets clamp instead of overflowing, so a stray value never becomes undefined.
#pragma once

#include <algorithm>
#include <limits>
#include <type_traits>
#include <utility>

namespace gridmoor {

// Floating targets take the value as it is. Integer targets take floating values by
// truncation, clamped into their range (NaN gives 0), and integers clamped into their range.
template <class Out, class In>
Out convertElement(In value) {
  if constexpr (std::is_floating_point_v<Out> || std::is_same_v<In, Out>) {
    return static_cast<Out>(value);
  } else if constexpr (std::is_floating_point_v<In>) {
    if (!(value == value)) return 0;
    const double lo = static_cast<double>(std::numeric_limits<Out>::lowest());
    const double hi = static_cast<double>(std::numeric_limits<Out>::max());
    return static_cast<Out>(std::clamp(static_cast<double>(value), lo, hi));
  } else {
    if (std::cmp_less(value, std::numeric_limits<Out>::lowest()))
      return std::numeric_limits<Out>::lowest();
    if (std::cmp_greater(value, std::numeric_limits<Out>::max()))
      return std::numeric_limits<Out>::max();
    return static_cast<Out>(value);
  }
}

}  // namespace gridmoor
