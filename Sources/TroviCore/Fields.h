// The fields of the records, listed once, so that hashing and coding cannot diverge.
#pragma once

#include <concepts>
#include <type_traits>

#include "TroviCore/Models.h"

namespace trovi {

/// Calls `visit(name, field)` for every field in the order of declaration.
template <class Self, class Visit>
requires std::same_as<std::remove_const_t<Self>, Destino>
void visitFields(Self& destino, Visit&& visit) {
  visit("id", destino.id);
  visit("name", destino.name);
  visit("instruction", destino.instruction);
  visit("colorHex", destino.colorHex);
  visit("sort", destino.sort);
}

template <class Self, class Visit>
requires std::same_as<std::remove_const_t<Self>, Recado>
void visitFields(Self& recado, Visit&& visit) {
  visit("id", recado.id);
  visit("createdAt", recado.createdAt);
  visit("duration", recado.duration);
  visit("audioPath", recado.audioPath);
  visit("transcript", recado.transcript);
  visit("title", recado.title);
  visit("destinoID", recado.destinoID);
  visit("status", recado.status);
  visit("claimedBy", recado.claimedBy);
  visit("claimedAt", recado.claimedAt);
  visit("result", recado.result);
  visit("resolvedAt", recado.resolvedAt);
  visit("language", recado.language);
}

}  // namespace trovi
