#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

#include "SerialQueue.h"
#include "Thread.h"

namespace trovi::platform {
namespace {

TEST(SerialQueue, RunsOnePieceOfWorkAtATime) {
  SerialQueue queue("test");
  constexpr int threads = 4;
  constexpr int rounds = 5000;
  int unguarded = 0;
  {
    std::vector<tests::Thread> workers;
    for (int i = 0; i < threads; ++i) {
      workers.emplace_back([&] {
        for (int round = 0; round < rounds; ++round) queue.sync([&] { ++unguarded; });
      });
    }
  }
  EXPECT_EQ(unguarded, threads * rounds);
}

TEST(SerialQueue, ServesInOrderOfArrival) {
  SerialQueue queue("test");
  std::vector<std::uint32_t> served;
  std::vector<std::uint32_t> arrived;
  {
    std::vector<tests::Thread> workers;
    queue.sync([&] {
      for (std::uint32_t i = 1; i <= 8; ++i) {
        arrived.push_back(i);
        workers.emplace_back([&, i] { queue.sync([&] { served.push_back(i); }); });
        while (queue.length() <= i) std::this_thread::yield();
      }
    });
  }
  EXPECT_EQ(served, arrived);
  EXPECT_EQ(queue.length(), 0U);
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
