#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "JSON.h"

namespace trovi::platform {
namespace {

/// `text` read and written again; absent when it is refused.
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
  const struct {
    std::string text, expected;
  } cases[] = {
      {"123456789012345678901234567890", "123456789012345678901234567890"},
      {std::string(1000, '9'), std::string(1000, '9')},
      {" [ 1 ,\t2\r\n]", "[1,2]"},
      {R"("a/b")", R"("a/b")"},
      {R"("\/\b\f\n\r\t\"\\")", R"("/\b\f\n\r\t\"\\")"},
      {R"("\u0000\u001F\u007f")", "\"\\u0000\\u001f\x7f\""},
      {R"("\u00e7\uD83D\uDE00")", "\"ç😀\""},
      {"\"ação, 日本\"", "\"ação, 日本\""},
      {R"({"b":1,"a":2,"b":3})", R"({"a":2,"b":3})"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(rewritten(text), expected) << text;
}

TEST(JSON, EscapesAtEveryPlaceOfABlock) {
  for (std::size_t size = 0; size < 40; ++size) {
    for (std::size_t place = 0; place < size; ++place) {
      for (const char special : {'"', '\\', '\n', '\x01'}) {
        std::string text(size, 'x');
        text[place] = special;
        TextBuffer out;
        appendJSON(out, JSONObject{{"v", text}, {"pretty", JSONValue::prettyText(text)}});
        const auto read = parseJSON(out.view());
        ASSERT_TRUE(read) << out.view();
        ASSERT_EQ(read->object()->text("v"), text) << size << " " << place;
        ASSERT_EQ(parseJSON(*read->object()->text("pretty")), text) << size << " " << place;
      }
    }
  }
}

std::string prettyText(const JSONValue& value) {
  TextBuffer out;
  appendJSON(out, JSONObject{{"v", JSONValue::prettyText(value)}});
  const auto read = parseJSON(out.view());
  return std::string(read->object()->text("v").value());
}

TEST(JSON, PrettyTextSortsItsKeysAndIndentsByTwo) {
  const JSONObject object{{"total", 0},
                          {"recados", JSONArray{JSONObject{{"b", "a/ç\n"}, {"a", nullptr}}, 1}},
                          {"nada", JSONObject()},
                          {"lista", JSONArray{}}};
  EXPECT_EQ(prettyText(object), R"({
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

TEST(JSON, AWrittenValueStaysItselfInsideAPrettyText) {
  const JSONObject object{{"a", "\"b\""}};
  EXPECT_EQ(prettyText(JSONValue::written(object)), R"({"a":"\"b\""})");
  EXPECT_EQ(parseJSON(prettyText(JSONValue::prettyText(object))), prettyText(object));
}

TEST(JSON, ReadsANumberAsAnIntegerOnlyWhenItIsOneOfSixtyFourBits) {
  const struct {
    const char* literal;
    std::optional<std::int64_t> value;
  } cases[] = {
      {"7", 7},
      {"7.0", 7},
      {"70e-1", 7},
      {"-0", 0},
      {"-0.0", 0},
      {"1e-400", 0},  // the nearest double is 0
      {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
      {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()},
      {"-9223372036854775808.0", std::numeric_limits<std::int64_t>::min()},
      {"9223372036854775808", {}},
      {"9223372036854775808.0", {}},
      {"-9223372036854775809", {}},
      {"1e19", {}},
      {"7.5", {}},
      {"1e400", {}},
      {"-1e400", {}},
      {"1e99999999999999999999", {}},
  };
  for (const auto& [literal, value] : cases) {
    EXPECT_EQ(JSONNumber{literal}.integer(), value) << literal;
  }
  EXPECT_EQ(JSONNumber{"7." + std::string(100000, '0')}.integer(), 7);
}

TEST(JSON, WritesADoubleSoThatItReadsBackTheSame) {
  for (const double value :
       {0.0, 12.5, 0.1, 1.0 / 3, 1750255402.1234567, 5e-324, 1.7976931348623157e308, -2.5e-7}) {
    EXPECT_EQ(JSONNumber::from(value).real(), value);
    EXPECT_TRUE(parseJSON(JSONNumber::from(value).literal)) << JSONNumber::from(value).literal;
  }
  EXPECT_EQ(JSONNumber::from(0.1).literal, "0.1");
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
