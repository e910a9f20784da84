/// @file
/// The title and the destination of a message, from its transcript.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TroviCore/Export.h"
#include "TroviCore/Models.h"

namespace trovi {

/// Stateless, thread-safe functions on a transcript. A character is a grapheme cluster, which a
/// user perceives as one: a letter with its accents, a flag, a family emoji, CR LF. Transcripts may
/// be any bytes: ill-formed UTF-8 counts as U+FFFD.
struct TROVI_EXPORT TroviText {
  TroviText() = delete;

  /// The transcript without white space at either end, as valid UTF-8.
  static std::string trimmed(std::string_view transcript);

  /// A title for the message: its first sentence that is not empty. A sentence ends before ".",
  /// "!", "?" or a line feed. One of more than 60 characters is cut before the last space among the
  /// first 60, or else after them, and "…" is appended. White space alone gives "Recado sem fala";
  /// separators alone are their own title.
  static std::string titleFrom(std::string_view transcript);

  /// The destination that the speaker named: its name, ignoring case and accents, follows "pro ",
  /// "pra ", "para ", "para o ", "para a ", "pro destino " or "no destino " within the first 160
  /// characters. Longer names come first, then the order of the list; the position in the
  /// transcript does not matter. The match may be part of longer words ("compra casarão" names
  /// "Casa") but not of a longer character: "pra 👍🏽" does not name "👍". Absent if there is
  /// none.
  static std::optional<Destino> destinoMentioned(std::string_view transcript,
                                                 const std::vector<Destino>& destinos);
};

}  // namespace trovi
