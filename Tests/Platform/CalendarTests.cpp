#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "Calendar.h"

namespace trovi::platform {
namespace {

class Calendar : public testing::Test {
 protected:
  void SetUp() override {
    if (const char* zone = getenv("TZ")) before_ = zone;
  }
  void TearDown() override {
    before_ ? setenv("TZ", before_->c_str(), 1) : unsetenv("TZ");
    tzset();
  }

 private:
  std::optional<std::string> before_;
};

TEST_F(Calendar, FindsTheFirstInstantOfTheMonthWhereMidnightIsMissingOrDoubled) {
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
}

}  // namespace
}  // namespace trovi::platform
