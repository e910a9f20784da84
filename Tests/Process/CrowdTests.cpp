// Several servers and a recorder on one file, while servers are killed and started again.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <utility>

#include "Conversation.h"

namespace trovi::tests {
namespace {

using namespace std::chrono_literals;

/// Another program's book of every change to a message that is committed, in order. `mark` is what
/// the change left in the message: every claim and resolution of these tests leaves another one.
constexpr const char* openBook = R"(
CREATE TABLE book(n INTEGER PRIMARY KEY, id, mark, state_changed_at);
CREATE TRIGGER book_state AFTER UPDATE OF status ON recado BEGIN
  INSERT INTO book(id, mark, state_changed_at)
  VALUES (NEW.id, IIF(NEW.status = 'resolvido', NEW.result, NEW.claimed_by),
          (julianday('now') - 2440587.5) * 86400.0);
END;
CREATE TRIGGER book_content AFTER UPDATE OF destino_id ON recado BEGIN
  INSERT INTO book(id) VALUES (NEW.id);
END;
)";

/// Messages whose counter or time of change is not what the book tells.
constexpr const char* wrongBookkeeping = R"(
SELECT count(*) FROM recado
WHERE dirty <> 2 + (SELECT count(*) FROM book WHERE book.id = recado.id)
   OR updated_at IS NOT IFNULL((SELECT state_changed_at FROM book
                                WHERE book.id = recado.id AND state_changed_at IS NOT NULL
                                ORDER BY n DESC LIMIT 1), updated_at)
)";

enum class Kind { claim, resolution, list };
enum class Outcome { done, refused, locked, unanswered };

struct Request {
  Kind kind;
  std::string message{};  ///< which it changes
  Outcome outcome = Outcome::unanswered;
};

/// What the reply says, which must be one of the few that the request may get.
Outcome outcome(const std::string& reply, int number, const Request& request) {
  const std::string refusal = std::string("Não deu para ") +
                              (request.kind == Kind::claim ? "pegar" : "resolver") + " o recado " +
                              request.message + ": ele não existe ou ainda está sendo transcrito.";
  const std::string lock = "Erro no Trovi: Erro no banco: database is locked";
  const std::string shown = request.kind == Kind::list
                                ? R"(\"recados\": [)"
                                : R"(\"id\": \")" + request.message + R"(\")";
  if (request.kind != Kind::list && reply == failure(refusal, number)) return Outcome::refused;
  if (reply == failure(lock, number)) return Outcome::locked;  // a slow disk
  EXPECT_TRUE(reply.starts_with(R"({"jsonrpc":"2.0","id":)" + std::to_string(number) + ",") &&
              succeeded(reply) && reply.find(shown) != std::string::npos)
      << number << " was answered by " << reply;
  return Outcome::done;
}

/// One life of a server, and what it was asked. A request's number is its JSON-RPC id and its mark.
struct Life {
  explicit Life(const std::filesystem::path& home) : server({.home = home}) {}

  ServerProcess server;
  std::map<int, Request> requests{};
};

class Crowd : public testing::Test {
 protected:
  Crowd() {
    recorder.db().execute(openBook);
    for (int i = 0; i < 20; ++i) insert();
    for (auto& life : alive) life = std::make_unique<Life>(home);
  }

  int below(int limit) { return std::uniform_int_distribution(0, limit - 1)(random); }

  void insert() {
    messages.push_back(std::to_string(messages.size()));
    recorder.insert(someRecado(messages.back()));
  }

  void record() {
    const std::string& message =
        messages[static_cast<std::size_t>(below(static_cast<int>(messages.size())))];
    switch (below(4)) {
      case 0: return recorder.reopen(message);
      case 1: return recorder.setDestino({.id = message, .destinoID = "d"});
      case 2:
        if (deleted.insert(message).second) recorder.deleteRecado(message);
        [[fallthrough]];
      default: insert();
    }
  }

