// Bytes and characters. What is JSON and what is not, the sessions show.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Repeated.h"
#include "Text/ByteScan.h"
#include "Text/UTF8.h"
#include "Text/Unicode.h"

namespace trovi::platform {
namespace {

using tests::repeated;

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

TEST(Unicode, ReplacesEachMaximalIllFormedPartWhereverItStands) {
  const std::pair<std::string, std::string> cases[] = {
      // "?" means U+FFFD
      {"\x80 \xC3\x28\xC3\xC3\xA7\xE1\x80\xE2\xF0\x91\x92\xF1\xBF", "? ?(?ç????"},
      {"\xE2\x82\x7F\xE2\x82\xC0\xE2\x82", "?\x7F???"},
      {"\xE2\x7F\xE2\xC0\xDF\x7F\xDF\xC0", "?\x7F???\x7F??"},
      {"\xF0\x9F\x98\x7F\xF0\x9F\x98\xC0\xF0\x9F\x7F\xF0\x9F\xC0\xF0\x9F\x98", "?\x7F???\x7F???"},
      {"\xC0\x80\xC1\xBF\xE0\x80\x80\xE0\x9F\xBF", "??????????"},
      {"\xED\xA0\x80\xF0\x8F\xBF\xBF\xF4\x90\x80\x80\xF5\x80\xFE\xFF", "???????????????"},
      {"\xEF\xBB\xBF\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xF0\x90\x80\x80\xF4\x8F"
       "\xBF\xBF",
       "\uFEFF\u0080\u07FF\u0800\xED\x9F\xBF\uE000\U00010000\U0010FFFF"},
  };
  for (auto [bytes, text] : cases) {
    for (auto i = text.find('?'); i != std::string::npos; i = text.find('?')) {
      text.replace(i, 1, "\uFFFD");
    }
    // At every offset from the boundaries of the blocks that are checked at once.
    for (std::size_t i = 0; i < 200; ++i) {
      const std::string start = (i % 2 == 0 ? "" : "ççççççççç") + std::string(i / 10, 'x');
      const std::string end(i % 5 * 8, 'y');
      ASSERT_EQ(repairedUTF8(start + bytes + end), start + text + end) << i;
    }
  }
}

TEST(Unicode, FoldsCaseAndDiacriticsButNoLettersOfOtherScripts) {
  const std::pair<std::string, std::string> cases[] = {
      {"áàâãÁA\u0301\u0301Çc\u0327ü\u1EC7Å\u212B", "aaaaaaccueaa"},
      {"İIı\u212AßSS\uFB01ØŁÆªº", "iiıkssssfiøłæªº"},
      {"ΣΟΦΌΣσοφόςЙ", "σοφοσσοφοσи"},
      {"\u0301\u0301", "\u0301"},
      {"\u1100\u1161\u11A8か\u3099กิبَ🇧🇷👍🏽",
       "\uAC01がกิبَ🇧🇷👍🏽"},
      {std::string("a\0B", 3), std::string("a\0b", 3)},
      {"\u05E9\u0301\u0323", "\u05E9\u0323\u0301"},
      {"e\u20DDa\u200Cα\u0345", "eaα"},  // an enclosing mark, a joiner, and a mark that has a case
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(folded(text), expected) << text;
}

TEST(Unicode, FoldsAMillionMarksInLinearTime) {
  const std::string marks = repeated("\u0301", 500000) + repeated("\u0323", 500000);
  EXPECT_EQ(folded("a" + marks), "a");
  EXPECT_EQ(folded("\u05E9" + marks).size(), 2 + marks.size());
}

}  // namespace
}  // namespace trovi::platform
