#include <gtest/gtest.h>

#include <array>

#include "TroviCore/Text.h"

namespace trovi::tests {
namespace {

std::string repeated(std::string_view text, int count) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

struct TitleCase {
  std::string transcript, title;
};

TEST(Title, IsTheFirstSentenceAsItWasSpoken) {
  const std::array cases{
      TitleCase{"", "Recado sem fala"},
      TitleCase{"\t\n\u00A0\u0085\u2028\u3000 \r\n", "Recado sem fala"},
      TitleCase{"\u200B", "\u200B"},
      TitleCase{" \u2029Ligar para o João?\nUrgente!", "Ligar para o João"},
      TitleCase{"...comprar pão. E leite.", "comprar pão"},
      TitleCase{"... comprar pão .", " comprar pão "},
      TitleCase{"?!", "?!"},
      TitleCase{" ... ", "..."},
      TitleCase{"um\ndois", "um"},
      TitleCase{"um\r\ndois\n\rtrês", "um\r\ndois"},
      TitleCase{"um\rdois", "um\rdois"},
      TitleCase{"um.\u0301 dois. três", "um.\u0301 dois"},
      TitleCase{"um\n\u0301dois", "um"},
      TitleCase{"um\u3002dois\uFF01três\u2026", "um\u3002dois\uFF01três\u2026"},
      TitleCase{" \u0301um. dois", "\u0301um"},
      TitleCase{"um\xFF. dois", "um\uFFFD"},
  };
  for (const auto& [transcript, title] : cases) {
    EXPECT_EQ(TroviText::titleFrom(transcript), title) << transcript;
  }
}

TEST(Title, CountsUserPerceivedCharacters) {
  const std::array<std::string_view, 10> characters{
      "a",    "ã",        "a\u0303",       "👩\u200D👩\u200D👧\u200D👦",
      "🇧🇷",   "👍🏽", "1\uFE0F\u20E3", "\u1100\u1161\u11A8",
      "\r\n", ".\u0301",
  };
  for (const std::string_view character : characters) {
    // Letters around it, since white space at the ends goes.
    const std::string middle = repeated(character, 58);
    EXPECT_EQ(TroviText::titleFrom("a" + middle + "b"), "a" + middle + "b") << character;
    EXPECT_EQ(TroviText::titleFrom("a" + middle + character.data() + "b"),
              "a" + middle + character.data() + "…")
        << character;
  }
}

TEST(Title, IsCutBeforeItsLastSpace) {
  const std::string letters40 = repeated("é", 40);
  const std::array cases{
      TitleCase{letters40 + "a " + repeated("b", 28), letters40 + "a…"},
      TitleCase{letters40 + " " + repeated("b", 18) + " c",
                letters40 + " " + repeated("b", 18) + "…"},
      TitleCase{letters40 + " " + repeated("b", 19) + " c", letters40 + "…"},
      TitleCase{letters40 + "  " + repeated("b", 30), letters40 + " …"},
      TitleCase{letters40 + "\u00A0\t" + repeated("b", 30),
                letters40 + "\u00A0\t" + repeated("b", 18) + "…"},
      TitleCase{letters40 + " \u0301" + repeated("b", 30),
                letters40 + " \u0301" + repeated("b", 19) + "…"},
      TitleCase{". " + repeated("b", 70), "…"},
  };
  for (const auto& [transcript, title] : cases) {
    EXPECT_EQ(TroviText::titleFrom(transcript), title) << transcript;
  }
}

/// The name that is mentioned, of destinations with these names; "-" for none.
std::string mentioned(std::string_view transcript, const std::vector<std::string>& names) {
  std::vector<Destino> destinos;
  destinos.reserve(names.size());
  for (const std::string& name : names) {
    destinos.push_back({.id = std::to_string(destinos.size()),
                        .name = name,
                        .instruction = "",
                        .colorHex = "",
                        .sort = 0});
  }
  const auto found = TroviText::destinoMentioned(transcript, destinos);
  return found ? found->name + found->id : "-";
}

struct MentionCase {
  std::string transcript;
  std::vector<std::string> names;
  std::string found;  ///< the name and its place in the list
};

TEST(Mention, FindsANameBehindItsLeadIn) {
  const std::vector<MentionCase> cases{
      {"", {"Casa"}, "-"},
      {"pra casa", {}, "-"},
      {"Manda isso pra IDEIAS SOLTAS, por favor", {"Ideias soltas"}, "Ideias soltas0"},
      {"pro casa", {"Casa"}, "Casa0"},
      {"para casa", {"Casa"}, "Casa0"},
      {"PARA O casa", {"Casa"}, "Casa0"},
      {"Pára à casa", {"Casa"}, "Casa0"},
      {"pro destino casa", {"Casa"}, "Casa0"},
      {"no destino casa", {"Casa"}, "Casa0"},
      {"do destino casa", {"Casa"}, "-"},
      {"casa", {"Casa"}, "-"},
      {"pra  casa", {"Casa"}, "-"},
      {"pra\u00A0casa", {"Casa"}, "-"},
      {"compra casarão", {"Casa"}, "Casa0"},
      {"pra acao", {"Ação"}, "Ação0"},
      {"pra ac\u0327a\u0303o", {"AÇÃO"}, "AÇÃO0"},
      {"pra \u212Bngstrom", {"A\u030Angstrom"}, "A\u030Angstrom0"},
      {"pra casa\xFF",
       {"Casa\xFF", "Casa"},
       "Casa\xFF"
       "0"},
  };
  for (const auto& [transcript, names, found] : cases) {
    EXPECT_EQ(mentioned(transcript, names), found) << transcript;
  }
}

TEST(Mention, PrefersLongerNamesThenTheOrderOfTheList) {
  const std::vector<MentionCase> cases{
      {"vai pra casa nova", {"Casa", "Casa nova"}, "Casa nova1"},
      {"pra casa ou pra obra", {"Obra", "Casa"}, "Obra0"},
      {"pra casa", {"CASA", "casa"}, "CASA0"},
      // By characters and not by bytes, as stored and not as folded: 4, 5, and 4 again.
      {"pra ação ou pra casas", {"Ação", "Casas"}, "Casas1"},
      {"pra acao ou pra obra", {"Obra", "A\u0301c\u0327a\u0303o"}, "Obra0"},
      {"pra aaa ou pra strasse", {"Straße", "strasse"}, "strasse1"},
      {"pra casa", {"", "Casa"}, "Casa1"},
      {"pra ", {""}, "-"},
  };
  for (const auto& [transcript, names, found] : cases) {
    EXPECT_EQ(mentioned(transcript, names), found) << transcript;
  }
}

TEST(Mention, NeverCutsACharacter) {
  const std::vector<MentionCase> cases{
      {"pra 👍🏽", {"👍"}, "-"}, {"pra 👍🏽", {"👍🏽", "👍"}, "👍🏽0"},
      {"pra 👩\u200D👧", {"👩"}, "-"}, {"pra 👩\u200D👧 e pra 👩", {"👩"}, "👩0"},
      {"pra 🇧🇷🇵🇹", {"🇧🇷"}, "🇧🇷0"},  {"pra か\u3099", {"か"}, "-"},  // composes
      {"pra กิ", {"ก"}, "-"},                                        // does not
      {"pra กิ", {"กิ"}, "กิ0"},
  };
  for (const auto& [transcript, names, found] : cases) {
    EXPECT_EQ(mentioned(transcript, names), found) << transcript;
  }
}

TEST(Mention, IsLookedForInTheFirst160Characters) {
  for (const std::string_view filler : {"x", "x\u0301", "🇧🇷", "👩\u200D👩\u200D👧\u200D👦"}) {
    EXPECT_EQ(mentioned(repeated(filler, 152) + "pra casa.", {"Casa"}), "Casa0") << filler;
    EXPECT_EQ(mentioned(repeated(filler, 153) + "pra casa.", {"Casa"}), "-") << filler;
    EXPECT_EQ(mentioned(repeated(filler, 160) + "pra casa.", {"Casa"}), "-") << filler;
  }
}

}  // namespace
}  // namespace trovi::tests
