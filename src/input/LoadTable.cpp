#include "input/LoadTable.h"

#include <cmath>
#include <sstream>

#include "common/Fatal.h"

namespace gridmoor {

namespace {

// The first pair of neighbouring rows with t0 <= time <= t1, or -1.
long pairHolding(const Table& table, double time) {
  for (std::size_t r = 0; r + 1 < table.size(); ++r) {
    if (table[r][0] <= time && time <= table[r + 1][0]) return static_cast<long>(r);
  }
  return -1;
}

double fractionWithin(const Table& table, std::size_t r, double time) {
  const double t0 = table[r][0];
  return (time - t0) / (table[r + 1][0] - t0);
}

}  // namespace

void checkLoadTable(const Table& table, std::size_t width, const std::string& key) {
  for (std::size_t r = 0; r < table.size(); ++r) {
    if (table[r].size() != width + 1) {
      std::ostringstream message;
      message << key << ": row " << r + 1 << " holds " << table[r].size()
              << " numbers, but a row is a time and " << width << " values";
      fatal(message.str());
    }
    for (const double value : table[r])
      if (!std::isfinite(value)) {
        std::ostringstream message;
        message << key << ": row " << r + 1 << " holds " << value << ", which is not a finite number";
        fatal(message.str());
      }
    if (r > 0 && !(table[r][0] > table[r - 1][0])) {
      std::ostringstream message;
      message << key << ": the times of the rows must increase, but row " << r + 1
              << " has time " << table[r][0] << " after " << table[r - 1][0];
      fatal(message.str());
    }
  }
}

bool interpolateLoadTable(const Table& table, double time, std::span<double> result,
                          const std::string& key) {
  if (table.empty() || time < table.front()[0] || time > table.back()[0]) {
    fatal(key + " do not cover the time steps!");
  }
  const long r = pairHolding(table, time);
  if (r < 0) return false;
  const std::vector<double>& row0 = table[static_cast<std::size_t>(r)];
  const std::vector<double>& row1 = table[static_cast<std::size_t>(r) + 1];
  const double f = fractionWithin(table, static_cast<std::size_t>(r), time);
  for (std::size_t c = 0; c < result.size(); ++c) {
    result[c] = row0[c + 1] + (row1[c + 1] - row0[c + 1]) * f;
  }
  return true;
}

double interpolateClampedTable(const Table& table, double time) {
  if (table.empty()) return 0.0;
  if (time < table.front()[0]) return table.front()[1];
  if (time > table.back()[0]) return table.back()[1];
  const long r = pairHolding(table, time);
  if (r < 0) return 0.0;
  const std::vector<double>& row0 = table[static_cast<std::size_t>(r)];
  const std::vector<double>& row1 = table[static_cast<std::size_t>(r) + 1];
  return row0[1] + (row1[1] - row0[1]) * fractionWithin(table, static_cast<std::size_t>(r), time);
}

}  // namespace gridmoor
