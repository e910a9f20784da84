#include "PrivateFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <mutex>

namespace trovi::platform {

bool createPrivateFile(const std::filesystem::path& file) {
  // Closing a descriptor releases all locks that the process holds on its file, so no other thread
  // may have opened the file by then.
  static std::mutex creating;
  const std::lock_guard lock(creating);
  std::error_code ignored;
  const bool isDangling = is_symlink(file, ignored) && !exists(file, ignored);
  const int exclusively = isDangling ? 0 : O_EXCL;  // O_EXCL follows no link
  constexpr mode_t userAlone = S_IRUSR | S_IWUSR;
  const int descriptor =
      ::open(file.c_str(), O_WRONLY | O_CREAT | exclusively | O_CLOEXEC, userAlone);
  if (descriptor < 0) return false;
  const bool isPrivate = ::fchmod(descriptor, userAlone) == 0;  // the umask may have removed more
  ::close(descriptor);
  if (!isPrivate) remove(canonical(file, ignored), ignored);
  return isPrivate;
}

bool isTaken(const std::filesystem::path& name) {
  std::error_code ignored;
  return exists(symlink_status(name, ignored));
}

}  // namespace trovi::platform
