#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>
#include <thread>
#include <vector>

#include "LineReader.h"
#include "Output.h"

namespace trovi::platform {
namespace {

/// The lines that come out when `pieces` go in, each with a write of its own.
std::vector<std::string> linesOf(const std::vector<std::string>& pieces) {
  std::array<int, 2> ends{};
  EXPECT_EQ(pipe(ends.data()), 0);
  std::thread writer([&] {
    for (const std::string& piece : pieces) write(ends[1], piece);
    close(ends[1]);
  });
  std::vector<std::string> lines;
  LineReader reader(ends[0]);
  while (const auto line = reader.next()) lines.emplace_back(*line);
  EXPECT_FALSE(reader.next());  // the end stays the end
  writer.join();
  close(ends[0]);
  return lines;
}

TEST(LineReader, SplitsAtLineFeedsHoweverTheBytesArrive) {
  using Lines = std::vector<std::string>;
  EXPECT_EQ(linesOf({}), Lines{});
  EXPECT_EQ(linesOf({"a\nb\r\n\n\r\nc"}), (Lines{"a", "b", "", "", "c"}));
  EXPECT_EQ(linesOf({"a", "b", "\r", "\n", "c\n"}), (Lines{"ab", "c"}));
  EXPECT_EQ(linesOf({"a\rb\r\r\nc\r"}), (Lines{"a\rb\r", "c\r"}));
  EXPECT_EQ(linesOf({std::string("a\0b\n", 4)}), (Lines{std::string("a\0b", 3)}));
}

TEST(LineReader, ReturnsALineLargerThanItsBufferWhole) {
  const std::string large(5000000, 'x');
  const auto lines = linesOf({"first\n" + large + "\r\nlast\n", large});
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0], "first");
  EXPECT_TRUE(lines[1] == large);
  EXPECT_EQ(lines[2], "last");
  EXPECT_TRUE(lines[3] == large);
}

}  // namespace
}  // namespace trovi::platform
