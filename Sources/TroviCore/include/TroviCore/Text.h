/// @file
/// What a transcript says about its message.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TroviCore/Export.h"
#include "TroviCore/Models.h"

namespace trovi {

/// Functions of a transcript, without state and safe from any thread. A character is what a user
/// perceives as one: a letter with its accents, a flag, a family, CR LF. Any bytes may come in:
/// ill-formed UTF-8 counts as U+FFFD.
struct TROVI_EXPORT TroviText {
  TroviText() = delete;

  /// A title for the message: its first sentence, which ends before ".", "!", "?" or a line feed.
  /// One of more than 60 characters is cut before the last space among these, or else after them,
  /// and "…" appended. "Recado sem fala" when there is nothing but white space; only separators
  /// are their own title.
  static std::string titleFrom(std::string_view transcript);

  /// The destination that the speaker named: one whose name, whatever the case and the accents,
  /// follows "pro ", "pra ", "para ", "para o ", "para a ", "pro destino " or "no destino " within
  /// the first 160 characters. Longer names go first, then the order of the list; where they stand
  /// does not count. Words may go on at either end ("compra casarão" names "Casa"), but not a
  /// character: "pra 👍🏽" does not name "👍". Absent when none is named.
  static std::optional<Destino> destinoMentioned(std::string_view transcript,
                                                 const std::vector<Destino>& destinos);
};

}  // namespace trovi
