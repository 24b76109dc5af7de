// Small logging object with its own optional file: formatted info and debug lines and the
// numeric form of the progress line for iteration points ("###PROGRESS### %d %le %le").
#pragma once

#include <memory>
#include <string>

namespace gridmoor {

class LoggerPriv;

class Logger {
 public:
  Logger();
  virtual ~Logger();
  Logger(const Logger&) = delete;
  Logger& operator=(const Logger&) = delete;

  // The file name; with a rank set and a non-empty name it becomes "<name>_p<rank>.log".
  void setLogFile(const std::string& name, int rank = -1);
  std::string logFileName() const;
  void setSilent(bool silent);
  void setWriteToFile(bool write);
  void setDebugPrefix(bool prefix);

  void info(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void debug(const char* format, ...) __attribute__((format(printf, 2, 3)));
  // One iteration point for the host's graph; percent must lie in 0..100.
  void progress(int percent, double x, double y);

 private:
  void emit(const char* text);
  std::unique_ptr<LoggerPriv> priv_;
};

}  // namespace gridmoor
