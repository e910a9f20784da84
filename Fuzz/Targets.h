// What the fuzzers feed with any bytes. Each function throws Broken where a promise does not hold.
#pragma once

#include <stdexcept>
#include <string_view>

namespace trovi::fuzz {

struct Broken : std::logic_error {
  using std::logic_error::logic_error;
};

/// The whole input of a server that has just started, on an inbox with rows that no program of ours
/// wrote.
void session(std::string_view input);
/// A JSON text.
void jsonText(std::string_view input);

}  // namespace trovi::fuzz
