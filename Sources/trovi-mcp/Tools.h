// The six tools, run on the store.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "JSON.h"
#include "TroviCore/Store.h"

namespace trovi::mcp {

struct ToolCall {
  std::string_view name;                  ///< as the client sent it
  const platform::JSONObject& arguments;  ///< unknown ones are ignored
  TroviStore& store;
  const std::optional<std::string>& clientName;  ///< as the client named itself
};

/// Runs one call. A missing argument, an unknown name, a refused change and a failure of the store
/// all become a result that says so.
platform::JSONObject callTool(const ToolCall& call);

}  // namespace trovi::mcp
