#include <gtest/gtest.h>

#include "Repeated.h"
#include "TroviCore/Text.h"

namespace trovi {
namespace {

using tests::repeated;

void expectTitles(const std::vector<std::pair<std::string, std::string>>& cases) {
  for (const auto& [transcript, title] : cases) {
    EXPECT_EQ(TroviText::titleFrom(transcript), title) << transcript;
  }
}

TEST(Title, IsTheFirstSentenceAsItWasSpoken) {
  expectTitles({{"", "Recado sem fala"},
                {"\t\n\v\f\u00A0\u0085\u2028\u3000 \r\n", "Recado sem fala"},
                {"\u200B\x1C", "\u200B\x1C"},
                {" \u2029Ligar para o João?\nUrgente!", "Ligar para o João"},
                {"...comprar pão! E leite.", "comprar pão"},
                {"... . comprar pão .", " "},
                {"?!", "?!"},
                {"um\r\ndois\n\rtrês", "um\r\ndois"},
                {"um.\u0301 dois. três", "um.\u0301 dois"},
                {"um\n\u0301dois", "um"},
                {"um\u3002dois\uFF01três\u2026;", "um\u3002dois\uFF01três\u2026;"},
                {"um\xFF. dois", "um\uFFFD"}});
  EXPECT_EQ(TroviText::trimmed("\u2028um\xFF\n"), "um\uFFFD");
}

TEST(Title, IsCutBeforeTheLastSpaceOfItsFirst60Characters) {
  const std::string letters = repeated("é", 40);
  expectTitles(
      {{letters + repeated("👍🏽", 20), letters + repeated("👍🏽", 20)},
       {letters + "a " + repeated("b", 28), letters + "a…"},
       {letters + " " + repeated("b", 18) + " c", letters + " " + repeated("b", 18) + "…"},
       {letters + " " + repeated("b", 19) + " c", letters + "…"},
       {letters + "  " + repeated("b", 30), letters + " …"},
       {letters + "\u00A0\t" + repeated("b", 30), letters + "\u00A0\t" + repeated("b", 18) + "…"},
       {letters + " \u0301" + repeated("b", 30), letters + " \u0301" + repeated("b", 19) + "…"},
       {". " + repeated("b", 70), "…"}});
}

/// Each transcript must mention `found`, a name and its index in the list, or nothing if it is "-".
void expectMentioned(const std::string& found, const std::vector<std::string>& names,
                     const std::vector<std::string>& transcripts) {
  std::vector<Destino> destinos;
  for (const std::string& name : names) {
    destinos.push_back({std::to_string(destinos.size()), name, "", "", 0});
  }
  for (const std::string& transcript : transcripts) {
    const auto mentioned = TroviText::destinoMentioned(transcript, destinos);
    EXPECT_EQ(mentioned ? mentioned->name + mentioned->id : "-", found) << transcript;
  }
}

TEST(Mention, FindsANameBehindItsLeadIn) {
  expectMentioned("Casa0", {"Casa"},
                  {"pro casa", "para casa", "PARA O casa", "Pára à casa", "pro destino casa",
                   "no destino casa", "compra casarão"});
  expectMentioned("-", {"Casa"}, {"", "do destino casa", "pra  casa", "pra\u00A0casa"});
  expectMentioned("-", {}, {"pra casa"});
  expectMentioned("Ideias soltas0", {"Ideias soltas"}, {"Manda isso pra IDEIAS SOLTAS, por favor"});
  expectMentioned("AÇÃO0", {"AÇÃO"}, {"pra ac\u0327a\u0303o"});
  expectMentioned("A\u030Angstrom0", {"A\u030Angstrom"}, {"pra \u212Bngstrom"});
  expectMentioned(std::string("Casa\xFF") + "0", {"Casa\xFF", "Casa"}, {"pra casa\xFF"});
}

TEST(Mention, PrefersLongerNamesThenTheOrderOfTheList) {
  expectMentioned("Casa nova1", {"Casa", "Casa nova"}, {"vai pra casa nova"});
  expectMentioned("Obra0", {"Obra", "Casa"}, {"pra casa ou pra obra"});
  expectMentioned("CASA0", {"CASA", "casa"}, {"pra casa"});
  // In characters, not bytes, of the stored name, not the folded one: 4, 5, and 4 again.
  expectMentioned("Casas1", {"Ação", "Casas"}, {"pra ação ou pra casas"});
  expectMentioned("Obra0", {"Obra", "A\u0301c\u0327a\u0303o"}, {"pra acao ou pra obra"});
  expectMentioned("strasse1", {"Straße", "strasse"}, {"pra aaa ou pra strasse"});
  expectMentioned("Casa1", {"", "Casa"}, {"pra casa"});
  expectMentioned("-", {"", "Casa "}, {"pra ", "pra casa"});
}

TEST(Mention, NeverCutsACharacter) {
  expectMentioned("-", {"👍"}, {"pra 👍🏽"});
  expectMentioned("👍🏽0", {"👍🏽", "👍"}, {"pra 👍🏽"});
  expectMentioned("👩0", {"👩"}, {"pra 👩\u200D👧 e pra 👩"});
  expectMentioned("🇧🇷0", {"🇧🇷"}, {"pra 🇧🇷🇵🇹"});
  expectMentioned("-", {"か", "ก"}, {"pra か\u3099", "pra กิ"});  // only the first composes
  expectMentioned("กิ0", {"กิ"}, {"pra กิ"});
}

TEST(Mention, IsLookedForInTheFirst160Characters) {
  for (const std::string_view filler : {"x", "x\u0301", "ß", "👩\u200D👩\u200D👧\u200D👦"}) {
    expectMentioned("Casa0", {"Casa"}, {repeated(filler, 152) + "pra casa."});
    expectMentioned("-", {"Casa"}, {repeated(filler, 153) + "pra casa."});
  }
}

}  // namespace
}  // namespace trovi
