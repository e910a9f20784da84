// Error handling shared by reading and writing.
#pragma once

namespace trovi::platform {

/// Whether a call on `descriptor` that has just failed (see errno) should be repeated. If the other
/// side made the descriptor non-blocking, first waits for `events` (POLLIN, POLLOUT).
bool worthRetrying(int descriptor, short events);

}  // namespace trovi::platform
