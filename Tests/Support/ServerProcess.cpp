#include "ServerProcess.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace trovi::tests {

ServerProcess::ServerProcess(const std::string& shell, bool nonBlocking) {
  std::signal(SIGPIPE, SIG_IGN);  // a server that has ended shows in its exit status
  std::array<int, 2> input{};
  std::array<int, 2> output{};
  if (pipe(input.data()) != 0 || pipe(output.data()) != 0) throw std::runtime_error("no pipe");
  for (const int end : {input[0], output[1]}) {
    if (nonBlocking) fcntl(end, F_SETFL, fcntl(end, F_GETFL) | O_NONBLOCK);
  }
  const std::string script = shell + "\nexec \"$0\"";
  const std::string home = std::string("HOME=") + std::getenv("HOME");
  process_ = fork();
  if (process_ == 0) {
    dup2(input[0], STDIN_FILENO);
    dup2(output[1], STDOUT_FILENO);
    dup2(fileno(errors_.get()), STDERR_FILENO);
    for (int inherited = STDERR_FILENO + 1; inherited < 256; ++inherited) ::close(inherited);
    std::signal(SIGPIPE, SIG_DFL);
    const char* const environment[] = {home.c_str(), "PATH=/usr/bin:/bin", nullptr};
    if (shell.empty()) execle(TROVI_SERVER, TROVI_SERVER, nullptr, environment);
    execle("/bin/sh", "sh", "-c", script.c_str(), TROVI_SERVER, nullptr, environment);
    _exit(127);
  }
  ::close(input[0]);
  ::close(output[1]);
  input_ = input[1];
  output_.reset(fdopen(output[0], "r"));
}

ServerProcess::~ServerProcess() {
  kill();
  closeInput();
  if (process_ != 0) waitpid(process_, nullptr, 0);
}

void ServerProcess::sendBytes(std::string_view bytes) const {
  while (!bytes.empty()) {
    const auto count = ::write(input_, bytes.data(), bytes.size());
    if (count < 0) return;  // nobody reads any more
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

void ServerProcess::closeInput() { ::close(std::exchange(input_, -1)); }

std::optional<std::string> ServerProcess::receive() {
  char* line = nullptr;
  std::size_t room = 0;
  const auto size = getline(&line, &room, output_.get());
  const std::unique_ptr<char, decltype(&std::free)> owner(line, &std::free);
  if (size < 1 || line[size - 1] != '\n') return {};
  return std::string(line, static_cast<std::size_t>(size) - 1);
}

std::optional<std::string> ServerProcess::ask(std::string_view line) {
  constexpr const char* pong = R"({"jsonrpc":"2.0","id":"ping","result":{}})";
  send(line);
  send(ping);
  auto reply = receive();
  if (reply == pong) return {};
  EXPECT_EQ(receive(), pong);
  return reply;
}

void ServerProcess::expectCleanEnd(const std::string& output) {
  closeInput();
  EXPECT_EQ(wait(), 0);
  EXPECT_EQ(rest_, output);
  EXPECT_EQ(standardError(), "");
}

void ServerProcess::kill() const {
  if (process_ != 0) ::kill(process_, SIGKILL);  // 0 would mean this process's group
}

int ServerProcess::wait() {
  for (int c = 0; output_ && (c = std::getc(output_.get())) != EOF;) rest_ += static_cast<char>(c);
  int status = 0;
  waitpid(std::exchange(process_, 0), &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string ServerProcess::standardError() const {
  std::string text;
  std::rewind(errors_.get());
  for (int c = 0; (c = std::getc(errors_.get())) != EOF;) text += static_cast<char>(c);
  return text;
}

}  // namespace trovi::tests
