#include "Rendering.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace trovi::mcp {
namespace {

using platform::JSONObject;
using platform::JSONValue;

/// `duration` in whole seconds, halves rounded away from zero. A value out of range becomes the
/// nearest integer; NaN becomes 0.
std::int64_t wholeSeconds(double duration) {
  constexpr double limit = 0x1p63;
  if (std::isnan(duration)) return 0;
  if (duration >= limit) return std::numeric_limits<std::int64_t>::max();
  if (duration < -limit) return std::numeric_limits<std::int64_t>::min();
  return std::llround(duration);
}

JSONValue destinoOf(const Recado& recado, const std::vector<Destino>& destinos) {
  const auto found = std::find_if(destinos.begin(), destinos.end(), [&](const Destino& destino) {
    return destino.id == recado.destinoID;
  });
  return found != destinos.end() ? JSONValue(json(*found)) : JSONValue(nullptr);
}

}  // namespace

JSONObject json(Recado recado, const std::vector<Destino>& destinos) {
  JSONObject members;  // sorted, as they are written
  members.reserve(10);
  members.emplace_back("destino", destinoOf(recado, destinos));
  members.emplace_back("duracao_segundos", wholeSeconds(recado.duration));
  members.emplace_back("gravado_em", toISO8601(recado.createdAt));
  members.emplace_back("id", std::move(recado.id));
  if (recado.language) members.emplace_back("idioma", *std::move(recado.language));
  if (recado.claimedBy) members.emplace_back("pego_por", *std::move(recado.claimedBy));
  if (recado.result) members.emplace_back("resultado", *std::move(recado.result));
  members.emplace_back("status", rawValue(recado.status));
  members.emplace_back("titulo", std::move(recado.title));
  members.emplace_back("transcricao", std::move(recado.transcript));
  return members;
}

JSONObject json(const Destino& destino) {
  JSONObject members;
  members.reserve(2);
  members.emplace_back("instrucao", destino.instruction);
  members.emplace_back("nome", destino.name);
  return members;
}

}  // namespace trovi::mcp
