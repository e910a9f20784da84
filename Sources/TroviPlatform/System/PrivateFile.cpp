#include "PrivateFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <mutex>

namespace trovi::platform {

void createPrivateFile(const std::filesystem::path& file) {
  // Closing a descriptor releases all locks that the process holds on its file, so no other thread
  // may have opened the file by then.
  static std::mutex creating;
  const std::lock_guard lock(creating);
  constexpr mode_t userAlone = S_IRUSR | S_IWUSR;
  const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, userAlone);
  if (descriptor < 0) return;
  ::fchmod(descriptor, userAlone);  // the umask may have removed the user's own permissions
  ::close(descriptor);
}

bool publish(const std::filesystem::path& file, const std::filesystem::path& name) {
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return false;
  const bool isOnDisk = ::fsync(descriptor) == 0;
  ::close(descriptor);
  return isOnDisk && ::link(file.c_str(), name.c_str()) == 0;
}

}  // namespace trovi::platform
