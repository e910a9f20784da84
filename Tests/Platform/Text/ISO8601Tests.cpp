#include <gtest/gtest.h>

#include <cmath>

#include "ISO8601.h"

namespace trovi::platform {
namespace {

Instant at(double seconds) { return Instant(std::chrono::duration<double>(seconds)); }

TEST(ISO8601, WritesEveryDoubleAsAValidDate) {
  const std::pair<double, const char*> cases[] = {
      {1750255402.999, "2025-06-18T14:03:22Z"}, {-0.5, "1969-12-31T23:59:59Z"},
      {951782400, "2000-02-29T00:00:00Z"},      {-62167219200.5, "0000-01-01T00:00:00Z"},
      {253402300799.9, "9999-12-31T23:59:59Z"}, {INFINITY, "9999-12-31T23:59:59Z"},
      {-1e300, "0000-01-01T00:00:00Z"},         {std::nan(""), "1970-01-01T00:00:00Z"}};
  for (const auto& [seconds, text] : cases) EXPECT_EQ(internetDateTime(at(seconds)), text);
}

TEST(ISO8601, ReadsItsOwnFormAndThatOfOthers) {
  for (const char* text : {"2025-06-18T14:03:22.25Z", "2025-06-18T14:03:22.2500+00:00",
                           "2025-06-18T11:03:22.25-03:00", "2025-06-19T03:48:22.25+13:45"}) {
    EXPECT_EQ(instantFrom(text), at(1750255402.25)) << text;
  }
  for (const char* text :
       {"", "2025-06-18T14:03:22.Z", "2025-06-18T14:03:22-0300", "2025-06-18T14:03:22+24:00",
        "2025-06-18T14:03:22+00:60", "2025-06-18T14:03:22", "2025-06-18t14:03:22Z",
        "2025-06-18T14:03:22ZZ", "2025-02-29T00:00:00Z", "2025-06-18T24:00:00Z",
        "2025-06-18T14:60:00Z", "2025-06-18T14:03:60Z", "2025-06-18T14:03:2 Z"}) {
    EXPECT_FALSE(instantFrom(text)) << text;
  }
}

}  // namespace
}  // namespace trovi::platform