  /// Asks for a change of one of the latest messages, or for a list.
  void request(Life& life) {
    const int latest = std::min(30, static_cast<int>(messages.size()));
    const std::string& message =
        messages[messages.size() - 1 - static_cast<std::size_t>(below(latest))];
    const int number = ++last;
    const std::string id = R"({"id":")" + message + '"';
    const std::string mark = '"' + std::to_string(number) + "\"}";
    switch (below(4)) {
      case 0:
        life.requests[number] = {.kind = Kind::list};
        return life.server.send(toolCall("inbox_list", "{}", number));
      case 1:
        life.requests[number] = {.kind = Kind::resolution, .message = message};
        return life.server.send(toolCall("recado_resolve", id + R"(,"resultado":)" + mark, number));
      default:
        life.requests[number] = {.kind = Kind::claim, .message = message};
        return life.server.send(toolCall("recado_claim", id + R"(,"cliente":)" + mark, number));
    }
  }

  /// Takes the replies to everything that was asked, or kills the server behind the first `enough`.
  void takeReplies(Life& life, int enough) {
    int taken = 0;
    for (auto& [number, request] : life.requests) {
      if (request.outcome != Outcome::unanswered) continue;
      if (taken++ == enough) life.server.kill();
      const auto reply = life.server.receive();
      if (!reply) break;
      request.outcome = outcome(*reply, number, request);
      ++outcomes[{request.kind, request.outcome}];
    }
  }

  void killAndStartAgain(std::unique_ptr<Life>& life) {
    life->server.kill();
    EXPECT_EQ(life->server.wait(), -SIGKILL);
    ended.push_back(std::exchange(life, std::make_unique<Life>(home)));
  }

  /// Holds what a server said of its changes against what the book says.
  void expectBookedAsAnswered(const Life& life) {
    std::int64_t before = 0;
    bool inHand = true;  // the first request without a reply may have been carried out
    for (const auto& [number, request] : life.requests) {
      const bool done = request.outcome == Outcome::done;
      const bool refused = request.outcome == Outcome::refused;
      const bool gone = deleted.contains(request.message);  // perhaps before it was read again
      const bool may = done || (refused && gone) ||
                       (request.outcome == Outcome::unanswered && std::exchange(inHand, false));
      if (request.kind == Kind::list) continue;
      EXPECT_TRUE(!refused || gone || request.kind == Kind::claim) << "request " << number;
      const auto rows = recorder.db().query("SELECT n, id FROM book WHERE mark = ?",
                                            {SQLValue::text(std::to_string(number))});
      ASSERT_LE(rows.size(), may ? 1U : 0U) << "request " << number;
      ASSERT_GE(rows.size(), done ? 1U : 0U) << "request " << number;
      if (rows.empty()) continue;
      EXPECT_EQ(rows[0].stringValue("id"), request.message);
      EXPECT_GT(rows[0].intValue("n"), std::exchange(before, *rows[0].intValue("n")));
    }
  }

  const Home home;
  TroviStore recorder{Home::inbox()};
  std::mt19937 random;
  std::vector<std::string> messages;
  std::set<std::string> deleted;
  int last = 0;
  std::map<std::pair<Kind, Outcome>, int> outcomes;
  std::array<std::unique_ptr<Life>, 3> alive;
  std::vector<std::unique_ptr<Life>> ended;
};

TEST_F(Crowd, LosesDoublesAndMixesUpNothing) {
  const char* given = std::getenv("TROVI_SEED");
  const auto seed = given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10))
                                     : std::random_device{}();
  random.seed(seed);
  std::cout << "TROVI_SEED=" << seed << std::endl;

  const auto deadline = std::chrono::steady_clock::now() + 60s;
  constexpr int rounds = 60;
  constexpr int burst = 20;
  for (int round = 0; round < rounds && std::chrono::steady_clock::now() < deadline; ++round) {
    for (const auto& life : alive) {
      for (int i = 0; i < burst; ++i) request(*life);
    }
    for (int i = 0; i < burst; ++i) record();
    for (auto& life : alive) {
      const bool dies = below(3) == 0;
      takeReplies(*life, dies ? below(burst) : burst);
      if (dies) killAndStartAgain(life);
    }
  }
  EXPECT_GT(ended.size(), 0U);
  for (const Kind kind : {Kind::claim, Kind::resolution, Kind::list}) {
    EXPECT_GT(2 * (outcomes[{kind, Outcome::done}]), (outcomes[{kind, Outcome::refused}]));
  }
  for (auto& life : alive) {
    expectCleanEnd(life->server);
    ended.push_back(std::move(life));
  }

  Database& db = recorder.db();
  expectSound(db);
  for (const auto& life : ended) expectBookedAsAnswered(*life);
  EXPECT_EQ(db.query("SELECT (" + std::string(wrongBookkeeping) + ") AS n").at(0).intValue("n"), 0);
  std::set<std::string> present;
  for (const Recado& recado : recorder.recados({.limit = -1})) present.insert(recado.id);
  const auto tombstones = recorder.pendingDeletions(-1);
  EXPECT_EQ(std::set<std::string>(tombstones.begin(), tombstones.end()), deleted);
  for (const std::string& message : messages) {
    EXPECT_NE(present.contains(message), deleted.contains(message)) << message;
  }
}

}  // namespace
}  // namespace trovi::tests
