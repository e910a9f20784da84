#include <gtest/gtest.h>

#include "Inbox.h"

namespace trovi {
namespace {

using List = std::vector<Destino>;

/// Two destinations, which differ in every field.
class Destinos : public tests::Inbox {
 protected:
  Destinos() {
    other.execute("DELETE FROM destino");
    for (const Destino& destino : {loja, casa}) store.saveDestino(destino);
  }

  const Destino casa{"d", "Casa", "Arrume.", "#000001", 1};
  const Destino loja{"D", "Loja", "Venda.", "#000002", 2};
};

TEST_F(Destinos, AreStoredAsTheyAreAndOverwrittenWhole) {
  EXPECT_EQ(store.destinos(), (List{casa, loja}));
  const Destino changed{"d", " casa ", "", "azul", 3};
  store.saveDestino(changed);
  EXPECT_EQ(store.destinos(), (List{loja, changed}));
  EXPECT_EQ(store.destino("d"), changed);
  EXPECT_EQ(store.destino("D"), loja);
  EXPECT_EQ(store.destino("e"), std::nullopt);
  other.execute("DROP TABLE destino");
  EXPECT_EQ(store.destino({}), std::nullopt);  // without reading the file
}

TEST_F(Destinos, AreListedBySortThenByTheBytesOfTheirNames) {
  for (const char* name : {"b", "A", "\u00E1", "c"}) store.saveDestino({name, name, "", "", 1});
  std::string names;
  for (const Destino& destino : store.destinos()) names += destino.name + ";";
  EXPECT_EQ(names, "A;Casa;b;c;\u00E1;Loja;");
}

TEST_F(Destinos, AreFoundByNameWhateverTheCaseAndTheAccents) {
  for (const char* name : {"Ideias soltas", "A\u00E7\u00E3o", "ACAO", "fim ", ""}) {
    store.saveDestino({name, name, "", "", 0});
  }
  const std::pair<const char*, const char*> cases[] = {
      {"loja", "Loja"},
      {" \t\u00A0IDE\u00CDAS s\u00F3ltas\u3000", "Ideias soltas"},
      {"", ""},
      {"Ac\u0327a\u0303o", "ACAO"},  // the first in the order of the list
      {" \t", ""}};
  for (const auto& [given, name] : cases) EXPECT_EQ(store.destinoNamed(given)->name, name) << given;
  for (const char* none : {"ideias", "ideias  soltas", "ideias soltas\n", "fim ", "%", "\xFF"}) {
    EXPECT_EQ(store.destinoNamed(none), std::nullopt) << none;
  }
}

TEST_F(Destinos, LeaveTheirMessagesUnfiledAndMarkedWhenDeleted) {
  other.execute(
      "INSERT INTO recado(id, created_at, status, destino_id) VALUES (1, 0, 'x', 'd'), "
      "(2, 0, 'x', 'D'), (3, 0, 'x', NULL); UPDATE recado SET updated_at = 5, dirty = 0");
  const std::string filing = "id || IFNULL(destino_id, '-') || dirty || ' ' || updated_at";
  const auto refuse = [&](const std::string& event) {
    other.execute("CREATE TRIGGER no BEFORE " + event + " BEGIN SELECT RAISE(ABORT, 'no'); END");
    EXPECT_EQ(tests::databaseError([&] { store.deleteDestino("d"); }), "Erro no banco: no");
    other.execute("DROP TRIGGER no");
    EXPECT_EQ(store.destinos(), (List{casa, loja}));
  };
  store.deleteDestino("e");
  refuse("UPDATE ON recado");
  EXPECT_EQ(each(filing), "1d0 5.0;2D0 5.0;3-0 5.0;");
  refuse("DELETE ON destino");
  EXPECT_EQ(each(filing), "1-1 5.0;2D0 5.0;3-0 5.0;");
  store.deleteDestino("d");
  EXPECT_EQ(store.destinos(), List{loja});
}

TEST_F(Destinos, AreReadFromAnyRow) {
  for (const char* row :
       {"SELECT destino.* FROM (SELECT 1) LEFT JOIN destino ON FALSE",
        "SELECT 7 AS id, 7 AS name, 7 AS instruction, 7 AS color, '7' AS sort", "SELECT 1"}) {
    const Destino destino = TroviStore::destinoFrom(other.query(row).at(0));
    EXPECT_EQ(destino, (Destino{destino.id, "", "", "#FF6A1C", 0}));
    EXPECT_EQ(destino.id.size(), 36U);
  }
  EXPECT_EQ(TroviStore::destinoFrom(Row{{"sort", SQLValue::real(2.7)}}).sort, 2);
}

}  // namespace
}  // namespace trovi
