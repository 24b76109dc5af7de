#include "driver/Logger.h"

#include <cassert>
#include <cstdarg>
#include <cstdio>

namespace gridmoor {

// Lines are written at once on the calling thread: the run has no queues, so the logger
// needs no worker of its own.
class LoggerPriv {
 public:
  ~LoggerPriv() {
    std::fputs("LoggerPriv::~LoggerPriv(): Warning: destructor called - this is unexpected!\n",
               stdout);
    if (file) std::fclose(file);
  }
  std::string fileName;
  std::FILE* file = nullptr;
  int rank = -1;
  bool silent = false;
  bool writeToFile = false;
  bool debugPrefix = true;
};

namespace {
constexpr int bufferSize = 2000;
}

Logger::Logger() : priv_(std::make_unique<LoggerPriv>()) {}
Logger::~Logger() = default;

void Logger::setLogFile(const std::string& name, int rank) {
  priv_->rank = rank;
  priv_->fileName = name;
  if (rank >= 0 && !name.empty()) {
    const size_t dot = name.find_last_of('.');
    const size_t slash = name.find_last_of("/\\");
    const bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    char buffer[bufferSize];
    std::snprintf(buffer, sizeof buffer, "%s_p%d.log",
                  (hasExtension ? name.substr(0, dot) : name).c_str(), rank);
    priv_->fileName = buffer;
  }
  if (priv_->file) {
    std::fclose(priv_->file);
    priv_->file = nullptr;
  }
}

std::string Logger::logFileName() const { return priv_->fileName; }
void Logger::setSilent(bool silent) { priv_->silent = silent; }
void Logger::setWriteToFile(bool write) { priv_->writeToFile = write; }
void Logger::setDebugPrefix(bool prefix) { priv_->debugPrefix = prefix; }

void Logger::emit(const char* text) {
  if (!priv_->silent) {
    std::fputs(text, stdout);
    std::fflush(stdout);
  }
  if (priv_->writeToFile && !priv_->fileName.empty()) {
    if (!priv_->file) priv_->file = std::fopen(priv_->fileName.c_str(), "a");
    if (priv_->file) {
      std::fputs(text, priv_->file);
      std::fflush(priv_->file);
    }
  }
}

void Logger::info(const char* format, ...) {
  char buffer[bufferSize];
  va_list args;
  va_start(args, format);
  std::vsnprintf(buffer, sizeof buffer, format, args);
  va_end(args);
  emit(buffer);
}

void Logger::debug(const char* format, ...) {
  char buffer[bufferSize];
  const int prefix = priv_->debugPrefix ? std::snprintf(buffer, sizeof buffer, "[DEBUG] ") : 0;
  va_list args;
  va_start(args, format);
  std::vsnprintf(buffer + prefix, sizeof buffer - prefix, format, args);
  va_end(args);
  emit(buffer);
}

void Logger::progress(int percent, double x, double y) {
  assert(percent >= 0 && "percentage>=0");
  assert(percent <= 100 && "percentage<=100");
  char buffer[bufferSize];
  std::snprintf(buffer, sizeof buffer, "###PROGRESS### %d %le %le\n", percent, x, y);
  emit(buffer);
}

}  // namespace gridmoor
