#pragma once

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace trovi::tests {

/// The server as an assistant application runs it: a child process on pipes, with nothing in its
/// environment but a home and a path. It does not outlive the object. The first object makes this
/// process ignore SIGPIPE.
class ServerProcess {
 public:
  struct Setting {
    std::filesystem::path home;
    std::string shell{};       ///< run by a shell that then becomes the server
    bool nonBlocking = false;  ///< its ends of standard input and output
  };
  explicit ServerProcess(const Setting& setting);
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  /// Sends bytes unchanged. A thread sends large ones, so that a full pipe does not block the test.
  void sendBytes(const std::string& bytes);
  void send(std::string_view line) { sendBytes(std::string(line) + "\n"); }
  /// Waits until everything is sent, then ends the server's input.
  void closeInput();

  /// The next line without its terminator; absent at the end of the output.
  std::optional<std::string> receive();
  void closeOutput() { output_.reset(); }

  void kill() const;
  /// The exit status, or minus the number of the signal that ended the process.
  int wait();

  const std::string& standardOutput() const { return rest_; }  ///< what `wait` found unread
  std::string standardError() const;

 private:
  using File = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

  pid_t process_ = 0;  ///< 0 after `wait`
  int input_ = -1;
  File output_{nullptr, &std::fclose};
  File errors_{std::tmpfile(), &std::fclose};
  std::future<void> writing_;
  std::string rest_;
};

}  // namespace trovi::tests
