#include "NewPrivateFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <mutex>

namespace trovi::platform {

NewPrivateFile::NewPrivateFile(const std::filesystem::path& file) {
  // Closing a descriptor releases all locks that the process holds on its file, so no other thread
  // may have opened the file by then.
  static std::mutex creating;
  const std::lock_guard lock(creating);
  std::error_code ignored;
  const bool isDangling = is_symlink(file, ignored) && !exists(file, ignored);
  const int orTaken = isDangling ? 0 : O_EXCL;  // which follows no link
  constexpr mode_t userAlone = S_IRUSR | S_IWUSR;
  const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | orTaken | O_CLOEXEC, userAlone);
  if (descriptor < 0) return;
  created_ = canonical(file, ignored);
  const bool isPrivate = ::fchmod(descriptor, userAlone) == 0;  // the umask may have taken it away
  ::close(descriptor);
  if (!isPrivate) ::unlink(created_.c_str());
}

NewPrivateFile::~NewPrivateFile() {
  std::error_code ignored;
  if (!created_.empty() && is_empty(created_, ignored)) ::unlink(created_.c_str());
}

}  // namespace trovi::platform
