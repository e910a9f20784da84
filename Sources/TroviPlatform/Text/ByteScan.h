// Sixteen bytes at a time: the loops that every byte of a transcript passes through.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__ARM_NEON)
#include <arm_neon.h>
#endif

namespace trovi::platform {

namespace bytescan {

/// Needs an escape inside a JSON string.
constexpr bool isSpecial(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
}

inline constexpr std::size_t blockSize = 16;

/// One mark a byte in an integer, `bitsPerByte` bits wide, that of the first byte the lowest; 0
/// when no byte is marked.
#if defined(__ARM_NEON)
using Marks = std::uint64_t;
inline constexpr int bitsPerByte = 4;
#else
using Marks = std::uint32_t;
inline constexpr int bitsPerByte = 1;
#endif

/// How many bytes precede the first marked one.
inline std::size_t bytesBefore(Marks marks) {
  return static_cast<std::size_t>(std::countr_zero(marks) / bitsPerByte);
}

/// What the bytes of a block are in UTF-8, as far as characters of two bytes go.
struct Latin {
  Marks nonASCII, leads, continuations;  ///< 80..FF, C2..DF, 80..BF
};

#if defined(__SSE2__)

inline __m128i load(const char* block) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(block));
}

inline Marks packed(__m128i marks) { return static_cast<Marks>(_mm_movemask_epi8(marks)); }

inline Marks specials(const char* block) {
  const __m128i bytes = load(block);
  const __m128i control = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(0x1F)), bytes);
  const __m128i quote = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"'));
  const __m128i backslash = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'));
  return packed(_mm_or_si128(control, _mm_or_si128(quote, backslash)));
}

inline Latin latin(const char* block) {
  const __m128i bytes = load(block);  // compared as signed: 80 is the smallest, FF is -1
  const auto below = [&](int limit) {
    return _mm_cmplt_epi8(bytes, _mm_set1_epi8(static_cast<char>(limit)));
  };
  return {packed(bytes), packed(_mm_andnot_si128(below(0xC2), below(0xE0))), packed(below(0xC0))};
}

#elif defined(__ARM_NEON)

inline uint8x16_t load(const char* block) {
  return vld1q_u8(reinterpret_cast<const std::uint8_t*>(block));
}

inline Marks packed(uint8x16_t marks) {
  const uint8x8_t nibbles = vshrn_n_u16(vreinterpretq_u16_u8(marks), 4);
  return vget_lane_u64(vreinterpret_u64_u8(nibbles), 0);
}

inline Marks specials(const char* block) {
  const uint8x16_t bytes = load(block);
  const uint8x16_t quoting =
      vorrq_u8(vceqq_u8(bytes, vdupq_n_u8('"')), vceqq_u8(bytes, vdupq_n_u8('\\')));
  return packed(vorrq_u8(vcltq_u8(bytes, vdupq_n_u8(0x20)), quoting));
}

inline Latin latin(const char* block) {
  const uint8x16_t bytes = load(block);
  const auto within = [&](std::uint8_t low, std::uint8_t high) {
    return packed(vandq_u8(vcgeq_u8(bytes, vdupq_n_u8(low)), vcleq_u8(bytes, vdupq_n_u8(high))));
  };
  return {within(0x80, 0xFF), within(0xC2, 0xDF), within(0x80, 0xBF)};
}

#else

template <class Predicate>
Marks marked(const char* block, Predicate isMarked) {
  Marks marks = 0;
  for (std::size_t i = 0; i < blockSize; ++i) marks |= Marks{isMarked(block[i])} << i;
  return marks;
}

inline Marks specials(const char* block) { return marked(block, isSpecial); }

inline Latin latin(const char* block) {
  const auto within = [&](unsigned char low, unsigned char high) {
    return marked(block, [=](char c) {
      return static_cast<unsigned char>(c) >= low && static_cast<unsigned char>(c) <= high;
    });
  };
  return {within(0x80, 0xFF), within(0xC2, 0xDF), within(0x80, 0xBF)};
}

#endif

}  // namespace bytescan

/// How many bytes at the start of `text` stand for themselves inside a JSON string: all up to the
/// first quotation mark, backslash or control character.
inline std::size_t plainPrefix(std::string_view text) {
  using namespace bytescan;
  std::size_t i = 0;
  for (; i + blockSize <= text.size(); i += blockSize) {
    const Marks marks = specials(text.data() + i);
    if (marks != 0) return i + bytesBefore(marks);
  }
  while (i < text.size() && !isSpecial(text[i])) ++i;
  return i;
}

/// A number of bytes at the start of `text` that are well-formed UTF-8: whole blocks of characters
/// of one and two bytes, which is most of what people write in Portuguese. No branch depends on
/// where the accents are.
inline std::size_t latinPrefix(std::string_view text) {
  using namespace bytescan;
  constexpr int lastByte = (static_cast<int>(blockSize) - 1) * bitsPerByte;
  std::size_t i = 0;
  Marks open = 0;  // marks the first byte where the block before ended with a lead
  for (; i + blockSize <= text.size(); i += blockSize) {
    const auto [nonASCII, leads, continuations] = latin(text.data() + i);
    const Marks openAtEnd = leads >> lastByte;
    const Marks expected = ((leads ^ (openAtEnd << lastByte)) << bitsPerByte) | open;
    if (continuations != expected || nonASCII != (leads | continuations)) break;
    open = openAtEnd;
  }
  return i - (open != 0 ? 1 : 0);
}

}  // namespace trovi::platform
