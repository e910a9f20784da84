// Several servers and a recorder on one file, while servers are killed and restarted.
#include <gtest/gtest.h>

#include <deque>
#include <fstream>
#include <future>
#include <random>
#include <thread>

#include "ServerProcess.h"

namespace trovi::tests {
namespace {

TEST(SharedFile, LosesNoChangeAndAppliesNoneTwice) {
  const auto seed = std::random_device()();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  const auto below = [&](std::size_t limit) { return random() % limit; };
  const Home home;
  TroviStore recorder(Home::inbox());
  for (int i = 0; i < 10; ++i) recorder.insert(someRecado(std::to_string(i)));
  // Another program's trigger that records every committed result.
  recorder.db().execute(
      "CREATE TABLE book(result UNIQUE); CREATE TRIGGER book AFTER UPDATE OF result ON recado "
      "BEGIN INSERT INTO book VALUES (NEW.result); END");

  Database& db = recorder.db();
  std::size_t answered = 0;
  constexpr std::size_t servers = 3;
  constexpr std::size_t burst = servers * 20;
  constexpr std::size_t rounds = 20;
  for (std::size_t round = 0; round < rounds; ++round) {
    std::deque<ServerProcess> crowd(servers);
    const auto result = [&](std::size_t i) { return std::to_string(round * burst + i); };
    for (std::size_t i = 0; i < burst; ++i) {
      const std::string id = std::to_string(below(10));
      crowd[i % servers].send(
          toolCall("recado_resolve", R"({"id":")" + id + R"(","resultado":")" + result(i) + "\"}"));
    }
    recorder.setDestino({.id = std::to_string(below(10)), .destinoID = "d"});
    const std::size_t killed = below(servers);
    const std::size_t enough = below(burst);
    for (std::size_t i = 0; i < burst; ++i) {
      if (i == enough) crowd[killed].kill();
      const auto reply = crowd[i % servers].receive();
      EXPECT_TRUE(reply || i % servers == killed);
      if (!reply || reply->ends_with(R"(: database is locked"}],"isError":true}})")) continue;
      EXPECT_TRUE(succeeded(reply)) << *reply;
      const auto found =
          db.query("SELECT * FROM book WHERE result = ?", {SQLValue::text(result(i))});
      EXPECT_EQ(found.size(), 1U);
      ++answered;
    }
  }
  EXPECT_GT(answered, rounds);
  const auto booked = db.query("SELECT * FROM book").size();
  EXPECT_LE(booked, answered + rounds);  // + what killed servers did not confirm
  const auto changes = db.query("SELECT sum(dirty - 2) AS n FROM recado");
  EXPECT_EQ(changes.at(0).intValue("n"), rounds + booked);
  expectSound(db);
}

/// Assistants start several servers at once when there is no inbox yet; one of them is killed. An
/// empty file may be there, or the log of an inbox that was deleted.
TEST(FirstStart, IsWholeForEveryServerWhateverIsThereBefore) {
  for (int round = 0; round < 45; ++round) {
    const Home home;
    const auto inbox = Home::inbox();
    if (round % 3 == 1) std::ofstream out(inbox);
    if (round % 3 == 2) {
      ServerProcess deleted;
      deleted.awaitStart();
      Home::fileOne();
      std::filesystem::remove(inbox);
    }
    std::deque<ServerProcess> crowd(4);
    std::this_thread::sleep_for(std::chrono::microseconds(200 * round));
    crowd.front().kill();
    crowd.pop_front();
    for (ServerProcess& server : crowd) server.awaitStart();
    TroviStore store(inbox);
    store.insert(someRecado("B"));
    for (ServerProcess& server : crowd) server.expectCleanEnd();
    EXPECT_EQ(store.destinos().size(), 3U);
    EXPECT_EQ(store.recados({.limit = -1}), std::vector{someRecado("B")});
    expectSound(store.db());
    using Files = std::filesystem::directory_iterator;
    EXPECT_EQ(std::distance(Files(inbox.parent_path()), Files()), 3);  // with its log
  }
}

/// Programs that only use SQLite know nothing of the store's lock.
TEST(FirstStart, LosesNothingThatAnotherProgramCommitsMeanwhile) {
  for (int committed = 0; committed < 200;) {
    const Home home;
    const auto inbox = Home::inbox();
    std::optional<Database> other;
    const auto opening = std::async(std::launch::async, [&] { TroviStore store(inbox); });
    try {
      other.emplace(inbox).execute("CREATE TABLE mine(x)");
    } catch (const DatabaseError&) {
      continue;  // SQLite does not let two switch a new file's mode at once
    }
    opening.wait();
    EXPECT_NO_THROW(Database(inbox).query("SELECT * FROM mine"));
    ++committed;
  }
}

}  // namespace
}  // namespace trovi::tests
