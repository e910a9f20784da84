// What the fuzzers feed with any bytes. Each function throws Broken where a promise does not hold.
#pragma once

#include <stdexcept>
#include <string_view>

namespace trovi::fuzz {

struct Broken : std::logic_error {
  using std::logic_error::logic_error;
};

/// A request line, to a server on an inbox with rows that no program of ours wrote.
void requestLine(std::string_view input);
/// The whole input of a server that has just started.
void session(std::string_view input);
/// A JSON text.
void jsonText(std::string_view input);
/// What a person said, or named a destination.
void spokenText(std::string_view input);
/// Damage to the file and its write-ahead log: the first byte tells how much of them is left (255:
/// all), and each three bytes behind it an offset and the byte that stands there instead.
void damagedFile(std::string_view input);

struct Target {
  const char* name;
  void (*run)(std::string_view input);
};
inline constexpr Target targets[] = {{"requestLine", requestLine},
                                     {"session", session},
                                     {"jsonText", jsonText},
                                     {"spokenText", spokenText},
                                     {"damagedFile", damagedFile}};

}  // namespace trovi::fuzz
