/// @file
/// Where the user's inbox is.
#pragma once

#include <filesystem>

#include "TroviCore/Export.h"

namespace trovi {

/// The user's data folder and what is in it; all paths are absolute. The folder is
/// "Library/Application Support/Trovi" below the user's home on macOS and ".local/share/Trovi"
/// elsewhere; these names and "Audio" and "trovi.sqlite" never change.
///
/// Each call creates the folders that it names if they are missing. A failure is not reported: it
/// shows when something in them is opened. Thread-safe while no thread changes HOME.
struct TROVI_EXPORT TroviPaths {
  TroviPaths() = delete;

  static std::filesystem::path supportDirectory();  ///< created if missing
  static std::filesystem::path audioDirectory();    ///< "Audio" in it, created if missing
  static std::filesystem::path databaseURL();       ///< "trovi.sqlite" in it; not created
};

}  // namespace trovi
