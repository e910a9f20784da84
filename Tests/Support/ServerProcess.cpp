#include "ServerProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace trovi::tests {
namespace {

constexpr std::chrono::seconds patience{30};  // a sanitizer on a busy machine needs some

struct Pipe {
  Descriptor reading, writing;
};

/// A pipe of which a child gets only the ends that are given to it.
Pipe newPipe() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

void makeNonBlocking(const Descriptor& descriptor) {
  fcntl(descriptor.number(), F_SETFL, fcntl(descriptor.number(), F_GETFL) | O_NONBLOCK);
}

/// Appends what is there to `text`; closes the descriptor at its end.
void readInto(std::string& text, Descriptor& descriptor) {
  std::array<char, std::size_t{64} << 10> buffer;
  const auto count = ::read(descriptor.number(), buffer.data(), buffer.size());
  if (count > 0) {
    text.append(buffer.data(), static_cast<std::size_t>(count));
  } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
    descriptor.close();
  }
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

void Descriptor::close() {
  if (isOpen()) ::close(std::exchange(number_, -1));
}

ServerProcess::ServerProcess(const Setting& setting) {
  std::signal(SIGPIPE, SIG_IGN);  // a server that has gone shows in its exit status
  Pipe input = newPipe();
  Pipe output = newPipe();
  Pipe errors = newPipe();
  for (const auto* end : {&input.writing, &output.reading, &errors.reading}) makeNonBlocking(*end);
  if (setting.nonBlocking) {
    for (const auto* end : {&input.reading, &output.writing}) makeNonBlocking(*end);
  }

  posix_spawn_file_actions_t actions{};
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input.reading.number(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output.writing.number(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, errors.writing.number(), STDERR_FILENO);
  posix_spawnattr_t attributes{};
  posix_spawnattr_init(&attributes);
  sigset_t inDefaultHandling;
  sigemptyset(&inDefaultHandling);
  sigaddset(&inDefaultHandling, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &inDefaultHandling);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  std::vector<std::string> arguments{TROVI_SERVER};
  if (!setting.shell.empty()) {
    arguments = {"/bin/sh", "-c", setting.shell + "\nexec \"$0\"", TROVI_SERVER};
  }
  std::vector<std::string> environment = setting.environment;
  environment.push_back("HOME=" + setting.home.string());
  environment.emplace_back("PATH=/usr/bin:/bin");
  const int error = posix_spawn(&process_, arguments[0].c_str(), &actions, &attributes,
                                pointers(arguments).data(), pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  if (error != 0) throw std::system_error(error, std::generic_category(), TROVI_SERVER);

  input_ = std::move(input.writing);
  output_ = std::move(output.reading);
  errors_ = std::move(errors.reading);
}

ServerProcess::~ServerProcess() {
  if (process_ == 0) return;
  kill();
  waitpid(process_, nullptr, 0);
}

void ServerProcess::sendBytes(std::string_view bytes) {
  unsent_ += bytes;
  exchange(Clock::now());
}

void ServerProcess::send(std::string_view line) { sendBytes(std::string(line) + "\n"); }

void ServerProcess::closeInput() {
  const auto deadline = Clock::now() + patience;
  while (!unsent_.empty()) {
    if (!exchange(deadline)) throw std::runtime_error("the server does not read");
  }
  input_.close();
}

bool ServerProcess::replies(std::chrono::milliseconds within) {
  const auto deadline = Clock::now() + within;
  while (unread_.find('\n', searched_) == std::string::npos) {
    searched_ = unread_.size();
    if (!output_.isOpen() || !exchange(deadline)) return false;
  }
  return true;
}

std::optional<std::string> ServerProcess::receive() {
  if (!replies(patience)) {
    if (output_.isOpen()) throw std::runtime_error("the server does not reply");
    return {};
  }
  const std::size_t end = unread_.find('\n', std::exchange(searched_, 0));
  std::string line = unread_.substr(0, end);
  unread_.erase(0, end + 1);
  return line;
}

void ServerProcess::kill(int signal) const {
  if (process_ != 0) ::kill(process_, signal);  // 0 would mean this process's whole group
}

int ServerProcess::wait() {
  // A process closes its pipes just before it can be waited for, and this wait has a limit.
  const auto deadline = Clock::now() + patience;
  while (output_.isOpen() || errors_.isOpen()) {
    if (!exchange(deadline)) throw std::runtime_error("the server does not end");
  }
  int status = 0;
  while (waitpid(process_, &status, 0) < 0) {
    if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "waitpid");
  }
  process_ = 0;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

/// Moves bytes in every pipe that is ready, after waiting for one; false when the time was over.
bool ServerProcess::exchange(Clock::time_point deadline) {
  std::array<pollfd, 3> ends{{{unsent_.empty() ? -1 : input_.number(), POLLOUT, 0},
                              {output_.number(), POLLIN, 0},
                              {errors_.number(), POLLIN, 0}}};
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
  const int ready = poll(ends.data(), ends.size(), std::max(0, static_cast<int>(left.count())));
  if (ready < 0) {
    if (errno == EINTR) return true;
    throw std::system_error(errno, std::generic_category(), "poll");
  }
  if (ends[0].revents != 0) write();
  if (ends[1].revents != 0) readInto(unread_, output_);
  if (ends[2].revents != 0) readInto(complaints_, errors_);
  return ready > 0;
}

void ServerProcess::write() {
  const auto count = ::write(input_.number(), unsent_.data() + sent_, unsent_.size() - sent_);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (count >= 0) sent_ += static_cast<std::size_t>(count);
  if (count >= 0 && sent_ < unsent_.size()) return;
  if (count < 0) input_.close();  // nobody reads any more
  unsent_.clear();
  sent_ = 0;
}

}  // namespace trovi::tests
