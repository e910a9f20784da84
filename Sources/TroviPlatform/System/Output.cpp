#include "Output.h"

#include <poll.h>
#include <unistd.h>

#include "Descriptors.h"

namespace trovi::platform {

bool write(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(descriptor, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (!waitToRetry(descriptor, POLLOUT)) {
      return false;
    }
  }
  return true;
}

}  // namespace trovi::platform
