// Error handling shared by reading and writing.
#pragma once

namespace trovi::platform {

/// Whether to repeat a call on `descriptor` that has just failed. If the other side made it
/// non-blocking, first waits for `events` (POLLIN, POLLOUT).
bool worthRetrying(int descriptor, short events);

}  // namespace trovi::platform
