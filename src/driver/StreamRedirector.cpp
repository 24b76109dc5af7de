#include "driver/StreamRedirector.h"

#include <csignal>
#include <cstring>
#include <pthread.h>
#include <unistd.h>

namespace gridmoor {

namespace {

void writeAll(int fd, const char* data, size_t length) {
  while (length > 0) {
    const ssize_t n = ::write(fd, data, length);
    if (n < 0) {
      if (errno == EINTR) continue;
      return;
    }
    data += n;
    length -= static_cast<size_t>(n);
  }
}

}  // namespace

StreamRedirector::~StreamRedirector() { stop(); }

bool StreamRedirector::open(const std::string& path) {
  if (file_) std::fclose(file_);
  file_ = std::fopen(path.c_str(), "w+");
  return file_ != nullptr;
}

void StreamRedirector::start() {
  if (active_) return;
  savedFd_ = ::dup(fd_);
  if (savedFd_ < 0) {
    std::fprintf(stderr,
                 "Could not duplicate the file descriptor with number %d, hence it will not be "
                 "redirected\n",
                 fd_);
    return;
  }
  int ends[2];
  if (::pipe(ends) != 0) {
    std::fprintf(stderr, "Could not create new pipes to redirect the file descriptor with number %d\n",
                 fd_);
    ::close(savedFd_);
    savedFd_ = -1;
    return;
  }
  readEnd_ = ends[0];
  writeEnd_ = ends[1];
  ::dup2(writeEnd_, fd_);
  active_ = true;
  thread_ = std::thread(&StreamRedirector::pump, this);
}

// Stop restores the descriptor first and then closes the pipe's last write end, so the pump
// reads everything written before the stop and then sees the end of the pipe. This drains
// the pipe completely instead of waiting a fixed time for it and losing a late tail.
void StreamRedirector::stop() {
  drain();
  if (file_) {
    std::fclose(file_);
    file_ = nullptr;
  }
}

// The exchange makes a drain that a signal interrupts, or that interrupts one, happen once.
void StreamRedirector::drain() {
  if (!active_.exchange(false)) return;
  ::dup2(savedFd_, fd_);
  ::close(writeEnd_);
  writeEnd_ = -1;
  if (thread_.joinable()) thread_.join();
  ::close(readEnd_);
  readEnd_ = -1;
  ::close(savedFd_);
  savedFd_ = -1;
}

void StreamRedirector::writeRaw(const char* data, size_t length) {
  const int target = active_ ? savedFd_ : fd_;
  constexpr size_t chunk = 4096;
  for (size_t done = 0; done < length; done += chunk)
    writeAll(target, data + done, std::min(chunk, length - done));
}

void StreamRedirector::pump() {
  // Signals belong to the main thread: a handler that calls exit() here would join itself.
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);

  char buffer[8191];
  for (;;) {
    const ssize_t n = ::read(readEnd_, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    writeAll(savedFd_, buffer, static_cast<size_t>(n));
    if (file_) {
      std::fwrite(buffer, 1, static_cast<size_t>(n), file_);
      std::fflush(file_);
    }
  }
}

}  // namespace gridmoor
