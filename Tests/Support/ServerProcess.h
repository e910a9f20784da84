#pragma once

#include <sys/types.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace trovi::tests {

/// A file descriptor, closed with the object.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { close(); }
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }

  int number() const { return number_; }  ///< -1 when closed
  bool isOpen() const { return number_ >= 0; }
  void close();

 private:
  int number_ = -1;
};

/// The server as an assistant application runs it: a child process on three pipes, with little more
/// of an environment than a home.
///
/// Whatever waits moves bytes in all three pipes, so no size of request and reply locks the two
/// processes up, and it throws std::runtime_error where the server takes longer than any healthy
/// one. The child does not outlive the object. This process ignores SIGPIPE from the first object
/// on.
class ServerProcess {
 public:
  struct Setting {
    std::filesystem::path home;
    std::vector<std::string> environment{};  ///< "NAME=value", besides HOME and PATH
    bool nonBlocking = false;                ///< its ends of standard input and output
    std::string shell{};                     ///< done by a shell that then becomes the server
  };
  explicit ServerProcess(const Setting& setting);
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  /// Hands over bytes as they are, without waiting for the server to take them.
  void sendBytes(std::string_view bytes);
  void send(std::string_view line);
  /// Waits until the server has taken what was sent.
  void closeInput();

  /// The next line without its end; absent at the end of the output.
  std::optional<std::string> receive();
  /// Whether a line comes before the time is over.
  bool replies(std::chrono::milliseconds within);
  void closeOutput() { output_.close(); }

  void kill(int signal = SIGKILL) const;
  /// The exit status, or minus the number of the signal that ended the process.
  int wait();

  const std::string& standardOutput() const { return unread_; }  ///< what was not received
  const std::string& standardError() const { return complaints_; }

 private:
  using Clock = std::chrono::steady_clock;

  bool exchange(Clock::time_point deadline);
  void write();

  pid_t process_ = 0;  ///< 0 once it has ended
  Descriptor input_, output_, errors_;
  std::string unsent_;
  std::size_t sent_ = 0;  ///< so many bytes at the front of `unsent_` are gone
  std::string unread_;
  std::size_t searched_ = 0;  ///< so many bytes at the front of `unread_` hold no line feed
  std::string complaints_;
};

}  // namespace trovi::tests
