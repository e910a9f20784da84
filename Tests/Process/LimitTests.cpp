// The process under limits: too few descriptors, too little room on the disk, too little memory.
#include <gtest/gtest.h>

#include "Conversation.h"

namespace trovi::tests {
namespace {

using namespace std::string_literals;

TEST(Limit, OfTheFilesSizeRefusesChangesUntilThereIsRoomAgain) {
  const Home home;
  Home::file({"A"});
  Database other(Home::inbox());
  ServerProcess server({.home = home, .shell = "trap '' XFSZ; ulimit -f 2048"});  // of 512 bytes
  const auto resolve = [&](const std::string& letter) {
    const std::string result(50'000, letter[0]);
    return ask(server, toolCall("recado_resolve", R"({"id":"A","resultado":")" + result + "\"}"));
  };
  const auto resolved = [&] {
    return other.query("SELECT substr(result, 1, 1) AS letter FROM recado")
        .at(0)
        .stringValue("letter");
  };
  std::string answered = "none";
  for (char letter = 'a'; letter <= 'z'; ++letter) {
    const auto reply = resolve({letter});
    if (!succeeded(reply)) {
      EXPECT_EQ(reply, failure("Erro no Trovi: Erro no banco: disk I/O error"));
      break;
    }
    answered = letter;
  }
  EXPECT_LT(answered, "z");
  EXPECT_EQ(resolved(), answered);
  EXPECT_TRUE(succeeded(ask(server, toolCall("inbox_list", R"({"status":"resolvido"})"))));
  other.execute("PRAGMA wal_checkpoint(TRUNCATE)");
  EXPECT_TRUE(succeeded(resolve("z")));
  EXPECT_EQ(resolved(), "z");
  expectSound(other);
  expectCleanEnd(server);
}

#ifndef TROVI_SANITIZED  // sanitizers want descriptors and terabytes for themselves
TEST(Limit, OfDescriptorsEndsTheStartInOneLineOrLetsEveryCallAnswer) {
  const Home home;
  Home::file({"A"});
  int started = 0;
  for (int descriptors = 4; started < 2 && descriptors < 20; ++descriptors) {
    SCOPED_TRACE(descriptors);
    ServerProcess server({.home = home,
                          .shell = "exec 3>&- 4>&- 5>&- 6>&- 7>&- 8>&- 9>&-\nulimit -n " +
                                   std::to_string(descriptors)});  // none but its own
    server.send(toolCall("recado_claim", R"({"id":"A"})"));
    const auto reply = server.receive();
    if (!reply) {
      EXPECT_EQ(server.wait(), 1);
      const std::string& said = server.standardError();
      EXPECT_TRUE(said.starts_with("[trovi-mcp] não abri a caixa do Trovi: ")) << said;
      EXPECT_TRUE(said.ends_with(" banco: unable to open database file\n")) << said;
      EXPECT_EQ(said.find('\n'), said.size() - 1) << said;
      continue;
    }
    ++started;
    EXPECT_TRUE(succeeded(reply)) << *reply;
    expectCleanEnd(server);
  }
  EXPECT_EQ(started, 2);
}

#ifdef __linux__  // macOS has no such limit
TEST(Limit, OfMemoryCostsTheLineOrTheReplyAndNoMore) {
  const Home home;
  Home::file({"A", "B"});
  Database other(Home::inbox());
  ServerProcess server({.home = home, .shell = "ulimit -v 65536"});  // of 1024 bytes
  bool answered = false;
  for (std::size_t megabytes = 1; megabytes <= 18; ++megabytes) {
    const std::string text = '"' + std::string(megabytes << 20, 'x') + '"';
    if (succeeded(
            ask(server, toolCall("recado_resolve", R"({"id":"A","resultado":)" + text + "}")))) {
      EXPECT_EQ(
          other.query("SELECT length(result) AS n FROM recado WHERE id = 'A'").at(0).intValue("n"),
          megabytes << 20);
    }
    const auto reply = ask(server, R"({"method":"ping","id":)" + text + "}");
    EXPECT_TRUE(!reply || reply == R"({"jsonrpc":"2.0","id":)" + text + R"(,"result":{}})");
    answered = reply.has_value();
    EXPECT_TRUE(answered || megabytes > 1);
  }
  EXPECT_FALSE(answered);
  EXPECT_TRUE(succeeded(ask(server, toolCall("recado_claim", R"({"id":"B"})"))));
  server.closeInput();
  EXPECT_EQ(server.wait(), 0);
  for (std::string_view said = server.standardError(); !said.empty();) {
    constexpr std::string_view noReply = "[trovi-mcp] não consegui serializar a resposta\n";
    ASSERT_TRUE(said.starts_with(noReply)) << said;
    said.remove_prefix(noReply.size());
  }
}
#endif
#endif

}  // namespace
}  // namespace trovi::tests
