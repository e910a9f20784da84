#include "Memory.h"

#include <cstdlib>  // defines __GLIBC__ on glibc

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace trovi::platform {

void keepFreedMemory() {
#ifdef __GLIBC__
  constexpr int keepUpTo = 4 << 20;  // bytes; a list of 100 messages needs about a quarter of it
  mallopt(M_MMAP_THRESHOLD, keepUpTo);
  mallopt(M_TRIM_THRESHOLD, 2 * keepUpTo);
#endif
}

}  // namespace trovi::platform
