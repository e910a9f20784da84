#pragma once

#include <string_view>

namespace trovi::platform {

inline constexpr int standardInput = 0;
inline constexpr int standardOutput = 1;
inline constexpr int standardError = 2;

/// Passes all of `bytes` to the system before it returns, in one call if the system accepts them at
/// once. Nothing is buffered. Continues after interruptions and short writes, and waits while a
/// pipe is full. Any other failure drops the rest, since there is nobody left to report it to.
void write(int descriptor, std::string_view bytes);

}  // namespace trovi::platform
