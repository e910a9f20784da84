#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>

#include "Inbox.h"

namespace trovi {
namespace {

class Schema : public tests::Inbox {};

/// The process's umask, for as long as it lasts.
struct Umask {
  explicit Umask(mode_t mask) : before(umask(mask)) {}
  ~Umask() { umask(before); }
  Umask(const Umask&) = delete;
  Umask& operator=(const Umask&) = delete;
  mode_t before;
};

TEST(FirstStart, MakesFilesOfMode0600WhateverTheUmask) {
  using std::filesystem::perms;
  const tests::TemporaryFolder folder;
  create_symlink(folder.path() / "0777", folder.path() / "link");
  for (const auto& [name, made, mask] :
       {std::tuple{"0", "0", 0U}, {"077", "077", 077U}, {"link", "0777", 0777U}}) {
    const Umask limited(mask);
    TroviStore store(folder.path() / name);
    const auto file = folder.path() / made;
    for (const char* part : {"", "-wal", "-shm"}) {
      EXPECT_EQ(std::filesystem::status(file.string() + part).permissions(), perms(0600)) << part;
    }
    permissions(file, perms(0640));
    TroviStore again(file);
    EXPECT_EQ(status(file).permissions(), perms(0640));
  }
}

TEST(FirstStart, IsThatOfOneProgramAtATimeUntilTheFileIsWhole) {
  using namespace std::chrono_literals;
  const tests::TemporaryFolder folder;
  const auto file = folder.path() / "trovi.sqlite";
  const int other = ::open(folder.path().c_str(), O_RDONLY);
  const auto take = [&] { return ::flock(other, LOCK_EX | LOCK_NB) == 0; };
  EXPECT_TRUE(take());
  auto opening = std::async(std::launch::async, [&] { const TroviStore store(file); });
  EXPECT_EQ(opening.wait_for(50ms), std::future_status::timeout);
  EXPECT_FALSE(exists(file));
  Database plain(file);  // does not take part, and now holds up the migration
  plain.execute("BEGIN IMMEDIATE");
  do {
    ::flock(other, LOCK_UN);
  } while (opening.wait_for(1ms) == std::future_status::timeout && take());
  EXPECT_EQ(opening.wait_for(50ms), std::future_status::timeout);
  EXPECT_FALSE(take());
  plain.execute("ROLLBACK");
  opening.get();
  EXPECT_TRUE(take());
  ::close(other);
}

TEST_F(Schema, OfACurrentFileIsLeftAlone) {
  store.insert(tests::someRecado("1"));
  other.execute("DELETE FROM destino WHERE sort; UPDATE meta SET value = NULL; BEGIN IMMEDIATE");
  TroviStore again(file);
  EXPECT_EQ(each("name", "destino"), "Ideias soltas;");  // "seeded" counts whatever its value
  EXPECT_EQ(each("dirty"), "2;");
}

TEST_F(Schema, OfTheEarlierLayoutGetsItsTwoColumnsFilled) {
  // SQLite takes those in capitals for the same columns, and refuses to add them.
  for (const char* more : {"", ", UPDATED_AT REAL, DIRTY INTEGER NOT NULL DEFAULT 1"}) {
    other.execute(
        "DROP TABLE recado; CREATE TABLE recado (id TEXT PRIMARY KEY, created_at REAL NOT NULL, "
        "duration REAL NOT NULL DEFAULT 0, audio_path TEXT, transcript TEXT NOT NULL DEFAULT '', "
        "title TEXT NOT NULL DEFAULT '', destino_id TEXT, status TEXT NOT NULL, claimed_by TEXT, "
        "claimed_at REAL, result TEXT, resolved_at REAL, language TEXT" +
        std::string(more) +
        "); INSERT INTO recado(id, created_at, status, claimed_at, resolved_at) VALUES "
        "('resolved', 10, 'resolvido', 20, 30), ('claimed', 10, 'pego', 20, NULL), "
        "('new', 10, 'pendente', NULL, NULL)");
    TroviStore upgraded(file);
    EXPECT_EQ(each("id || updated_at || ' ' || dirty"), "resolved30.0 1;claimed20.0 1;new10.0 1;");
  }
}

TEST_F(Schema, KeepsWhatSucceededBeforeAFailureUnlessSQLiteRollsBack) {
  const auto refused = [&](const std::string& how) {
    other.execute(
        "DROP TRIGGER IF EXISTS refusal; CREATE TRIGGER refusal BEFORE INSERT ON destino "
        "WHEN NEW.sort = 2 BEGIN SELECT RAISE(" +
        how + ", 'refused'); END");
    return tests::databaseError([&] { TroviStore again(file); });
  };
  other.execute("DELETE FROM destino; DELETE FROM meta");
  EXPECT_EQ(refused("ROLLBACK"), "Erro no banco: refused");
  EXPECT_EQ(each("name", "destino") + each("key", "meta"), "");
  EXPECT_EQ(refused("ABORT"), "Erro no banco: refused");
  EXPECT_EQ(each("name", "destino") + each("key", "meta"), "Ideias soltas;Corvane;");
  other.execute("DROP TRIGGER refusal");
  TroviStore again(file);
  EXPECT_EQ(each("name", "destino ORDER BY sort") + each("key", "meta"),
            "Ideias soltas;Ideias soltas;Corvane;Corvane;Roadmap;seeded;");
}

TEST_F(Schema, GetsAColumnTogetherWithItsFirstValues) {
  store.insert(tests::someRecado("1"));
  for (const std::string how : {"ABORT", "ROLLBACK"}) {
    other.execute(
        "DROP TRIGGER IF EXISTS recado_sync_insert; DROP TRIGGER IF EXISTS recado_sync_status;"
        "ALTER TABLE recado DROP COLUMN updated_at; CREATE TRIGGER refusal BEFORE UPDATE ON recado "
        "BEGIN SELECT RAISE(" +
        how + ", 'refused'); END");
    EXPECT_EQ(tests::databaseError([&] { TroviStore again(file); }), "Erro no banco: refused");
    other.execute("DROP TRIGGER refusal");
    // With the column, a later start takes the values for given.
    EXPECT_EQ(each("1", "pragma_table_info('recado') WHERE name = 'updated_at'"),
              how == "ABORT" ? "1;" : "");
  }
}

}  // namespace
}  // namespace trovi
