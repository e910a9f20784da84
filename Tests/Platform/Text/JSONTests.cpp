// What is JSON and what is not, the sessions show.
#include <gtest/gtest.h>

#include "Text/ByteScan.h"
#include "Text/JSON.h"

namespace trovi::platform {
namespace {

TEST(ByteScan, FindsEachByteThatMustBeEscapedAtEveryPlace) {
  for (int byte = 0; byte < 0x100; ++byte) {
    for (std::size_t place = 0; place < 50; ++place) {
      std::string text(50, '\xA0');
      text[place] = static_cast<char>(byte);
      const bool isSpecial = byte < 0x20 || byte == '"' || byte == '\\';
      EXPECT_EQ(plainPrefix(text), isSpecial ? place : text.size()) << byte << " at " << place;
    }
  }
}

}  // namespace
}  // namespace trovi::platform
