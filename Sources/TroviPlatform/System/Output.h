#pragma once

#include <string_view>

namespace trovi::platform {

inline constexpr int standardInput = 0;
inline constexpr int standardOutput = 1;
inline constexpr int standardError = 2;

/// Hands all of `bytes` to the system before it returns, in one call where the system takes them in
/// one. Nothing is buffered. Interruptions, short counts and a full pipe are waited out; any other
/// failure drops the rest, since a reader that has gone cannot be told.
void write(int descriptor, std::string_view bytes);

}  // namespace trovi::platform
