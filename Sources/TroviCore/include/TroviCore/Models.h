/// @file
/// The records of the inbox: values that are copied freely, and compared and hashed by all their
/// fields. Fields without a default are required.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "TroviCore/Date.h"
#include "TroviCore/Export.h"

namespace trovi {

/// The status of a message.
enum class TROVI_EXPORT RecadoStatus {
  transcrevendo,  ///< recorded, still being transcribed; can be neither claimed nor resolved
  pendente,       ///< transcribed, waiting for an assistant
  pego,           ///< claimed by an assistant; can be claimed again
  resolvido,      ///< an assistant recorded a result; can be resolved again
  falhou,         ///< marked as failed by the application; can be neither claimed nor resolved
};

/// The status as stored in the file, compared in SQL and shown to the assistant: "pendente". These
/// texts are part of the file format and never change. Throws std::out_of_range for a value that is
/// none of the five.
TROVI_EXPORT std::string_view rawValue(RecadoStatus status);

/// The status as the user reads it, in Portuguese: "Pego pela IA". Throws as rawValue does.
TROVI_EXPORT std::string_view label(RecadoStatus status);

/// All cases in the order of their declaration: transcrevendo, pendente, pego, resolvido, falhou.
constexpr auto allCases() {
  using enum RecadoStatus;
  return std::array{transcrevendo, pendente, pego, resolvido, falhou};
}

/// The case whose raw value is exactly `text`, in the same case and without blanks around it; else
/// absent.
TROVI_EXPORT std::optional<RecadoStatus> fromRawValue(std::string_view text);

/// A new identifier in the format that the file has: a random UUID, 36 characters, upper case.
TROVI_EXPORT std::string newID();

/// A destination: a project under which messages are filed, with a standing instruction. Identified
/// by `id`.
struct TROVI_EXPORT Destino {
  std::string id;           ///< stable, unique in the file
  std::string name;         ///< as the user says it
  std::string instruction;  ///< what an assistant is to do with its messages; may be empty
  std::string colorHex;     ///< "#" and six hexadecimal digits; not validated
  std::int64_t sort;        ///< position in lists: by `sort`, then by `name`

  bool operator==(const Destino&) const = default;  ///< all fields are equal
};

/// A voice message. Identified by `id`. Nothing forces the claim and the result to match the
/// status; TroviStore's `claim`, `resolve` and `reopen` set them together.
struct TROVI_EXPORT Recado {
  std::string id;                          ///< stable, unique in the file
  Date createdAt;                          ///< when it was recorded
  double duration;                         ///< length of the recording, seconds
  std::optional<std::string> audioPath{};  ///< the recording; removed together with the message
  std::string transcript;                  ///< what was said; may be empty
  std::string title;                       ///< short, derived from the transcript
  std::optional<std::string> destinoID{};  ///< `id` of its Destino; absent when unfiled
  RecadoStatus status;                     ///< its status
  std::optional<std::string> claimedBy{};  ///< who claimed or resolved it
  std::optional<Date> claimedAt{};         ///< when it was claimed
  std::optional<std::string> result{};     ///< what the assistant did
  std::optional<Date> resolvedAt{};        ///< when it was resolved
  std::optional<std::string> language{};   ///< language of the transcript

  bool operator==(const Recado&) const = default;  ///< all fields are equal
};

}  // namespace trovi

/// @cond
// Combines all fields in the order of their declaration; equal records have equal hashes.
template <>
struct TROVI_EXPORT std::hash<trovi::Destino> {
  std::size_t operator()(const trovi::Destino& destino) const;
};

template <>
struct TROVI_EXPORT std::hash<trovi::Recado> {
  std::size_t operator()(const trovi::Recado& recado) const;
};
/// @endcond
