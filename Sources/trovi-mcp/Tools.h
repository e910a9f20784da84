// The six tools, carried out against the store.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "JSON.h"
#include "TroviCore/Store.h"

namespace trovi::mcp {

struct ToolCall {
  std::string_view name;                  ///< as the client sent it
  const platform::JSONObject& arguments;  ///< what a tool does not read is ignored
  TroviStore& store;
  const std::optional<std::string>& clientName;  ///< as the client called itself
};

/// Carries out one call. Never fails: a missing argument, an unknown name, a refused change and a
/// failure of the store all come back as a result that says so.
platform::JSONObject callTool(const ToolCall& call);

}  // namespace trovi::mcp
