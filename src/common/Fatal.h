// The single failure route for bad data, files and parameters:
// one line on the error stream, then exit status 1 at the place of detection.
#pragma once

#include <string>

namespace gridmoor {

[[noreturn]] void fatal(const std::string& message);

// Like fatal, but with the exit status given (the XML reader ends with 255).
[[noreturn]] void fatalWithStatus(const std::string& message, int status);

}  // namespace gridmoor
