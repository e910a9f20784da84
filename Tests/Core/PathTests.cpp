#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "TemporaryFolder.h"
#include "TroviCore/Paths.h"

namespace trovi {
namespace {

class Paths : public testing::Test {
 protected:
  Paths() {
    if (const char* home = getenv("HOME")) before_ = home;
    use(folder.path());
  }
  ~Paths() override { use(before_); }
  static void use(const std::string& home) { setenv("HOME", home.c_str(), 1); }

  tests::TemporaryFolder folder;

 private:
  std::string before_;
};

TEST_F(Paths, MakeTheFoldersThatTheyNameAndNothingElse) {
  const auto database = TroviPaths::databaseURL();
  const auto support = database.parent_path();
  EXPECT_EQ(database.filename(), "trovi.sqlite");
  EXPECT_EQ(support.filename(), "Trovi");
  EXPECT_TRUE(database.string().starts_with(folder.path().string() + "/"));
  EXPECT_TRUE(std::filesystem::is_directory(support));
  EXPECT_TRUE(std::filesystem::is_empty(support));
  EXPECT_EQ(TroviPaths::supportDirectory(), support);
  EXPECT_EQ(TroviPaths::audioDirectory(), support / "Audio");
  EXPECT_EQ(TroviPaths::audioDirectory(), support / "Audio");
  EXPECT_TRUE(std::filesystem::is_directory(support / "Audio"));
}

}  // namespace
}  // namespace trovi
