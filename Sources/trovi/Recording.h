// A recording on its way to a transcript.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace trovi::cli {

/// Copies a file to a new one that only its user may read. False, and no new file, if it cannot.
bool copyPrivately(const std::filesystem::path& recording, const std::filesystem::path& copy);

/// The length of a WAV file in seconds, as far as the file goes; 0 for what is none.
double wavSeconds(const std::filesystem::path& recording);

/// What a program left behind.
struct Outcome {
  std::string output{};   ///< what it printed on standard output
  std::string failure{};  ///< what went wrong, in Portuguese, to follow its name; empty: nothing
};

/// Runs a program, found as a shell finds it, with its arguments and waits for its end.
Outcome run(std::vector<std::string> command);

}  // namespace trovi::cli
