#include "JSON.h"

namespace trovi::platform {
namespace {

enum class Layout {
  compact,
  prettyText,  ///< on several lines, as it stands inside a JSON string
};

template <Layout layout>
class Writer {
 public:
  explicit Writer(TextBuffer& out) : out_(out) {}

  void write(const JSONValue& value) {
    if (const auto* text = value.text()) {
      write(*text);
    } else if (const auto* number = value.number()) {
      out_.append(number->literal);
    } else if (const auto* object = value.object()) {
      write(*object);
    } else if (const auto* array = value.array()) {
      container('[', *array, ']', [this](const JSONValue& element) { write(element); });
    } else if (const auto* written = value.written()) {
      writeJSON(*written);
    } else if (const auto* boolean = value.boolean()) {
      out_.append(*boolean ? "true" : "false");
    } else {
      out_.append("null");
    }
  }

  void write(const JSONObject& object) {
    if (layout == Layout::prettyText && !object.isSorted()) {
      container('{', object.sorted(), '}', [this](const auto* member) { this->write(*member); });
    } else {
      container('{', object, '}', [this](const auto& member) { this->write(member); });
    }
  }

 private:
  void write(const JSONObject::Member& member) {
    write(member.first);
    out_.append(layout == Layout::prettyText ? ": " : ":");
    write(member.second);
  }

  void write(const std::string& text) {
    if constexpr (layout == Layout::prettyText) {
      out_.append("\\\"");
      out_.appendEscaped(text, TextBuffer::Depth::twice);
      out_.append("\\\"");
    } else {
      out_.append('"');
      out_.appendEscaped(text, TextBuffer::Depth::once);
      out_.append('"');
    }
  }

  void writeJSON(const std::string& json) {
    if constexpr (layout == Layout::prettyText) {
      out_.appendEscaped(json, TextBuffer::Depth::once);
    } else {
      out_.append(json);
    }
  }

  template <class Container, class Element>
  void container(char open, const Container& elements, char close, const Element& element) {
    out_.append(open);
    ++level_;
    bool first = true;
    for (const auto& each : elements) {
      if (!first) out_.append(',');
      first = false;
      breakLine();
      element(each);
    }
    --level_;
    if (!elements.empty()) breakLine();
    out_.append(close);
  }

  void breakLine() {
    if constexpr (layout == Layout::prettyText) {
      out_.append("\\n");
      out_.append(2 * level_, ' ');
    }
  }

  TextBuffer& out_;
  std::size_t level_ = 0;
};

}  // namespace

void appendJSON(TextBuffer& out, const JSONObject& object) {
  Writer<Layout::compact>(out).write(object);
}

JSONValue JSONValue::prettyText(const JSONValue& value) {
  thread_local TextBuffer out;  // kept for its memory: a long text grows through many sizes
  out.clear();
  out.append('"');
  Writer<Layout::prettyText>(out).write(value);
  out.append('"');
  JSONValue text;
  text.content_ = std::make_shared<const std::string>(out.view());
  out.clear();  // a huge one goes at once
  return text;
}

}  // namespace trovi::platform
