#include "System/Calendar.h"

namespace trovi::platform {

std::time_t startOfMonth(std::time_t now) {
  tzset();  // localtime_r need not read TZ
  std::tm wanted{};
  if (localtime_r(&now, &wanted) == nullptr) return now;
  const auto inMonth = [&](std::time_t instant) {
    std::tm local{};
    return localtime_r(&instant, &local) != nullptr && local.tm_mon == wanted.tm_mon;
  };
  // Not mktime: its answer is wrong in time zones that skip or repeat midnight on the 1st.
  constexpr std::time_t day = 86400;
  std::time_t before = now - (wanted.tm_mday + 2) * day;  // a day may be longer, or come twice
  std::time_t first = now;
  while (first - before > 1) {
    const std::time_t middle = before + (first - before) / 2;
    (inMonth(middle) ? first : before) = middle;
  }
  return first;
}

}  // namespace trovi::platform
