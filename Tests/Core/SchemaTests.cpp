#include <gtest/gtest.h>

#include <regex>

#include "Inbox.h"

namespace trovi {
namespace {

using tests::databaseError;
using tests::someRecado;

class Schema : public tests::Inbox {
 protected:
  std::vector<std::string> texts(const std::string& sql) {
    std::vector<std::string> found;
    for (const Row& row : other.query(sql)) found.push_back(row.stringValue("x").value_or("-"));
    return found;
  }
};

TEST_F(Schema, OfANewFileHasEveryTableIndexAndTrigger) {
  using Texts = std::vector<std::string>;
  EXPECT_EQ(
      texts("SELECT type || ' ' || name AS x FROM sqlite_schema WHERE name NOT LIKE 'sqlite%' "
            "ORDER BY 1"),
      (Texts{"index recado_status_idx", "table destino", "table meta", "table recado",
             "table recado_apagado", "trigger recado_sync_content", "trigger recado_sync_delete",
             "trigger recado_sync_insert", "trigger recado_sync_status"}));
  EXPECT_EQ(texts("SELECT name || ' ' || type AS x FROM pragma_table_info('recado')"),
            (Texts{"id TEXT", "created_at REAL", "duration REAL", "audio_path TEXT",
                   "transcript TEXT", "title TEXT", "destino_id TEXT", "status TEXT",
                   "claimed_by TEXT", "claimed_at REAL", "result TEXT", "resolved_at REAL",
                   "language TEXT", "updated_at REAL", "dirty INTEGER"}));
  EXPECT_EQ(texts("SELECT name || ' ' || color || ' ' || sort AS x FROM destino ORDER BY sort"),
            (Texts{"Ideias soltas #F5788B 0", "Corvane #FF6A1C 1", "Roadmap #FFAE56 2"}));
  EXPECT_EQ(texts("SELECT key || value AS x FROM meta"), Texts{"seeded1"});
  for (const std::string& id : texts("SELECT id AS x FROM destino")) {
    EXPECT_TRUE(std::regex_match(
        id, std::regex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")))
        << id;
  }
}

TEST_F(Schema, OfACurrentFileIsLeftAlone) {
  store.insert(someRecado("1"));
  const auto before = texts("SELECT id AS x FROM destino ORDER BY sort");
  TroviStore again(file);
  EXPECT_EQ(texts("SELECT id AS x FROM destino ORDER BY sort"), before);
  EXPECT_EQ(dirty("1"), 2);
  other.execute("DELETE FROM destino; UPDATE meta SET value = NULL");
  TroviStore third(file);
  EXPECT_EQ(number("SELECT count(*) FROM destino"), 0);  // seeded is seeded, whatever its value
}

TEST_F(Schema, OfTheEarlierLayoutGetsItsTwoColumnsFilled) {
  const auto path = folder.path() / "old.sqlite";
  {
    Database old(path);
    old.execute(
        "CREATE TABLE recado (id TEXT PRIMARY KEY, created_at REAL NOT NULL, duration REAL NOT "
        "NULL "
        "DEFAULT 0, audio_path TEXT, transcript TEXT NOT NULL DEFAULT '', title TEXT NOT NULL "
        "DEFAULT '', "
        "destino_id TEXT, status TEXT NOT NULL, claimed_by TEXT, claimed_at REAL, result TEXT, "
        "resolved_at REAL, language TEXT);"
        "INSERT INTO recado(id, created_at, status, claimed_at, resolved_at) VALUES "
        "('resolved', 10, 'resolvido', 20, 30), ('claimed', 10, 'pego', 20, NULL), "
        "('new', 10, 'pendente', NULL, NULL);"
        "CREATE TABLE meta (key TEXT PRIMARY KEY, value TEXT); INSERT INTO meta VALUES ('seeded', "
        "'0')");
  }
  TroviStore upgraded(path);
  std::vector<std::string> found;
  for (const Row& row : upgraded.db().query(
           "SELECT id || updated_at || ' ' || dirty AS x FROM recado ORDER BY id")) {
    found.push_back(row.stringValue("x").value());
  }
  EXPECT_EQ(found, (std::vector<std::string>{"claimed20.0 1", "new10.0 1", "resolved30.0 1"}));
  EXPECT_TRUE(upgraded.destinos().empty());
}

TEST_F(Schema, ThatCannotBeMadeIsAnErrorAndNotAHalfOpenStore) {
  other.execute("DROP TABLE meta; CREATE VIEW meta AS SELECT 1 AS x");
  EXPECT_EQ(databaseError([&] { TroviStore again(file); }), "Erro no banco: no such column: value");
}

/// What each trigger does to the counter of changes and to the time of the last change of state.
TEST_F(Schema, TriggersKeepTheBooksOfTheSynchroniser) {
  const auto updated = [&] { return number("SELECT updated_at * 1000 FROM recado"); };
  const auto reset = [&] { other.execute("UPDATE recado SET dirty = 0, updated_at = 5"); };
  const std::int64_t start = number("SELECT (julianday('now') - 2440587.5) * 86400000.0");
  other.execute("INSERT INTO recado(id, created_at, status) VALUES ('1', 10, 'pendente')");
  EXPECT_EQ(dirty("1"), 2);
  EXPECT_GE(updated(), start - 1);

  reset();
  other.execute("UPDATE recado SET status = status");
  EXPECT_EQ(dirty("1"), 1);
  EXPECT_GE(updated(), start - 1);
  reset();
  other.execute("UPDATE recado SET title = 'x'");
  EXPECT_EQ(dirty("1"), 1);
  EXPECT_EQ(updated(), 5000);
  reset();
  other.execute("UPDATE recado SET title = 'y', status = 'pego'");
  EXPECT_EQ(dirty("1"), 1);
  reset();
  other.execute("UPDATE recado SET status = 'pendente', updated_at = 6");
  EXPECT_EQ(dirty("1"), 0);
  EXPECT_EQ(updated(), 6000);
  other.execute("UPDATE recado SET audio_path = 'x', duration = 3");
  EXPECT_EQ(dirty("1"), 0);

  other.execute("DELETE FROM recado");
  EXPECT_EQ(number("SELECT count(*) FROM recado_apagado WHERE id = '1'"), 1);
  other.execute(
      "INSERT INTO recado(id, created_at, status, updated_at, dirty) VALUES ('1', 10, 'pego', 7, "
      "0)");
  EXPECT_EQ(number("SELECT count(*) FROM recado_apagado"), 0);
  EXPECT_EQ(dirty("1"), 1);
  EXPECT_EQ(updated(), 7000);
}

}  // namespace
}  // namespace trovi
