#include "UserData.h"

namespace trovi::platform {

const char* const applicationSupportBelowHome = "Library/Application Support";

const unsigned newDirectoryMode = 0777;  // the system's default; Library itself is private

}  // namespace trovi::platform
