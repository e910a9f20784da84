#include "Memory.h"

#include <cstdlib>  // defines __GLIBC__ on glibc

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace trovi::platform {

void keepFreedMemory() {
#ifdef __GLIBC__
  mallopt(M_MMAP_THRESHOLD, mostKept);
  mallopt(M_TRIM_THRESHOLD, 2 * mostKept);
#endif
}

}  // namespace trovi::platform
