#include "TextBuffer.h"

#include <algorithm>
#include <array>
#include <new>

#include "ByteScan.h"

namespace trovi::platform {
namespace {

/// What stands for a special byte inside a JSON string.
struct Escape {
  std::array<char, 6> text{};
  std::size_t size = 0;
};

constexpr auto escapes = [] {
  constexpr std::string_view digits = "0123456789abcdef";
  std::array<Escape, 256> table{};
  for (std::size_t c = 0; c < 0x20; ++c) {
    table[c] = {{'\\', 'u', '0', '0', digits[c >> 4], digits[c & 0xF]}, 6};
  }
  constexpr std::string_view bytes = "\"\\\b\f\n\r\t";
  constexpr std::string_view names = "\"\\bfnrt";
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    table[static_cast<unsigned char>(bytes[i])] = {{'\\', names[i]}, 2};
  }
  return table;
}();

char* putEscape(char* out, char c) {
  const Escape& escape = escapes[static_cast<unsigned char>(c)];
  std::memcpy(out, escape.text.data(), escape.text.size());
  return out + escape.size;
}

/// Writes `text` with its escapes, and up to a block of bytes behind them; returns their end.
char* putEscaped(char* out, std::string_view text) {
  using namespace bytescan;
  const char* in = text.data();
  const char* const end = in + text.size();
  while (static_cast<std::size_t>(end - in) >= blockSize) {
    std::memcpy(out, in, blockSize);
    const Marks marks = specials(in);
    if (marks == 0) {
      in += blockSize;
      out += blockSize;
    } else {
      const std::size_t plain = bytesBefore(marks);
      out = putEscape(out + plain, in[plain]);
      in += plain + 1;
    }
  }
  for (; in < end; ++in) {
    if (isSpecial(*in)) {
      out = putEscape(out, *in);
    } else {
      *out++ = *in;
    }
  }
  return out;
}

}  // namespace

void TextBuffer::clear() {
  constexpr std::size_t huge = std::size_t{4} << 20;
  if (capacity_ > huge) {
    data_.reset();
    capacity_ = 0;
  }
  size_ = 0;
}

void TextBuffer::appendQuoted(std::string_view text) {
  constexpr std::size_t piece = 4096;  // so that the room for the worst case stays small
  append('"');
  for (;;) {
    const std::string_view next = text.substr(0, piece);
    char* const start = room(escapes[0].text.size() * next.size() + bytescan::blockSize);
    char* end = putEscaped(start, next);
    text.remove_prefix(next.size());
    if (text.empty()) *end++ = '"';
    size_ += static_cast<std::size_t>(end - start);
    if (text.empty()) return;
  }
}

void TextBuffer::grow(std::size_t count) {
  const std::size_t wanted = std::max(size_ + count, 2 * capacity_);
  auto* grown = static_cast<char*>(std::realloc(data_.get(), wanted));
  if (grown == nullptr) throw std::bad_alloc();
  static_cast<void>(data_.release());  // realloc has taken it
  data_.reset(grown);
  capacity_ = wanted;
}

}  // namespace trovi::platform
