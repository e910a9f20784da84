#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace trovi::platform {

using Instant = std::chrono::sys_time<std::chrono::duration<double>>;

/// `instant` as "2025-06-18T14:03:22Z", rounded down to whole seconds. An instant outside the years
/// 0000 to 9999 gives the nearest text within them; NaN gives that of 1970-01-01.
std::string internetDateTime(Instant instant);

/// The instant that such a text denotes. The seconds may have a fraction, and an offset such as
/// "-03:00" may replace the Z. Absent for any other text.
std::optional<Instant> instantFrom(std::string_view text);

}  // namespace trovi::platform
