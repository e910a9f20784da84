// JSON values, their parser and their writer.
//
// A number keeps its digits and an object its members, repeated keys included, so a value that was
// read is written as it came.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace trovi::platform {

struct JSONValue;
using JSONArray = std::vector<JSONValue>;
using JSONObject = std::vector<std::pair<std::string, JSONValue>>;

/// A number exactly as written in a JSON text.
struct JSONNumber {
  std::string literal;
};

struct JSONValue {
  JSONValue() = default;  ///< null
  JSONValue(std::nullptr_t) {}
  JSONValue(std::same_as<bool> auto value)  // or any pointer would become true
      : content(value) {}
  JSONValue(std::int64_t value) : content(JSONNumber{std::to_string(value)}) {}
  JSONValue(int value) : JSONValue(std::int64_t{value}) {}
  JSONValue(double value);  ///< finite; in the fewest digits that read back as the same value
  JSONValue(JSONNumber value) : content(std::move(value)) {}
  JSONValue(std::string text) : content(std::move(text)) {}
  JSONValue(std::string_view text) : content(std::string(text)) {}
  JSONValue(const char* text) : content(std::string(text)) {}
  JSONValue(JSONArray array) : content(std::move(array)) {}
  JSONValue(JSONObject object) : content(std::move(object)) {}

  bool isNull() const { return std::holds_alternative<std::monostate>(content); }
  /// The value as an object, or a null pointer.
  const JSONObject* object() const { return std::get_if<JSONObject>(&content); }
  /// The value as a text; valid as long as the value.
  std::optional<std::string_view> text() const;
  /// The value as a whole number in the signed 64-bit range: 7, 7.0 and 70e-1 are 7. A number that
  /// has a fraction or an exponent is first rounded to the nearest double.
  std::optional<std::int64_t> integer() const;
  /// The value as the nearest double, if it is a number in range.
  std::optional<double> real() const;

  /// The last member with this key; null if there is none or the value is no object.
  const JSONValue& operator[](std::string_view key) const;

  std::variant<std::monostate, bool, JSONNumber, std::string, JSONArray, JSONObject> content;
};

/// Parses one JSON text (RFC 8259), which must be valid UTF-8. Absent if it is malformed; this
/// includes trailing characters, lone surrogate escapes and more than 512 nested levels. A number
/// may have any size.
std::optional<JSONValue> parseJSON(std::string_view text);

/// Appends `value` without white space. "/" and non-ASCII characters are not escaped.
void appendJSON(std::string& out, const JSONValue& value);

/// Appends a JSON string, quotation marks included. Its text is `value` as JSON with sorted keys,
/// each member and element on its own line, indented by two spaces per level, `"key": value`, and
/// `[]` or `{}` when empty.
void appendPrettyJSONText(std::string& out, const JSONValue& value);

}  // namespace trovi::platform
