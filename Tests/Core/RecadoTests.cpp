#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "Inbox.h"
#include "TroviCore/Coding.h"

namespace trovi {
namespace {

using enum RecadoStatus;

class Recados : public tests::Inbox {
 protected:
  void insert(const std::string& id) { store.insert(tests::someRecado(id)); }
  std::string ids(const RecadoFilter& filter) {
    std::string found;
    for (const Recado& recado : store.recados(filter)) found += recado.id;
    return found;
  }
};

bool isNow(std::optional<Date> date) {
  return date && std::abs(secondsSince1970(now()) - secondsSince1970(*date)) < 60;
}

TEST_F(Recados, ComeBackAsTheyWereInserted) {
  const auto whole = fromJSON<Recado>(
      R"({"id":"2","createdAt":1.5,"duration":2.5,"audioPath":"/a","transcript":"t","title":"T",)"
      R"("destinoID":"D","status":"falhou","claimedBy":"","claimedAt":-0.125,"result":"r",)"
      R"("resolvedAt":2,"language":"pt"})");
  store.insert(whole);
  EXPECT_EQ(store.recado("2"), whole);
  EXPECT_EQ(tests::databaseError([&] { store.insert(whole); }),
            "Erro no banco: UNIQUE constraint failed: recado.id");
  other.execute("INSERT INTO recado(id, created_at, status) VALUES ('3', 'later', 'Pendente')");
  EXPECT_TRUE(isNow(store.recado("3")->createdAt));
}

TEST_F(Recados, AreListedNewestFirstByAllConditionsTogether) {
  other.execute(
      "INSERT INTO recado(id, created_at, status, destino_id, transcript, title, result) VALUES "
      "('a', 1, 'pendente', 'x', 'comprar PÃO amanhã', '', NULL), ('b', 3, 'pego', 'x', '', "
      "'Padaria', NULL), ('c', 2, 'pendente', 'y', 'amanhã', '', 'feito_ontem'), ('d', 4, "
      "'pendente', 'x', '', '', NULL)");
  EXPECT_EQ(ids({.limit = 0}) + ids({.destinoID = "", .limit = -1}), "");
  EXPECT_EQ(ids({.status = pendente, .destinoID = "x", .search = "a", .limit = -1}), "a");
  const std::pair<const char*, const char*> searches[] = {
      {"PADARIA", "b"}, {" amanhã", "a"}, {"feit__o", "c"}, {"c%ã", "a"},
      {"pão", ""},      {"amanhã ", ""},  {"\n", ""},       {"\t \u00A0\u3000", "dbca"}};
  for (const auto& [text, found] : searches) EXPECT_EQ(ids({.search = text, .limit = -1}), found);
}

TEST_F(Recados, RememberWhoClaimedAndResolvedThemAndWhen) {
  insert("1");
  EXPECT_TRUE(isNow(store.claim({.id = "1", .by = "A"})->claimedAt));
  other.execute("UPDATE recado SET claimed_at = 5");
  EXPECT_TRUE(isNow(store.resolve({.id = "1", .result = "r"})->resolvedAt));
  EXPECT_EQ(each("claimed_by || claimed_at || result"), "A5.0r;");
  store.reopen("1");
  EXPECT_EQ(store.recado("1"), tests::someRecado("1"));
  EXPECT_EQ(each("dirty"), "6;");
  const auto resolved = store.resolve({.id = "1", .result = "r"});
  EXPECT_EQ(resolved->claimedAt, resolved->resolvedAt);
}

TEST_F(Recados, AreOverwrittenByATranscription) {
  insert("1");
  const std::string content =
      "transcript || title || status || IFNULL(destino_id || language || audio_path, '') || dirty";
  store.setStatus("1", falhou, "t");
  EXPECT_EQ(each("title || status || dirty"), "tfalhou3;");
  store.finishTranscription(
      {.id = "1", .transcript = "u", .title = "U", .destinoID = "d", .language = "pt"});
  store.setAudioPath("1", "/b");
  EXPECT_EQ(each(content), "uUpendentedpt/b4;");  // a change of path is not uploaded
  store.setDestino({.id = "1", .destinoID = "e"});
  store.setStatus("1", pego);
  EXPECT_EQ(each(content), "uUpegoept/b6;");
  store.finishTranscription({.id = "1", .transcript = "u", .title = "U"});
  store.setAudioPath("1", {});
  EXPECT_EQ(each("COALESCE(destino_id, language, audio_path, '')"), ";");
}

TEST_F(Recados, DeleteTheirAudioFile) {
  const auto audio = folder.path() / "a.m4a";
  std::ofstream(audio) << "sound";
  for (const char* id : {"1", "2", "3"}) insert(id);
  for (const char* id : {"1", "2"}) store.setAudioPath(id, audio.string());
  store.deleteRecado("1");
  EXPECT_FALSE(std::filesystem::exists(audio));
  for (const char* id : {"2", "3", "unknown"}) store.deleteRecado(id);  // with no file to remove
  EXPECT_EQ(each("id"), "");
  EXPECT_EQ(each("id", "recado_apagado"), "1;2;3;");
}

TEST_F(Recados, AreCountedByStatusAndByMonth) {
  other.execute(
      "INSERT INTO recado(id, created_at, status) VALUES (1, 0, 'pendente'), (2, 0, 'pendente'), "
      "(3, 0, 'falhou'), (4, unixepoch(), 'estranho'), (5, unixepoch() - 32 * 86400, 'x')");
  EXPECT_EQ(store.counts(),
            (std::unordered_map<RecadoStatus, std::int64_t>{{pendente, 2}, {falhou, 1}}));
  EXPECT_EQ(store.countThisMonth(), 1);
}

}  // namespace
}  // namespace trovi
