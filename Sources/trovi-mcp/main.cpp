#include <sqlite3.h>

#include <cstdlib>
#include <exception>
#include <optional>
#include <string>

#include "Descriptors.h"
#include "LineReader.h"
#include "Memory.h"
#include "Output.h"
#include "Server.h"
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

}  // namespace

int main() {
  platform::keepFreedMemory();
  sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);  // its memory statistics would take a lock
  try {
    platform::LineReader lines(platform::standardInput);
    TroviStore store(TroviPaths::databaseURL());
    mcp::Server server(store);
    while (const auto line = lines.next()) serve(server, *line);
    std::exit(EXIT_SUCCESS);  // closes nothing: the file is always consistent
  } catch (const std::exception& error) {
    log(std::string("não abri a caixa do Trovi: ") + error.what());
    return EXIT_FAILURE;
  }
}
