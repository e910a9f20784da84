// The executable as a client meets it: bytes on three pipes, a file that others use and break, and
// ends that come too early.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <functional>

#include "Conversation.h"
#include "Session.h"
#include "UserData.h"

namespace trovi::tests {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using std::filesystem::path;

std::string repeated(std::string_view piece, std::size_t times) {
  std::string text;
  text.reserve(piece.size() * times);
  while (times-- > 0) text += piece;
  return text;
}

/// Puts a file of text where a file or a folder may be.
void putText(const path& at) {
  std::filesystem::remove_all(at);
  std::ofstream(at) << repeated("isto não é um banco ", 500);
}

/// Overwrites a part of the file.
void damage(const path& file, std::int64_t offset, std::int64_t count) {
  std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
  stream.seekp(offset);
  stream << std::string(static_cast<std::size_t>(count), '\xFF') << std::flush;
  EXPECT_TRUE(stream);
}

void expectAsRecorded(ServerProcess& server, const SessionStep& step) {
  const auto reply = ask(server, step.request);
  ASSERT_EQ(reply.has_value(), step.reply.has_value()) << reply.value_or("no reply");
  if (reply) {
    EXPECT_TRUE(comparable(*reply) == *platform::parseJSON(*step.reply)) << *reply;
  }
}

TEST(Executable, GoesThroughSessionsAsTheyWereRecorded) {
  for (const Session& session : recordedSessions()) {
    const Home home;
    ServerProcess server({.home = home});
    awaitStart(server);
    Database other(Home::inbox());
    for (const SessionStep& step : session.steps) {
      SCOPED_TRACE(session.file.string() + ":" + std::to_string(step.line));
      if (step.sql.empty()) {
        expectAsRecorded(server, step);
      } else {
        other.execute(step.sql);
      }
    }
    expectCleanEnd(server);
  }
}

TEST(Bytes, AreOneLineForEachRequestAndNothingElse) {
  const auto request = R"({"id":7,"method":"ping"})"s;
  const auto reply = R"({"jsonrpc":"2.0","id":7,"result":{}})"s + '\n';
  struct Case {
    const char* name;
    std::string input, output;
  };
  const Case cases[] = {
      {"nothing", "", ""},
      {"a line", request + "\n", reply},
      {"a line without its end", request, reply},
      {"carriage returns", request + "\r\n" + request + "\r\n", reply + reply},
      {"a carriage return alone", request + "\r" + request + "\n", ""},
      {"two carriage returns", request + "\r\r\n", reply},
      {"blank lines", "\n\r\n \t\n" + request + "\n\n", reply},
      {"no-break spaces", "\u00A0\t" + request + " \u00A0\n", reply},
      {"a notification without its end", R"({"method":"notifications/initialized"})", ""},
  };
  const Home home;
  for (const auto& [name, input, output] : cases) {
    SCOPED_TRACE(name);
    ServerProcess inOneGo({.home = home});
    inOneGo.sendBytes(input);
    expectCleanEnd(inOneGo, output);
    ServerProcess byteByByte({.home = home});
    for (const char& byte : input) byteByByte.sendBytes({&byte, 1});
    expectCleanEnd(byteByByte, output);
  }
}

TEST(Bytes, PassPipesThatDoNotBlock) {
  const Home home;
  ServerProcess server({.home = home, .nonBlocking = true});
  awaitStart(server);  // and so it has found its input empty
  const std::string id = '"' + std::string(1'000'000, 'x') + '"';  // more than a pipe holds
  EXPECT_TRUE(ask(server, R"({"method":"ping","id":)" + id + "}") ==
              R"({"jsonrpc":"2.0","id":)" + id + R"(,"result":{}})");
  expectCleanEnd(server);
}

struct BadLine {
  std::string name, line;
  std::optional<std::string> reply{};
};

std::vector<BadLine> badLines() {
  const auto withID = [](const std::string& id) { return R"({"method":"ping","id":)" + id + "}"; };
  const auto echo = [](const std::string& id) {
    return R"({"jsonrpc":"2.0","id":)" + id + R"(,"result":{}})";
  };
  const auto get = [](const std::string& id) {
    return toolCall("recado_get", R"({"id":)" + id + "}");
  };
  const auto notFound = [](const std::string& id) {
    return failure("Recado " + id + " não encontrado.");
  };
  const auto arrays = [](std::size_t n) { return repeated("[", n) + repeated("]", n); };
  const auto objects = [](std::size_t n) {
    return repeated(R"({"a":)", n) + "0" + repeated("}", n);
  };
  constexpr std::size_t deep = 100'000;
  const std::string huge = repeated(std::string(1000, 'x'), 20'000);

  return {
      {"arrays", arrays(deep)},
      {"arrays left open", repeated("[", deep)},
      {"objects", objects(deep)},
      {"objects left open", repeated(R"({"a":)", deep)},
      {"arrays in id", withID(arrays(deep))},
      {"objects in id", withID(objects(deep))},
      {"arrays in arguments", toolCall("destinos_list", R"({"a":)" + arrays(deep) + "}")},
      {"objects in arguments", toolCall("destinos_list", objects(deep))},
      {"as many levels as may be", withID(arrays(511)), echo(arrays(511))},
      {"a level more", withID(arrays(512))},
      {"as many objects as may be", withID(objects(511)), echo(objects(511))},
      {"an object more", withID(objects(512))},
      {"20 MB that are no JSON", huge},
      {"20 MB of a text left open", R"({"id":")" + huge},
      {"20 MB in id", withID('"' + huge + '"'), echo('"' + huge + '"')},
      {"20 MB in arguments", get('"' + huge + '"'), notFound(huge)},
      {"ill-formed UTF-8 in arguments", get("\"\xFF\""), notFound("\uFFFD")},
      {"ill-formed UTF-8 before", "\xFF"s + withID("1")},
      {"ill-formed UTF-8 behind", withID("1") + "\xF0\x9F"},
      {"a NUL in id", withID("\"a\0b\""s)},
      {"a NUL behind", withID("1") + '\0'},
      {"nothing but a NUL", "\0"s},
      {"an escaped NUL in arguments", get(R"("a\u0000b")"), notFound(R"(a\u0000b)")},
  };
}

TEST(BadInput, IsAnsweredOrDroppedAndNeverEndsTheServer) {
  const Home home;
  ServerProcess server({.home = home});
  for (const auto& [name, line, expected] : badLines()) {
    const auto reply = ask(server, line);
    EXPECT_TRUE(reply == expected) << name << ": " << reply.value_or("no reply").substr(0, 200);
  }
  expectCleanEnd(server);
}

TEST(Start, WithoutAnInboxEndsInOneLineAndStatus1) {
  const char* const cannotOpen = "Não abri o banco: unable to open database file";
  const char* const noDatabase = "Erro no banco: file is not a database";
  struct Case {
    const char* name;
    std::function<void(const path& home, const path& inbox)> arrange;
    const char* description;
  };
  const Case cases[] = {
      {"a file for a home", [](auto& home, auto&) { putText(home); }, cannotOpen},
      {"a file for the folder", [](auto&, auto& inbox) { putText(inbox.parent_path()); },
       cannotOpen},
      {"a folder for the file",
       [](auto&, auto& inbox) {
         std::filesystem::remove(inbox);
         std::filesystem::create_directory(inbox);
       },
       cannotOpen},
      {"text for a database", [](auto&, auto& inbox) { putText(inbox); }, noDatabase},
      {"a damaged header", [](auto&, auto& inbox) { damage(inbox, 0, 16); }, noDatabase},
      {"a damaged first page", [](auto&, auto& inbox) { damage(inbox, 100, 2000); },
       "Erro no banco: database disk image is malformed"},
  };
  for (const auto& [name, arrange, description] : cases) {
    SCOPED_TRACE(name);
    const Home home;
    const path inbox = Home::inbox();
    Home::file({"A"});
    arrange(home, inbox);
    ServerProcess server({.home = home});
    server.send(ping);
    EXPECT_EQ(server.wait(), 1);
    EXPECT_EQ(server.standardOutput(), "");
    EXPECT_EQ(server.standardError(),
              "[trovi-mcp] não abri a caixa do Trovi: "s + description + "\n");
  }
}

TEST(Start, MakesFoldersThatAreTheUsersAlone) {
  const Home home;
  const mode_t mask = umask(0);  // no help from it
  ServerProcess server({.home = home});
  umask(mask);
  awaitStart(server);
  path made = Home::inbox().parent_path();
  for (const path& stop = home; made != stop; made = made.parent_path()) {
    struct stat found {};
    ASSERT_EQ(stat(made.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777U, platform::newDirectoryMode) << made;
  }
}

TEST(Start, FindsTheInboxWhateverElseIsInTheEnvironment) {
  const TemporaryFolder elsewhere;
  const Home home;
  Home::file({"A"});
  ServerProcess server({.home = home,
                        .environment = {"XDG_DATA_HOME=" + elsewhere.path().string(),
                                        "SQLITE_TMPDIR=" + elsewhere.path().string()}});
  EXPECT_TRUE(succeeded(ask(server, toolCall("recado_get", R"({"id":"A"})"))));
  EXPECT_TRUE(std::filesystem::is_empty(elsewhere.path()));
}

TEST(Lock, OfTwoSecondsDelaysAClaimButNoReading) {
  const Home home;
  Home::file({"A"});
  Database other(Home::inbox());
  other.execute("BEGIN EXCLUSIVE");  // which only the write-ahead log lets readers pass
  ServerProcess server({.home = home});
  EXPECT_TRUE(succeeded(ask(server, toolCall("inbox_list", "{}"))));
  server.send(toolCall("recado_claim", R"({"id":"A"})"));
  EXPECT_FALSE(server.replies(2s));
  other.execute("ROLLBACK");
  EXPECT_TRUE(succeeded(server.receive()));
}

TEST(Lock, OfMoreThanFourSecondsRefusesAClaimThatSucceedsLater) {
  const Home home;
  Home::file({"A"});
  Database other(Home::inbox());
  const auto changed = [&] {
    return other.query("SELECT 1 FROM recado WHERE status = 'pendente' AND dirty = 2").empty();
  };
  const std::string claim = toolCall("recado_claim", R"({"id":"A"})");
  ServerProcess server({.home = home});
  other.execute("BEGIN IMMEDIATE");
  EXPECT_EQ(ask(server, claim), failure("Erro no Trovi: Erro no banco: database is locked"));
  other.execute("ROLLBACK");
  EXPECT_FALSE(changed());
  EXPECT_TRUE(succeeded(ask(server, claim)));
  EXPECT_TRUE(changed());
}

TEST(SharedFile, ShowsOneServerWhatAnotherDid) {
  const Home home;
  Home::file({"A"});
  ServerProcess one({.home = home});
  ServerProcess another({.home = home});
  for (const auto* name : {"Um", "Dois"}) {
    const auto claim = toolCall("recado_claim", R"({"id":"A","cliente":")"s + name + "\"}");
    EXPECT_TRUE(succeeded(ask(one, claim)));
    const auto seen = ask(another, toolCall("recado_get", R"({"id":"A"})")).value_or("no reply");
    EXPECT_NE(seen.find(R"(\"pego_por\": \")"s + name), std::string::npos) << seen;
  }
  expectCleanEnd(one);
  EXPECT_TRUE(
      succeeded(ask(another, toolCall("recado_resolve", R"({"id":"A","resultado":"ok"})"))));
  expectCleanEnd(another);
}

TEST(End, ComesByTheSignalThatAsksForIt) {
  const Home home;
  ServerProcess server({.home = home});
  awaitStart(server);
  server.kill(SIGTERM);
  EXPECT_EQ(server.wait(), -SIGTERM);
  EXPECT_EQ(server.standardError(), "");
}

TEST(End, ComesWhenNobodyReadsTheReply) {
  const Home home;
  ServerProcess server({.home = home});
  awaitStart(server);
  server.closeOutput();
  server.send(ping);
  EXPECT_EQ(server.wait(), -SIGPIPE);
}

TEST(End, ComesWithTheInputWhenTheParentIgnoresBrokenPipes) {
  const Home home;
  ServerProcess server({.home = home, .shell = "trap '' PIPE"});
  awaitStart(server);
  server.closeOutput();
  server.send(ping);
  server.send(toolCall("destinos_list", "{}"));
  expectCleanEnd(server);
}

}  // namespace
}  // namespace trovi::tests
