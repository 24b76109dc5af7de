// Captures one standard stream (stdout or stderr) into a file while the text still
// reaches the console: the descriptor is pointed at a pipe that a pump thread drains.
#pragma once

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>

namespace gridmoor {

class StreamRedirector {
 public:
  explicit StreamRedirector(int fd) : fd_(fd) {}
  ~StreamRedirector();
  StreamRedirector(const StreamRedirector&) = delete;
  StreamRedirector& operator=(const StreamRedirector&) = delete;

  // Opens the copy file with mode "w+" (a previous one is closed). Returns false when it
  // does not open; the stream is then still pumped to the console.
  bool open(const std::string& path);
  // Points the descriptor at the pipe and starts the pump. No effect when already active.
  void start();
  // Drains the pipe, restores the descriptor and closes the file.
  void stop();
  // stop() without closing the file, with calls that a signal handler may make: the pump has
  // flushed every chunk into the file already.
  void drain();
  // Writes to the console around the pipe: the text reaches the host, not the file.
  void writeRaw(const char* data, size_t length);
  void writeRaw(const std::string& text) { writeRaw(text.data(), text.size()); }

  bool active() const { return active_; }

 private:
  void pump();

  int fd_;
  int savedFd_ = -1;
  int readEnd_ = -1;
  int writeEnd_ = -1;
  std::atomic<bool> active_{false};
  std::thread thread_;
  std::FILE* file_ = nullptr;
};

}  // namespace gridmoor
