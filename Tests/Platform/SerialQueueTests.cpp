#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

#include "SerialQueue.h"

namespace trovi::platform {
namespace {

TEST(SerialQueue, RunsOnePieceOfWorkAtATime) {
  SerialQueue queue("test");
  constexpr int threads = 4;
  constexpr int rounds = 5000;
  int unguarded = 0;
  std::vector<std::thread> workers;
  for (int i = 0; i < threads; ++i) {
    workers.emplace_back([&] {
      for (int round = 0; round < rounds; ++round) queue.sync([&] { ++unguarded; });
    });
  }
  for (std::thread& worker : workers) worker.join();
  EXPECT_EQ(unguarded, threads * rounds);
}

TEST(SerialQueue, ReturnsWhatTheWorkReturnsAndGoesOnAfterAnException) {
  SerialQueue queue("test");
  EXPECT_THROW(queue.sync([]() -> int { throw std::runtime_error("no"); }), std::runtime_error);
  EXPECT_EQ(queue.sync([] { return 7; }), 7);
}

TEST(SerialQueueDeathTest, SaysSoInsteadOfWaitingForItselfForEver) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  SerialQueue queue("test.queue");
  EXPECT_DEATH(queue.sync([&] { queue.sync([] {}); }),
               "test.queue: sync called from its own queue");
}

}  // namespace
}  // namespace trovi::platform
