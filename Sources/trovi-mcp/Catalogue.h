// How the server describes itself to a client. An assistant decides by these texts what to call:
// they are fixed to the byte.
#pragma once

#include <optional>
#include <string_view>

#include "JSON.h"

namespace trovi::mcp {

inline constexpr const char* serverVersion = TROVI_VERSION;
inline constexpr const char* fallbackProtocolVersion = "2025-06-18";
extern const char* const serverInstructions;

/// The six tool descriptors, in the order in which clients see them.
platform::JSONArray catalogue();

/// The result of `initialize`. The protocol version is not negotiated: the client's is echoed.
platform::JSONObject initializeResult(std::optional<std::string_view> protocolVersion);

}  // namespace trovi::mcp
