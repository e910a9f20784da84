/// @file
/// Where the user's inbox lies.
#pragma once

#include <filesystem>

#include "TroviCore/Export.h"

namespace trovi {

/// The user's data folder and what is in it; all paths are absolute. The folder is
/// "Library/Application Support/Trovi" below the user's home on macOS and ".local/share/Trovi"
/// elsewhere; these names and "Audio" and "trovi.sqlite" never change.
///
/// Each call makes the folders that it names when they are missing. A failure to do so is silent:
/// it shows when something in them is opened. Safe from any thread that does not change HOME.
struct TROVI_EXPORT TroviPaths {
  TroviPaths() = delete;

  static std::filesystem::path supportDirectory();  ///< made when missing
  static std::filesystem::path audioDirectory();    ///< "Audio" in it, made when missing
  static std::filesystem::path databaseURL();       ///< "trovi.sqlite" in it; the file is not made
};

}  // namespace trovi
