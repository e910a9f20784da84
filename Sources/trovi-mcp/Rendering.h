// Tool results, as the assistant reads them.
#pragma once

#include <string>
#include <vector>

#include "JSON.h"
#include "TroviCore/Models.h"

namespace trovi::mcp {

/// A message with its destination's name and instruction, or null if `destinos` lacks it.
platform::JSONObject json(Recado recado, const std::vector<Destino>& destinos);

/// A destination's name and instruction.
platform::JSONObject json(const Destino& destino);

/// A successful result: one text, which is `payload` as pretty-printed JSON, or empty if there is
/// not enough memory for that.
platform::JSONObject textContent(platform::JSONValue payload);

/// A failed result: one text, which is `message` unchanged.
platform::JSONObject toolError(std::string message);

}  // namespace trovi::mcp
