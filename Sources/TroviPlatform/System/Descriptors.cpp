#include "Descriptors.h"

#include <poll.h>

#include <cerrno>

namespace trovi::platform {

bool waitToRetry(int descriptor, short events) {
  if (errno == EINTR) return true;
  if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
  pollfd waiting{.fd = descriptor, .events = events, .revents = 0};
  return poll(&waiting, 1, -1) > 0 || errno == EINTR;
}

}  // namespace trovi::platform
