#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Inbox.h"

namespace trovi {
namespace {

class Schema : public tests::Inbox {};

TEST(FirstStart, MakesFilesOfMode0600WhateverTheUmask) {
  using std::filesystem::perms;
  const tests::TemporaryFolder folder;
  create_symlink(folder.path() / "77", folder.path() / "link");
  for (const auto& [name, made, mask] : {std::tuple{"0", "0", 0U}, {"link", "77", 0777U}}) {
    const mode_t before = umask(mask);
    TroviStore store(folder.path() / name);
    umask(before);
    const auto file = folder.path() / made;
    for (const char* part : {"", "-wal", "-shm"}) {
      EXPECT_EQ(std::filesystem::status(file.string() + part).permissions(), perms(0600)) << part;
    }
    permissions(file, perms::group_read, std::filesystem::perm_options::add);
    TroviStore again(file);
    EXPECT_NE(status(file).permissions() & perms::group_read, perms::none);
  }
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

TEST_F(Schema, KeepsWhatSucceededBeforeAFailure) {
  other.execute(
      "DELETE FROM destino; DELETE FROM meta; CREATE TRIGGER refusal BEFORE INSERT ON destino "
      "WHEN NEW.sort = 2 BEGIN SELECT RAISE(ABORT, 'refused'); END");
  EXPECT_EQ(tests::databaseError([&] { TroviStore again(file); }), "Erro no banco: refused");
  EXPECT_EQ(each("name", "destino") + each("key", "meta"), "Ideias soltas;Corvane;");
  other.execute("DROP TRIGGER refusal");
  TroviStore again(file);
  EXPECT_EQ(each("name", "destino ORDER BY sort") + each("key", "meta"),
            "Ideias soltas;Ideias soltas;Corvane;Corvane;Roadmap;seeded;");
}

}  // namespace
}  // namespace trovi
