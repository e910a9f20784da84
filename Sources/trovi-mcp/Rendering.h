// Tool results, as the assistant reads them.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Text/JSON.h"
#include "TroviCore/Models.h"

namespace trovi::mcp {

/// What a tool answers, before it is written into a reply.
struct ToolResult {
  platform::JSONValue content;
  bool isError;
};

/// A message with its destination's name and instruction, or null if `destinos` lacks it.
platform::JSONObject json(Recado recado, const std::vector<Destino>& destinos);

/// A destination's name and instruction.
platform::JSONObject json(const Destino& destino);

/// A successful result: one text, which is `payload` as pretty-printed JSON.
inline ToolResult textContent(platform::JSONValue payload) { return {std::move(payload), false}; }

/// A failed result: one text, which is `message` unchanged.
inline ToolResult toolError(std::string message) { return {std::move(message), true}; }

}  // namespace trovi::mcp
