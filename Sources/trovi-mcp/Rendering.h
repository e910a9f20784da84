// Tool results: what the assistant reads.
#pragma once

#include <string>
#include <vector>

#include "JSON.h"
#include "TroviCore/Models.h"

namespace trovi::mcp {

/// A message with its destination's name and instruction, or null where `destinos` does not hold
/// it.
platform::JSONObject json(Recado recado, const std::vector<Destino>& destinos);

/// A destination's name and instruction.
platform::JSONObject json(const Destino& destino);

/// A successful result: one text, which is `payload` as pretty JSON, or empty where there is no
/// memory for that.
platform::JSONObject textContent(platform::JSONValue payload);

/// A failed result: one text, which is `message` as it stands.
platform::JSONObject toolError(std::string message);

}  // namespace trovi::mcp
