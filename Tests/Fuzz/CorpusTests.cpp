#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "Targets.h"

namespace trovi::fuzz {
namespace {

// What fuzzers started from, and what they found.
TEST(Corpus, HoldsNoInputThatBreaksAPromise) {
  for (const Target& target : targets) {
    std::size_t inputs = 0;
    for (const auto& file :
         std::filesystem::directory_iterator(std::filesystem::path(TROVI_CORPUS) / target.name)) {
      SCOPED_TRACE(file.path().string());
      std::ifstream stream(file.path(), std::ios::binary);
      const std::string input{std::istreambuf_iterator<char>(stream), {}};
      EXPECT_NO_THROW(target.run(input));
      ++inputs;
    }
    EXPECT_GT(inputs, 0U) << target.name;
  }
}

}  // namespace
}  // namespace trovi::fuzz
