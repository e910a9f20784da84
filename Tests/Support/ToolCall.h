#pragma once

#include <string>

namespace trovi::tests {

/// The request line that calls a tool; `arguments` is a JSON object.
inline std::string toolCall(const std::string& tool, const std::string& arguments = "{}",
                            int id = 1) {
  return R"({"jsonrpc":"2.0","id":)" + std::to_string(id) +
         R"(,"method":"tools/call","params":{"name":")" + tool + R"(","arguments":)" + arguments +
         "}}";
}

}  // namespace trovi::tests
