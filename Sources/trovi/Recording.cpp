#include "Recording.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>

extern char** environ;  // no header of POSIX declares it

namespace trovi::cli {
namespace {

struct Closer {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closer>;

/// Passes the rest of a file to `take` in blocks, as long as it accepts them.
template <class Take>
void readAll(std::FILE* file, const Take& take) {
  std::array<char, 65536> block{};
  for (std::size_t size = 1; size > 0;) {
    size = std::fread(block.data(), 1, block.size(), file);
    if (!take(block.data(), size)) return;
  }
}

}  // namespace

bool copyPrivately(const std::filesystem::path& recording, const std::filesystem::path& copy) {
  const File in(std::fopen(recording.c_str(), "rb"));
  const int created = in ? open(copy.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600) : -1;
  if (created < 0) return false;
  File out(fdopen(created, "wb"));
  bool whole = out != nullptr;
  if (whole) {
    readAll(in.get(), [&](const char* block, std::size_t size) {
      whole = std::fwrite(block, 1, size, out.get()) == size;
      return whole;
    });
    whole = std::fclose(out.release()) == 0 && whole && std::ferror(in.get()) == 0;
  }
  if (!whole) std::remove(copy.c_str());
  return whole;
}

double wavSeconds(const std::filesystem::path& recording) {
  std::ifstream in(recording, std::ios::binary);
  const auto name = [&] {
    std::array<char, 4> bytes{};
    in.read(bytes.data(), 4);
    return std::string(bytes.data(), 4);
  };
  const auto number = [&] {
    std::uint32_t value = 0;  // little-endian
    for (unsigned shift = 0; shift < 32; shift += 8) value |= (in.get() & 0xFFU) << shift;
    return value;
  };
  if (name() != "RIFF" || number() == 0 || name() != "WAVE") return 0;
  double bytesPerSecond = 0;
  for (int chunk = 0; in && chunk < 100; ++chunk) {  // a hostile file has no end of them
    const std::string kind = name();
    const std::uint32_t size = number();
    const std::streamoff start = in.tellg();
    if (kind == "fmt ") {
      in.seekg(8, std::ios::cur);
      bytesPerSecond = number();
    } else if (kind == "data" && bytesPerSecond > 0) {
      const auto left = static_cast<double>(in.seekg(0, std::ios::end).tellg() - start);
      return (size == 0 ? left : std::min<double>(size, left)) / bytesPerSecond;  // 0: streamed
    }
    in.seekg(start + size + size % 2);
  }
  return 0;
}

Outcome run(std::vector<std::string> command) {
  // A file and no pipe: it takes any amount, and a program left in the background holds up nobody.
  const File printed(std::tmpfile());
  if (!printed) return {.failure = "não começou, porque não há lugar para um arquivo temporário"};
  const int descriptor = fileno(printed.get());
  fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  std::vector<char*> words;
  for (std::string& word : command) words.push_back(word.data());
  words.push_back(nullptr);
  posix_spawn_file_actions_t actions{};
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, descriptor, 1);
  // In a loop over a list of recordings it would read the rest of the list.
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  std::signal(SIGCHLD, SIG_DFL);  // else, if our caller ignores it, nobody learns the status
  pid_t child = 0;
  const int error = posix_spawnp(&child, words.front(), &actions, nullptr, words.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) return {.failure = error == ENOENT ? "não foi encontrado" : "não pôde começar"};
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  Outcome outcome;
  if (WIFSIGNALED(status)) {
    outcome.failure = "foi interrompido pelo sinal " + std::to_string(WTERMSIG(status));
  } else if (WEXITSTATUS(status) != 0) {
    outcome.failure = "terminou com o status " + std::to_string(WEXITSTATUS(status));
  }
  std::rewind(printed.get());
  readAll(printed.get(), [&](const char* block, std::size_t size) {
    outcome.output.append(block, size);
    return true;
  });
  return outcome;
}

}  // namespace trovi::cli
