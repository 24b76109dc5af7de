// The report a finished run prints for people (timing table) and for the host application
// (the <LogMap> block), and the memory and disk figures it quotes.
#pragma once

#include <cstdint>
#include <string>

#include "driver/RunTimers.h"

namespace gridmoor {

struct RunReportFigures {
  int threads = 0;
  double fftSeconds = 0.0;             // run-wide time spent in transforms
  std::uint64_t estimateKB = 0;        // the report's estimate formula
  std::uint64_t allocatedKB = 0;       // counted bytes of all fields, shifted by 10
  std::uint64_t realKB = 0;            // resident set of the process
  int iterations = 0;                  // the run's total iteration count
};

void printRunReport(const RunTimers& timers, const RunReportFigures& figures);

// Resident memory of this process in KB (VmRSS); 0 when it cannot be read.
std::uint64_t realMemoryKB();

// Free and total bytes of the file system holding path. A network path given as "\\\\..." is
// never queried and gives 0; a failed query prints "Disk space checking not available!".
std::uint64_t freeDiskSpace(const std::string& path);
std::uint64_t diskSize(const std::string& path);

}  // namespace gridmoor
