#pragma once

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Inbox.h"
#include "TroviCore/Paths.h"

namespace trovi::tests {

/// A new home folder: that of this process and of the servers that it starts.
class Home {
 public:
  Home() { setenv("HOME", folder_.path().c_str(), 1); }

  static std::filesystem::path inbox() { return TroviPaths::databaseURL(); }
  /// Files the message "A" as the recorder does.
  static void fileOne() { TroviStore(inbox()).insert(someRecado("A")); }

 private:
  TemporaryFolder folder_;
};

/// The server as an assistant application runs it: a child process on pipes, with nothing in its
/// environment but a home and a path. It does not outlive the object. The first object makes this
/// process ignore SIGPIPE.
class ServerProcess {
 public:
  /// `shell` is run by a shell that then becomes the server. If asked for, the server's ends of
  /// standard input and output do not block.
  explicit ServerProcess(const std::string& shell = {}, bool nonBlocking = false);
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  /// Sends bytes unchanged. Replies that are not received meanwhile must fit into a pipe.
  void sendBytes(std::string_view bytes) const;
  void send(std::string_view line) const { sendBytes(std::string(line) + "\n"); }
  void closeInput();

  /// The next line without its terminator; absent at the end of the output.
  std::optional<std::string> receive();

  /// The reply to `line`, if there is one. In any case, the server must answer the next request.
  std::optional<std::string> ask(std::string_view line);
  /// Waits for the server to answer, which it does once its inbox is open.
  void awaitStart() { EXPECT_EQ(ask(""), std::nullopt); }
  /// The server must exit when its input ends, with only `output` left to read.
  void expectCleanEnd(const std::string& output = "");

  void kill() const;
  /// The exit status, or minus the number of the signal that ended the process.
  int wait();

  std::string standardError() const;

 private:
  using File = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

  pid_t process_ = 0;  ///< 0 after `wait`
  int input_ = -1;
  File output_{nullptr, &std::fclose};
  File errors_{std::tmpfile(), &std::fclose};
  std::string rest_;  ///< of the output, which `wait` found unread
};

inline constexpr const char* ping = R"({"id":"ping","method":"ping"})";

/// The request line that calls a tool; `arguments` is a JSON object.
inline std::string toolCall(const std::string& tool, const std::string& arguments = "{}") {
  return R"({"jsonrpc":"2.0","id":1,"method":"tools/call","params":{"name":")" + tool +
         R"(","arguments":)" + arguments + "}}";
}

inline bool succeeded(const std::optional<std::string>& reply) {
  return reply && reply->ends_with(R"("isError":false}})");
}

}  // namespace trovi::tests
