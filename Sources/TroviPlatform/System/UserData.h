// Where one kind of system keeps the user's data. One of the Directories_*.cpp files defines it.
#pragma once

namespace trovi::platform {

/// Applications' data, relative to the user's home.
extern const char* const applicationSupportBelowHome;

/// The mode of a folder made there, less the process's mask.
extern const unsigned newDirectoryMode;

}  // namespace trovi::platform
