// The loops that every byte of a transcript passes through, 16 bytes at a time, in the vector types
// of g++ and clang.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace trovi::platform {

namespace bytescan {

/// Whether `c` must be escaped inside a JSON string.
constexpr bool isSpecial(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
}

inline constexpr std::size_t blockSize = 16;
using Block [[gnu::vector_size(blockSize)]] = signed char;  // signed: UTF-8's 0x80 is the smallest

inline Block load(const char* bytes) {
  Block block;
  std::memcpy(&block, bytes, blockSize);
  return block;
}

/// Whether a comparison of two blocks holds for any of their bytes.
inline bool any(Block comparison) {
  using Halves [[gnu::vector_size(blockSize)]] = std::uint64_t;
  const auto halves = reinterpret_cast<Halves>(comparison);
  return (halves[0] | halves[1]) != 0;
}

inline bool hasSpecial(const char* block) {
  const Block bytes = load(block);
  return any(((bytes & -0x20) == 0) | (bytes == '"') | (bytes == '\\'));
}

/// Whether the block is well-formed UTF-8 of one or two bytes per character, as far as it and the
/// byte before it show.
inline bool isLatin(const char* block) {
  constexpr auto signedByte = [](int byte) { return static_cast<signed char>(byte); };
  const auto leads = [&](Block bytes) {
    return (bytes > signedByte(0xC1)) & (bytes < signedByte(0xE0));
  };
  // A mask has all bits of a byte set or none, so `^` finds where two disagree. A following byte
  // must stand exactly after each lead: in C3 A7 61 ("ça") the second byte follows and the first,
  // seen one place to the right, leads there. Every byte from 80 must be one of the two.
  const Block bytes = load(block);
  const Block following = bytes < signedByte(0xC0);
  const Block misplaced = following ^ leads(load(block - 1));
  const Block unknown = (bytes < 0) ^ (following | leads(bytes));
  return !any(misplaced | unknown);
}

}  // namespace bytescan

/// The number of bytes at the start of `text` that need no escape inside a JSON string: all before
/// the first quotation mark, backslash or control character.
inline std::size_t plainPrefix(std::string_view text) {
  using namespace bytescan;
  std::size_t i = 0;
  while (i + blockSize <= text.size() && !hasSpecial(text.data() + i)) i += blockSize;
  while (i < text.size() && !isSpecial(text[i])) ++i;
  return i;
}

/// The length of a well-formed UTF-8 prefix of `text`, not always the longest: whole blocks of
/// characters of one or two bytes, most of Portuguese text. No branch depends on where the accents
/// are.
inline std::size_t latinPrefix(std::string_view text) {
  using namespace bytescan;
  if (text.size() <= blockSize || static_cast<unsigned char>(text[0]) >= 0x80) return 0;
  const char* const last = text.data() + text.size() - blockSize;
  const char* at = text.data() + 1;
  while (at <= last && isLatin(at)) at += blockSize;
  if (at > last && isLatin(last)) at = last + blockSize;  // overlaps the block before
  const auto size = static_cast<std::size_t>(at - text.data());
  return static_cast<unsigned char>(at[-1]) < 0xC0 ? size : size - 1;  // no partial character
}

}  // namespace trovi::platform
