#include <sqlite3.h>

#include <cstdlib>
#include <exception>
#include <optional>
#include <string>

#include "Server.h"
#include "System/Memory.h"
#include "System/Streams.h"
#include "Tools.h"
#include "TroviCore/Paths.h"

using namespace trovi;

namespace {

/// Writes one diagnostic line to standard error.
void log(const std::string& message) {
  platform::write(platform::standardError, "[trovi-mcp] " + message + "\n");
}

/// Writes the reply to `line`, if one is due.
void serve(mcp::Server& server, std::string_view line) {
  std::optional<std::string_view> reply;
  try {
    reply = server.answer(line);
  } catch (const std::exception&) {  // out of memory
    return log("não consegui serializar a resposta");
  }
  if (reply && platform::write(platform::standardOutput, *reply)) {
    platform::write(platform::standardOutput, "\n");
  }
}

/// What the server works with, made in this order before it reads a line.
struct Session {
  platform::LineReader lines{platform::standardInput};
  std::string catalogue = mcp::catalogue();
  TroviStore store{TroviPaths::databaseURL()};
  mcp::Server server{catalogue, store};
};

}  // namespace

int main() {
  platform::keepFreedMemory();
  sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);  // its memory statistics would take a lock
  std::optional<Session> session;
  try {
    session.emplace();
  } catch (const std::exception& error) {
    log("não abri a caixa do Trovi: " + mcp::description(error));
    return EXIT_FAILURE;
  }
  while (const auto line = session->lines.next()) serve(session->server, *line);
  std::exit(EXIT_SUCCESS);  // closes nothing: the file is always consistent
}
