// Text as Unicode sees it. Every function takes any bytes; those after `repairedUTF8` expect its
// result, valid UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace trovi::platform {

/// `bytes` as valid UTF-8: each maximal ill-formed part becomes one U+FFFD.
std::string repairedUTF8(std::string_view bytes);

/// The same without a copy where there is nothing to repair: the result is `bytes` itself or lies
/// in `storage`.
std::string_view repairedUTF8(std::string_view bytes, std::string& storage);

/// `text` without blanks (category Zs, and tab) at either end. Line breaks stay.
std::string_view trimmedBlanks(std::string_view text);

/// `text` without white space at either end: blanks, and the line breaks U+000A to U+000D, U+0085,
/// U+2028 and U+2029.
std::string_view trimmedWhiteSpace(std::string_view text);

/// What a user perceives as the first character of `text`, an extended grapheme cluster; empty
/// when `text` is.
std::string_view firstCluster(std::string_view text);

/// The first `count` of them; all when there are fewer.
std::string_view firstClusters(std::string_view text, std::size_t count);

/// How many there are.
std::size_t clusterCount(std::string_view text);

/// `text` without case and diacritical marks, independently of any locale: two texts that differ
/// only in these, or are canonically equivalent, fold to the same bytes.
std::string folded(std::string_view text);

}  // namespace trovi::platform
