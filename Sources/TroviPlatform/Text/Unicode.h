// Unicode text as people see it: blanks, characters, letters without case and accents. All texts
// must be valid UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace trovi::platform {

/// `text` without blanks (category Zs, and tab) at either end. Line breaks are kept.
std::string_view trimmedBlanks(std::string_view text);

/// `text` without white space at either end: blanks, and the line breaks U+000A to U+000D, U+0085,
/// U+2028 and U+2029.
std::string_view trimmedWhiteSpace(std::string_view text);

/// The first user-perceived character of `text`, an extended grapheme cluster; empty if `text` is.
std::string_view firstCluster(std::string_view text);

/// The first `count` grapheme clusters; all of `text` if it has fewer.
std::string_view firstClusters(std::string_view text, std::size_t count);

/// The number of grapheme clusters.
std::size_t clusterCount(std::string_view text);

/// `text` without case and without the diacritics of Latin, Greek and Cyrillic letters, independent
/// of the locale. Texts that differ only in these, or are canonically equivalent, fold to the same
/// bytes.
std::string folded(std::string_view text);

}  // namespace trovi::platform
