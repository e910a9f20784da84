// What reading and writing share.
#pragma once

namespace trovi::platform {

inline constexpr int standardInput = 0;
inline constexpr int standardOutput = 1;
inline constexpr int standardError = 2;

/// Whether to repeat a call on `descriptor` that has just failed. If the other side made it
/// non-blocking, first waits for `events` (POLLIN, POLLOUT).
bool waitToRetry(int descriptor, short events);

}  // namespace trovi::platform
