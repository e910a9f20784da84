// The loops that every byte of a transcript passes through, 16 bytes at a time.
#pragma once

#include <algorithm>
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

/// Whether `c` must be escaped inside a JSON string.
constexpr bool isSpecial(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
}

inline constexpr std::size_t blockSize = 16;

/// One mark per byte of a block, `bitsPerByte` bits wide, the first byte's mark in the lowest bits;
/// 0 if no byte is marked.
#if defined(__ARM_NEON)
using Marks = std::uint64_t;
inline constexpr int bitsPerByte = 4;
#else
using Marks = std::uint32_t;
inline constexpr int bitsPerByte = 1;
#endif

/// The number of bytes before the first marked one.
inline std::size_t bytesBefore(Marks marks) {
  return static_cast<std::size_t>(std::countr_zero(marks) / bitsPerByte);
}

// For one block, `specials` marks its special bytes. `isLatin` says whether it is well-formed UTF-8
// of one or two bytes per character, as far as the block and the byte before it show.

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

inline bool isLatin(const char* block) {
  const auto below = [](__m128i bytes, int limit) {  // signed: 0x80 is the smallest, 0xFF is -1
    return _mm_cmplt_epi8(bytes, _mm_set1_epi8(static_cast<char>(limit)));
  };
  const auto leads = [&](__m128i bytes) {
    return _mm_andnot_si128(below(bytes, 0xC2), below(bytes, 0xE0));
  };
  const __m128i bytes = load(block);
  const __m128i following = below(bytes, 0xC0);
  const __m128i misplaced = _mm_xor_si128(following, leads(load(block - 1)));
  const __m128i unknown = _mm_xor_si128(bytes, _mm_or_si128(following, leads(bytes)));
  return packed(_mm_or_si128(misplaced, unknown)) == 0;
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

inline bool isLatin(const char* block) {
  const auto within = [](uint8x16_t bytes, std::uint8_t low, std::uint8_t high) {
    return vandq_u8(vcgeq_u8(bytes, vdupq_n_u8(low)), vcleq_u8(bytes, vdupq_n_u8(high)));
  };
  const uint8x16_t bytes = load(block);
  const uint8x16_t following = within(bytes, 0x80, 0xBF);
  const uint8x16_t misplaced = veorq_u8(following, within(load(block - 1), 0xC2, 0xDF));
  const uint8x16_t unknown = vorrq_u8(within(bytes, 0xC0, 0xC1), within(bytes, 0xE0, 0xFF));
  return packed(vorrq_u8(misplaced, unknown)) == 0;
}

#else

inline Marks specials(const char* block) {
  Marks marks = 0;
  for (std::size_t i = 0; i < blockSize; ++i) marks |= Marks{isSpecial(block[i])} << i;
  return marks;
}

inline bool isLatin(const char* block) {
  const auto follows = [](char c) { return (c & 0xC0) == 0x80; };
  const auto leads = [](char c) { return (c & 0xE0) == 0xC0 && (c & 0x1E) != 0; };
  for (const char* at = block; at < block + blockSize; ++at) {
    if (follows(*at) != leads(at[-1])) return false;
    if ((*at & 0x80) != 0 && !follows(*at) && !leads(*at)) return false;
  }
  return true;
}

#endif

}  // namespace bytescan

/// The number of bytes at the start of `text` that need no escape inside a JSON string: all before
/// the first quotation mark, backslash or control character.
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
