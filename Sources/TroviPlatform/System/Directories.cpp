#include "System/Directories.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <system_error>
#include <vector>

namespace trovi::platform {
namespace {

#ifdef __APPLE__
constexpr const char* applicationSupport = "Library/Application Support";
constexpr bool newFoldersArePrivate = false;  // Library itself is
#else
// XDG_DATA_HOME is ignored. An assistant application starts the server with a reduced environment,
// so only the recorder would see the variable, and the two would open different inboxes.
constexpr const char* applicationSupport = ".local/share";
constexpr bool newFoldersArePrivate = true;
#endif

/// HOME if it is an absolute path, else the home folder in the user database, else "/".
std::filesystem::path homeDirectory() {
  if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') return home;
  constexpr std::size_t largestEntry = std::size_t{64} << 10;
  std::vector<char> texts(largestEntry);
  passwd entry{};
  passwd* found = nullptr;
  getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &found);
  return found != nullptr && found->pw_dir[0] == '/' ? found->pw_dir : "/";
}

}  // namespace

std::filesystem::path applicationSupportDirectory() { return homeDirectory() / applicationSupport; }

void createDirectories(const std::filesystem::path& directory) {
  constexpr mode_t mode = newFoldersArePrivate ? S_IRWXU : S_IRWXU | S_IRWXG | S_IRWXO;
  std::filesystem::path made;
  for (const auto& part : directory) {
    made /= part;
    const bool isNew = ::mkdir(made.c_str(), mode) == 0;
    if (isNew && newFoldersArePrivate) ::chmod(made.c_str(), mode);  // despite the umask
  }
}

std::filesystem::path absolutePath(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::current_path(ignored) / path;
}

}  // namespace trovi::platform
