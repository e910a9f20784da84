// What reading and writing share.
#pragma once

namespace trovi::platform {

/// After a failed call on `descriptor`: whether it is worth another try. Waits for `events`
/// (POLLIN, POLLOUT) where the other side made the descriptor non-blocking.
bool worthRetrying(int descriptor, short events);

}  // namespace trovi::platform
