#include <sqlite3.h>

#include "Inbox.h"
#include "Server.h"
#include "Tools.h"

namespace trovi::mcp {
namespace {

class Answer : public tests::Inbox {
 protected:
  std::string answer(const std::string& method, const std::string& params) {
    return std::string(
        *server.answer(R"({"id":1,"method":")" + method + R"(","params":)" + params + "}"));
  }
  std::string call(const std::string& tool, const std::string& arguments) {
    return answer("tools/call", R"({"name":")" + tool + R"(","arguments":)" + arguments + "}");
  }

  Server server{catalogue(), store};
};

TEST_F(Answer, HasTwentyMessagesUnlessAskedAndNeverMoreThanAHundred) {
  EXPECT_NE(call("inbox_list", "{}").find(R"(\"recados\": [],\n)"), std::string::npos);
  for (int i = 0; i < 101; ++i) store.insert(tests::someRecado(std::to_string(i), i));
  const std::pair<int, std::vector<std::string>> cases[] = {
      {1, {"-9223372036854775808", "-3", "0", "0e99999999999999999999", "1", "10e-1"}},
      {99, {"99", "99.0"}},
      {100, {"100", "101", "1000", "9223372036854775807", "9223372036854774784.0"}},
      {20,
       {"9223372036854775808", "9223372036854775808.0", "-9223372036854775809", "1e400", "1.5",
        "\"5\"", "null", "[5]", "{}"}}};
  for (const auto& [total, limits] : cases) {
    const auto end = R"(\n  \"total\": )" + std::to_string(total) + R"(\n}"}],"isError":false}})";
    for (const std::string& limit : limits) {
      for (const char* tool : {"inbox_list", "search"}) {
        const std::string text = call(tool, R"({"consulta":"João","limite":)" + limit + "}");
        EXPECT_TRUE(text.ends_with(end)) << tool << " " << limit;
      }
    }
  }
}

TEST_F(Answer, RemembersWhatTheClientCallsItselfInAHandshake) {
  for (const char* id : {"A", "B"}) store.insert(tests::someRecado(id));
  // The handshake; the version that it agrees on; who claims then, and who resolves.
  const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
      {"7", "2025-06-18", "IA", "NULL"},
      {R"({"protocolVersion":"2024-11-05","clientInfo":{"name":" "}})", "2024-11-05", " ", "' '"},
      {R"({"protocolVersion":3})", "2025-06-18", " ", "' '"},
      {R"({"protocolVersion":"","clientInfo":"Y"})", "", " ", "' '"},
      {R"({"clientInfo":{"name":["Y"]}})", "2025-06-18", "IA", "NULL"},
      {R"({"clientInfo":{"name":""}})", "2025-06-18", "", "''"},
      {R"({"clientInfo":{"title":"Y"}})", "2025-06-18", "IA", "NULL"}};
  for (const auto& [handshake, version, claimer, resolver] : cases) {
    SCOPED_TRACE(handshake);
    const std::string start = R"({"jsonrpc":"2.0","id":1,"result":{"protocolVersion":")";
    EXPECT_TRUE(answer("initialize", handshake).starts_with(start + version + '"'));
    store.reopen("B");
    call("recado_claim", R"({"id":"A","cliente":7})");
    call("recado_resolve", R"({"id":"B","resultado":"r","cliente":null})");
    EXPECT_EQ(store.recado("A")->claimedBy, claimer);
    call("recado_claim", R"({"id":"A","cliente":""})");
    EXPECT_EQ(store.recado("A")->claimedBy, "");
    EXPECT_EQ(each("quote(claimed_by)", "recado WHERE id = 'B'"), resolver + std::string(";"));
  }
}

TEST_F(Answer, IsAnErrorAndNotANullWhenSQLiteIsOutOfMemory) {
  store.insert(tests::someRecado("A"));
  const std::string large =
      R"({"id":"A","resultado":")" + std::string(std::size_t{8} << 20, 'x') + "\"}";
  sqlite3_hard_heap_limit64(sqlite3_memory_used() + (1 << 20));
  EXPECT_NE(call("recado_resolve", large).find("\"Erro no Trovi: Erro no banco: out of memory\""),
            std::string::npos);
  sqlite3_hard_heap_limit64(1);  // now not even for a message
  EXPECT_EQ(tests::databaseError([&] { other.execute("x"); }), "Erro no banco: desconhecido");
  EXPECT_EQ(tests::databaseError([&] { Database{file}; }), "Não abri o banco: desconhecido");
  sqlite3_hard_heap_limit64(0);
  EXPECT_EQ(store.recado("A"), tests::someRecado("A"));
  EXPECT_TRUE(call("recado_resolve", large).ends_with(R"("isError":false}})"));
}

}  // namespace
}  // namespace trovi::mcp
