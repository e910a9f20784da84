#include "System/Memory.h"

#include <cstdlib>  // defines __GLIBC__ on glibc

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace trovi::platform {

void keepFreedMemory() {
#ifdef __GLIBC__
  // Smaller buffers come from the heap, whose end goes back to the system only when it exceeds a
  // line and its reply.
  mallopt(M_MMAP_THRESHOLD, largestKeptBuffer);
  mallopt(M_TRIM_THRESHOLD, 2 * largestKeptBuffer);
#endif
}

}  // namespace trovi::platform
