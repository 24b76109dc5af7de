// Accumulating wall-clock stopwatch. steady_clock, because on Linux clock()
// counts the CPU time of all threads and would overstate parallel sections.
#pragma once

#include <chrono>

namespace gridmoor {

class Timer {
 public:
  void start() {
    if (running_) return;
    running_ = true;
    begin_ = Clock::now();
  }
  // Stopping a stopped timer does nothing; a restarted timer accumulates.
  void stop() {
    if (!running_) return;
    accumulated_ += Clock::now() - begin_;
    running_ = false;
  }
  // Seconds so far, including the running part of a running timer.
  double seconds() const {
    auto total = accumulated_;
    if (running_) total += Clock::now() - begin_;
    return std::chrono::duration<double>(total).count();
  }
  bool running() const { return running_; }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::duration accumulated_{};
  Clock::time_point begin_{};
  bool running_ = false;
};

}  // namespace gridmoor
