#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "JSON.h"

namespace trovi::tests {

/// A recorded conversation. In its file, line by line:
///
///     # comment
///     ! SQL that another program runs on the inbox
///     > a request line; without an answer below it, there must be none
///     < the reply, compared as JSON; a tool's text stands as the JSON value that it spells
struct SessionStep {
  int line = 0;
  std::string sql;
  std::string request;
  std::optional<std::string> reply;
};

struct Session {
  std::filesystem::path file;
  std::vector<SessionStep> steps;
};

/// All conversations of the folder, by name.
std::vector<Session> recordedSessions();

/// The reply as JSON, with a tool's text replaced by the value that it spells.
platform::JSONValue comparable(std::string_view reply);

}  // namespace trovi::tests
