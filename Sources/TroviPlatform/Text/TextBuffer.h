#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

namespace trovi::platform {

/// A growing text. `clear` keeps its memory unless that is huge; no byte is touched before it is
/// written. When memory runs out, throws std::bad_alloc; `appendEscaped` may have appended a part.
class TextBuffer {
 public:
  TextBuffer() = default;
  TextBuffer(const TextBuffer&) = delete;
  TextBuffer& operator=(const TextBuffer&) = delete;

  std::string_view view() const { return {data_.get(), size_}; }
  void clear();
  /// Keeps the first `size` bytes.
  void shrink(std::size_t size) { size_ = size; }

  void append(char c) {
    *room(1) = c;
    ++size_;
  }
  void append(std::string_view text) {
    if (text.empty()) return;  // its pointer may be null
    std::memcpy(room(text.size()), text.data(), text.size());
    size_ += text.size();
  }
  void append(std::size_t count, char c) {
    std::memset(room(count + 1), c, count);
    size_ += count;
  }

  /// How many JSON strings enclose a text: `twice` if it is in JSON that is itself in a JSON
  /// string.
  enum class Depth { once, twice };

  /// Appends `text`, which must be valid UTF-8, with escapes but without quotation marks.
  void appendEscaped(std::string_view text, Depth depth);

 private:
  /// The end of the text, with room for at least `count` bytes after it.
  char* room(std::size_t count) {
    if (count > capacity_ - size_) grow(count);
    return data_.get() + size_;
  }
  void grow(std::size_t count);

  struct Freer {
    void operator()(char* memory) const { std::free(memory); }
  };
  std::unique_ptr<char, Freer> data_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace trovi::platform
