#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "Directories.h"
#include "UserData.h"

namespace trovi::platform {
namespace {

TEST(Directories, FollowAnAbsoluteHomeAndNoOther) {
  const char* before = getenv("HOME");
  const std::string home = before != nullptr ? before : "/";
  setenv("HOME", "/someone", 1);
  EXPECT_EQ(applicationSupportDirectory(), std::string("/someone/") + applicationSupportBelowHome);
  setenv("HOME", "someone", 1);
  const auto relative = applicationSupportDirectory();
  unsetenv("HOME");
  EXPECT_EQ(applicationSupportDirectory(), relative);  // the user database's
  EXPECT_TRUE(relative.is_absolute());
  EXPECT_EQ(relative.string().find("someone"), std::string::npos);
  setenv("HOME", home.c_str(), 1);
}

}  // namespace
}  // namespace trovi::platform
