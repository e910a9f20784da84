#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <future>

#include "Inbox.h"

namespace trovi {
namespace {

class Schema : public tests::Inbox {
 protected:
  /// Takes from the file what the earlier layout had not.
  void makeEarlier() {
    for (const std::string trigger : {"insert", "status", "content", "delete"}) {
      other.execute("DROP TRIGGER recado_sync_" + trigger);
    }
    other.execute(
        "ALTER TABLE recado DROP COLUMN updated_at; ALTER TABLE recado DROP COLUMN dirty");
  }
  /// What an opening says while another program's trigger refuses a change.
  std::string refused(const std::string& change, const std::string& how) {
    refuse(change, how);
    return tests::databaseError([&] { TroviStore again(file); });
  }
};

TEST_F(Schema, OfACurrentFileIsLeftAlone) {
  store.insert(tests::someRecado("1"));
  other.execute("DELETE FROM destino WHERE sort; UPDATE meta SET value = NULL; BEGIN IMMEDIATE");
  TroviStore again(file);
  EXPECT_EQ(each("name", "destino"), "Ideias soltas;");  // "seeded" counts whatever its value
  EXPECT_EQ(each("dirty"), "2;");
}

TEST_F(Schema, IsMigratedByOneProgramAtATimeUntilTheFileIsWhole) {
  using namespace std::chrono_literals;
  const int lock = ::open(folder.path().c_str(), O_RDONLY);
  const auto isFree = [&] { return flock(lock, LOCK_EX | LOCK_NB) + flock(lock, LOCK_UN) == 0; };
  makeEarlier();
  other.execute("BEGIN IMMEDIATE");  // knows nothing of the lock, and holds up the migration
  auto opening = std::async(std::launch::async, [&] { TroviStore again(file); });
  while (isFree() && opening.wait_for(1ms) == std::future_status::timeout) continue;
  EXPECT_EQ(opening.wait_for(50ms), std::future_status::timeout);
  EXPECT_FALSE(isFree());
  other.execute("ROLLBACK");
  opening.get();
  EXPECT_TRUE(isFree());
  ::close(lock);
}

TEST_F(Schema, OfTheEarlierLayoutGetsItsTwoColumnsFilled) {
  other.execute(
      "INSERT INTO recado(id, created_at, status, claimed_at, resolved_at) VALUES "
      "('resolved', 10, 'resolvido', 20, 30), ('claimed', 10, 'pego', 20, NULL), "
      "('new', 10, 'pendente', NULL, NULL)");
  // SQLite takes those in capitals for the same columns, and refuses to add them.
  for (const char* more : {"",
                           "ALTER TABLE recado ADD COLUMN UPDATED_AT REAL;"
                           "ALTER TABLE recado ADD COLUMN DIRTY INTEGER NOT NULL DEFAULT 1"}) {
    makeEarlier();
    other.execute(more);
    TroviStore upgraded(file);
    EXPECT_EQ(each("id || updated_at || ' ' || dirty"), "resolved30.0 1;claimed20.0 1;new10.0 1;");
  }
}

TEST_F(Schema, KeepsWhatSucceededBeforeAFailureUnlessSQLiteRollsBack) {
  const std::string updatedAt = "pragma_table_info('recado') WHERE name = 'updated_at'";
  store.insert(tests::someRecado("1"));
  makeEarlier();
  other.execute("DELETE FROM destino; DELETE FROM meta");
  // The column is there with its first values, or neither is.
  EXPECT_EQ(refused("UPDATE ON recado", "ROLLBACK"), "Erro no banco: refused");
  EXPECT_EQ(each("name", updatedAt), "");
  EXPECT_EQ(refused("UPDATE ON recado", "ABORT"), "Erro no banco: refused");
  EXPECT_EQ(each("name", updatedAt), "updated_at;");
  const std::string third = "INSERT ON destino WHEN NEW.sort = 2";
  EXPECT_EQ(refused(third, "ROLLBACK"), "Erro no banco: refused");
  EXPECT_EQ(each("name", "destino"), "");
  EXPECT_EQ(refused(third, "ABORT"), "Erro no banco: refused");
  EXPECT_EQ(each("name", "destino"), "Ideias soltas;Corvane;");
  EXPECT_EQ(each("key", "meta"), "");
  other.execute("DROP TRIGGER refusal; DROP TRIGGER recado_sync_delete");
  TroviStore again(file);
  EXPECT_EQ(each("dirty || (SELECT count(*) FROM sqlite_schema WHERE type = 'trigger')"), "14;");
  EXPECT_EQ(each("name", "destino ORDER BY sort"),
            "Ideias soltas;Ideias soltas;Corvane;Corvane;Roadmap;");
  EXPECT_EQ(each("key", "meta"), "seeded;");
}

}  // namespace
}  // namespace trovi
