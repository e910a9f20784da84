#include <cmath>
#include <cstdlib>
#include <fstream>

#include "Inbox.h"

namespace trovi {
namespace {

using enum RecadoStatus;

/// The message "a" with a value in every field, and "A", which no operation here may change. Which
/// statuses allow a claim and a result is recorded in Sessions/work.session.
class Messages : public tests::Inbox {
 protected:
  Messages() {
    for (const Recado& recado : {whole, neighbour}) store.insert(recado);
    other.execute("UPDATE recado SET dirty = 0, updated_at = 5");
  }

  /// What "a" is now, field by field; "-" is absent. Last, what a synchroniser sees: the number of
  /// changes since the last call, and the time of the last change of state, which was 5.
  std::string a() {
    std::string text;
    for (const std::string column :
         {"status", "title", "transcript", "destino_id", "language", "audio_path", "claimed_by",
          "claimed_at", "result", "resolved_at", "dirty", "updated_at"}) {
      text +=
          each("IIF(abs(" + column + " - unixepoch()) < 60, 'now', IFNULL(" + column + ", '-'))",
               "recado WHERE id = 'a'");
    }
    EXPECT_EQ(store.recado("A"), neighbour);
    EXPECT_EQ(each("dirty || updated_at", "recado WHERE id = 'A'"), "05.0;");
    other.execute("UPDATE recado SET dirty = 0, updated_at = 5");
    return text;
  }
  std::string ids(const RecadoFilter& filter) {
    std::string found;
    for (const Recado& recado : store.recados(filter)) found += recado.id;
    return found;
  }

