#include <gtest/gtest.h>

#include <unordered_set>

#include "TroviCore/Models.h"

namespace trovi {
namespace {

TEST(RecadoStatus, KeepsItsStoredTextsItsLabelsAndItsOrder) {
  const std::vector<std::pair<std::string, std::string>> expected{
      {"transcrevendo", "Transcrevendo"},
      {"pendente", "Pendente"},
      {"pego", "Pego pela IA"},
      {"resolvido", "Resolvido"},
      {"falhou", "Falhou"}};
  std::vector<std::pair<std::string, std::string>> found;
  for (const auto status : allCases<RecadoStatus>()) {
    found.emplace_back(rawValue(status), label(status));
    EXPECT_EQ(fromRawValue<RecadoStatus>(rawValue(status)), status);
  }
  EXPECT_EQ(found, expected);
  for (const char* text :
       {"", "Pendente", " pendente", "pendente ", "todos", "PEGO", "Pego pela IA"}) {
    EXPECT_FALSE(fromRawValue<RecadoStatus>(text)) << text;
  }
}

TEST(Records, DifferAndHashByEveryField) {
  const Recado base{.id = "1",
                    .createdAt = dateSince1970(1),
                    .duration = 0,
                    .transcript = "t",
                    .title = "T",
                    .status = RecadoStatus::pego};
  std::vector<Recado> recados(14, base);
  recados[1].id = "2";
  recados[2].createdAt = dateSince1970(1.5);
  recados[3].duration = 2;
  recados[4].audioPath = "";
  recados[5].transcript = "u";
  recados[6].title = "U";
  recados[7].destinoID = "";
  recados[8].status = RecadoStatus::falhou;
  recados[9].claimedBy = "";
  recados[10].claimedAt = dateSince1970(0);
  recados[11].result = "";
  recados[12].resolvedAt = dateSince1970(0);
  recados[13].language = "";
  std::unordered_set<std::size_t> hashes;
  for (std::size_t i = 0; i < recados.size(); ++i) {
    for (std::size_t j = 0; j < recados.size(); ++j) EXPECT_EQ(recados[i] == recados[j], i == j);
    hashes.insert(std::hash<Recado>{}(recados[i]));
  }
  EXPECT_EQ(hashes.size(), recados.size());

  Recado negativeZero = base;
  negativeZero.duration = -0.0;
  EXPECT_EQ(negativeZero, base);
  EXPECT_EQ(std::hash<Recado>{}(negativeZero), std::hash<Recado>{}(base));

  const Destino destino{.id = "1", .name = "n", .instruction = "i", .colorHex = "#", .sort = 0};
  Destino moved = destino;
  moved.sort = 1;
  EXPECT_NE(moved, destino);
  EXPECT_NE(std::hash<Destino>{}(moved), std::hash<Destino>{}(destino));
}

}  // namespace
}  // namespace trovi
