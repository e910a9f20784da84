#include "UUID.h"

#include <uuid/uuid.h>

namespace trovi::platform {

std::string newUUID() {
  uuid_t uuid{};
  uuid_generate_random(uuid);
  constexpr std::size_t textSize = 36;
  char text[textSize + 1];
  uuid_unparse_upper(uuid, text);
  return {text, textSize};
}

}  // namespace trovi::platform