  const Recado whole{"a", dateSince1970(2000.25), 2.5, "/a", "t", "T", "d", pego, "IA", Date{},
                     "r", dateSince1970(-0.5),    ""};
  const Recado neighbour = tests::someRecado("A", 1000);
};

TEST_F(Messages, ChangeInWhatAnOperationNamesAndInNothingElse) {
  EXPECT_EQ(store.recado("a"), whole);
  EXPECT_EQ(tests::databaseError([&] { store.insert(tests::someRecado("a")); }),
            "Erro no banco: UNIQUE constraint failed: recado.id");
  EXPECT_THROW(store.setStatus("a", static_cast<RecadoStatus>(5)), std::out_of_range);
  EXPECT_EQ(a(), "pego;T;t;d;;/a;IA;0.0;r;-0.5;0;5.0;");
  store.setStatus("a", pendente);
  EXPECT_EQ(a(), "pendente;T;t;d;;/a;IA;0.0;r;-0.5;1;now;");
  store.setStatus("a", pego, "");
  store.setStatus("a", resolvido, "");
  EXPECT_EQ(a(), "resolvido;;t;d;;/a;IA;0.0;r;-0.5;2;now;");
  store.setDestino({.id = "a", .destinoID = "e"});
  EXPECT_EQ(a(), "resolvido;;t;e;;/a;IA;0.0;r;-0.5;1;5.0;");
  store.setDestino({.id = "a"});
  EXPECT_EQ(a(), "resolvido;;t;-;;/a;IA;0.0;r;-0.5;1;5.0;");
  store.setAudioPath("a", "/b");
  EXPECT_EQ(a(), "resolvido;;t;-;;/b;IA;0.0;r;-0.5;0;5.0;");
  store.finishTranscription(
      {.id = "a", .transcript = "u", .title = "U", .destinoID = "f", .language = "en"});
  EXPECT_EQ(a(), "pendente;U;u;f;en;/b;IA;0.0;r;-0.5;1;now;");
  store.finishTranscription({.id = "a", .transcript = "", .title = ""});
  EXPECT_EQ(a(), "pendente;;;-;-;/b;IA;0.0;r;-0.5;1;now;");
  store.setAudioPath("a", {});
  EXPECT_EQ(a(), "pendente;;;-;-;-;IA;0.0;r;-0.5;0;5.0;");
  EXPECT_EQ(store.claim({.id = "a", .by = "B"})->claimedBy, "B");
  EXPECT_EQ(a(), "pego;;;-;-;-;B;now;r;-0.5;1;now;");
  store.reopen("a");
  EXPECT_EQ(a(), "pendente;;;-;-;-;-;-;-;-;1;now;");
  EXPECT_EQ(store.resolve({.id = "a", .result = "s"})->result, "s");
  EXPECT_EQ(a(), "resolvido;;;-;-;-;-;now;s;now;1;now;");
  other.execute("UPDATE recado SET claimed_at = 7, resolved_at = 8 WHERE id = 'a'");
  EXPECT_TRUE(store.resolve({.id = "a", .result = "", .by = "C"}));
  EXPECT_EQ(a(), "resolvido;;;-;-;-;C;7.0;;now;2;now;");
  EXPECT_TRUE(store.resolve({.id = "a", .result = "u"}));
  EXPECT_EQ(a(), "resolvido;;;-;-;-;C;7.0;u;now;1;now;");
}

TEST_F(Messages, LoseTheirRecordingThenThemselves) {
  for (const char* id : {"a", "A"}) {
    std::ofstream(folder.path() / id) << "sound";
    store.setAudioPath(id, (folder.path() / id).string());
  }
  refuse("DELETE ON recado");
  EXPECT_THROW(store.deleteRecado("a"), DatabaseError);
  EXPECT_FALSE(exists(folder.path() / "a"));
  EXPECT_EQ(ids({.limit = -1}), "aA");
  other.execute("DROP TRIGGER refusal");
  store.setAudioPath("a", folder.path().string());  // cannot be removed, since it is not empty
  store.deleteRecado("a");
  store.deleteRecado("b");
  EXPECT_EQ(ids({.limit = -1}), "A");
  EXPECT_EQ(each("id", "recado_apagado"), "a;");
  EXPECT_TRUE(exists(folder.path() / "A"));
  other.execute("ALTER TABLE recado RENAME TO taken");
  EXPECT_THROW(store.deleteRecado("A"), DatabaseError);
  EXPECT_TRUE(exists(folder.path() / "A")) << "removed although the message is still there";
}

TEST_F(Messages, AreReadFromAnyRow) {
  const auto rows = other.query(
      "SELECT 7 AS id, '1' AS created_at, '1' AS duration, 7 AS audio_path, 7 AS transcript, "
      "7 AS title, 7 AS destino_id, 'Pego' AS status, 7 AS claimed_by, '1' AS claimed_at, "
      "7 AS result, '1' AS resolved_at");
  const Recado recado = TroviStore::recadoFrom(rows.at(0));
  EXPECT_LT(std::abs(secondsSince1970(recado.createdAt) - secondsSince1970(now())), 60);
  EXPECT_EQ(recado, (Recado{"", recado.createdAt, 0, {}, "", "", {}, pendente}));
}

TEST_F(Messages, AreListedNewestFirstByAllConditionsTogether) {
  other.execute(
      "DELETE FROM recado; INSERT INTO recado(id, created_at, status, destino_id, transcript, "
      "title, result) VALUES ('a', 1, 'pendente', 'x', 'comprar PÃO amanhã', '', NULL), "
      "('b', 3, 'pego', 'x', '', 'Padaria', ''), ('c', 2, 'pendente', 'X', 'amanhã', '', "
      "'feito_ontem'), ('d', 4, 'pendente', 'x', '', '', NULL)");
  EXPECT_EQ(ids({.limit = 0}), "");
  EXPECT_EQ(ids({.destinoID = "", .limit = -1}), "");
  EXPECT_EQ(ids({.status = pendente, .destinoID = "x", .limit = 1}), "d");
  EXPECT_EQ(ids({.status = pendente, .destinoID = "x", .search = "a", .limit = -1}), "a");
  // Where a text is looked for, and its wildcards, are recorded in Sessions/lists.session.
  for (const char* none : {"pão", "amanhã ", "\n", " \n"}) EXPECT_EQ(ids({.search = none}), "");
  for (const char* any : {"", "\t \u00A0\u3000"}) EXPECT_EQ(ids({.search = any}), "dbca");
}

TEST_F(Messages, AreCountedByStatusAndFromTheFirstInstantOfTheMonthOfTheUsersTimeZone) {
  using Counts = std::unordered_map<RecadoStatus, std::int64_t>;
  EXPECT_EQ(store.counts(), (Counts{{pego, 1}, {pendente, 1}}));
  setenv("TZ", "<-03>3", 1);
  other.execute(
      "UPDATE recado SET status = IIF(id = 'a', 'transcrevendo', 'Pendente'), created_at = "
      "unixepoch('now', '-3 hours', 'start of month', '+3 hours') - (id = 'A');"
      "INSERT INTO recado(id, created_at, status) VALUES ('b', unixepoch() + 99, 'transcrevendo')");
  EXPECT_EQ(store.counts(), (Counts{{transcrevendo, 2}}));
  EXPECT_EQ(store.countThisMonth(), 2);
  unsetenv("TZ");
}

}  // namespace
}  // namespace trovi
