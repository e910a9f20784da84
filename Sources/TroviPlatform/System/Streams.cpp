#include "System/Streams.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

namespace trovi::platform {
namespace {

constexpr std::size_t initialSize = std::size_t{64} << 10;

/// Whether to repeat a call on `descriptor` that has just failed. If the other side made it
/// non-blocking, first waits for `events` (POLLIN, POLLOUT).
bool waitToRetry(int descriptor, short events) {
  if (errno == EINTR) return true;
  if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
  pollfd waiting{.fd = descriptor, .events = events, .revents = 0};
  return poll(&waiting, 1, -1) > 0 || errno == EINTR;
}

}  // namespace

LineReader::LineReader(int descriptor) : descriptor_(descriptor), buffer_(initialSize) {}

std::optional<std::string_view> LineReader::next() {
  std::size_t unsearched = end_ - begin_;  // bytes at the end of the buffer
  for (;;) {
    const char* const end = buffer_.data() + end_;
    if (const void* found = std::memchr(end - unsearched, '\n', unsearched)) {
      const char* const feed = static_cast<const char*>(found);
      const char* const start = buffer_.data() + begin_;
      std::string_view line(start, static_cast<std::size_t>(feed - start));
      begin_ += line.size() + 1;
      unsearched = end_ - begin_;
      if (std::exchange(skipping_, false)) continue;
      if (line.ends_with('\r')) line.remove_suffix(1);
      return line;
    }
    unsearched = fill();
    if (unsearched == 0) {
      const std::string_view line(buffer_.data() + begin_, end_ - begin_);
      begin_ = end_;
      return line.empty() || skipping_ ? std::nullopt : std::optional(line);
    }
  }
}

/// Reads once more, and returns how many bytes were added at the end of the buffer; 0 at the end of
/// the input or on an error.
std::size_t LineReader::fill() {
  makeRoom();
  for (;;) {
    const auto count = ::read(descriptor_, buffer_.data() + end_, buffer_.size() - end_);
    if (count >= 0) {
      end_ += static_cast<std::size_t>(count);
      return static_cast<std::size_t>(count);
    }
    if (!waitToRetry(descriptor_, POLLIN)) return 0;
  }
}

/// Moves the current line to the front and makes room after it; drops it if memory runs out.
void LineReader::makeRoom() {
  if (skipping_) begin_ = end_;
  if (begin_ > 0) {
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
  }
  if (end_ == 0 && buffer_.size() > largestKeptBuffer) {
    buffer_.resize(initialSize);
    buffer_.shrink_to_fit();
  }
  if (end_ < buffer_.size()) return;
  try {
    buffer_.resize(2 * buffer_.size());
  } catch (const std::bad_alloc&) {
    skipping_ = true;
    end_ = 0;
  }
}

bool write(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(descriptor, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (!waitToRetry(descriptor, POLLOUT)) {
      return false;
    }
  }
  return true;
}

}  // namespace trovi::platform
