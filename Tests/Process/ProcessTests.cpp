// The executable as a client sees it: bytes on pipes, a file that others use and damage, too little
// memory, and streams that end early.
#include <gtest/gtest.h>

#include <fstream>

#include "Conversation.h"
#include "JSON.h"
#include "Repeated.h"

namespace trovi::tests {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

std::string pingWith(const std::string& id) { return R"({"method":"ping","id":)" + id + "}"; }
std::string pongWith(const std::string& id) {
  return R"({"jsonrpc":"2.0","id":)" + id + R"(,"result":{}})";
}

TEST(Bytes, AreOneLineForEachRequestAndNothingElse) {
  const std::string request = pingWith("7");
  const std::string reply = pongWith("7") + '\n';
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {request, reply},
      {request + "\r\n" + request + "\r\n", reply + reply},
      {request + "\r" + request + "\n", ""},
      {request + "\r\r\n\n\r\n \t\n\u00A0\t" + request + " \u00A0\n\n", reply + reply},
      {R"({"method":"notifications/initialized"})", ""},
  };
  const Home home;
  for (const auto& [input, output] : cases) {
    SCOPED_TRACE(input);
    ServerProcess inOneGo({.home = home});
    inOneGo.sendBytes(input);
    expectCleanEnd(inOneGo, output);
    ServerProcess byteByByte({.home = home});
    for (const char& byte : input) byteByByte.sendBytes({byte});
    expectCleanEnd(byteByByte, output);
  }
}

TEST(Bytes, PassPipesThatDoNotBlock) {
  const Home home;
  ServerProcess server({.home = home, .nonBlocking = true});
  awaitStart(server);  // so it has found its input empty
  const std::string id = '"' + std::string(1'000'000, 'x') + '"';  // more than a pipe holds
  EXPECT_TRUE(ask(server, pingWith(id)) == pongWith(id));
  expectCleanEnd(server);
}

TEST(BadInput, IsAnsweredOrDroppedAndNeverEndsTheServer) {
  const auto get = [](const std::string& id) {
    return toolCall("recado_get", R"({"id":")" + id + "\"}");
  };
  const auto notFound = [](const std::string& id) {
    return failure("Recado " + id + " não encontrado.");
  };
  const auto arrays = [](int n) { return repeated("[", n) + repeated("]", n); };
  const auto objects = [](int n) { return repeated(R"({"a":)", n) + "0" + repeated("}", n); };
  constexpr int deep = 100'000;
  const std::string huge = repeated(std::string(1000, 'x'), 20'000);
  const std::pair<std::string, std::optional<std::string>> cases[] = {
      {repeated("[", deep), {}},
      {pingWith(objects(deep)), {}},
      {toolCall("destinos_list", R"({"a":)" + arrays(deep) + "}"), {}},
      {pingWith(arrays(511)), pongWith(arrays(511))},
      {pingWith(arrays(512)), {}},
      {pingWith(objects(511)), pongWith(objects(511))},
      {pingWith(objects(512)), {}},
      {huge, {}},
      {get(huge), notFound(huge)},
      {get("\xFF"), notFound("\uFFFD")},
      {pingWith("1") + "\xF0\x9F", {}},
      {pingWith("\"a\0b\""s), {}},
      {get(R"(a\u0000b)"), notFound(R"(a\u0000b)")},
  };
  const Home home;
  ServerProcess server({.home = home});
  for (const auto& [line, expected] : cases) {
    EXPECT_TRUE(ask(server, line) == expected) << line.substr(0, 100);
  }
  expectCleanEnd(server);
}

#if defined(__linux__) && !defined(TROVI_SANITIZED)  // others lack the limit or need more
TEST(Memory, ThatIsTooLittleCostsTheLineOrTheReplyAndNoMore) {
  const Home home;
  Home::fileOne();
  Database other(Home::inbox());
  ServerProcess server({.home = home, .shell = "ulimit -v 65536"});  // units of 1024 bytes
  bool answered = false;
  std::optional<std::int64_t> stored;
  for (const std::int64_t megabytes : {1, 5, 9, 13, 15, 16, 17, 19}) {
    const auto size = megabytes << 20;
    const std::string text = '"' + std::string(static_cast<std::size_t>(size), 'x') + '"';
    const auto resolved =
        ask(server, toolCall("recado_resolve", R"({"id":"A","resultado":)" + text + "}"));
    const auto before = stored;
    stored = other.query("SELECT length(result) AS n FROM recado").at(0).intValue("n");
    EXPECT_TRUE(!resolved || stored == (succeeded(resolved) ? size : before)) << *resolved;
    const auto reply = ask(server, pingWith(text));
    EXPECT_TRUE(!reply || reply == pongWith(text));
    answered = reply.has_value();
    EXPECT_TRUE(answered || megabytes > 1);
  }
  EXPECT_FALSE(answered);
  EXPECT_TRUE(succeeded(ask(server, toolCall("destinos_list", "{}"))));
  server.closeInput();
  EXPECT_EQ(server.wait(), 0);
  const std::string said = server.standardError();
  EXPECT_NE(said, "");
  const std::string noReply = "[trovi-mcp] não consegui serializar a resposta\n";
  EXPECT_EQ(said, repeated(noReply, static_cast<int>(said.size() / noReply.size())));
}
#endif

