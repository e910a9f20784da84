// Helpers of the tests that talk to the real process.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

#include "Inbox.h"
#include "ServerProcess.h"
#include "ToolCall.h"
#include "TroviCore/Paths.h"

namespace trovi::tests {

inline constexpr const char* ping = R"({"id":"ping","method":"ping"})";
inline constexpr const char* pong = R"({"jsonrpc":"2.0","id":"ping","result":{}})";

/// A home folder for a server. It is this process's home too, so `inbox` is the server's file.
class Home {
 public:
  Home() { setenv("HOME", folder_.path().c_str(), 1); }

  operator const std::filesystem::path&() const { return folder_.path(); }
  static std::filesystem::path inbox() { return TroviPaths::databaseURL(); }
  /// Files the message "A" as the recorder does.
  static void fileOne() { TroviStore(inbox()).insert(someRecado("A")); }

 private:
  TemporaryFolder folder_;
};

/// The reply to a call that failed; `text` is already escaped for JSON.
inline std::string failure(const std::string& text) {
  return R"({"jsonrpc":"2.0","id":1,"result":{"content":[{"type":"text","text":")" + text +
         R"("}],"isError":true}})";
}

inline bool succeeded(const std::optional<std::string>& reply) {
  return reply && reply->ends_with(R"("isError":false}})");
}

/// The reply to `line`, if there is one. In any case, the server must answer the next request.
inline std::optional<std::string> ask(ServerProcess& server, std::string_view line) {
  server.send(line);
  server.send(ping);
  auto reply = server.receive();
  if (reply == pong) return {};
  EXPECT_EQ(server.receive(), pong);
  return reply;
}

/// Waits for the server to answer, which it does once its inbox is open.
inline void awaitStart(ServerProcess& server) { EXPECT_EQ(ask(server, ""), std::nullopt); }

/// The server must exit when its input ends, with only `output` left to read.
inline void expectCleanEnd(ServerProcess& server, const std::string& output = "") {
  server.closeInput();
  EXPECT_EQ(server.wait(), 0);
  EXPECT_EQ(server.standardOutput(), output);
  EXPECT_EQ(server.standardError(), "");
}

}  // namespace trovi::tests
