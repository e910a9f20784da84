#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Unicode.h"

namespace trovi::platform {
namespace {

std::string repeated(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

const std::string fffd = "\xEF\xBF\xBD";

TEST(Unicode, ReplacesEachMaximalIllFormedPartWhereverItStands) {
  const struct {
    std::string bytes, text;
  } cases[] = {
      {"\x80", fffd},
      {"\xC3\x28", fffd + "("},
      {"\xE2\x82", fffd},
      {"\xE2\x82"
       "A",
       fffd + "A"},
      {"\xF0\x9F\x98"
       "A",
       fffd + "A"},
      {"\xC0\x80", repeated(fffd, 2)},
      {"\xE0\x80\x80", repeated(fffd, 3)},
      {"\xED\xA0\x80", repeated(fffd, 3)},
      {"\xF4\x90\x80\x80", repeated(fffd, 4)},
      {"\xFE\xFF", repeated(fffd, 2)},
      {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF"
       "A",
       repeated(fffd, 4) + "A"},
      {"\xEF\xBB\xBF"
       "A",
       "\xEF\xBB\xBF"
       "A"},
      {"a\xC3\xA7\xE2\x82\xAC\xF0\x9F\x98\x80", "aç€😀"},
      {"\xC3", fffd},
      {"\xC3\xC3\xA7", fffd + "ç"},
      {"\xC2\x80\xDF\xBF\xE0\xA0\x80\xF4\x8F\xBF\xBF",
       "\xC2\x80\xDF\xBF\xE0\xA0\x80\xF4\x8F\xBF\xBF"},
  };
  for (const auto& [bytes, text] : cases) {
    // At every distance from the borders of the blocks in which the bytes are looked at.
    for (std::size_t before = 0; before < 20; ++before) {
      for (const std::size_t after : {0U, 1U, 15U, 16U, 33U}) {
        const std::string left(before, 'x');
        const std::string right(after, 'y');
        ASSERT_EQ(repairedUTF8(left + bytes + right), left + text + right)
            << testing::PrintToString(bytes) << " after " << before << " before " << after;
        ASSERT_EQ(repairedUTF8(repeated("ç", 9) + left + bytes + right),
                  repeated("ç", 9) + left + text + right);
      }
    }
  }
}

TEST(Unicode, TrimsBlanksOfEveryKindButNoLineBreaks) {
  const std::string blanks =
      "\t \u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200A\u202F"
      "\u205F\u3000";
  EXPECT_EQ(trimmedBlanks(blanks + "a b" + blanks), "a b");
  EXPECT_EQ(trimmedBlanks(blanks), "");
  for (const std::string kept :
       {"\n", "\r", "\u0085", "\u2028", "\u200B", "\u180E", "\uFEFF", "\x1F"}) {
    EXPECT_EQ(trimmedBlanks(" " + kept + " "), kept);
  }
}

TEST(Unicode, FoldsCaseAndDiacriticsButNoLettersOfOtherScripts) {
  const struct {
    std::string text, folded;
  } cases[] = {
      {"áàâãÁA\u0301\u0301", "aaaaaa"},
      {"Çc\u0327", "cc"},
      {"ü\u1EC7", "ue"},
      {"Å\u212B", "aa"},
      {"İI", "ii"},
      {"ı", "ı"},
      {"ßSS", "ssss"},
      {"\uFB01", "fi"},
      {"ØŁÆ", "øłæ"},
      {"ΣΟΦΌΣ", "σοφοσ"},
      {"σοφός", "σοφοσ"},
      {"Й", "и"},
      {"\u212A", "k"},
      {"ªº", "ªº"},
      {"\u0301", "\u0301"},
      {"\u0301\u0301", "\u0301"},
      {"\u1100\u1161\u11A8", "\uAC01"},
      {"が", "が"},
      {"か\u3099", "が"},
      {"กิ", "กิ"},
      {"بَ", "بَ"},
      {"🇧🇷👍🏽", "🇧🇷👍🏽"},
      {"", ""},
      {std::string("a\0B", 3), std::string("a\0b", 3)},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(folded(text), expected) << text;
  EXPECT_NE(folded("が"), folded("か"));
  EXPECT_EQ(folded("\u05E9\u05C1\u05B7"), folded("\u05E9\u05B7\u05C1"));
}

TEST(Unicode, FoldsALineOfNothingButMarksBeforeAnyoneGivesUp) {
  const std::string marks = repeated("\u0301", 500000) + repeated("\u0323", 500000);
  EXPECT_EQ(folded("a" + marks), "a");
  EXPECT_EQ(folded("\u05E9" + marks),
            "\u05E9" + repeated("\u0323", 500000) + repeated("\u0301", 500000));
}

}  // namespace
}  // namespace trovi::platform
