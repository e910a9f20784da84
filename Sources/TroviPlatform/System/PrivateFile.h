#pragma once

#include <filesystem>

namespace trovi::platform {

/// Creates an empty file that only its owner may read and write, whatever the process's umask. Does
/// nothing if the name is taken or the file cannot be created: that shows when it is opened.
void createPrivateFile(const std::filesystem::path& file);

/// Flushes `file` to the disk, then gives it a second name, a hard link. False if the name is taken
/// or anything fails; there is no second name then.
bool publish(const std::filesystem::path& file, const std::filesystem::path& name);

}  // namespace trovi::platform
