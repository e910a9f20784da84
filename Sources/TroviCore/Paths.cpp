#include "TroviCore/Paths.h"

#include "System/Directories.h"

namespace trovi {
namespace {

std::filesystem::path made(std::filesystem::path directory) {
  platform::createDirectories(directory);
  return directory;
}

}  // namespace

std::filesystem::path TroviPaths::supportDirectory() {
  return made(platform::applicationSupportDirectory() / "Trovi");
}

std::filesystem::path TroviPaths::audioDirectory() { return made(supportDirectory() / "Audio"); }

std::filesystem::path TroviPaths::databaseURL() { return supportDirectory() / "trovi.sqlite"; }

}  // namespace trovi
