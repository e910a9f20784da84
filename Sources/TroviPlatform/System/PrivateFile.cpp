#include "PrivateFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <mutex>

namespace trovi::platform {

std::filesystem::path linkTarget(std::filesystem::path file) {
  constexpr int mostLinks = 40;  // then they lead in a circle
  std::error_code ignored;
  for (int i = 0; i < mostLinks && is_symlink(file, ignored); ++i) {
    file = file.parent_path() / read_symlink(file, ignored);
  }
  return file;
}

bool createPrivateFile(const std::filesystem::path& file) {
  // Closing a descriptor releases all locks that the process holds on its file, so no other thread
  // may have opened the file by then.
  static std::mutex creating;
  const std::lock_guard lock(creating);
  const auto target = linkTarget(file);  // O_EXCL follows no link
  constexpr mode_t userAlone = S_IRUSR | S_IWUSR;
  const int descriptor = ::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, userAlone);
  if (descriptor < 0) return false;
  const bool isPrivate = ::fchmod(descriptor, userAlone) == 0;  // the umask may have removed more
  ::close(descriptor);
  if (!isPrivate) ::unlink(target.c_str());
  return isPrivate;
}

bool isTaken(const std::filesystem::path& name) {
  std::error_code ignored;
  return exists(symlink_status(name, ignored));
}

}  // namespace trovi::platform
