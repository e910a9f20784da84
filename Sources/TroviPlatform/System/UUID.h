#pragma once

#include <string>

namespace trovi::platform {

/// A new random UUID: 36 characters, upper case.
std::string newUUID();

}  // namespace trovi::platform
