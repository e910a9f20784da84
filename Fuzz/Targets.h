// The fuzz targets. Each takes any bytes and throws Broken if a promise does not hold.
#pragma once

#include <stdexcept>
#include <string_view>

namespace trovi::fuzz {

struct Broken : std::logic_error {
  using std::logic_error::logic_error;
};

/// The whole input of a new server, on an inbox with rows that none of our programs wrote.
void session(std::string_view input);
/// A text to parse as JSON and to write again.
void jsonText(std::string_view input);

}  // namespace trovi::fuzz
