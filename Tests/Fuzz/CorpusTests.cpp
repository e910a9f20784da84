#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "Targets.h"

namespace trovi::fuzz {
namespace {

// The inputs that fuzzers started from, and those that they found.
TEST(Corpus, KeepsEveryPromise) {
  for (const auto& [name, run] :
       {std::pair{std::string("session"), &session}, {"jsonText", &jsonText}}) {
    ASSERT_FALSE(std::filesystem::is_empty(TROVI_CORPUS + name));
    for (const auto& file : std::filesystem::directory_iterator(TROVI_CORPUS + name)) {
      SCOPED_TRACE(file.path().string());
      std::ifstream stream(file.path(), std::ios::binary);
      EXPECT_NO_THROW(run(std::string{std::istreambuf_iterator<char>(stream), {}}));
    }
  }
}

}  // namespace
}  // namespace trovi::fuzz
