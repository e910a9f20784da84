#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>

#include "Inbox.h"

namespace trovi {
namespace {

using tests::databaseError;
using tests::someRecado;

constexpr auto all = allCases<RecadoStatus>();

class Recados : public tests::Inbox {
 protected:
  void insert(const std::string& id, RecadoStatus status = RecadoStatus::pendente) {
    Recado recado = someRecado(id);
    recado.status = status;
    store.insert(recado);
  }
  std::string ids(const RecadoFilter& filter) {
    std::string found;
    for (const Recado& recado : store.recados(filter)) found += recado.id;
    return found;
  }
  std::string search(const std::string& text) { return ids({.search = text, .limit = 100}); }
};

/// Near enough to the present.
bool isNow(std::optional<Date> date) {
  return date && std::abs(secondsSince1970(now()) - secondsSince1970(*date)) < 60;
}

TEST_F(Recados, ComeBackAsTheyWereInserted) {
  Recado recado = someRecado("1");
  store.insert(recado);
  EXPECT_EQ(store.recado("1"), recado);
  recado = {.id = "2",
            .createdAt = dateSince1970(-0.125),
            .duration = 1.5,
            .audioPath = "/a",
            .transcript = "",
            .title = "",
            .destinoID = "D",
            .status = RecadoStatus::falhou,
            .claimedBy = "",
            .claimedAt = dateSince1970(1),
            .result = "r",
            .resolvedAt = dateSince1970(2),
            .language = "pt"};
  store.insert(recado);
  EXPECT_EQ(store.recado("2"), recado);
  EXPECT_FALSE(store.recado("3"));
  EXPECT_EQ(databaseError([&] { store.insert(someRecado("2")); }),
            "Erro no banco: UNIQUE constraint failed: recado.id");
  EXPECT_EQ(store.recado("2"), recado);
}

TEST_F(Recados, OfAForeignHandTakeTheirDefaults) {
  const Recado empty = TroviStore::recadoFrom(Row{});
  EXPECT_TRUE(isNow(empty.createdAt));
  EXPECT_EQ(empty, (Recado{.id = "",
                           .createdAt = empty.createdAt,
                           .duration = 0,
                           .transcript = "",
                           .title = "",
                           .status = RecadoStatus::pendente}));
  other.execute(
      "INSERT INTO recado(id, created_at, duration, audio_path, transcript, title, destino_id, "
      "status, "
      "claimed_by, claimed_at, result, resolved_at, language) VALUES (x'31', 'later', '12', 1.5, "
      "x'ff', "
      "x'00', x'41', 'Pendente', 7, 9e999, x'61', 'x', 3)");
  auto rows = other.query("SELECT * FROM recado");
  const Recado foreign = TroviStore::recadoFrom(std::move(rows.at(0)));
  EXPECT_EQ(foreign.id, "");
  EXPECT_TRUE(isNow(foreign.createdAt));
  EXPECT_EQ(foreign.duration, 12);  // the column's own affinity made it a number
  EXPECT_EQ(foreign.audioPath, "1.5");
  EXPECT_EQ(foreign.transcript, "");
  EXPECT_EQ(foreign.status, RecadoStatus::pendente);
  EXPECT_EQ(foreign.claimedBy, "7");
  EXPECT_EQ(foreign.claimedAt, dateSince1970(INFINITY));
  EXPECT_FALSE(foreign.destinoID);
  EXPECT_FALSE(foreign.result);
  EXPECT_FALSE(foreign.resolvedAt);
}

TEST_F(Recados, AreListedNewestFirstByAllConditionsTogether) {
  for (const auto& [id, at, status, destino] : {std::tuple{"a", 1.0, RecadoStatus::pendente, "x"},
                                                {"b", 3.0, RecadoStatus::pego, "x"},
                                                {"c", 2.0, RecadoStatus::pendente, "y"},
                                                {"d", 4.0, RecadoStatus::pendente, "x"}}) {
    Recado recado = someRecado(id, at);
    recado.status = status;
    recado.destinoID = destino;
    recado.title = std::string("título ") + id;
    store.insert(recado);
  }
  EXPECT_EQ(ids({.limit = 100}), "dbca");
  EXPECT_EQ(ids({.limit = -1}), "dbca");
  EXPECT_EQ(ids({.limit = 2}), "db");
  EXPECT_EQ(ids({.limit = 0}), "");
  EXPECT_EQ(ids({.status = RecadoStatus::pendente, .limit = 9}), "dca");
  EXPECT_EQ(ids({.destinoID = "x", .limit = 9}), "dba");
  EXPECT_EQ(
      ids({.status = RecadoStatus::pendente, .destinoID = "x", .search = "título a", .limit = 9}),
      "a");
  EXPECT_EQ(ids({.status = RecadoStatus::pendente, .destinoID = "", .limit = 9}), "");
}

TEST_F(Recados, AreFoundByAnyTextWithItsBlanksAndWildcards) {
  Recado recado = someRecado("1");
  recado.transcript = "comprar PÃO amanhã";
  recado.title = "Padaria 50%";
  store.insert(recado);
  insert("2");
  store.resolve({.id = "2", .result = "feito_ontem"});
  EXPECT_EQ(search("comprar"), "1");
  EXPECT_EQ(search("COMPRAR"), "1");
  EXPECT_EQ(search("pão"), "");  // only ASCII letters match in either case
  EXPECT_EQ(search("PADARIA"), "1");
  EXPECT_EQ(search("ontem"), "2");
  EXPECT_EQ(search(" amanhã"), "1");
  EXPECT_EQ(search("amanhã "), "");
  EXPECT_EQ(search("c%ã"), "1");
  EXPECT_EQ(search("feito_o"), "2");
  EXPECT_EQ(search("feit__o"), "2");
  for (const char* blanks : {"", " ", "\t \u00A0\u3000"})
    EXPECT_EQ(search(blanks).size(), 2U) << blanks;
  EXPECT_EQ(search("\n"), "");                      // a line break is something to look for
  EXPECT_EQ(search(std::string("pad\0x", 5)), "");  // cut at the NUL, the pattern has lost its "%"
  EXPECT_EQ(search("\xFF"), "");
  EXPECT_EQ(databaseError([&] { search(std::string(60000, 'a')); }),
            "Erro no banco: LIKE or GLOB pattern too complex");
}

TEST_F(Recados, ChangeStatusOnlyWhereTheTableOfTransitionsSaysSo) {
  const auto after = [&](RecadoStatus before, auto change) {
    other.execute("DELETE FROM recado");
    insert("1", before);
    change();
    return store.recado("1")->status;
  };
  for (const RecadoStatus status : all) {
    const bool claimable = status == RecadoStatus::pendente || status == RecadoStatus::pego;
    const bool resolvable = claimable || status == RecadoStatus::resolvido;
    EXPECT_EQ(after(status,
                    [&] { EXPECT_EQ(store.claim({.id = "1", .by = "X"}).has_value(), claimable); }),
              claimable ? RecadoStatus::pego : status);
    EXPECT_EQ(after(status,
                    [&] {
                      EXPECT_EQ(store.resolve({.id = "1", .result = "r"}).has_value(), resolvable);
                    }),
              resolvable ? RecadoStatus::resolvido : status);
    EXPECT_EQ(after(status, [&] { store.reopen("1"); }), RecadoStatus::pendente);
    EXPECT_EQ(after(status,
                    [&] { store.finishTranscription({.id = "1", .transcript = "", .title = ""}); }),
              RecadoStatus::pendente);
    EXPECT_EQ(after(RecadoStatus::pego, [&] { store.setStatus("1", status); }), status);
  }
  EXPECT_FALSE(store.claim({.id = "unknown", .by = "X"}));
  EXPECT_FALSE(store.resolve({.id = "unknown", .result = "r"}));
}

TEST_F(Recados, RememberWhoClaimedAndResolvedThemAndWhen) {
  insert("1");
  insert("2");
  auto claimed = store.claim({.id = "1", .by = "A"});
  EXPECT_EQ(claimed->claimedBy, "A");
  EXPECT_TRUE(isNow(claimed->claimedAt));
  EXPECT_EQ(store.claim({.id = "1", .by = ""})->claimedBy, "");
  other.execute("UPDATE recado SET claimed_at = 5 WHERE id = '1'");
  auto resolved = store.resolve({.id = "1", .result = "r"});
  EXPECT_EQ(resolved->claimedBy, "");
  EXPECT_EQ(resolved->claimedAt, dateSince1970(5));
  EXPECT_TRUE(isNow(resolved->resolvedAt));
  EXPECT_EQ(store.resolve({.id = "1", .result = "s", .by = "B"})->claimedBy, "B");
  EXPECT_EQ(store.recado("1")->result, "s");

  resolved = store.resolve({.id = "2", .result = "r"});
  EXPECT_FALSE(resolved->claimedBy);
  EXPECT_EQ(resolved->claimedAt, resolved->resolvedAt);

  store.reopen("1");
  Recado fresh = someRecado("1");
  EXPECT_EQ(store.recado("1"), fresh);
  EXPECT_EQ(dirty("1"), 8);
}

TEST_F(Recados, TakeWhatATranscriptionYieldedAndLoseWhatItDidNot) {
  Recado recado = someRecado("1");
  recado.destinoID = "old";
  recado.language = "en";
  store.insert(recado);
  store.finishTranscription({.id = "1", .transcript = "t", .title = "T"});
  EXPECT_FALSE(store.recado("1")->destinoID);
  EXPECT_FALSE(store.recado("1")->language);
  EXPECT_EQ(dirty("1"), 3);
  store.finishTranscription(
      {.id = "1", .transcript = "u", .title = "U", .destinoID = "d", .language = "pt"});
  store.setStatus("1", RecadoStatus::falhou, "V");
  store.setDestino({.id = "1", .destinoID = "e"});
  store.setAudioPath("1", "/b");
  const auto found = store.recado("1");
  EXPECT_EQ(found->transcript, "u");
  EXPECT_EQ(found->title, "V");
  EXPECT_EQ(found->language, "pt");
  EXPECT_EQ(found->destinoID, "e");
  EXPECT_EQ(found->audioPath, "/b");
  EXPECT_EQ(dirty("1"), 6);  // the audio file's place is nothing to upload
  store.setDestino({.id = "1"});
  store.setAudioPath("1", {});
  EXPECT_FALSE(store.recado("1")->destinoID);
  EXPECT_FALSE(store.recado("1")->audioPath);
}

TEST_F(Recados, TakeTheirAudioFileWithThem) {
  const auto audio = folder.path() / "a.m4a";
  std::ofstream(audio) << "sound";
  for (const char* id : {"1", "2"}) {
    insert(id);
    store.setAudioPath(id, audio.string());
  }
  store.deleteRecado("1");
  EXPECT_FALSE(std::filesystem::exists(audio));
  store.deleteRecado("2");  // whose file is gone already
  store.deleteRecado("unknown");
  EXPECT_EQ(number("SELECT count(*) FROM recado"), 0);
  EXPECT_EQ(number("SELECT count(*) FROM recado_apagado"), 2);
}

TEST_F(Recados, AreCountedByStatusAndByMonth) {
  EXPECT_TRUE(store.counts().empty());
  insert("1");
  insert("2");
  insert("3", RecadoStatus::falhou);
  insert("4");
  other.execute("UPDATE recado SET status = 'estranho' WHERE id = '4'");
  EXPECT_EQ(store.counts(), (std::unordered_map<RecadoStatus, std::int64_t>{
                                {RecadoStatus::pendente, 2}, {RecadoStatus::falhou, 1}}));
  EXPECT_EQ(store.countThisMonth(), 0);
  store.insert(someRecado("5", secondsSince1970(now())));
  store.insert(someRecado("6", secondsSince1970(now()) - 32 * 86400));
  EXPECT_EQ(store.countThisMonth(), 1);
}

}  // namespace
}  // namespace trovi
