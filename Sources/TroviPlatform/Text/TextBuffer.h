#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

namespace trovi::platform {

/// A growing text that keeps its memory, unless that is huge, when it is cleared, and never touches
/// a byte before it is written. Running out of memory throws std::bad_alloc and leaves the text as
/// it was.
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
    if (text.empty()) return;  // it may point nowhere
    std::memcpy(room(text.size()), text.data(), text.size());
    size_ += text.size();
  }
  void append(std::size_t count, char c) {
    std::memset(room(count + 1), c, count);
    size_ += count;
  }

  /// How many JSON strings a text stands in: `twice` where a string holds JSON that holds it.
  enum class Depth { once, twice };

  /// Appends `text`, which is valid UTF-8, as it stands between the quotation marks.
  void appendEscaped(std::string_view text, Depth depth);

 private:
  /// The end of the text, with `count` bytes behind it to write on.
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
