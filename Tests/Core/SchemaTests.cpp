#include <gtest/gtest.h>
#include <sys/stat.h>

#include <regex>

#include "Inbox.h"

namespace trovi {
namespace {

class Schema : public tests::Inbox {};

TEST_F(Schema, OfANewFileHasEveryTableIndexAndTriggerAndThreeDestinations) {
  EXPECT_EQ(each("name", "sqlite_schema WHERE name NOT LIKE 'sqlite%' ORDER BY type, name"),
            "recado_status_idx;destino;meta;recado;recado_apagado;recado_sync_content;"
            "recado_sync_delete;recado_sync_insert;recado_sync_status;");
  const char* column = "name || ' ' || type || IFNULL(' ' || dflt_value, '')";
  EXPECT_EQ(each(column, "pragma_table_info('recado')"),
            "id TEXT;created_at REAL;duration REAL 0;audio_path TEXT;transcript TEXT '';"
            "title TEXT '';destino_id TEXT;status TEXT;claimed_by TEXT;claimed_at REAL;result TEXT;"
            "resolved_at REAL;language TEXT;updated_at REAL;dirty INTEGER 1;");
  EXPECT_EQ(each(column, "pragma_table_info('destino')"),
            "id TEXT;name TEXT;instruction TEXT '';color TEXT '#FF6A1C';sort INTEGER 0;");
  EXPECT_EQ(each("name", "pragma_index_info('recado_status_idx')"), "status;created_at;");
  EXPECT_EQ(each("name || sort || color || instruction", "destino"),
            "Ideias soltas0#F5788BOrganize a ideia em tópicos claros, aponte o que está em aberto "
            "e sugira os próximos passos.;"
            "Corvane1#FF6A1CTransforme em uma issue: título curto, contexto, o que fazer e "
            "critérios de aceite.;"
            "Roadmap2#FFAE56Rascunhe um PRD curto: problema, proposta, escopo, fora de escopo e "
            "perguntas em aberto.;");
  EXPECT_EQ(each("key || value", "meta"), "seeded1;");
  const std::string id = "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12};";
  const std::string ids = each("id", "destino GROUP BY id");
  EXPECT_TRUE(std::regex_match(ids, std::regex(id + id + id))) << ids;
}

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
      EXPECT_EQ(std::filesystem::status(file.string() + part).permissions(),
                perms::owner_read | perms::owner_write)
          << file << part;
    }
    permissions(file, perms::group_read, std::filesystem::perm_options::add);
    TroviStore again(file);
    EXPECT_NE(status(file).permissions() & perms::group_read, perms::none);
  }
}

TEST_F(Schema, OfACurrentFileIsLeftAlone) {
  store.insert(tests::someRecado("1"));
  other.execute("DELETE FROM destino WHERE sort > 0; UPDATE meta SET value = NULL");
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

/// The effect of each trigger on the change counter and on the time of the last change of state.
TEST_F(Schema, TriggersKeepTheBooksOfTheSynchroniser) {
  const auto books = [&] {
    return each(
        "dirty || ' ' || IIF(abs(updated_at - (julianday('now') - 2440587.5) * 86400.0) < "
        "60, 'now', updated_at)");
  };
  other.execute("INSERT INTO recado(id, created_at, status) VALUES ('1', 10, 'pendente')");
  EXPECT_EQ(books(), "2 now;");
  const std::pair<std::string, std::string> cases[] = {
      {"status = status", "1 now;"},
      {"title = 'x'", "1 5.0;"},
      {"title = 'y', status = 'pego'", "1 now;"},
      {"status = 'pendente', updated_at = 6", "0 6.0;"},
      {"title = 'z', dirty = 9", "9 5.0;"},
      {"audio_path = 'x', duration = 3", "0 5.0;"}};
  for (const auto& [changes, expected] : cases) {
    other.execute("UPDATE recado SET dirty = 0, updated_at = 5");
    other.execute("UPDATE recado SET " + changes);
    EXPECT_EQ(books(), expected) << changes;
  }
  other.execute("DELETE FROM recado");
  EXPECT_EQ(each("id", "recado_apagado"), "1;");
  other.execute(
      "INSERT INTO recado(id, created_at, status, updated_at, dirty) VALUES ('1', 10, 'x', 7, 0)");
  EXPECT_EQ(each("id", "recado_apagado"), "");
  EXPECT_EQ(books(), "1 7.0;");
}

}  // namespace
}  // namespace trovi
