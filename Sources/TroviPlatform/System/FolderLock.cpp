#include "System/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

namespace trovi::platform {

FolderLock::FolderLock(const std::filesystem::path& folder, std::chrono::milliseconds timeout)
    : descriptor_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + timeout;
  while (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR) &&
         Clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

FolderLock::~FolderLock() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

}  // namespace trovi::platform
