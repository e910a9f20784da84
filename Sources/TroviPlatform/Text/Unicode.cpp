#include "Text/Unicode.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

namespace trovi::platform {
namespace {

/// Invisible inside a word; dropped like a mark.
constexpr utf8proc_int32_t zeroWidthNonJoiner = 0x200C;
/// Latin, Greek and Cyrillic are below this; their marks are diacritics. Above, a mark may be a
/// letter.
constexpr utf8proc_int32_t endOfMarkedScripts = 0x0510;

const utf8proc_uint8_t* bytes(std::string_view text) {
  return reinterpret_cast<const utf8proc_uint8_t*>(text.data());
}

utf8proc_ssize_t size(std::string_view text) { return static_cast<utf8proc_ssize_t>(text.size()); }

struct Scalar {
  utf8proc_int32_t value;
  std::size_t length;  ///< in bytes
};

Scalar firstScalar(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < 0x80) return {first, 1};
  utf8proc_int32_t value = 0;
  const auto length = utf8proc_iterate(bytes(text), size(text), &value);
  return {value, static_cast<std::size_t>(length)};
}

bool isBlank(utf8proc_int32_t scalar) {
  if (scalar < 0x80) return scalar == ' ' || scalar == '\t';
  return utf8proc_category(scalar) == UTF8PROC_CATEGORY_ZS;
}

bool isWhiteSpace(utf8proc_int32_t scalar) {
  return isBlank(scalar) || (scalar >= 0x0A && scalar <= 0x0D) || scalar == 0x85 ||
         scalar == 0x2028 || scalar == 0x2029;
}

template <class Predicate>
std::string_view trimmed(std::string_view text, Predicate isTrimmed) {
  while (!text.empty()) {
    const auto [scalar, length] = firstScalar(text);
    if (!isTrimmed(scalar)) break;
    text.remove_prefix(length);
  }
  while (!text.empty()) {
    std::size_t last = text.size() - 1;
    while (last > 0 && (static_cast<unsigned char>(text[last]) & 0xC0) == 0x80) --last;
    if (!isTrimmed(firstScalar(text.substr(last)).value)) break;
    text.remove_suffix(text.size() - last);
  }
  return text;
}

bool isMark(utf8proc_int32_t scalar) {
  const auto category = utf8proc_category(scalar);
  return category == UTF8PROC_CATEGORY_MN || category == UTF8PROC_CATEGORY_ME ||
         scalar == zeroWidthNonJoiner;
}

std::string mapped(std::string_view text, int options) {
  utf8proc_uint8_t* result = nullptr;
  const auto length =
      utf8proc_map(bytes(text), size(text), &result, static_cast<utf8proc_option_t>(options));
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(result, &std::free);
  if (length < 0) throw std::bad_alloc();  // nothing else can fail on valid UTF-8
  return {reinterpret_cast<const char*>(result), static_cast<std::size_t>(length)};
}

/// NFD. utf8proc itself orders marks by swapping neighbours, which takes quadratic time on a line
/// of nothing but marks.
std::vector<utf8proc_int32_t> decomposed(std::string_view text) {
  std::vector<utf8proc_int32_t> scalars;
  scalars.reserve(text.size());
  while (!text.empty()) {
    const auto [scalar, length] = firstScalar(text);
    std::array<utf8proc_int32_t, 4> parts{};  // the longest canonical decomposition
    int unused = 0;
    const auto count =
        utf8proc_decompose_char(scalar, parts.data(), parts.size(), UTF8PROC_DECOMPOSE, &unused);
    scalars.insert(scalars.end(), parts.begin(), parts.begin() + count);
    text.remove_prefix(length);
  }
  const auto orderOf = [](utf8proc_int32_t scalar) {
    return utf8proc_get_property(scalar)->combining_class;
  };
  const auto isStarter = [&](utf8proc_int32_t scalar) { return orderOf(scalar) == 0; };
  for (auto at = scalars.begin(); at != scalars.end();) {
    const auto marks = std::find_if_not(at, scalars.end(), isStarter);
    at = std::find_if(marks, scalars.end(), isStarter);
    std::stable_sort(marks, at, [&](auto a, auto b) { return orderOf(a) < orderOf(b); });
  }
  return scalars;
}

std::string withoutDiacritics(const std::vector<utf8proc_int32_t>& decomposed) {
  std::string kept;
  utf8proc_int32_t base = -1;
  for (const utf8proc_int32_t scalar : decomposed) {
    const bool mark = base >= 0 && isMark(scalar);
    if (!mark) base = scalar;
    if (mark && base < endOfMarkedScripts) continue;
    std::array<utf8proc_uint8_t, 4> encoded{};
    const auto length = utf8proc_encode_char(scalar, encoded.data());
    kept.append(encoded.begin(), encoded.begin() + length);
  }
  return kept;
}

}  // namespace

std::string_view trimmedBlanks(std::string_view text) { return trimmed(text, isBlank); }

std::string_view trimmedWhiteSpace(std::string_view text) { return trimmed(text, isWhiteSpace); }

std::string_view firstCluster(std::string_view text) {
  if (text.empty()) return text;
  auto [scalar, end] = firstScalar(text);
  utf8proc_int32_t state = 0;
  while (end < text.size()) {
    const auto [next, length] = firstScalar(text.substr(end));
    if (utf8proc_grapheme_break_stateful(scalar, next, &state)) break;
    scalar = next;
    end += length;
  }
  return text.substr(0, end);
}

std::string_view firstClusters(std::string_view text, std::size_t count) {
  std::size_t end = 0;
  for (; count > 0 && end < text.size(); --count) end += firstCluster(text.substr(end)).size();
  return text.substr(0, end);
}

std::size_t clusterCount(std::string_view text) {
  std::size_t count = 0;
  for (; !text.empty(); ++count) text.remove_prefix(firstCluster(text).size());
  return count;
}

std::string folded(std::string_view text) {
  // Remove marks before folding case: folding would turn U+0345, a mark, into the letter iota.
  return mapped(withoutDiacritics(decomposed(text)),
                UTF8PROC_CASEFOLD | UTF8PROC_COMPOSE | UTF8PROC_STABLE);
}

}  // namespace trovi::platform
