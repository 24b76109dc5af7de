#include "common/Fatal.h"

#include <cstdio>
#include <cstdlib>

namespace gridmoor {

void fatalWithStatus(const std::string& message, int status) {
  std::fputs(message.c_str(), stderr);
  if (message.empty() || message.back() != '\n') std::fputc('\n', stderr);
  std::fflush(stderr);
  std::exit(status);
}

void fatal(const std::string& message) { fatalWithStatus(message, 1); }

}  // namespace gridmoor
