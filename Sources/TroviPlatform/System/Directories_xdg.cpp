#include "UserData.h"

namespace trovi::platform {

// XDG_DATA_HOME is ignored. An assistant application starts the server with a reduced environment,
// so only the recorder would see the variable, and the two would open different inboxes.
const char* const applicationSupportBelowHome = ".local/share";

const unsigned newDirectoryMode = 0700;  // voice messages are private

}  // namespace trovi::platform
