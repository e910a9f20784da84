#include <algorithm>
#include <array>

#include "Text/ByteScan.h"
#include "Text/JSON.h"

namespace trovi::platform {
namespace {

/// Appends `text`, which must be valid UTF-8, with the escapes for a JSON string, or with those for
/// a JSON string inside another (`isNested`).
void appendEscaped(std::string& out, std::string_view text, bool isNested) {
  static constexpr std::string_view bytes = "\"\\\b\f\n\r\t";
  static constexpr std::string_view names = "\"\\bfnrt";
  static constexpr std::string_view digits = "0123456789abcdef";
  for (;;) {
    const std::size_t plain = plainPrefix(text);
    out.append(text.data(), plain);
    if (plain == text.size()) return;
    const auto byte = static_cast<unsigned char>(text[plain]);
    std::array escape{'\\', 'u', '0', '0', digits[byte >> 4], digits[byte & 0xF]};
    std::size_t size = escape.size();
    if (const auto i = bytes.find(text[plain]); i != std::string_view::npos) {
      escape[1] = names[i];
      size = 2;
    }
    const std::string_view escaped(escape.data(), size);
    if (isNested) {
      appendEscaped(out, escaped, false);
    } else {
      out += escaped;
    }
    text.remove_prefix(plain + 1);
  }
}

class Writer {
 public:
  /// `isNested`: for the inside of a JSON string, so that people can read it there: sorted and on
  /// several lines.
  Writer(std::string& out, bool isNested) : out_(out), isNested_(isNested) {}

  void write(const JSONValue& value) {
    std::visit([this](const auto& content) { write(content); }, value.content);
  }

 private:
  void write(std::monostate /*null*/) { out_ += "null"; }
  void write(bool value) { out_ += value ? "true" : "false"; }
  void write(const JSONNumber& number) { out_ += number.literal; }
  void write(const std::string& text) {
    out_ += isNested_ ? "\\\"" : "\"";
    appendEscaped(out_, text, isNested_);
    out_ += isNested_ ? "\\\"" : "\"";
  }
  void write(const JSONArray& array) {
    container('[', array, ']', [this](const JSONValue& element) { write(element); });
  }
  void write(const JSONObject& object) {
    const auto byKey = [](const auto& a, const auto& b) { return a.first < b.first; };
    if (isNested_ && !std::is_sorted(object.begin(), object.end(), byKey)) {
      JSONObject sorted = object;
      std::stable_sort(sorted.begin(), sorted.end(), byKey);
      return write(sorted);
    }
    container('{', object, '}', [this](const auto& member) {
      write(member.first);
      out_ += isNested_ ? ": " : ":";
      write(member.second);
    });
  }

  template <class Container, class Element>
  void container(char open, const Container& elements, char close, const Element& element) {
    out_ += open;
    ++level_;
    bool first = true;
    for (const auto& each : elements) {
      if (!first) out_ += ',';
      first = false;
      breakLine();
      element(each);
    }
    --level_;
    if (!elements.empty()) breakLine();
    out_ += close;
  }

  void breakLine() {
    if (!isNested_) return;
    out_ += "\\n";
    out_.append(2 * level_, ' ');
  }

  std::string& out_;
  bool isNested_;
  std::size_t level_ = 0;
};

}  // namespace

void appendJSON(std::string& out, const JSONValue& value) { Writer(out, false).write(value); }

void appendPrettyJSONText(std::string& out, const JSONValue& value) {
  out += '"';
  Writer(out, true).write(value);
  out += '"';
}

}  // namespace trovi::platform
