// Any bytes made valid UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace trovi::platform {

/// `bytes` as valid UTF-8: each maximal ill-formed part becomes one U+FFFD.
std::string repairedUTF8(std::string_view bytes);

/// The same, without a copy if there is nothing to repair: the result is `bytes` itself or points
/// into `storage`.
std::string_view repairedUTF8(std::string_view bytes, std::string& storage);

}  // namespace trovi::platform
