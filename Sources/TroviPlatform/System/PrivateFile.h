#pragma once

#include <filesystem>

namespace trovi::platform {

/// What `file` leads to if it is a symbolic link, even if nothing is there; else `file` itself.
std::filesystem::path linkTarget(std::filesystem::path file);

/// Creates an empty file that only its owner may read and write (mode 0600), whatever the process's
/// umask, or the missing file that a symbolic link leads to. False if the name is taken or such a
/// file cannot be created; there is no new file then.
bool createPrivateFile(const std::filesystem::path& file);

/// Whether anything has this name: a file, a folder, or a symbolic link, even one that leads
/// nowhere.
bool isTaken(const std::filesystem::path& name);

}  // namespace trovi::platform
