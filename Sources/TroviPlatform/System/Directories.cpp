#include "Directories.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "UserData.h"

namespace trovi::platform {
namespace {

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

std::filesystem::path applicationSupportDirectory() {
  return homeDirectory() / applicationSupportBelowHome;
}

void createDirectories(const std::filesystem::path& directory) {
  std::filesystem::path made;
  for (const auto& part : directory) {
    made /= part;
    ::mkdir(made.c_str(), static_cast<mode_t>(newDirectoryMode));
  }
}

}  // namespace trovi::platform
