#include "ISO8601.h"

#include <algorithm>
#include <array>
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

/// Writes `value` into `text` at `at`, as `width` decimal digits with leading zeros.
void put(std::string& text, std::size_t at, std::size_t width, unsigned value) {
  for (std::size_t i = at + width; i-- > at; value /= 10) {
    text[i] = static_cast<char>('0' + value % 10);
  }
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Removes a number for each form from the front of `text`. In a form, "0" matches any digit; other
/// characters match themselves. Absent if `text` does not match.
template <std::size_t count>
std::optional<std::array<int, count>> fields(std::string_view& text,
                                             const std::array<std::string_view, count>& forms) {
  std::array<int, count> values{};
  for (std::size_t i = 0; i < count; ++i) {
    for (const char wanted : forms[i]) {
      const char given = text.empty() ? '\0' : text[0];
      if (wanted == '0' ? !isDigit(given) : given != wanted) return {};
      if (wanted == '0') values[i] = 10 * values[i] + (given - '0');
      text.remove_prefix(1);
    }
  }
  return values;
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
  const auto date = fields<3>(text, {"0000", "-00", "-00"});
  const auto time = fields<3>(text, {"T00", ":00", ":00"});
  if (!date || !time) return {};
  const auto [hour, minute, second] = *time;
  const year_month_day day = year((*date)[0]) / (*date)[1] / (*date)[2];
  if (!day.ok() || hour > 23 || minute > 59 || second > 59) return {};

  double fraction = 0;
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    double unit = 1;
    for (; !text.empty() && isDigit(text[0]); text.remove_prefix(1)) {
      unit /= 10;
      fraction += unit * (text[0] - '0');
    }
    if (unit == 1) return {};
  }
  minutes offset{};
  if (text != "Z") {
    const bool isWest = text.starts_with('-');
    const auto zone = fields<2>(text, {isWest ? "-00" : "+00", ":00"});
    if (!zone || (*zone)[0] > 23 || (*zone)[1] > 59 || !text.empty()) return {};
    offset = (isWest ? -1 : 1) * (hours((*zone)[0]) + minutes((*zone)[1]));
  }
  const sys_seconds whole =
      sys_days(day) + hours(hour) + minutes(minute) + std::chrono::seconds(second) - offset;
  return Instant(whole) + duration<double>(fraction);
}

}  // namespace trovi::platform
