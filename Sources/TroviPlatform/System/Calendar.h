// Where the month begins in the user's time zone.
#pragma once

#include <ctime>

namespace trovi::platform {

/// The start of the calendar month that contains `now`, in the user's time zone; `now` itself if
/// the system cannot determine it. Seconds since 1970-01-01 00:00:00 UTC.
std::time_t startOfMonth(std::time_t now);

}  // namespace trovi::platform
