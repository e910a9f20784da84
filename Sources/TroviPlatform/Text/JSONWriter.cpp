#include <new>

#include "JSON.h"

namespace trovi::platform {
namespace {

enum class Layout {
  compact,
  prettyText,  ///< on several lines, escaped for a JSON string
};

template <Layout layout>
class Writer {
 public:
  explicit Writer(TextBuffer& out) : out_(out) {}

  void write(const JSONValue& value) {
    if (const auto* text = value.text()) {
      write(std::string_view(*text));
    } else if (const auto* number = value.number()) {
      out_.append(number->literal);
    } else if (const auto* object = value.object()) {
      write(*object);
    } else if (const auto* array = value.array()) {
      container('[', *array, ']', [this](const JSONValue& element) { write(element); });
    } else if (const auto* written = value.written()) {
      layout == Layout::compact ? out_.append(*written)
                                : out_.appendEscaped(*written, TextBuffer::Depth::once);
    } else if (const auto* payload = value.payload()) {
      writeText(*payload);
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
    write(member.first.view(), member.first.isLiteral());
    out_.append(layout == Layout::prettyText ? ": " : ":");
    write(member.second);
  }

  void write(std::string_view text, bool isPlain = false) {
    out_.append(quote);
    isPlain ? out_.append(text) : out_.appendEscaped(text, depth);
    out_.append(quote);
  }

  void writeText(const JSONValue& payload) {
    const std::size_t start = out_.view().size();
    try {
      out_.append('"');
      Writer<Layout::prettyText>(out_).write(payload);
    } catch (const std::bad_alloc&) {
      out_.shrink(start);
      out_.append('"');
    }
    out_.append('"');
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

  static constexpr auto depth =
      layout == Layout::compact ? TextBuffer::Depth::once : TextBuffer::Depth::twice;
  static constexpr std::string_view quote = layout == Layout::compact ? "\"" : "\\\"";

  TextBuffer& out_;
  std::size_t level_ = 0;
};

}  // namespace

void appendJSON(TextBuffer& out, const JSONObject& object) {
  Writer<Layout::compact>(out).write(object);
}

}  // namespace trovi::platform
