#include <sqlite3.h>

#include <cstdlib>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Server.h"
#include "System/Streams.h"
#include "Tools.h"
#include "TroviCore/Paths.h"
#include "TroviCore/Store.h"

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

/// What the loop works with, made in the order of start-up.
struct Program {
  std::string catalogue = mcp::catalogue();
  TroviStore store{TroviPaths::databaseURL()};
  mcp::Server server{std::move(catalogue), store};
  platform::LineReader lines{platform::standardInput};
};

}  // namespace

int main() {
  sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);  // its memory statistics would take a lock
  std::optional<Program> program;
  try {
    program.emplace();
  } catch (const std::bad_alloc&) {
    log("não abri a caixa do Trovi: out of memory");  // as SQLite says it
    return EXIT_FAILURE;
  } catch (const std::exception& error) {
    log(std::string("não abri a caixa do Trovi: ") + error.what());
    return EXIT_FAILURE;
  }
  while (const auto line = program->lines.next()) serve(program->server, *line);
  std::exit(EXIT_SUCCESS);  // closes nothing: the file is always consistent
}
