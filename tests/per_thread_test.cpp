#include "platform/automation/per_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace rebate {
namespace {

std::atomic<int> living = 0;
std::atomic<int> sound_at_the_end = 0;

// Holds memory of its own, and looks at it when it goes.
struct Noted {
  Noted() { ++living; }
  ~Noted() {
    --living;
    if (name == "a text that is too long to stand in the object") ++sound_at_the_end;
  }

  std::string name = "a text that is too long to stand in the object";
};

TEST(PerThread, EachThreadHasItsOwnUntilItEnds) {
  constexpr int kThreads = 8;
  Noted& mine = OfThisThread<Noted>();
  std::atomic<int> others = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      Noted& own = OfThisThread<Noted>();
      if (&own != &mine && &own == &OfThisThread<Noted>()) ++others;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(others, kThreads);
  EXPECT_EQ(living, 1) << "this thread's own";
  EXPECT_EQ(sound_at_the_end, kThreads);
  EXPECT_EQ(&OfThisThread<Noted>(), &mine);
}

}  // namespace
}  // namespace rebate
