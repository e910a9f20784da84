#pragma once

#include <filesystem>

namespace trovi::platform {

/// Makes an empty file that its user alone may read and write, whatever the process's umask. Does
/// nothing where the name is taken or no file can be made: that shows when the file is opened.
void createPrivateFile(const std::filesystem::path& file);

/// Gives `file` a second name once its content is on the disk. False when the name is taken or
/// anything fails: it has no second name then.
bool publish(const std::filesystem::path& file, const std::filesystem::path& name);

}  // namespace trovi::platform
