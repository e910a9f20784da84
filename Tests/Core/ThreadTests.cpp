// Several threads on one connection and on one store.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Inbox.h"
#include "Thread.h"

namespace trovi {
namespace {

constexpr int threads = 4;

/// Runs `work` on several threads at once, each with its number.
void together(const std::function<void(int thread)>& work) {
  std::vector<tests::Thread> workers;
  for (int thread = 0; thread < threads; ++thread) {
    workers.emplace_back([&work, thread] { work(thread); });
  }
}

class Threads : public tests::Inbox {};

TEST_F(Threads, GetTheirOwnAnswersFromOneConnection) {
  Database& db = store.db();
  db.execute("CREATE TABLE a(thread, n)");
  together([&](int thread) {
    const auto own = SQLValue::integer(thread);
    for (int n = 0; n < 50; ++n) {
      EXPECT_EQ(db.run("INSERT INTO a VALUES (?, ?)", {own, SQLValue::integer(n)}), 1);
      EXPECT_EQ(db.run("UPDATE a SET n = n WHERE thread = ?", {own}), n + 1);
      const auto rows = db.query("SELECT n FROM a WHERE thread = ? ORDER BY rowid", {own});
      ASSERT_EQ(rows.size(), static_cast<std::size_t>(n) + 1);
      EXPECT_EQ(rows.back().intValue("n"), n);
      EXPECT_EQ(tests::databaseError([&] { db.query("SELECT x" + std::to_string(thread)); }),
                "Erro no banco: no such column: x" + std::to_string(thread));
    }
  });
}

TEST_F(Threads, WorkOneStoreAndEveryChangeCounts) {
  constexpr int rounds = 25;
  store.insert(tests::someRecado("shared"));
  together([&](int thread) {
    for (int round = 0; round < rounds; ++round) {
      const std::string own = std::to_string(thread) + "." + std::to_string(round);
      store.insert(tests::someRecado(own));
      EXPECT_EQ(store.claim({.id = own, .by = own})->claimedBy, own);
      EXPECT_EQ(store.resolve({.id = own, .result = own})->result, own);
      EXPECT_TRUE(store.claim({.id = "shared", .by = own}));
      EXPECT_FALSE(store.claim({.id = own, .by = "again"}));
      if (round % 2 == 0) store.deleteRecado(own);
    }
  });
  EXPECT_EQ(dirty("shared"), 2 + threads * rounds);
  EXPECT_EQ(store.pendingDeletions(-1).size(),
            static_cast<std::size_t>(threads * (rounds + 1) / 2));
  EXPECT_EQ(number("SELECT count(*) FROM recado WHERE id <> 'shared' AND (result <> id OR "
                   "claimed_by <> id OR dirty <> 4)"),
            0);
}

}  // namespace
}  // namespace trovi
