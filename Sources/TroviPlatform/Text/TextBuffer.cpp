#include "TextBuffer.h"

#include <algorithm>
#include <array>
#include <new>

#include "ByteScan.h"

namespace trovi::platform {
namespace {

struct Escape {
  std::array<char, 8> text{};
  std::size_t size = 0;
};

/// The escape for each special byte in a JSON string.
using Escapes = std::array<Escape, 256>;

constexpr Escapes escapesOnce = [] {
  constexpr std::string_view digits = "0123456789abcdef";
  Escapes table{};
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

constexpr Escapes escapesTwice = [] {
  Escapes table{};
  for (std::size_t c = 0; c < table.size(); ++c) {
    Escape& twice = table[c];
    for (const char once : std::string_view(escapesOnce[c].text.data(), escapesOnce[c].size)) {
      if (bytescan::isSpecial(once)) twice.text[twice.size++] = '\\';
      twice.text[twice.size++] = once;
    }
  }
  return table;
}();

char* putEscape(char* out, char c, const Escapes& escapes) {
  const Escape& escape = escapes[static_cast<unsigned char>(c)];
  std::memcpy(out, escape.text.data(), escape.text.size());
  return out + escape.size;
}

/// Writes `text` with escapes, and up to a block of bytes after them; returns their end.
char* putEscaped(char* out, std::string_view text, const Escapes& escapes) {
  using namespace bytescan;
  const char* in = text.data();
  const char* const end = in + text.size();
  while (static_cast<std::size_t>(end - in) >= blockSize) {
    const Marks marks = specials(in);
    std::memcpy(out, in, blockSize);
    if (marks == 0) {
      in += blockSize;
      out += blockSize;
    } else {
      const std::size_t plain = bytesBefore(marks);
      out = putEscape(out + plain, in[plain], escapes);
      in += plain + 1;
    }
  }
  for (; in < end; ++in) {
    if (isSpecial(*in)) {
      out = putEscape(out, *in, escapes);
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

void TextBuffer::appendEscaped(std::string_view text, Depth depth) {
  constexpr std::size_t piece = 4096;  // keeps the room for the worst case small
  const Escapes& escapes = depth == Depth::once ? escapesOnce : escapesTwice;
  while (!text.empty()) {
    const std::string_view next = text.substr(0, piece);
    char* const start = room(sizeof(Escape::text) * next.size() + bytescan::blockSize);
    size_ += static_cast<std::size_t>(putEscaped(start, next, escapes) - start);
    text.remove_prefix(next.size());
  }
}

void TextBuffer::grow(std::size_t count) {
  const std::size_t wanted = std::max(size_ + count, 2 * capacity_);
  auto* grown = static_cast<char*>(std::realloc(data_.get(), wanted));
  if (grown == nullptr) throw std::bad_alloc();
  static_cast<void>(data_.release());  // realloc has freed or moved it
  data_.reset(grown);
  capacity_ = wanted;
}

}  // namespace trovi::platform
