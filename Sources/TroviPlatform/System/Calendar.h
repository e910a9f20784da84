#pragma once

#include <ctime>

namespace trovi::platform {

/// The first instant of the calendar month that holds `now`, in the user's time zone; `now` itself
/// where the system cannot tell. Seconds since 1970-01-01 00:00:00 UTC.
std::time_t startOfMonth(std::time_t now);

}  // namespace trovi::platform
