// How much memory is kept between two requests.
#pragma once

#include <cstddef>

namespace trovi::platform {

/// The largest buffer, in bytes, that is kept for the next line or reply. A list of 100 messages
/// needs about a quarter of it.
inline constexpr std::size_t largestKeptBuffer = std::size_t{4} << 20;

/// Asks the allocator to keep freed memory for the next reply instead of returning it to the system
/// and faulting it in again. Does nothing unless the C library is glibc.
void keepFreedMemory();

}  // namespace trovi::platform
