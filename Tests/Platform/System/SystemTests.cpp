// What calls the operating system: folders, lines, a queue for threads, the calendar.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <future>
#include <stdexcept>

#include "Calendar.h"
#include "Directories.h"
#include "LineReader.h"
#include "Output.h"
#include "SerialQueue.h"
#include "TemporaryFolder.h"

namespace trovi::platform {
namespace {

#ifdef __APPLE__
constexpr const char* below = "/Library/Application Support";
constexpr mode_t mode = 0777;
#else
constexpr const char* below = "/.local/share";
constexpr mode_t mode = 0700;
#endif

TEST(Directories, FollowAnAbsoluteHomeAndNoOtherAndAreTheUsersAlone) {
  const tests::TemporaryFolder folder;
  setenv("HOME", folder.path().c_str(), 1);
  const auto found = applicationSupportDirectory();
  EXPECT_EQ(found, folder.path().string() + below);
  const mode_t mask = umask(mode == 0700 ? 0777 : 0);  // it must not matter
  createDirectories(found / "Trovi");
  umask(mask);
  for (auto made = found / "Trovi"; made != folder.path(); made = made.parent_path()) {
    struct stat status {};
    ASSERT_EQ(stat(made.c_str(), &status), 0) << made;
    EXPECT_EQ(status.st_mode & 0777U, mode) << made;
  }
  setenv("HOME", "someone", 1);
  const auto ofTheUserDatabase = applicationSupportDirectory();
  EXPECT_TRUE(ofTheUserDatabase.is_absolute());
  EXPECT_EQ(ofTheUserDatabase.string().find("someone"), std::string::npos);
  unsetenv("HOME");
  EXPECT_EQ(applicationSupportDirectory(), ofTheUserDatabase);
}

std::array<int, 2> ends{};  // of a pipe
volatile std::sig_atomic_t alarms = 0;
volatile std::sig_atomic_t received = 0;

/// The first alarms only interrupt a blocking call. The fifth writes a line; those after the tenth
/// make room in the pipe.
void onAlarm(int /*signal*/) {
  const int before = errno;
  static std::array<char, 4096> bytes;
  const int now = alarms + 1;
  alarms = now;
  if (now == 5 && ::write(ends[1], "a\n", 2) != 2) std::abort();
  const auto count = now > 10 ? ::read(ends[0], bytes.data(), bytes.size()) : 0;
  if (count > 0) received = received + static_cast<int>(count);
  errno = before;
}

TEST(Lines, GoThroughThoughSignalsInterruptTheirWait) {
  struct sigaction action {};
  action.sa_handler = onAlarm;  // without SA_RESTART
  sigaction(SIGALRM, &action, nullptr);
  ASSERT_EQ(pipe(ends.data()), 0);
  const itimerval everyMillisecond{{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &everyMillisecond, nullptr);
  EXPECT_EQ(LineReader(ends[0]).next(), "a");
  fcntl(ends[0], F_SETFL, O_NONBLOCK);
  write(ends[1], std::string(100'000, 'x'));  // more than a pipe holds
  const itimerval never{};
  setitimer(ITIMER_REAL, &never, nullptr);
  for (int i = 0; i < 25; ++i) onAlarm(0);  // reads the rest
  EXPECT_EQ(received, 100'000);
}

using Threads = std::vector<std::future<void>>;  // the destructor waits for each

TEST(SerialQueue, RunsOnePieceOfWorkAtATimeInOrderOfArrival) {
  SerialQueue queue("test");
  EXPECT_THROW(queue.sync([] { throw std::runtime_error("no"); }), std::runtime_error);
  std::vector<std::uint32_t> served;  // guarded only by the queue
  std::vector<std::uint32_t> arrived;
  {
    Threads threads;
    queue.sync([&] {
      for (std::uint32_t i = 1; i <= 8; ++i) {
        arrived.push_back(i);
        threads.push_back(
            std::async(std::launch::async, [&, i] { queue.sync([&] { served.push_back(i); }); }));
        while (queue.length() <= i) std::this_thread::yield();
      }
    });
  }
  EXPECT_EQ(served, arrived);
  const auto serve = [&] {
    for (int i = 0; i < 5000; ++i) queue.sync([&] { served.push_back(0); });
  };
  {
    Threads threads;
    for (int i = 0; i < 4; ++i) threads.push_back(std::async(std::launch::async, serve));
  }
  EXPECT_EQ(served.size(), 8 + 4 * 5000U);
  EXPECT_EQ(queue.length(), 0U);
}

TEST(SerialQueueDeathTest, SaysSoInsteadOfWaitingForItselfForEver) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  SerialQueue queue("test.queue");
  EXPECT_DEATH(queue.sync([&] { queue.sync([] {}); }),
               "test.queue: sync called from its own queue");
}

TEST(Calendar, FindsTheFirstInstantOfTheMonthWhereMidnightIsMissingOrDoubled) {
  const struct {
    const char* zone;
    std::time_t now, first;
  } cases[] = {
      {"AAA3BBB2,J274/0,J60/0", 1697328000, 1696129200},     // no midnight on October 1st
      {"AAA5BBB4,M3.2.0/2,J305/1", 1605000000, 1604203200},  // two on November 1st
      {"AAA5BBB4,M3.2.0/2,J305/1", 1604206800, 1604203200},
      {"<+14>-14", 1700000000, 1698746400},
      {"<-0330>3:30", 1700000000, 1698809400},
      {"UTC0", 1709251199, 1706745600},  // the last second of a leap February
      {"UTC0", 1709251200, 1709251200},  // the first of March itself
  };
  for (const auto& [zone, now, first] : cases) {
    setenv("TZ", zone, 1);
    EXPECT_EQ(startOfMonth(now), first) << zone << " " << now;
  }
  unsetenv("TZ");
}

}  // namespace
}  // namespace trovi::platform
