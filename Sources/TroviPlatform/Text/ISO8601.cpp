#include "ISO8601.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace trovi::platform {
namespace {

using namespace std::chrono;

constexpr sys_seconds earliest = sys_days(year(0) / January / 1);
constexpr sys_seconds latest = sys_days(year(9999) / December / 31) + 23h + 59min + 59s;

sys_seconds wholeSeconds(Instant instant) {
  const double seconds = instant.time_since_epoch().count();
  if (std::isnan(seconds)) return {};
  const double kept =
      std::clamp(std::floor(seconds), static_cast<double>(earliest.time_since_epoch().count()),
                 static_cast<double>(latest.time_since_epoch().count()));
  return sys_seconds(std::chrono::seconds(static_cast<std::int64_t>(kept)));
}

/// `text` at `at` as `width` decimal digits, right-aligned.
void put(std::string& text, std::size_t at, std::size_t width, unsigned value) {
  for (std::size_t i = at + width; i-- > at; value /= 10) {
    text[i] = static_cast<char>('0' + value % 10);
  }
}

}  // namespace

std::string internetDateTime(Instant instant) {
  const sys_seconds whole = wholeSeconds(instant);
  const auto midnight = floor<days>(whole);
  const year_month_day date(midnight);
  const hh_mm_ss time(whole - midnight);
  std::string text = "0000-00-00T00:00:00Z";
  put(text, 0, 4, static_cast<unsigned>(static_cast<int>(date.year())));
  put(text, 5, 2, static_cast<unsigned>(date.month()));
  put(text, 8, 2, static_cast<unsigned>(date.day()));
  put(text, 11, 2, static_cast<unsigned>(time.hours().count()));
  put(text, 14, 2, static_cast<unsigned>(time.minutes().count()));
  put(text, 17, 2, static_cast<unsigned>(time.seconds().count()));
  return text;
}

std::optional<Instant> instantFrom(std::string_view text) {
  constexpr std::string_view form = "0000-00-00T00:00:00Z";
  const auto fits = [](char given, char wanted) {
    return wanted == '0' ? given >= '0' && given <= '9' : given == wanted;
  };
  if (!std::equal(text.begin(), text.end(), form.begin(), form.end(), fits)) return {};
  const auto field = [&](std::size_t at, std::size_t width) {
    int value = 0;
    std::from_chars(text.data() + at, text.data() + at + width, value);
    return value;
  };
  const year_month_day date(year(field(0, 4)), month(static_cast<unsigned>(field(5, 2))),
                            day(static_cast<unsigned>(field(8, 2))));
  const int hour = field(11, 2);
  const int minute = field(14, 2);
  const int second = field(17, 2);
  if (!date.ok() || hour > 23 || minute > 59 || second > 59) return {};
  return sys_days(date) + hours(hour) + minutes(minute) + std::chrono::seconds(second);
}

}  // namespace trovi::platform
