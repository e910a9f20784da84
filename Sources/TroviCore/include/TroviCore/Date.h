/// @file
/// Points in time.
#pragma once

#include <chrono>
#include <string>

#include "TroviCore/Export.h"

namespace trovi {

/// An instant: seconds since 1970-01-01 00:00:00 UTC, with a fraction. The date columns of the
/// database file have the same unit, so nothing is rounded when it is stored or read.
using Date = std::chrono::sys_time<std::chrono::duration<double>>;

/// The instant `seconds` after 1970-01-01 00:00:00 UTC.
constexpr Date dateSince1970(double seconds) {
  return Date(std::chrono::duration<double>(seconds));
}

/// The seconds from 1970-01-01 00:00:00 UTC to `date`.
constexpr double secondsSince1970(Date date) { return date.time_since_epoch().count(); }

/// `date` as "2025-06-18T14:03:22Z", rounded down to whole seconds. A date outside the years 0000
/// to 9999 gives the nearest text within them; NaN gives that of 1970-01-01.
TROVI_EXPORT std::string toISO8601(Date date);

/// The current time.
inline Date now() { return std::chrono::system_clock::now(); }

}  // namespace trovi
