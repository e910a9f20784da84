// What is JSON and what is not, the sessions show.
#include <gtest/gtest.h>

#include <locale>

#include "ByteScan.h"
#include "JSON.h"

namespace trovi::platform {
namespace {

TEST(ByteScan, AgreesWithALoopOverSingleBytes) {
  constexpr std::size_t size = 50;
  for (const int first : {0x00, 0x1F, 0x20, 0x22, 0x5C, 0x7F, 0x80, 0xBF, 0xC1, 0xC2, 0xDF, 0xE0}) {
    for (const int second : {0x00, 0x7F, 0x80, 0xBF, 0xC1, 0xC2, 0xDF, 0xE0, 0xFF}) {
      for (std::size_t place = 1; place + 2 < size; ++place) {
        std::string text(size, 'x');
        text[place] = static_cast<char>(first);
        text[place + 1] = static_cast<char>(second);
        const bool isSpecial = first < 0x20 || first == '"' || first == '\\';
        EXPECT_EQ(plainPrefix(text), isSpecial ? place : second < 0x20 ? place + 1 : size);
        const bool isPair = first >= 0xC2 && first < 0xE0 && second >= 0x80 && second < 0xC0;
        const bool isLatin = isPair || (first < 0x80 && second < 0x80);
        const std::size_t latin = latinPrefix(text);
        EXPECT_TRUE(isLatin ? latin == size : latin <= (first < 0x80 ? place + 1 : place))
            << first << " " << second << " at " << place;
      }
    }
  }
}

TEST(JSON, PrettyTextSortsItsKeysAndIndentsByTwo) {
  std::string ascii;
  for (char c = 0; c < 0x7F; ++c) ascii += c;
  const JSONObject object{
      {"total", 0},
      {"recados", JSONArray{JSONObject{{"b", "a/ç\n"}, {"a", nullptr}}, JSONArray()}},
      {"nada", JSONObject()}};
  std::string out;
  appendPrettyJSONText(out, JSONArray{ascii, object});
  const auto text = parseJSON(out);
  const auto value = parseJSON(text.value().text().value());
  EXPECT_EQ(std::get<JSONArray>(value.value().content).at(0).text(), ascii);
  EXPECT_TRUE(text->text()->ends_with(R"(,
  {
    "nada": {},
    "recados": [
      {
        "a": null,
        "b": "a/ç\n"
      },
      []
    ],
    "total": 0
  }
])")) << *text->text();
}

/// The number format of an application in Brazil.
struct DecimalComma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
};

TEST(JSON, WritesADoubleSoThatItReadsBackTheSameInAnyLocale) {
  const auto before = std::locale::global(std::locale(std::locale(), new DecimalComma));
  for (const double value : {0.0, 12.5, 0.1, 1.0 / 3, 5e-324, 1.7976931348623157e308, -2.5e-7}) {
    std::string out;
    appendJSON(out, value);
    EXPECT_EQ(parseJSON(out).value().real(), value) << out;
    EXPECT_LE(out.size(), value == 0.1 ? 3U : 23U);
  }
  std::locale::global(before);
}

}  // namespace
}  // namespace trovi::platform
