#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace trovi::platform {

using Instant = std::chrono::sys_time<std::chrono::duration<double>>;

/// `instant` as "2025-06-18T14:03:22Z", a fraction of the second dropped downwards. Instants
/// outside the years 0000 to 9999 take the nearest text, NaN that of 1970-01-01.
std::string internetDateTime(Instant instant);

/// The instant that such a text names. The second may have a fraction, and an offset such as
/// "-03:00" may stand for the Z. Absent when the text has another form.
std::optional<Instant> instantFrom(std::string_view text);

}  // namespace trovi::platform
