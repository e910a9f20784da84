#include <sqlite3.h>

#include <cstdlib>
#include <exception>
#include <optional>
#include <string>

#include "LineReader.h"
#include "Memory.h"
#include "Output.h"
#include "Server.h"
#include "TextBuffer.h"
#include "TroviCore/Paths.h"

using namespace trovi;

namespace {

/// Writes the reply to `line`, if one is due. `buffer` is reused to keep its memory.
void serve(mcp::Server& server, std::string_view line, platform::TextBuffer& buffer) {
  try {
    const auto reply = server.answer(line);
    if (!reply) return;
    buffer.clear();
    platform::appendJSON(buffer, *reply);
  } catch (const std::exception&) {  // out of memory
    mcp::log("não consegui serializar a resposta");
    return;
  }
  platform::write(platform::standardOutput, buffer.view());
  platform::write(platform::standardOutput, "\n");
}

}  // namespace

int main() {
  platform::keepFreedMemory();
  sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);  // its memory statistics would take a lock
  std::optional<platform::LineReader> lines;
  std::optional<mcp::Server> server;
  try {
    lines.emplace(platform::standardInput);
    server.emplace(TroviPaths::supportDirectory() / "trovi.sqlite");
  } catch (const std::exception& error) {
    mcp::log(std::string("não abri a caixa do Trovi: ") + error.what());
    return EXIT_FAILURE;
  }
  platform::TextBuffer buffer;
  while (const auto line = lines->next()) serve(*server, *line, buffer);
  std::exit(EXIT_SUCCESS);  // closes nothing: the file is always consistent
}
