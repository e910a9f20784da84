#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <charconv>

#include "Text/ByteScan.h"
#include "Text/JSON.h"

namespace trovi::platform {
namespace {

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isHighSurrogate(unsigned unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLowSurrogate(unsigned unit) { return unit >= 0xDC00 && unit < 0xE000; }

/// Recursive descent, one function per grammar rule. Each returns false at the first error.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  bool document(JSONValue& out) {
    skipSpace();
    if (!value(out)) return false;
    skipSpace();
    return rest_.empty();
  }

 private:
  static constexpr int maxDepth = 512;

  bool take(char c) {
    if (rest_.empty() || rest_.front() != c) return false;
    rest_.remove_prefix(1);
    return true;
  }
  bool takeWord(std::string_view word) {
    if (!rest_.starts_with(word)) return false;
    rest_.remove_prefix(word.size());
    return true;
  }
  /// Takes `c` and the white space around it.
  bool takeMark(char c) {
    skipSpace();
    if (!take(c)) return false;
    skipSpace();
    return true;
  }
  void skipSpace() {
    while (!rest_.empty() && isSpace(rest_.front())) rest_.remove_prefix(1);
  }
  std::size_t digits() {
    const auto end = std::find_if_not(rest_.begin(), rest_.end(), isDigit);
    const auto count = static_cast<std::size_t>(end - rest_.begin());
    rest_.remove_prefix(count);
    return count;
  }

  bool value(JSONValue& out) {
    if (rest_.empty()) return false;
    switch (rest_.front()) {
      case '{': return object(out.content.emplace<JSONObject>());
      case '[': return array(out.content.emplace<JSONArray>());
      case '"': return string(out.content.emplace<std::string>());
      case 't': out = true; return takeWord("true");
      case 'f': out = false; return takeWord("false");
      case 'n': return takeWord("null");
      default: return number(out.content.emplace<JSONNumber>());
    }
  }

  bool object(JSONObject& members) {
    if (depth_ == 0) members.reserve(4);  // as many as a request has
    return elements('{', '}', [&] {
      auto& [key, member] = members.emplace_back();
      return string(key) && takeMark(':') && value(member);
    });
  }

  bool array(JSONArray& array) {
    return elements('[', ']', [&] { return value(array.emplace_back()); });
  }

  template <class Element>
  bool elements(char open, char close, const Element& element) {
    if (depth_ == maxDepth) return false;
    ++depth_;
    takeMark(open);
    if (!takeMark(close)) {
      do {
        if (!element()) return false;
      } while (takeMark(','));
      if (!takeMark(close)) return false;
    }
    --depth_;
    return true;
  }

  bool number(JSONNumber& out) {
    const std::string_view start = rest_;
    take('-');
    if (!take('0') && digits() == 0) return false;
    if (take('.') && digits() == 0) return false;
    if (take('e') || take('E')) {
      if (!take('+')) take('-');
      if (digits() == 0) return false;
    }
    out.literal = start.substr(0, start.size() - rest_.size());
    return true;
  }

  bool string(std::string& out) {
    if (!take('"')) return false;
    for (;;) {
      const std::size_t plain = plainPrefix(rest_);
      out.append(rest_.data(), plain);
      rest_.remove_prefix(plain);
      if (take('"')) return true;
      if (!take('\\') || !escape(out)) return false;
    }
  }

  bool escape(std::string& out) {
    static constexpr std::string_view names = "\"\\/bfnrt";
    static constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
    if (take('u')) return unicodeEscape(out);
    const std::size_t i = rest_.empty() ? std::string_view::npos : names.find(rest_.front());
    if (i == std::string_view::npos) return false;
    out += meanings[i];
    rest_.remove_prefix(1);
    return true;
  }

  bool unicodeEscape(std::string& out) {
    unsigned scalar = 0;
    if (!hexUnit(scalar) || isLowSurrogate(scalar)) return false;
    if (isHighSurrogate(scalar)) {
      unsigned low = 0;
      if (!takeWord("\\u") || !hexUnit(low) || !isLowSurrogate(low)) return false;
      scalar = 0x10000 + ((scalar - 0xD800) << 10) + (low - 0xDC00);
    }
    std::array<utf8proc_uint8_t, 4> bytes{};
    const auto size = utf8proc_encode_char(static_cast<utf8proc_int32_t>(scalar), bytes.data());
    out.append(bytes.begin(), bytes.begin() + size);
    return true;
  }

  bool hexUnit(unsigned& unit) {
    if (rest_.size() < 4) return false;
    const auto [stop, error] = std::from_chars(rest_.data(), rest_.data() + 4, unit, 16);
    if (error != std::errc{} || stop != rest_.data() + 4) return false;
    rest_.remove_prefix(4);
    return true;
  }

  std::string_view rest_;
  int depth_ = 0;
};

}  // namespace

std::optional<JSONValue> parseJSON(std::string_view text) {
  std::optional<JSONValue> value(std::in_place);
  if (!Reader(text).document(*value)) value.reset();
  return value;
}

}  // namespace trovi::platform
