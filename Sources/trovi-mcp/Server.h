#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "JSON.h"
#include "TroviCore/Store.h"

namespace trovi::mcp {

/// The server without its streams: one line in, at most one reply out. For use by one thread.
class Server {
 public:
  /// Opens the inbox in this file. Throws DatabaseError.
  explicit Server(const std::filesystem::path& database);

  /// Handles one line, any bytes without the line terminator. Absent if no reply is due: the line
  /// is blank, not a JSON object, or a notification.
  std::optional<platform::JSONObject> answer(std::string_view line);

 private:
  platform::JSONObject answerRequest(const platform::JSONObject& request,
                                     const platform::JSONValue& id);
  platform::JSONObject initialize(const platform::JSONObject& params);

  platform::JSONValue pong_;         ///< the result of `ping`, the same every time
  platform::JSONValue toolsResult_;  ///< of `tools/list`, the same every time
  TroviStore store_;
  std::optional<std::string> clientName_;
};

/// Writes one diagnostic line to standard error.
void log(std::string_view message);

}  // namespace trovi::mcp
