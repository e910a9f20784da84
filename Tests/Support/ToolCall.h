#pragma once

#include <string>

namespace trovi::tests {

/// The request line that calls a tool; `arguments` is a JSON object.
inline std::string toolCall(const std::string& tool, const std::string& arguments = "{}") {
  return R"({"jsonrpc":"2.0","id":1,"method":"tools/call","params":{"name":")" + tool +
         R"(","arguments":)" + arguments + "}}";
}

}  // namespace trovi::tests
