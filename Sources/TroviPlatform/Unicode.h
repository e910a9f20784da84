// Text as Unicode sees it. Every function takes any bytes; those after `repairedUTF8` expect its
// result, valid UTF-8.
#pragma once

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

/// `text` without case and diacritical marks, independently of any locale: two texts that differ
/// only in these, or are canonically equivalent, fold to the same bytes.
std::string folded(std::string_view text);

}  // namespace trovi::platform
