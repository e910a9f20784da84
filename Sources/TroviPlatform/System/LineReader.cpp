#include "LineReader.h"

#include <poll.h>
#include <unistd.h>

#include <cstring>
#include <new>
#include <utility>

#include "Descriptors.h"
#include "Memory.h"

namespace trovi::platform {
namespace {

constexpr std::size_t initialSize = std::size_t{64} << 10;

}  // namespace

LineReader::LineReader(int descriptor) : descriptor_(descriptor), buffer_(initialSize) {}

std::optional<std::string_view> LineReader::next() {
  std::size_t searched = begin_;
  for (;;) {
    const char* data = buffer_.data();
    if (const void* found = std::memchr(data + searched, '\n', end_ - searched)) {
      const auto feed = static_cast<std::size_t>(static_cast<const char*>(found) - data);
      std::string_view line(data + begin_, feed - begin_);
      searched = begin_ = feed + 1;
      if (std::exchange(skipping_, false)) continue;
      if (line.ends_with('\r')) line.remove_suffix(1);
      return line;
    }
    const std::size_t pending = end_ - begin_;
    if (!fill()) {
      const std::string_view line(buffer_.data() + begin_, end_ - begin_);
      begin_ = end_;
      return line.empty() || skipping_ ? std::nullopt : std::optional(line);
    }
    searched = begin_ + (skipping_ ? 0 : pending);
  }
}

/// Reads once more; false at the end of the input or on an error.
bool LineReader::fill() {
  makeRoom();
  for (;;) {
    const auto count = ::read(descriptor_, buffer_.data() + end_, buffer_.size() - end_);
    if (count >= 0) {
      end_ += static_cast<std::size_t>(count);
      return count > 0;
    }
    if (!waitToRetry(descriptor_, POLLIN)) return false;
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
  if (end_ == 0 && buffer_.size() > mostKept) {
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

}  // namespace trovi::platform
