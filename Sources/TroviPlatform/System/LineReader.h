#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace trovi::platform {

/// Reads a descriptor line by line. A line ends at a line feed, with or without a carriage return
/// before it, or at the end of the input; it may be of any length and hold any other byte.
class LineReader {
 public:
  explicit LineReader(int descriptor);
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  /// The next line without its end, valid until the next call; absent at the end of the input. A
  /// line for which there is no memory is passed over whole.
  std::optional<std::string_view> next();

 private:
  bool fill();
  void makeRoom();

  int descriptor_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;  ///< where the current line starts
  std::size_t end_ = 0;    ///< the end of what was read
  bool skipping_ = false;  ///< the current line was given up
};

}  // namespace trovi::platform
