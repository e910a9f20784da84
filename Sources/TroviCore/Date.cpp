#include "TroviCore/Date.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace trovi {
namespace {

using namespace std::chrono;

constexpr sys_seconds earliest = sys_days(year(0) / January / 1);
constexpr sys_seconds latest = sys_days(year(9999) / December / 31) + 23h + 59min + 59s;

sys_seconds wholeSeconds(Date date) {
  const double seconds = secondsSince1970(date);
  if (std::isnan(seconds)) return {};
  const double kept =
      std::clamp(std::floor(seconds), static_cast<double>(earliest.time_since_epoch().count()),
                 static_cast<double>(latest.time_since_epoch().count()));
  return sys_seconds(std::chrono::seconds(static_cast<std::int64_t>(kept)));
}

/// Writes `value` into `text` at `at`, as `width` decimal digits with leading zeros.
void put(std::string& text, std::size_t at, std::size_t width, unsigned value) {
  for (std::size_t i = at + width; i-- > at; value /= 10) {
    text[i] = static_cast<char>('0' + value % 10);
  }
}

}  // namespace

std::string toISO8601(Date date) {
  const sys_seconds whole = wholeSeconds(date);
  const auto midnight = floor<days>(whole);
  const year_month_day day(midnight);
  const hh_mm_ss time(whole - midnight);
  std::string text = "0000-00-00T00:00:00Z";
  put(text, 0, 4, static_cast<unsigned>(static_cast<int>(day.year())));
  put(text, 5, 2, static_cast<unsigned>(day.month()));
  put(text, 8, 2, static_cast<unsigned>(day.day()));
  put(text, 11, 2, static_cast<unsigned>(time.hours().count()));
  put(text, 14, 2, static_cast<unsigned>(time.minutes().count()));
  put(text, 17, 2, static_cast<unsigned>(time.seconds().count()));
  return text;
}

}  // namespace trovi
