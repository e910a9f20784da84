// A lock between programs that use the same folder.
#pragma once

#include <chrono>
#include <filesystem>

namespace trovi::platform {

/// Keeps programs and threads apart that take the same lock. It leaves nothing behind, and ends
/// with the process at the latest. Nothing else in the folder is affected.
class FolderLock {
 public:
  /// Locks an existing folder. Waits at most `timeout`, then goes on without the lock, and at once
  /// where the folder cannot be opened or locked.
  FolderLock(const std::filesystem::path& folder, std::chrono::milliseconds timeout);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  int descriptor_;  ///< negative if the folder could not be opened
};

}  // namespace trovi::platform
