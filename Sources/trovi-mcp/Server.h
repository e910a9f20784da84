#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Rendering.h"
#include "Text/JSON.h"
#include "TroviCore/Store.h"

namespace trovi::mcp {

/// The server without its streams: one line in, at most one reply out. For use by one thread.
class Server {
 public:
  /// `catalogue` is the result of `tools/list`; `store` must outlive the server.
  Server(std::string catalogue, TroviStore& store);

  /// Handles one line, any bytes without the line terminator, and returns the reply without one,
  /// valid until the next call. Absent if no reply is due: the line is blank, not a JSON object, or
  /// a notification, or there is not enough memory to parse it. Throws std::bad_alloc if there is
  /// not enough memory for the reply.
  std::optional<std::string_view> answer(std::string_view line);

 private:
  void answerRequest(const platform::JSONValue& request, const platform::JSONValue& id);
  platform::JSONObject initialize(const platform::JSONValue& params);

  /// Writes `jsonrpc` and `id`, then `start`: the third member up to its value.
  void begin(const platform::JSONValue& id, std::string_view start);
  void reply(const platform::JSONValue& id, std::string_view result);  ///< written as JSON
  /// If there is not enough memory for the text of a successful result, the text is empty.
  void reply(const platform::JSONValue& id, const ToolResult& result);
  void replyError(const platform::JSONValue& id, int code, const std::string& message);

  std::string catalogue_;
  TroviStore& store_;
  std::string reply_;  ///< the latest; keeps its memory
  std::optional<std::string> clientName_;
};

}  // namespace trovi::mcp
