// Where a platform keeps the user's data. One of the Directories_*.cpp files defines it.
#pragma once

namespace trovi::platform {

/// The folder of the applications' data, relative to the user's home.
extern const char* const applicationSupportBelowHome;

/// The mode of a new folder there, before the process's umask is applied.
extern const unsigned newDirectoryMode;

}  // namespace trovi::platform
