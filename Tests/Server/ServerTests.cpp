#include <gtest/gtest.h>

#include "Inbox.h"
#include "Rendering.h"
#include "Server.h"

namespace trovi::mcp {
namespace {

/// A server on the inbox that the fixture's store and second connection look into.
class Answer : public tests::Inbox {
 protected:
  std::string reply(std::string_view line) {
    const auto answer = server.answer(line);
    platform::TextBuffer text;
    if (answer) platform::appendJSON(text, *answer);
    return std::string(text.view());
  }
  std::string call(const std::string& tool, const std::string& arguments) {
    return reply(R"({"id":1,"method":"tools/call","params":{"name":")" + tool +
                 R"(","arguments":)" + arguments + "}}");
  }

  Server server{file};
};

TEST_F(Answer, IsOneLineOfCompactJSONWithPrettyJSONInside) {
  EXPECT_EQ(reply(R"({"jsonrpc":"2.0","id":"a/ç","method":"ping"})"),
            R"({"jsonrpc":"2.0","id":"a/ç","result":{}})");
  EXPECT_EQ(call("search", R"({"consulta":"x"})"),
            R"({"jsonrpc":"2.0","id":1,"result":{"content":[{"type":"text","text":)"
            R"("{\n  \"recados\": [],\n  \"total\": 0\n}"}],"isError":false}})");
}

TEST_F(Answer, DefaultsToTwentyMessagesAndNeverGivesMoreThanAHundred) {
  for (int i = 0; i < 101; ++i) store.insert(tests::someRecado(std::to_string(i), i));
  EXPECT_NE(call("inbox_list", "{}").find(R"(\"total\": 20)"), std::string::npos);
  EXPECT_NE(call("inbox_list", R"({"limite":1000})").find(R"(\"total\": 100)"), std::string::npos);
  EXPECT_NE(call("search", R"({"consulta":"João"})").find(R"(\"total\": 20)"), std::string::npos);
}

TEST_F(Answer, ToAFailedStoreKeepsWhatWasChangedBeforeTheFailure) {
  store.insert(tests::someRecado("1"));
  other.execute(
      "CREATE TRIGGER no BEFORE UPDATE OF claimed_by ON recado BEGIN SELECT RAISE(ABORT, 'não "
      "\"agora\"'); END");
  EXPECT_EQ(call("recado_claim", R"({"id":"1"})"),
            R"({"jsonrpc":"2.0","id":1,"result":{"content":[{"type":"text","text":)"
            R"("Erro no Trovi: Erro no banco: não \"agora\""}],"isError":true}})");
  EXPECT_EQ(store.recado("1")->status, RecadoStatus::pendente);
  EXPECT_EQ(dirty("1"), 2);
}

TEST(Rendering, RoundsHalvesAwayFromZeroAndTakesTheFirstOfTwoDestinations) {
  Recado recado = tests::someRecado("1");
  recado.destinoID = "d";
  const std::vector<Destino> destinos{
      {.id = "D", .name = "0", .instruction = "", .colorHex = "", .sort = 0},
      {.id = "d", .name = "1", .instruction = "", .colorHex = "", .sort = 0},
      {.id = "d", .name = "2", .instruction = "", .colorHex = "", .sort = 0}};
  EXPECT_EQ(json(recado, destinos).object("destino")->text("nome"), "1");
  for (const auto& [duration, seconds] :
       {std::pair{0.4, 0}, {0.5, 1}, {2.49, 2}, {2.5, 3}, {-0.5, -1}}) {
    recado.duration = duration;
    EXPECT_EQ(json(recado, {}).integer("duracao_segundos"), seconds) << duration;
  }
}

}  // namespace
}  // namespace trovi::mcp
