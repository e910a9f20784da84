#include <gtest/gtest.h>
#include <sqlite3.h>

#include "Inbox.h"
#include "Server.h"
#include "Tools.h"

namespace trovi::mcp {
namespace {

class Answer : public tests::Inbox {
 protected:
  std::string call(const std::string& tool, const std::string& arguments) {
    return std::string(*server.answer(R"({"id":1,"method":"tools/call","params":{"name":")" + tool +
                                      R"(","arguments":)" + arguments + "}}"));
  }

  Server server{catalogue(), store};
};

TEST_F(Answer, HasTwentyMessagesUnlessAskedAndNeverMoreThanAHundred) {
  EXPECT_EQ(call("search", R"({"consulta":"x"})"),
            R"({"jsonrpc":"2.0","id":1,"result":{"content":[{"type":"text","text":)"
            R"("{\n  \"recados\": [],\n  \"total\": 0\n}"}],"isError":false}})");
  for (int i = 0; i < 101; ++i) store.insert(tests::someRecado(std::to_string(i), i));
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"inbox_list", "{}", R"(\"total\": 20)"},
      {"inbox_list", R"({"limite":1000})", R"(\"total\": 100)"},
      {"search", R"({"consulta":"João"})", R"(\"total\": 20)"}};
  for (const auto& [tool, arguments, total] : cases) {
    EXPECT_NE(call(tool, arguments).find(total), std::string::npos) << tool << arguments;
  }
}

TEST_F(Answer, IsAnErrorAndNotANullWhenSQLiteIsOutOfMemory) {
  store.insert(tests::someRecado("A"));
  const std::string large =
      R"({"id":"A","resultado":")" + std::string(std::size_t{8} << 20, 'x') + "\"}";
  sqlite3_hard_heap_limit64(sqlite3_memory_used() + (1 << 20));
  EXPECT_NE(call("recado_resolve", large).find("\"Erro no Trovi: Erro no banco: out of memory\""),
            std::string::npos);
  sqlite3_hard_heap_limit64(0);
  EXPECT_EQ(store.recado("A"), tests::someRecado("A"));
  EXPECT_TRUE(call("recado_resolve", large).ends_with(R"("isError":false}})"));
}

}  // namespace
}  // namespace trovi::mcp
