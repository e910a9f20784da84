#include "Inbox.h"

namespace trovi {
namespace {

using List = std::vector<Destino>;

/// Three destinations in the order of lists, saved in another.
class Destinos : public tests::Inbox {
 protected:
  Destinos() {
    other.execute("DELETE FROM destino");
    for (const Destino& destino : {acao, loja, casa}) store.saveDestino(destino);
  }

  const Destino loja{"D", "Loja", "Venda.", "#000001", 1};
  const Destino casa{"d", "casa", "Arrume.", "#000002", 1};  // by bytes, a capital comes first
  const Destino acao{"0", "A\u00E7\u00E3o", "", "", 2};
};

TEST_F(Destinos, AreStoredAsTheyAreAndOverwrittenWhole) {
  EXPECT_EQ(store.destinos(), (List{loja, casa, acao}));
  const Destino changed{"d", " casa ", "", "azul", 3};
  store.saveDestino(changed);
  EXPECT_EQ(store.destinos(), (List{loja, acao, changed}));
  EXPECT_EQ(store.destino("d"), changed);
  EXPECT_EQ(store.destino("D"), loja);
  EXPECT_EQ(store.destino("e"), std::nullopt);
  other.execute("DROP TABLE destino");
  EXPECT_EQ(store.destino({}), std::nullopt);  // without reading the file
}

TEST_F(Destinos, AreFoundByNameWhateverTheCaseAndTheAccents) {
  for (const char* name : {"Ideias soltas", "ACAO", "fim ", ""}) {
    store.saveDestino({name, name, "", "", 2});
  }
  const std::pair<const char*, const char*> cases[] = {
      {"LOJA", "Loja"},
      {" \t\u00A0IDE\u00CDAS s\u00F3ltas\u3000", "Ideias soltas"},
      {" \t", ""},
      {"Ac\u0327a\u0303o", "ACAO"}};  // the first in the order of the list
  for (const auto& [given, name] : cases) EXPECT_EQ(store.destinoNamed(given)->name, name) << given;
  for (const char* none : {"ideias", "ideias  soltas", "ideias soltas\n", "fim ", "%", "\xFF"}) {
    EXPECT_EQ(store.destinoNamed(none), std::nullopt) << none;
  }
}

TEST_F(Destinos, LeaveTheirMessagesUnfiledAndMarkedWhenDeleted) {
  other.execute(
      "INSERT INTO recado(id, created_at, status, destino_id) VALUES (1, 0, 'resolvido', 'd'), "
      "(2, 0, 'x', 'D'), (3, 0, 'x', NULL); UPDATE recado SET updated_at = 5, dirty = 0");
  const std::string filing = "id || IFNULL(destino_id, '-') || dirty || ' ' || updated_at";
  store.deleteDestino("e");
  refuse("UPDATE ON recado");
  EXPECT_THROW(store.deleteDestino("d"), DatabaseError);
  EXPECT_EQ(store.destinos(), (List{loja, casa, acao}));
  EXPECT_EQ(each(filing), "1d0 5.0;2D0 5.0;3-0 5.0;");
  refuse("DELETE ON destino");
  EXPECT_THROW(store.deleteDestino("d"), DatabaseError);
  EXPECT_EQ(store.destinos(), (List{loja, casa, acao}));
  EXPECT_EQ(each(filing), "1-1 5.0;2D0 5.0;3-0 5.0;");
  other.execute("DROP TRIGGER refusal");
  store.deleteDestino("d");
  EXPECT_EQ(store.destinos(), (List{loja, acao}));
}

TEST_F(Destinos, AreReadFromAnyRow) {
  const auto rows = other.query("SELECT 7 AS id, 7 AS name, 7 AS color, 2.7 AS sort");
  const Destino destino = TroviStore::destinoFrom(rows.at(0));
  EXPECT_EQ(destino, (Destino{destino.id, "", "", "#FF6A1C", 2}));
  EXPECT_EQ(destino.id.size(), 36U);
  EXPECT_EQ(TroviStore::destinoFrom(Row{}).sort, 0);
}

}  // namespace
}  // namespace trovi
