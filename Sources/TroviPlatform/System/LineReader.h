#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace trovi::platform {

/// Reads a file descriptor line by line. A line ends at a line feed, which a carriage return may
/// precede, or at the end of the input. It may have any length and contain any other byte.
class LineReader {
 public:
  explicit LineReader(int descriptor);
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  /// The next line without its terminator, valid until the next call; absent at the end of the
  /// input. If there is not enough memory for a line, all of it is skipped.
  std::optional<std::string_view> next();

 private:
  bool fill();
  void makeRoom();

  int descriptor_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;  ///< where the current line starts
  std::size_t end_ = 0;    ///< where the bytes read so far end
  bool skipping_ = false;  ///< the current line is being skipped
};

}  // namespace trovi::platform
