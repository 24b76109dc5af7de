// Piecewise linear tables of a load over time, rows "time,v1,v2,...": the check of their
// shape and the two scans, the strict one of the mechanical loads and the clamped one of the
// temperature change.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "input/Parameter.h"

namespace gridmoor {

// Ends the run, naming the key, when a row does not hold one time and `width` values or when
// the times do not strictly increase (an interpolation would divide by a zero interval).
void checkLoadTable(const Table& table, std::size_t width, const std::string& key);

// Writes the interpolated values at `time` into result (one per value column). A time outside
// the table's first and last row ends the run with the key and " do not cover the time
// steps!". Returns false without writing when no pair of neighbouring rows holds the time,
// which happens for a table of one row at exactly that time.
bool interpolateLoadTable(const Table& table, double time, std::span<double> result,
                          const std::string& key);

// The single value column at `time`, held at the first row's value before it and at the last
// row's after it, so that the table need not cover the run. 0 for an empty table, and for a
// time that no pair of neighbouring rows holds.
double interpolateClampedTable(const Table& table, double time);

}  // namespace gridmoor
