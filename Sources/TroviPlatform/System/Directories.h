// Folders: where the user's data is, and how a missing one is made.
#pragma once

#include <filesystem>

namespace trovi::platform {

/// The folder where applications keep the user's data, as an absolute path. It depends only on the
/// user's home: applications that start the server pass on little else of the environment.
std::filesystem::path applicationSupportDirectory();

/// Creates the folder and its missing parents, private to the user on systems that leave this to
/// the application. An existing folder is not changed. A failure is not reported: it shows when the
/// folder is used.
void createDirectories(const std::filesystem::path& directory);

/// `path` as seen from the working folder; an empty path is that folder. Relative only if there is
/// none.
std::filesystem::path absolutePath(const std::filesystem::path& path);

}  // namespace trovi::platform
