#pragma once

namespace trovi::platform {

/// Asks the allocator to keep freed memory for the next reply instead of returning it to the system
/// and faulting it in again. Does nothing unless the C library is glibc.
void keepFreedMemory();

}  // namespace trovi::platform
