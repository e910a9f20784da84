// What calls the operating system: folders and the calendar.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <tuple>

#include "System/Calendar.h"
#include "System/Directories.h"
#include "System/FolderLock.h"
#include "TemporaryFolder.h"

namespace trovi::platform {
namespace {

using namespace std::chrono_literals;

#ifdef __APPLE__
constexpr const char* below = "/Library/Application Support";
constexpr mode_t mode = 0777;
constexpr mode_t mask = 0;
#else
constexpr const char* below = "/.local/share";
constexpr mode_t mode = 0700;
constexpr mode_t mask = 0777;  // it must not matter
#endif

TEST(Directories, FollowAnAbsoluteHomeAndArePrivate) {
  const tests::TemporaryFolder folder;
  setenv("HOME", folder.path().c_str(), 1);
  setenv("XDG_DATA_HOME", "/elsewhere", 1);  // only some programs would see it
  const auto found = applicationSupportDirectory();
  EXPECT_EQ(found, folder.path().string() + below);
  using std::filesystem::perms;
  create_directory(found.parent_path());
  permissions(found.parent_path(), perms(0755));
  const mode_t before = umask(mask);
  createDirectories(found / "Trovi");
  umask(before);
  EXPECT_EQ(status(found.parent_path()).permissions(), perms(0755)) << "was there before";
  EXPECT_EQ(status(found).permissions(), perms(mode));
  EXPECT_EQ(status(found / "Trovi").permissions(), perms(mode));
  setenv("HOME", "someone", 1);
  EXPECT_TRUE(applicationSupportDirectory().is_absolute());
  unsetenv("XDG_DATA_HOME");
}

TEST(FolderLock, IsWaitedForButNotForeverAndNotWhereThereIsNone) {
  const tests::TemporaryFolder folder;
  const int other = ::open(folder.path().c_str(), O_RDONLY);
  const auto take = [&] { return ::flock(other, LOCK_EX | LOCK_NB) == 0; };
  {
    const FolderLock lock(folder.path(), 0ms);
    EXPECT_FALSE(take());
    const FolderLock second(folder.path(), 5ms);  // goes on without
  }
  EXPECT_TRUE(take());
  ::close(other);
  const FolderLock none(folder.path() / "missing", 1h);
}

TEST(Calendar, FindsTheFirstInstantOfTheMonthWhereMidnightIsMissingOrDoubled) {
  const std::tuple<const char*, std::time_t, std::time_t> cases[] = {
      {"AAA3BBB2,J274/0,J60/0", 1697328000, 1696129200},     // no midnight on October 1st
      {"AAA5BBB4,M3.2.0/2,J305/1", 1604291400, 1604203200},  // two on November 1st, of 25 hours
      {"<-0330>3:30", 1700000000, 1698809400},
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
