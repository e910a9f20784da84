#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "TemporaryFolder.h"
#include "TroviCore/Paths.h"

namespace trovi {
namespace {

TEST(Paths, NameTheFoldersAndCreateThemButNotTheFile) {
  const tests::TemporaryFolder home;
  setenv("HOME", home.path().c_str(), 1);
  const auto file = TroviPaths::databaseURL();
  const auto folder = file.parent_path();
  EXPECT_EQ(folder.filename(), "Trovi");
  EXPECT_TRUE(is_directory(folder) && is_empty(folder));
  EXPECT_EQ(file.filename(), "trovi.sqlite");
  EXPECT_EQ(TroviPaths::supportDirectory(), folder);
  EXPECT_EQ(TroviPaths::audioDirectory(), folder / "Audio");
  EXPECT_TRUE(is_directory(folder / "Audio") && is_empty(folder / "Audio"));
  remove_all(folder);
  std::ofstream(folder) << "in the way";
  EXPECT_EQ(TroviPaths::audioDirectory(), folder / "Audio");
}

}  // namespace
}  // namespace trovi
