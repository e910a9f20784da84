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

/// The server as an assistant application runs it: a child process on pipes, with no more of an
/// environment than a home and a path. It does not outlive the object. This process ignores SIGPIPE
/// from the first object on.
class ServerProcess {
 public:
  struct Setting {
    std::filesystem::path home;
    std::string shell{};       ///< done by a shell that then becomes the server
    bool nonBlocking = false;  ///< its ends of standard input and output
  };
  explicit ServerProcess(const Setting& setting);
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  /// Hands over bytes as they are, without waiting for the server to take what is more than a pipe
  /// holds.
  void sendBytes(const std::string& bytes);
  void send(std::string_view line) { sendBytes(std::string(line) + "\n"); }
  /// Waits until the server has taken what was sent.
  void closeInput();

  /// The next line without its end; absent at the end of the output.
  std::optional<std::string> receive();
  void closeOutput() { output_.reset(); }

  void kill() const;
  /// The exit status, or minus the number of the signal that ended the process.
  int wait();

  const std::string& standardOutput() const { return rest_; }  ///< what was not received
  std::string standardError() const;

 private:
  using File = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

  pid_t process_ = 0;  ///< 0 once it has ended
  int input_ = -1;
  File output_{nullptr, &std::fclose};
  File errors_{std::tmpfile(), &std::fclose};
  std::future<void> writing_;
  std::string rest_;
};

}  // namespace trovi::tests
