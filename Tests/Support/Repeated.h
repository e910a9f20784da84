#pragma once

#include <string>
#include <string_view>

namespace trovi::tests {

inline std::string repeated(std::string_view piece, int times) {
  std::string text;
  while (times-- > 0) text += piece;
  return text;
}

}  // namespace trovi::tests
