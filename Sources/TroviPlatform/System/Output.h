#pragma once

#include <string_view>

namespace trovi::platform {

/// Passes all of `bytes` to the system before it returns, in one call if the system accepts them at
/// once. Nothing is buffered. Continues after interruptions and short writes, and waits while a
/// pipe is full. False after any other failure, which drops the rest.
bool write(int descriptor, std::string_view bytes);

}  // namespace trovi::platform
