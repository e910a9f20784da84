#include <gtest/gtest.h>

#include "Inbox.h"

namespace trovi {
namespace {

using tests::databaseError;
using tests::someRecado;

class Destinos : public tests::Inbox {
 protected:
  void save(const std::string& id, const std::string& name, std::int64_t sort) {
    store.saveDestino({.id = id, .name = name, .instruction = "", .colorHex = "", .sort = sort});
  }
  std::string names() {
    std::string all;
    for (const Destino& destino : store.destinos()) all += destino.name + ",";
    return all;
  }
  /// The id of the destination of that name, or "".
  std::string idNamed(const std::string& name) {
    const auto found = store.destinoNamed(name);
    return found ? found->id : "";
  }
};

TEST_F(Destinos, AreListedBySortThenByTheBytesOfTheirNames) {
  EXPECT_EQ(names(), "Ideias soltas,Corvane,Roadmap,");
  other.execute("DELETE FROM destino");
  save("1", "b", 1);
  save("2", "z", 0);
  save("3", "A", 1);
  save("4", "á", 1);
  save("5", "c", 1);
  EXPECT_EQ(names(), "z,A,b,c,á,");
}

TEST_F(Destinos, SavedTwiceAreOneWithTheLaterValues) {
  const Destino first{.id = "1", .name = "n", .instruction = "i", .colorHex = "#111111", .sort = 7};
  const Destino second{.id = "1", .name = "m", .instruction = "", .colorHex = "bad", .sort = -1};
  store.saveDestino(first);
  EXPECT_EQ(store.destino("1"), first);
  store.saveDestino(second);
  EXPECT_EQ(store.destino("1"), second);
  EXPECT_EQ(number("SELECT count(*) FROM destino"), 4);
  EXPECT_FALSE(store.destino("2"));
  other.execute("DROP TABLE destino");
  EXPECT_FALSE(store.destino({}));  // without a look at the file
  EXPECT_EQ(databaseError([&] { store.destino("1"); }), "Erro no banco: no such table: destino");
}

TEST_F(Destinos, AreFoundByNameWhateverTheCaseAndTheAccents) {
  other.execute("DELETE FROM destino");
  save("ideas", "Ideias soltas", 0);
  save("acao", "A\u00E7\u00E3o", 1);
  save("acao2", "ACAO", 2);
  save("blank", "fim ", 3);
  for (const char* name :
       {"Ideias soltas", "IDEIAS SOLTAS", " \t\u00A0ide\u00EDas s\u00F3ltas\u3000"}) {
    EXPECT_EQ(idNamed(name), "ideas") << name;
  }
  for (const char* name : {"acao", "Ac\u0327a\u0303o", "ACÃO"})
    EXPECT_EQ(idNamed(name), "acao") << name;
  for (const char* name :
       {"ideias", "ideias  soltas", "ideias soltas\n", "fim", "fim ", "", " ", "\xFF"}) {
    EXPECT_EQ(idNamed(name), "") << name;
  }
  save("empty", "", 4);
  EXPECT_EQ(idNamed(" \t"), "empty");
}

TEST_F(Destinos, LeaveTheirMessagesUnfiledAndMarkedWhenDeleted) {
  Recado recado = someRecado("1");
  recado.destinoID = "d";
  save("d", "D", 9);
  store.insert(recado);
  const auto updated = number("SELECT updated_at * 1000 FROM recado");
  store.deleteDestino("d");
  store.deleteDestino("unknown");
  EXPECT_FALSE(store.recado("1")->destinoID);
  EXPECT_EQ(dirty("1"), 3);
  EXPECT_EQ(number("SELECT updated_at * 1000 FROM recado"), updated);
  EXPECT_FALSE(store.destino("d"));
}

TEST_F(Destinos, OfAForeignHandTakeTheirDefaults) {
  const Destino empty =
      TroviStore::destinoFrom(Row{{"color", SQLValue::null()}, {"sort", SQLValue::real(2.7)}});
  EXPECT_EQ(empty.id.size(), 36U);
  EXPECT_EQ(empty.name, "");
  EXPECT_EQ(empty.colorHex, "#FF6A1C");
  EXPECT_EQ(empty.sort, 2);
  EXPECT_NE(TroviStore::destinoFrom(Row{}).id, empty.id);
}

}  // namespace
}  // namespace trovi
