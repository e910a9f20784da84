#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <optional>

#include "TemporaryFolder.h"
#include "TroviCore/Paths.h"
#include "TroviCore/Store.h"

namespace trovi {
namespace {

using std::filesystem::perms;

#ifdef __APPLE__
constexpr const char* below = "Library/Application Support";
constexpr mode_t mask = 0;
constexpr perms mode = perms(0777);
#else
constexpr const char* below = ".local/share";
constexpr mode_t mask = 0777;  // it must not matter
constexpr perms mode = perms(0700);
#endif

TEST(Paths, NamePrivateFoldersBelowHomeInWhichTheStoreMakesPrivateFiles) {
  const tests::TemporaryFolder home;
  setenv("HOME", home.path().c_str(), 1);
  setenv("XDG_DATA_HOME", "/elsewhere", 1);  // only some programs would see it
  const auto support = home.path() / below;
  const auto file = support / "Trovi" / "trovi.sqlite";
  create_directory(support.parent_path());
  permissions(support.parent_path(), perms(0755));
  create_symlink(file, home.path() / "link");
  std::optional<TroviStore> store;
  const mode_t before = umask(mask);
  EXPECT_EQ(TroviPaths::databaseURL(), file);
  EXPECT_TRUE(is_empty(file.parent_path()));
  EXPECT_EQ(TroviPaths::audioDirectory(), support / "Trovi" / "Audio");
  EXPECT_NO_THROW(store.emplace(home.path() / "link"));
  umask(before);
  EXPECT_EQ(status(support.parent_path()).permissions(), perms(0755)) << "was there before";
  for (const auto& made : {support, support / "Trovi", support / "Trovi" / "Audio"}) {
    EXPECT_EQ(status(made).permissions(), mode) << made;
  }
  for (const char* part : {"", "-wal", "-shm"}) {
    EXPECT_EQ(std::filesystem::status(file.string() + part).permissions(), perms(0600)) << part;
  }
  permissions(file, perms(0640));
  store.emplace(file);
  EXPECT_EQ(status(file).permissions(), perms(0640)) << "was there before";
  remove_all(support);
  std::ofstream(support) << "in the way";
  EXPECT_EQ(TroviPaths::supportDirectory(), support / "Trovi");
  unsetenv("XDG_DATA_HOME");
}

}  // namespace
}  // namespace trovi
