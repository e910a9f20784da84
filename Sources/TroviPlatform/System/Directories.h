#pragma once

#include <filesystem>

namespace trovi::platform {

/// The folder in which applications keep the user's data, an absolute path. It follows from the
/// user's home alone: applications that start the server hand on little more of the environment.
std::filesystem::path applicationSupportDirectory();

/// Makes the folder and its missing parents, private to the user where the system leaves that to
/// the application. A folder that is there stays as it is. A failure is silent: it shows when the
/// folder is used.
void createDirectories(const std::filesystem::path& directory);

}  // namespace trovi::platform
