#pragma once

namespace trovi::platform {

/// Asks the allocator to keep freed memory for the next reply instead of handing it back to the
/// system and faulting it in again. Does nothing where the system has no such wish to grant.
void keepFreedMemory();

}  // namespace trovi::platform
