// What the server tells a client about itself. An assistant reads these texts to decide what to
// call: they are fixed to the byte.
#pragma once

#include <optional>
#include <string_view>

#include "JSON.h"

namespace trovi::mcp {

inline constexpr const char* serverVersion = TROVI_VERSION;
inline constexpr const char* fallbackProtocolVersion = "2025-06-18";
extern const char* const serverInstructions;

/// The six tool descriptors, in the order in which they are offered.
platform::JSONArray catalogue();

/// The result of `initialize`. The protocol version is not negotiated: the client's is echoed.
platform::JSONObject initializeResult(std::optional<std::string_view> protocolVersion);

}  // namespace trovi::mcp
