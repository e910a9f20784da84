#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cmath>
#include <fstream>
#include <optional>

#include "FaultyDisk.h"
#include "Inbox.h"
#include "Rendering.h"
#include "Server.h"
#include "ToolCall.h"

namespace trovi::mcp {
namespace {

std::string reply(Server& server, const std::string& tool, const std::string& arguments) {
  return std::string(server.answer(tests::toolCall(tool, arguments)).value());
}

class Answer : public tests::Inbox {};

TEST_F(Answer, IsCompactJSONWithPrettyJSONInsideOfTwentyMessagesAndNeverMoreThanAHundred) {
  Server server(store);
  EXPECT_EQ(reply(server, "search", R"({"consulta":"x"})"),
            R"({"jsonrpc":"2.0","id":1,"result":{"content":[{"type":"text","text":)"
            R"("{\n  \"recados\": [],\n  \"total\": 0\n}"}],"isError":false}})");
  for (int i = 0; i < 101; ++i) store.insert(tests::someRecado(std::to_string(i), i));
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"inbox_list", "{}", R"(\"total\": 20)"},
      {"inbox_list", R"({"limite":1000})", R"(\"total\": 100)"},
      {"search", R"({"consulta":"João"})", R"(\"total\": 20)"}};
  for (const auto& [tool, arguments, total] : cases) {
    EXPECT_NE(reply(server, tool, arguments).find(total), std::string::npos) << tool << arguments;
  }
}

TEST(Rendering, RoundsHalvesAwayFromZeroAndTakesTheFirstOfTwoDestinations) {
  Recado recado = tests::someRecado("1");
  recado.destinoID = "d";
  const std::vector<Destino> destinos{
      {"D", "0", "", "", 0}, {"d", "1", "", "", 0}, {"d", "2", "", "", 0}};
  EXPECT_EQ(platform::JSONValue(json(recado, destinos))["destino"]["nome"].text(), "1");
  for (const auto& [duration, seconds] :
       {std::pair{0.4, 0}, {0.5, 1}, {2.49, 2}, {2.5, 3}, {-0.5, -1}, {NAN, 0}}) {
    recado.duration = duration;
    const platform::JSONValue rendered = json(recado, {});
    EXPECT_EQ(rendered["duracao_segundos"].integer(), seconds) << duration;
  }
}

// When the machine fails, the server says so, keeps what it has confirmed, and goes on.

using std::filesystem::perms;
using tests::FaultyDisk;

/// Whether the call succeeds; if not, it must report the store's `message`.
bool call(Server& server, const std::string& tool, const std::string& message,
          const std::string& result = "feito") {
  const std::string text =
      reply(server, tool, R"({"id":"A","status":"todos","resultado":")" + result + "\"}");
  const bool succeeded = text.ends_with(R"("isError":false}})");
  const auto failure = text.find("\"Erro no Trovi: Erro no banco: " + message + "\"");
  EXPECT_EQ(succeeded, failure == std::string::npos) << text;
  return succeeded;
}

/// An inbox with the message A in a folder of its own.
struct OneMessage {
  OneMessage() { TroviStore(file).insert(tests::someRecado("A")); }

  tests::TemporaryFolder folder;
  std::filesystem::path file = folder.path() / "trovi.sqlite";
};

/// A start, three calls and the next start, with a fault somewhere; returns whether it occurred.
bool goThrough(FaultyDisk& disk, const FaultyDisk::Fault& fault, const std::string& message,
               bool isFirstStart) {
  disk.breakWith({});
  const OneMessage inbox;
  if (isFirstStart) std::filesystem::remove(inbox.file);
  std::optional<TroviStore> store;
  std::optional<Server> server;
  bool claimed = false;
  bool resolved = false;
  disk.breakWith(fault);
  try {
    server.emplace(store.emplace(inbox.file));
    if (isFirstStart) TroviStore(inbox.file).insert(tests::someRecado("A"));
    call(*server, "inbox_list", message);
    claimed = call(*server, "recado_claim", message);
    resolved = call(*server, "recado_resolve", message);
  } catch (const DatabaseError& error) {  // the program would end here
    // If a column could not be added, the next statement misses it.
    EXPECT_TRUE(error.description().ends_with(" banco: " + message) ||
                error.description() == "Erro no banco: no such column: updated_at")
        << error.description();
  }
  const bool broken = disk.hasBroken();
  disk.breakWith({});
  if (server) {
    Database opened(inbox.file);
    EXPECT_EQ(opened.query("SELECT 1 FROM sqlite_schema WHERE name NOT LIKE 'sqlite%'").size(), 9U);
  }
  TroviStore survivor(inbox.file);
  tests::expectSound(survivor.db());
  EXPECT_GE(survivor.destinos().size(), 3U);  // some may exist twice
  const auto found = survivor.recado("A");
  EXPECT_TRUE(found || isFirstStart);
  EXPECT_TRUE(!claimed || found->claimedBy == "IA");
  EXPECT_TRUE(!resolved || found->result == "feito");
  EXPECT_TRUE(!found || !server || call(*server, "recado_resolve", "none"));
  return broken;
}

