#include <gtest/gtest.h>

#include "Inbox.h"

namespace trovi {
namespace {

class Destinos : public tests::Inbox {
 protected:
  Destinos() { other.execute("DELETE FROM destino"); }

  void save(const std::string& id, const std::string& name, std::int64_t sort) {
    store.saveDestino({id, name, "i", "c", sort});
  }
};

TEST_F(Destinos, AreListedBySortThenByTheBytesOfTheirNames) {
  for (const char* name : {"b", "A", "\u00E1", "c"}) save(name, name, 1);
  save("z", "z", 0);
  save("b", "b", -1);  // replaces the first
  std::string names;
  for (const Destino& destino : store.destinos()) names += destino.name;
  EXPECT_EQ(names, "bzAc\u00E1");
  EXPECT_EQ(store.destino("z"), (Destino{"z", "z", "i", "c", 0}));
  EXPECT_FALSE(store.destino("2"));
  other.execute("DROP TABLE destino");
  EXPECT_FALSE(store.destino({}));  // without reading the file
}

TEST_F(Destinos, AreFoundByNameWhateverTheCaseAndTheAccents) {
  const char* const names[] = {"Ideias soltas", "A\u00E7\u00E3o", "ACAO", "fim ", ""};
  for (const char* name : names) save(name, name, 0);
  EXPECT_EQ(store.destinoNamed(" \t\u00A0IDE\u00CDAS s\u00F3ltas\u3000")->name, names[0]);
  EXPECT_EQ(store.destinoNamed("Ac\u0327a\u0303o")->name, "ACAO");
  EXPECT_EQ(store.destinoNamed(" \t")->name, "");
  for (const char* none : {"ideias", "ideias  soltas", "ideias soltas\n", "fim ", "\xFF"}) {
    EXPECT_FALSE(store.destinoNamed(none)) << none;
  }
}

TEST_F(Destinos, LeaveTheirMessagesUnfiledAndMarkedWhenDeleted) {
  for (const char* id : {"d", "e"}) save(id, id, 9);
  other.execute(
      "INSERT INTO recado(id, created_at, status, destino_id) VALUES (1, 0, 'x', 'd'), (2, 0, 'x', "
      "'e'); UPDATE recado SET updated_at = 5");
  store.deleteDestino("d");
  EXPECT_EQ(each("IFNULL(destino_id, '-') || dirty || updated_at"), "-35.0;e25.0;");
  EXPECT_EQ(each("id", "destino"), "e;");
  const Destino foreign = TroviStore::destinoFrom(Row{{"sort", SQLValue::real(2.7)}});
  EXPECT_EQ(foreign, (Destino{foreign.id, "", "", "#FF6A1C", 2}));
  EXPECT_EQ(foreign.id.size(), 36U);
}

}  // namespace
}  // namespace trovi
