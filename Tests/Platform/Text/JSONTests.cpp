// What is JSON and what is not, the sessions show.
#include <gtest/gtest.h>

#include <clocale>
#include <locale>

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

TEST(JSON, PrettyTextSortsItsKeysAndIndentsByTwo) {
  const JSONObject object{{"b", JSONArray{"a/ç\n\\\"\x01", JSONArray()}}, {"a", JSONObject()}};
  std::string out;
  appendPrettyJSONText(out, JSONArray{7, object});
  EXPECT_EQ(out,
            R"("[\n  7,\n  {\n    \"a\": {},\n    \"b\": [\n      \"a/ç\\n\\\\\\\"\\u0001\",\n)"
            R"(      []\n    ]\n  }\n]")");
}

/// The number format of an application in Brazil.
struct DecimalComma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
};

TEST(JSON, WritesADoubleSoThatItReadsBackTheSameInAnyLocale) {
  const char* const ofC = std::setlocale(LC_NUMERIC, "pt_BR.UTF-8");
  // Without a name, so that it leaves the one above to C's functions.
  const auto before = std::locale::global(std::locale(std::locale(), new DecimalComma));
  for (const double value : {0.0, 12.5, 0.1, 1.0 / 3, 5e-324, 1.7976931348623157e308, -2.5e-7}) {
    std::string out;
    appendJSON(out, value);
    EXPECT_EQ(parseJSON(out).value().real(), value) << out;
    EXPECT_LE(out.size(), value == 0.1 ? 3U : 23U);
  }
  std::locale::global(before);
  std::setlocale(LC_NUMERIC, "C");
  if (ofC == nullptr) GTEST_SKIP() << "skipped: half of it, without the locale pt_BR.UTF-8";
}

}  // namespace
}  // namespace trovi::platform
