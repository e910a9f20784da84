#include "Rendering.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "ISO8601.h"

namespace trovi::mcp {
namespace {

using platform::JSONArray;
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

JSONObject toolResult(JSONValue text, bool isError) {
  JSONObject item{{"type", "text"}};
  item.add("text", std::move(text));
  JSONArray content{std::move(item)};
  return {{"content", std::move(content)}, {"isError", isError}};
}

}  // namespace

JSONObject json(Recado recado, const std::vector<Destino>& destinos) {
  JSONObject object;
  object.reserve(10);
  object.add("destino", destinoOf(recado, destinos));
  object.add("duracao_segundos", wholeSeconds(recado.duration));
  object.add("gravado_em", platform::internetDateTime(recado.createdAt));
  object.add("id", std::move(recado.id));
  if (recado.language) object.add("idioma", *std::move(recado.language));
  if (recado.claimedBy) object.add("pego_por", *std::move(recado.claimedBy));
  if (recado.result) object.add("resultado", *std::move(recado.result));
  object.add("status", rawValue(recado.status));
  object.add("titulo", std::move(recado.title));
  object.add("transcricao", std::move(recado.transcript));
  return object;
}

JSONObject json(const Destino& destino) {
  JSONObject object;
  object.reserve(2);
  object.add("instrucao", destino.instruction);
  object.add("nome", destino.name);
  return object;
}

JSONObject textContent(JSONValue payload) {
  return toolResult(JSONValue::prettyText(std::move(payload)), false);
}

JSONObject toolError(std::string message) { return toolResult(std::move(message), true); }

}  // namespace trovi::mcp
