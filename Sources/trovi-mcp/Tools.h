// The six tools: what a client is told of them, and what they do.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Rendering.h"
#include "Text/JSON.h"
#include "TroviCore/Store.h"

namespace trovi::mcp {

/// The result of `tools/list` as JSON: the tools' descriptors, in the order in which clients see
/// them. An assistant decides by these texts what to call: they are fixed to the byte.
std::string catalogue();

/// One call. It refers to what the caller owns while `callTool` runs.
struct ToolCall {
  std::string_view name;                 ///< as the client sent it
  const platform::JSONValue& arguments;  ///< unknown ones are ignored
  TroviStore& store;
  const std::optional<std::string>& clientName;  ///< as the client named itself
};

/// Runs one call. A missing argument, an unknown name, a refused change and a failure of the store
/// all become a result that says so.
ToolResult callTool(const ToolCall& call);

}  // namespace trovi::mcp
