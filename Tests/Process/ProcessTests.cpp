// The executable as a client sees it: bytes on pipes, a file that others use and damage, too little
// memory, and streams that end early.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <regex>

#include "Repeated.h"
#include "ServerProcess.h"
#include "Text/JSON.h"
#include "TroviCore/Version.h"

namespace trovi::tests {
namespace {

using namespace std::string_literals;

std::string pingWith(const std::string& id) { return R"({"method":"ping","id":)" + id + "}"; }
std::string pongWith(const std::string& id) {
  return R"({"jsonrpc":"2.0","id":)" + id + R"(,"result":{}})";
}

TEST(Bytes, AreOneLineForEachRequestAndNothingElse) {
  const std::string request = pingWith("7");
  const std::string input = request + "\r" + request + "\n" + request +
                            "\r\r\n\n\r\n \t\n\u00A0\t" + request + " \u00A0\r\n" + request;
  const Home home;
  ServerProcess().expectCleanEnd();
  for (const std::size_t piece : {input.size(), std::size_t{1}}) {
    ServerProcess server;
    for (std::size_t i = 0; i < input.size(); i += piece) server.sendBytes({&input[i], piece});
    server.expectCleanEnd(repeated(pongWith("7") + '\n', 3));
  }
  ServerProcess server;
  server.sendBytes(request + "\n{\"id\":\"8\"");
  EXPECT_EQ(server.receive(), pongWith("7"));  // so the start of the second line has been read too
  server.sendBytes(R"(,"method":"ping"})");
  server.expectCleanEnd(pongWith("\"8\"") + '\n');
}

TEST(Bytes, PassPipesThatDoNotBlock) {
  const Home home;
  ServerProcess server("", true);
  server.awaitStart();  // so it has found its input empty
  const std::string id = '"' + std::string(1'000'000, 'x') + '"';  // more than a pipe holds
  EXPECT_TRUE(server.ask(pingWith(id)) == pongWith(id));
  server.expectCleanEnd();
}

TEST(BadInput, IsAnsweredOrDroppedAndNeverEndsTheServer) {
  const auto nested = [](int n) { return repeated(R"({"a":[)", n) + repeated("]}", n); };
  const std::string huge = repeated("x", 20'000'000);
  const std::pair<std::string, std::optional<std::string>> cases[] = {
      {toolCall("destinos_list", nested(100'000)), {}},
      {pingWith("[" + nested(255) + "]"), pongWith("[" + nested(255) + "]")},  // 512 with its own
      {pingWith(nested(256)), {}},
      {pingWith("[[]" + repeated(",[]", 600) + "]"), pongWith("[[]" + repeated(",[]", 600) + "]")},
      {pingWith('"' + huge + '"'), pongWith('"' + huge + '"')},
      {pingWith("1") + '\0', {}},
  };
  const Home home;
  ServerProcess server;
  for (const auto& [line, expected] : cases) {
    EXPECT_TRUE(server.ask(line) == expected) << line.substr(0, 100);
  }
  server.expectCleanEnd();
}

#if defined(__linux__) && !defined(TROVI_SANITIZED)  // others lack the limit or need more
TEST(LowMemory, DropsALineOrAReplyAndGoesOn) {
  const Home home;
  Home::fileOne();
  Database other(Home::inbox());
  other.execute(
      "INSERT INTO recado(id, created_at, status, transcript) VALUES ('B', 0, 'pego', "
      "replace(hex(zeroblob(3145728)), '0', char(1)))");  // each byte is written as seven
  ServerProcess server("ulimit -v 65536");                // units of 1024 bytes
  const auto dropped = server.ask(toolCall("recado_get", R"({"id":"B"})")).value_or("none");
  EXPECT_TRUE(dropped.ends_with(R"([{"type":"text","text":""}],"isError":false}})")) << dropped;
  std::string answered;
  for (const std::size_t megabytes : {1U, 5U, 9U, 13U, 15U, 16U, 17U, 35U}) {
    const std::string text = '"' + std::string(megabytes << 20, 'x') + '"';
    const auto resolved =
        server.ask(toolCall("recado_resolve", R"({"id":"A","resultado":)" + text + "}"));
    const auto stored = other.query("SELECT length(result) >> 20 AS n FROM recado WHERE id = 'A'");
    const bool isStored = stored.at(0).intValue("n") == static_cast<std::int64_t>(megabytes);
    const char* const end =
        isStored ? "\"isError\":false}}" : ": out of memory\"}],\"isError\":true}}";
    EXPECT_TRUE(!resolved || resolved->ends_with(end)) << *resolved;
    const auto reply = server.ask(pingWith(text));
    EXPECT_TRUE(!reply || reply == pongWith(text));
    answered += reply ? '+' : '-';
  }
  EXPECT_TRUE(answered.starts_with('+') && answered.ends_with('-')) << answered;
  // A line that is too long is dropped to its end, even if the rest would be a request.
  EXPECT_EQ(server.ask('"' + std::string(std::size_t{35} << 20, ' ') + ping), std::nullopt);
  EXPECT_TRUE(succeeded(server.ask(toolCall("destinos_list", "{}"))));
  server.closeInput();
  EXPECT_EQ(server.wait(), 0);
  const std::regex said("(\\[trovi-mcp\\] não consegui serializar a resposta\n)+");
  EXPECT_TRUE(std::regex_match(server.standardError(), said)) << server.standardError();
}
#endif

TEST(Start, FailsInOneLineWithStatus1) {
  const std::pair<const char*, const char*> cases[] = {
      {"rm -r ../Trovi; echo >../Trovi", "Não abri o banco: unable to open database file"},
      {"seq 9999 >trovi.sqlite", "Erro no banco: file is not a database"},
      {"seq 999 | dd of=trovi.sqlite seek=1 bs=100 conv=notrunc 2>/dev/null",
       "Erro no banco: database disk image is malformed"},
  };
  for (const auto& [damage, description] : cases) {
    const Home home;
    Home::fileOne();
    ServerProcess server("cd '" + Home::inbox().parent_path().string() + "'; " + damage);
    server.send(ping);
    EXPECT_EQ(server.receive(), std::nullopt);
    EXPECT_EQ(server.wait(), 1);
    EXPECT_EQ(server.standardError(),
              "[trovi-mcp] não abri a caixa do Trovi: "s + description + "\n");
  }
}

TEST(FullDisk, LosesNothingAnswered) {
  bool fits = false;
  for (int blocks = 8; !fits; blocks += 8) {
    SCOPED_TRACE(blocks);
    const Home home;
    if (blocks % 16 == 0) Home::fileOne();  // else it is a first start
    ServerProcess server("trap '' XFSZ; ulimit -f " + std::to_string(blocks));
    server.send(toolCall("recado_resolve", R"({"id":"A","resultado":"feito"})"));
    server.closeInput();
    const auto resolved = server.receive();
    fits = server.wait() == 0 && succeeded(resolved);
    TroviStore store(Home::inbox());
    expectSound(store.db());
    EXPECT_EQ(store.destinos().size(), 3U);
    const auto found = store.recado("A");
    EXPECT_EQ(succeeded(resolved), found && found->result == "feito");
    const std::string said = server.standardError() + resolved.value_or("");
    const std::regex full("Erro no banco: (disk I/O error|database or disk is full)");
    EXPECT_NE(fits || (resolved && !found), std::regex_search(said, full)) << said;
  }
}

// Recorded conversations. In a file of Tests/Sessions, line by line:
//
//     # comment
//     ! SQL that another program runs on the inbox
//     > a request line; if no reply follows, the server must not send one
//     < the reply to the byte, but a tool's text is written as the JSON value that it contains
//     ? a query of one column by that program
//     = each row of its answer

/// The reply with a tool's text replaced by the JSON value that it contains, if there is one.
std::string readable(std::string reply) {
  const auto end = reply.find(R"(}],"isError":)");
  if (const auto start = reply.find(R"("text":")") + 7; end != std::string::npos) {
    const auto quoted = platform::parseJSON(reply.substr(start, end - start)).value();
    if (const auto value = platform::parseJSON(quoted.text().value())) {
      std::string compact;
      platform::appendJSON(compact, *value);
      reply.replace(start, end - start, compact);
    }
  }
  return reply;
}

TEST(Sessions, GoAsTheyWereRecorded) {
  ASSERT_FALSE(std::filesystem::is_empty(TROVI_SESSIONS));
  for (const auto& file : std::filesystem::directory_iterator(TROVI_SESSIONS)) {
    const Home home;
    ServerProcess server;
    server.awaitStart();
    Database other(Home::inbox());
    std::string recorded;
    std::string observed;
    std::ifstream in(file.path());
    for (std::string line; std::getline(in, line);) {
      line = std::regex_replace(line, std::regex("@VERSION@"), TROVI_VERSION);
      recorded += line + '\n';
      if (line.starts_with('<') || line.starts_with('=')) continue;
      observed += line + '\n';
      const std::string content = line.substr(std::min<std::size_t>(line.size(), 2));
      if (line.starts_with('!')) other.execute(content);
      if (line.starts_with('>')) {
        if (const auto reply = server.ask(content)) observed += "< " + readable(*reply) + '\n';
      }
      if (line.starts_with('?')) {
        for (const Row& row : other.query("WITH answer(x) AS (" + content +
                                          ") SELECT CAST(x AS TEXT) AS x FROM answer")) {
          observed += "= " + row.stringValue("x").value_or("NULL") + '\n';
        }
      }
    }
    EXPECT_EQ(observed, recorded) << file.path();
    server.expectCleanEnd();
  }
}

}  // namespace
}  // namespace trovi::tests
