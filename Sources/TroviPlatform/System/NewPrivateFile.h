#pragma once

#include <filesystem>

namespace trovi::platform {

/// A file that is new, empty, and its owner's alone (mode 0600), whatever the process's umask.
/// Unless it is kept, it is removed with the object, if it is still empty.
class NewPrivateFile {
 public:
  /// Creates the file, or the missing file that a symbolic link names. Does nothing if the name is
  /// taken; if the file cannot be created so, there is none.
  explicit NewPrivateFile(const std::filesystem::path& file);
  ~NewPrivateFile();
  NewPrivateFile(const NewPrivateFile&) = delete;
  NewPrivateFile& operator=(const NewPrivateFile&) = delete;

  void keep() { created_.clear(); }

 private:
  std::filesystem::path created_;  ///< empty if there is nothing to remove
};

}  // namespace trovi::platform
