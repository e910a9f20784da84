#include "UserData.h"

namespace trovi::platform {

// XDG_DATA_HOME is not read: the recorder would see it and the server, started by an assistant
// application with half an environment, would not, and open another inbox.
const char* const applicationSupportBelowHome = ".local/share";

const unsigned newDirectoryMode = 0700;  // spoken notes are nobody else's

}  // namespace trovi::platform
