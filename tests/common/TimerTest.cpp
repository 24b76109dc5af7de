#include "common/Timer.h"

#include <gtest/gtest.h>

#include <thread>

using gridmoor::Timer;

TEST(Timer, AccumulatesOverRestartsAndIgnoresRepeatedStop) {
  Timer t;
  EXPECT_EQ(t.seconds(), 0.0);
  t.start();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  t.stop();
  const double first = t.seconds();
  EXPECT_GE(first, 0.019);
  t.stop();
  EXPECT_EQ(t.seconds(), first);
  t.start();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_GT(t.seconds(), first + 0.019);  // running part counts
  t.stop();
  EXPECT_GE(t.seconds(), first + 0.019);
}