TEST(Start, WithoutAnInboxEndsInOneLineAndStatus1) {
  const std::pair<const char*, const char*> cases[] = {
      {"rm trovi.sqlite; mkdir trovi.sqlite", "Não abri o banco: unable to open database file"},
      {"rm -r ../Trovi; echo >../Trovi", "Não abri o banco: unable to open database file"},
      {"seq 9999 >trovi.sqlite", "Erro no banco: file is not a database"},
      {"seq 999 | dd of=trovi.sqlite seek=1 bs=100 conv=notrunc 2>/dev/null",
       "Erro no banco: database disk image is malformed"},
  };
  for (const auto& [damage, description] : cases) {
    const Home home;
    Home::fileOne();
    ServerProcess server(
        {.home = home, .shell = "cd '" + Home::inbox().parent_path().string() + "'; " + damage});
    server.send(ping);
    EXPECT_EQ(server.wait(), 1);
    EXPECT_EQ(server.standardOutput(), "");
    EXPECT_EQ(server.standardError(),
              "[trovi-mcp] não abri a caixa do Trovi: "s + description + "\n");
  }
}

TEST(Lock, OfMoreThanFourSecondsRefusesAClaimThatSucceedsLater) {
  const Home home;
  Home::fileOne();
  Database other(Home::inbox());
  other.execute("BEGIN EXCLUSIVE");  // only write-ahead logging lets readers pass
  const std::string claim = toolCall("recado_claim", R"({"id":"A"})");
  ServerProcess server({.home = home, .shell = "export XDG_DATA_HOME=/"});  // ignored
  EXPECT_TRUE(succeeded(ask(server, toolCall("inbox_list", "{}"))));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(ask(server, claim), failure("Erro no Trovi: Erro no banco: database is locked"));
  EXPECT_GT(std::chrono::steady_clock::now() - start, 3s);
  other.execute("ROLLBACK");
  EXPECT_EQ(TroviStore(Home::inbox()).recado("A"), someRecado("A"));
  EXPECT_TRUE(succeeded(ask(server, claim)));
}

TEST(End, ComesWhenNobodyReadsTheReplyOrWithTheInput) {
  const Home home;
  for (const auto& [shell, status] : {std::pair{"", -SIGPIPE}, {"trap '' PIPE", 0}}) {
    ServerProcess server({.home = home, .shell = shell});
    awaitStart(server);
    server.closeOutput();
    server.send(ping);
    server.closeInput();
    EXPECT_EQ(server.wait(), status);
    EXPECT_EQ(server.standardError(), "");
  }
}

// Recorded conversations. In a file of Tests/Sessions, line by line:
//
//     # comment
//     ! SQL that another program runs on the inbox
//     > a request line; if no reply follows, the server must not send one
//     < the reply, compared as JSON; a tool's text is written as the JSON value that it contains

/// The reply with a tool's text replaced by the JSON object that it contains.
platform::JSONValue comparable(std::string reply) {
  const auto end = reply.find(R"(}],"isError":)");
  if (const auto start = reply.find(R"("text":")") + 7; end != std::string::npos) {
    const auto quoted = platform::parseJSON(reply.substr(start, end - start));
    const std::string* text = quoted.value().text();
    if (platform::parseJSON(*text)) reply.replace(start, end - start, *text);
  }
  return platform::parseJSON(reply).value();
}

TEST(Sessions, GoAsTheyWereRecorded) {
  int sessions = 0;
  for (const auto& file : std::filesystem::directory_iterator(TROVI_SESSIONS)) {
    const Home home;
    ServerProcess server({.home = home});
    awaitStart(server);
    Database other(Home::inbox());
    std::optional<std::string> reply;
    std::ifstream in(file.path());
    int number = 0;
    for (std::string line; std::getline(in, line);) {
      SCOPED_TRACE(file.path().string() + ":" + std::to_string(++number));
      if (line.empty() || line[0] == '#') continue;
      std::string content = line.substr(2);
      if (const auto at = content.find("@VERSION@"); at != std::string::npos)
        content.replace(at, 9, TROVI_VERSION);
      if (line[0] == '<') {
        ASSERT_TRUE(reply) << "no reply";
        EXPECT_TRUE(comparable(*reply) == platform::parseJSON(content)) << *reply;
        reply.reset();
        continue;
      }
      EXPECT_EQ(reply, std::nullopt);
      line[0] == '>' ? void(reply = ask(server, content)) : other.execute(content);
    }
    EXPECT_EQ(reply, std::nullopt) << file.path();
    expectCleanEnd(server);
    ++sessions;
  }
  EXPECT_GT(sessions, 0);
}

}  // namespace
}  // namespace trovi::tests
