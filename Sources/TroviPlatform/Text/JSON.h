// JSON values, their parser and their writer.
//
// Values are copied freely and compared by content. Arrays and objects inside a value are shared
// and never change, so copying one only increments a reference count, however large it is. Numbers
// keep their digits as written, so integers of any length are preserved.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "TextBuffer.h"

namespace trovi::platform {

class JSONObject;
class JSONValue;
using JSONArray = std::vector<JSONValue>;

/// A number exactly as written in a JSON text.
struct JSONNumber {
  std::string literal;

  /// The value, if it is a whole number in the signed 64-bit range: 7, 7.0 and 70e-1 are 7.
  std::optional<std::int64_t> integer() const;
  /// The nearest double; absent if the number is out of range.
  std::optional<double> real() const;
  /// `value`, which must be finite, with 15 significant digits, or with 17 if 15 do not read back
  /// as the same value.
  static JSONNumber from(double value);

  bool operator==(const JSONNumber&) const = default;
};

class JSONValue {
 public:
  JSONValue() = default;  ///< null
  JSONValue(std::nullptr_t) {}
  JSONValue(std::same_as<bool> auto value) : content_(value) {}
  JSONValue(std::int64_t value) : content_(JSONNumber{std::to_string(value)}) {}
  JSONValue(int value) : JSONValue(std::int64_t{value}) {}
  JSONValue(JSONNumber value) : content_(std::move(value)) {}
  JSONValue(std::string text) : content_(std::move(text)) {}
  JSONValue(std::string_view text) : content_(std::string(text)) {}
  JSONValue(const char* text) : content_(std::string(text)) {}
  JSONValue(JSONArray array);
  JSONValue(JSONObject object);
  /// `object`, already serialised, for content that is sent often. It reads as no JSON kind.
  static JSONValue written(const JSONObject& object);
  /// A text that is laid out only when it is written: `payload` as JSON with sorted keys, each
  /// member and element on its own line, indented by two spaces per level, `"key": value`, and `[]`
  /// or `{}` when empty. If there is not enough memory, the text is empty. It reads as no JSON
  /// kind; `payload` must not contain another such text.
  static JSONValue prettyText(JSONValue payload);

  // The value as one kind, or a null pointer if it is of another. Valid as long as the value.
  bool isNull() const { return std::holds_alternative<std::monostate>(content_); }
  const bool* boolean() const { return std::get_if<bool>(&content_); }
  const JSONNumber* number() const { return std::get_if<JSONNumber>(&content_); }
  const std::string* text() const { return std::get_if<std::string>(&content_); }
  const JSONArray* array() const { return shared<JSONArray>(); }
  const JSONObject* object() const { return shared<JSONObject>(); }
  const std::string* written() const { return shared<std::string>(); }
  const JSONValue* payload() const { return shared<JSONValue>(); }

  /// Makes the value an empty text, or a number without digits, to be filled in.
  template <class Content>
  requires std::same_as<Content, std::string> || std::same_as<Content, JSONNumber> Content&
  emplace() {
    return content_.emplace<Content>();
  }

  friend bool operator==(const JSONValue& left, const JSONValue& right);

 private:
  template <class Container>
  const Container* shared() const {
    const auto* held = std::get_if<std::shared_ptr<const Container>>(&content_);
    return held != nullptr ? held->get() : nullptr;
  }

  std::variant<std::monostate, bool, JSONNumber, std::string, std::shared_ptr<const JSONArray>,
               std::shared_ptr<const JSONObject>, std::shared_ptr<const std::string>,
               std::shared_ptr<const JSONValue>>
      content_;
};

/// A member's key: a text, or a string literal, which is not copied and must need no escapes.
class JSONKey {
 public:
  JSONKey() = default;
  template <std::size_t size>
  JSONKey(const char (&literal)[size]) : key_(std::string_view(literal, size - 1)) {}
  template <std::size_t size>
  JSONKey(char (&buffer)[size]) = delete;
  JSONKey(std::string text) : key_(Text{std::move(text)}) {}

  bool isLiteral() const { return std::holds_alternative<std::string_view>(key_); }
  std::string_view view() const {
    return isLiteral() ? std::get<std::string_view>(key_) : std::get<Text>(key_).value;
  }
  /// Makes it an empty text, to be filled in.
  std::string& emplace() { return key_.emplace<Text>().value; }

  bool operator==(const JSONKey& other) const { return view() == other.view(); }

 private:
  struct Text {  // no bare std::string: see SQLValue
    std::string value;
  };
  std::variant<std::string_view, Text> key_;
};

/// Members in insertion order. No key occurs twice.
class JSONObject {
 public:
  using Member = std::pair<JSONKey, JSONValue>;

  JSONObject() = default;
  /// If several members have the same key, the last one counts.
  explicit JSONObject(std::vector<Member> members);
  JSONObject(std::initializer_list<Member> members) : JSONObject(std::vector<Member>(members)) {}

  void reserve(std::size_t count) { members_.reserve(count); }

  /// Adds a member, whose key must be new.
  template <class Value>
  void add(JSONKey key, Value&& value) {
    members_.emplace_back(std::move(key), std::forward<Value>(value));
  }

  // A member's value; absent if it is missing or of another kind.
  const JSONValue* find(std::string_view key) const;
  std::optional<std::string_view> text(std::string_view key) const;
  std::optional<std::int64_t> integer(std::string_view key) const;
  const JSONObject* object(std::string_view key) const;

  auto begin() const { return members_.begin(); }
  auto end() const { return members_.end(); }
  bool empty() const { return members_.empty(); }

  /// Whether the members are sorted by the bytes of their keys, which is code point order.
  bool isSorted() const;
  /// The members in that order.
  std::vector<const Member*> sorted() const;

  /// Ignores the order of the members.
  friend bool operator==(const JSONObject& left, const JSONObject& right);

 private:
  std::vector<Member> members_;
};

/// Parses one JSON text (RFC 8259), which must be valid UTF-8. Absent if it is malformed; this
/// includes trailing characters, lone surrogate escapes and more than 512 nested levels. A number
/// may have any size.
std::optional<JSONValue> parseJSON(std::string_view text);

/// Appends `object` without white space. "/" and non-ASCII characters are not escaped.
void appendJSON(TextBuffer& out, const JSONObject& object);

}  // namespace trovi::platform
