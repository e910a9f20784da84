#include "UUID.h"

#include <uuid/uuid.h>

#include <array>

namespace trovi::platform {

std::string newUUID() {
  uuid_t uuid{};
  uuid_generate_random(uuid);
  std::array<char, 37> text{};  // 36 characters and a NUL
  uuid_unparse_upper(uuid, text.data());
  return text.data();
}

}  // namespace trovi::platform
