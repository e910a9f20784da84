#include <gtest/gtest.h>
#include <sys/resource.h>

#include <limits>
#include <locale>
#include <sstream>

#include "JSON.h"

namespace trovi::platform {
namespace {

/// `text` parsed and written again; absent if it is refused.
std::optional<std::string> rewritten(const std::string& text) {
  const auto value = parseJSON("{\"v\":" + text + "}");
  if (!value) return {};
  TextBuffer out;
  appendJSON(out, *value->object());
  const std::string written(out.view());
  EXPECT_EQ(parseJSON(written), value);  // what is written reads as the same value
  return written.substr(5, written.size() - 6);
}

TEST(JSON, WritesBackWhatItRead) {
  const std::string nines(1000, '9');
  const std::pair<std::string, std::string> cases[] = {
      {nines, nines},
      {" [ 1 ,\t2\r\n]", "[1,2]"},
      {R"("\/\b\f\n\r\t\"\\")", R"("/\b\f\n\r\t\"\\")"},
      {R"("\u0000\u001F")", R"("\u0000\u001f")"},
      {R"("\u007f\u0080\u07fF\u0800\uFFFF\uD800\uDC00\udbff\udfff")",
       "\"\x7f\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF\""},
      {R"({"b":1,"a":2,"b":[true,false,null]})", R"({"a":2,"b":[true,false,null]})"}};
  for (const auto& [text, expected] : cases) EXPECT_EQ(rewritten(text), expected) << text;
}

TEST(JSON, RefusesWhatIsNone) {
  std::istringstream texts(
      R"(|00|-01|-|--1|+1|.5|-1.|1.e1|1e|1e+|1E|1eE2|1.2.3|0x1|1_0|- 1|1 0|nan|-Infinity|TRUE|nul)"
      R"(|nulll|truetrue|tr ue|"|"a|"\"|"\a"|"\0"|"\u"|"\u004"|"\u+041"|"\u004G"|[1 2]|"a"b|[,1]|[1)"
      R"(|[1,,2]|1]|[1}|[1;2]|["a":1]|{"a":1|{"a"}|{"a":}|{"a" 1}|{"a":1,}|{,}|{"a":1 "b":2}|{1:2})"
      R"(|{]|/**/1|1#|"\uDFFF"|"\uD800x"|"\uD800\n"|"\uD800\u0041"|"\uD800\\uDC00"|"\uD83D\uDE0")");
  for (std::string text; std::getline(texts, text, '|');) EXPECT_FALSE(rewritten(text)) << text;
  EXPECT_FALSE(rewritten("\"\x1f\""));
}

TEST(JSON, EscapesAtEveryPlaceOfABlock) {
  for (std::size_t place = 0; place < 40 * 40; ++place) {
    for (const char special : {'"', '\\', '\n', '\x01'}) {
      std::string text(place / 40 + 1, 'x');
      text[place % 40 % text.size()] = special;
      TextBuffer out;
      appendJSON(out, JSONObject{{"v", text}, {"pretty", JSONValue::prettyText(text)}});
      const auto read = parseJSON(out.view());
      ASSERT_TRUE(read) << out.view();
      ASSERT_EQ(read->object()->text("v"), text);
      ASSERT_EQ(parseJSON(*read->object()->text("pretty")), text);
    }
  }
}

TEST(JSON, PrettyTextSortsItsKeysAndIndentsByTwo) {
  const JSONObject object{{"total", 0},
                          {"recados", JSONArray{JSONObject{{"b", "a/ç\n"}, {"a", nullptr}}, 1}},
                          {"nada", JSONObject()},
                          {"escrito", JSONValue::written({{"a", "\"b\""}})},
                          {"lista", JSONArray{}}};
  TextBuffer out;
  appendJSON(out, JSONObject{{"v", JSONValue::prettyText(object)}});
  EXPECT_EQ(parseJSON(out.view())->object()->text("v"), R"({
  "escrito": {"a":"\"b\""},
  "lista": [],
  "nada": {},
  "recados": [
    {
      "a": null,
      "b": "a/ç\n"
    },
    1
  ],
  "total": 0
})");
}

#if defined(__linux__) && !defined(TROVI_SANITIZED)  // others lack the limit or need more
TEST(JSON, PrettyTextIsEmptyWithoutMemoryForIt) {
  JSONValue huge(std::string(1 << 20, 'x'));
  for (int i = 0; i < 10; ++i) huge = JSONArray{huge, huge};  // a gigabyte, once it is written
  rlimit before{};
  getrlimit(RLIMIT_AS, &before);
  const rlimit little{256 << 20, before.rlim_max};
  TextBuffer out;
  setrlimit(RLIMIT_AS, &little);
  appendJSON(out, JSONObject{{"v", JSONValue::prettyText(huge)}, {"w", 1}});
  setrlimit(RLIMIT_AS, &before);
  EXPECT_EQ(out.view(), R"({"v":"","w":1})");
}
#endif

TEST(JSON, ReadsANumberAsAnIntegerOnlyWhenItIsOneOfSixtyFourBits) {
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  const std::pair<std::string, std::int64_t> cases[] = {
      {"7.0", 7},
      {"70e-1", 7},
      {"-0.0", 0},
      {"0e99999999999999999999", 0},
      {"0.0000000000000000000000000005e+28", 5},
      {"1" + std::string(400, '0') + "e-399", 10},
      {"9223372036854775807", most},
      {"9223372036854775807.0", most},
      {"922337203685477580.7E1", most},
      {"50000000000000000000e-19", 5},
      {"-9223372036854775808.0", std::numeric_limits<std::int64_t>::min()},
  };
  for (const auto& [literal, value] : cases) {
    EXPECT_EQ(JSONNumber{literal}.integer(), value) << literal;
  }
  for (const char* none :
       {"9223372036854775808", "9223372036854775808.0", "-9223372036854775809",
        "-9223372036854775809.0", "7.5", "1e-400", "1e400", "1e9223372036854775807",
        "1.5e-9223372036854775808", "1e99999999999999999999", "5.0000000000000000000001"}) {
    EXPECT_FALSE(JSONNumber{none}.integer()) << none;
  }
}

/// The number format of an application in Brazil.
struct DecimalComma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
};

TEST(JSON, WritesADoubleSoThatItReadsBackTheSameInAnyLocale) {
  const auto before = std::locale::global(std::locale(std::locale(), new DecimalComma));
  for (const double value : {0.0, 12.5, 1.0 / 3, 5e-324, 1.7976931348623157e308, -2.5e-7}) {
    EXPECT_EQ(JSONNumber::from(value).real(), value);
    EXPECT_TRUE(rewritten(JSONNumber::from(value).literal)) << JSONNumber::from(value).literal;
  }
  EXPECT_EQ(JSONNumber::from(0.1).literal, "0.1");
  std::locale::global(before);
}

TEST(JSON, KeepsTheLastOfManyDoubledKeys) {
  std::vector<JSONObject::Member> members;
  for (int i = 0; i < 1000; ++i) members.emplace_back(std::to_string(i % 10), i);
  const JSONObject object(std::move(members));
  EXPECT_EQ(std::distance(object.begin(), object.end()), 10);
  EXPECT_EQ(object.integer("0"), 990);
  EXPECT_EQ(object.integer("9"), 999);
}

}  // namespace
}  // namespace trovi::platform
