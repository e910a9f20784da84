/// @file
/// Points in time.
#pragma once

#include <chrono>

namespace trovi {

/// An instant: seconds since 1970-01-01 00:00:00 UTC, with fraction. It is the unit of every date
/// column of the database file, so that nothing is rounded on the way in or out.
using Date = std::chrono::sys_time<std::chrono::duration<double>>;

/// The instant `seconds` after 1970-01-01 00:00:00 UTC.
constexpr Date dateSince1970(double seconds) {
  return Date(std::chrono::duration<double>(seconds));
}

/// The seconds from 1970-01-01 00:00:00 UTC to `date`.
constexpr double secondsSince1970(Date date) { return date.time_since_epoch().count(); }

/// The current time.
inline Date now() { return std::chrono::system_clock::now(); }

}  // namespace trovi