TEST(Disk, FailsAnywhereInASessionAndNothingAnsweredIsLost) {
  using enum FaultyDisk::Operation;
  FaultyDisk disk;
  for (const auto& [operation, code, message] :
       {std::tuple{read, SQLITE_IOERR_READ, "disk I/O error"},
        {write, SQLITE_IOERR_WRITE, "disk I/O error"},
        {write, SQLITE_FULL, "database or disk is full"},
        {sync, SQLITE_IOERR_FSYNC, "disk I/O error"}}) {
    for (const int kind : {0, 1, 2, 3}) {
      const bool lasting = kind % 2 == 1;
      int after = 0;
      for (bool came = true; came; ++after) {
        SCOPED_TRACE(testing::Message() << code << " in kind " << kind << " after " << after);
        came = goThrough(disk, {operation, code, lasting, after}, message, kind >= 2);
      }
      EXPECT_GT(after, 1) << code;
    }
  }
}

TEST(Memory, OfSQLiteThatIsGoneRefusesATextInsteadOfForgettingIt) {
  const OneMessage inbox;
  TroviStore store(inbox.file);
  Server server(store);
  const std::string large(8 << 20, 'x');
  sqlite3_hard_heap_limit64(sqlite3_memory_used() + (1 << 20));
  EXPECT_FALSE(call(server, "recado_resolve", "out of memory", large));
  sqlite3_hard_heap_limit64(0);
  EXPECT_EQ(TroviStore(inbox.file).recado("A"), tests::someRecado("A"));
  EXPECT_TRUE(call(server, "recado_resolve", "none", large));
}

#if defined(__linux__) && !defined(TROVI_SANITIZED)  // others lack the limit or need more
TEST(Memory, ThatIsTooLittleForATextMakesItEmpty) {
  const OneMessage inbox;
  TroviStore store(inbox.file);
  Server server(store);
  Recado recado = tests::someRecado("B");
  recado.transcript.assign(4 << 20, '\x01');  // written in seven characters each
  store.insert(recado);
  rlim_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  rlimit before{};
  getrlimit(RLIMIT_AS, &before);
  const rlimit little{pages * static_cast<rlim_t>(getpagesize()) + (24 << 20), before.rlim_max};
  setrlimit(RLIMIT_AS, &little);
  const std::string text = reply(server, "recado_get", R"({"id":"B"})");
  setrlimit(RLIMIT_AS, &before);
  EXPECT_EQ(text, R"({"jsonrpc":"2.0","id":1,"result":{"content":[{"type":"text","text":"")"
                  R"(}],"isError":false}})");
}
#endif

TEST(ReadOnly, FileIsReadAndRefusesChanges) {
  const OneMessage inbox;
  permissions(inbox.folder.path(), perms::all);
  permissions(inbox.file, perms::owner_read | perms::group_read | perms::others_read);
  const bool isRoot = geteuid() == 0;  // root ignores file modes
  const bool isAnyone = !isRoot || seteuid(65534) == 0;
  std::error_code unreachable;
  const bool reaches = isAnyone && exists(inbox.file, unreachable);
  if (reaches) {
    TroviStore store(inbox.file);
    Server server(store);
    EXPECT_TRUE(call(server, "inbox_list", "none"));
    EXPECT_FALSE(call(server, "recado_claim", "attempt to write a readonly database"));
  }
  EXPECT_TRUE(!isRoot || seteuid(0) == 0);
  if (!reaches) GTEST_SKIP() << "there is nobody else here to try it";
}

TEST(Migration, LeavesAColumnToAProgramThatIsFaster) {
  const tests::TemporaryFolder folder;
  Database other(folder.path() / "trovi.sqlite");
  static Database* faster = nullptr;
  faster = &other;
  const auto watch = [](sqlite3* connection, char**, const sqlite3_api_routines*) {
    const auto onStatement = [](unsigned, void*, void*, void* sql) {
      const std::string text = static_cast<const char*>(sql);
      if (text.starts_with("ALTER")) faster->execute(text);
      return 0;
    };
    return sqlite3_trace_v2(connection, SQLITE_TRACE_STMT, onStatement, nullptr);
  };
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(+watch));
  TroviStore store(folder.path() / "trovi.sqlite");
  sqlite3_reset_auto_extension();
  faster = nullptr;
  EXPECT_EQ(store.db().query("SELECT updated_at, dirty FROM recado").size(), 0U);
  EXPECT_EQ(store.destinos().size(), 3U);
}

}  // namespace
}  // namespace trovi::mcp
