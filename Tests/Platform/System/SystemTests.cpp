// What calls the operating system: folders, a lock and the calendar.
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <tuple>

#include "System/Calendar.h"
#include "System/Directories.h"
#include "System/FolderLock.h"
#include "TemporaryFolder.h"

namespace trovi::platform {
namespace {

using namespace std::chrono_literals;

TEST(Directories, AreAbsoluteWhateverHomeIs) {
  setenv("HOME", "someone", 1);
  const passwd* const user = getpwuid(getuid());
  EXPECT_EQ(applicationSupportDirectory().parent_path().parent_path(), user ? user->pw_dir : "/");
}

TEST(FolderLock, IsWaitedForButNotForeverAndNotWhereThereIsNone) {
  const tests::TemporaryFolder folder;
  const FolderLock held(folder.path(), 0ms);
  const FolderLock second(folder.path(), 5ms);  // goes on without
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
