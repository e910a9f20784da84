// Lines in and bytes out, through file descriptors.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace trovi::platform {

inline constexpr int standardInput = 0;
inline constexpr int standardOutput = 1;
inline constexpr int standardError = 2;

/// The largest buffer, in bytes, that is kept for the next line or reply.
inline constexpr std::size_t largestKeptBuffer = std::size_t{4} << 20;

/// Reads a file descriptor line by line. A line ends at a line feed, which a carriage return may
/// precede, or at the end of the input. It may have any length and contain any other byte.
/// Does not close the descriptor.
class LineReader {
 public:
  explicit LineReader(int descriptor);
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  /// The next line without its terminator, valid until the next call; absent at the end of the
  /// input, or if it cannot be read. If there is not enough memory for a line, all of it is
  /// skipped.
  std::optional<std::string_view> next();

 private:
  std::size_t fill();
  void makeRoom();

  int descriptor_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;  ///< where the current line starts
  std::size_t end_ = 0;    ///< where the bytes read so far end
  bool skipping_ = false;  ///< the current line is being skipped
};

/// Passes all of `bytes` to the system before it returns, in one call if the system accepts them at
/// once. Nothing is buffered. Continues after interruptions and short writes, and waits while a
/// pipe is full. False after any other failure, which drops the rest.
bool write(int descriptor, std::string_view bytes);

}  // namespace trovi::platform
