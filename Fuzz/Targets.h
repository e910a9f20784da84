// The fuzz targets. Each takes any bytes and throws std::logic_error if a promise does not hold.
#pragma once

#include <string_view>

namespace trovi::fuzz {

/// The whole input of a new server, on an inbox with rows that none of our programs wrote.
void session(std::string_view input);
/// A text to parse as JSON and to write again.
void jsonText(std::string_view input);

}  // namespace trovi::fuzz
