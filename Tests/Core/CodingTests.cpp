#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <type_traits>

#include "TroviCore/Coding.h"
#include "TroviCore/Store.h"

namespace trovi {
namespace {

static_assert(std::is_nothrow_copy_constructible_v<CodingError>);

/// What is wrong with the JSON text of a `Type`, as what() says it.
template <class Type>
std::string failure(const std::string& text) {
  try {
    fromJSON<Type>(text);
  } catch (const CodingError& error) {
    return error.what();
  }
  return "none";
}

TEST(Coding, WritesTheFieldsNamesLeavesAbsentOnesOutAndReadsThemBack) {
  constexpr std::string_view destino =
      R"({"id":"D","name":"\"ç\"/","instruction":"","colorHex":"#F","sort":-9223372036854775808})";
  EXPECT_EQ(toJSON(fromJSON<Destino>(destino)), destino);
  constexpr std::string_view whole =
      R"({"id":"R","createdAt":1750255402,"duration":0.1,"audioPath":"/a","transcript":"f",)"
      R"("title":"t","destinoID":"D","status":"resolvido","claimedBy":"c","claimedAt":-1,)"
      R"("result":"","resolvedAt":0,"language":"pt"})";
  const Recado recado{
      "R", dateSince1970(1750255402), 0.1, "/a",   "f", "t", "D", RecadoStatus::resolvido,
      "c", dateSince1970(-1),         "",  Date{}, "pt"};
  EXPECT_EQ(fromJSON<Recado>(whole), recado);
  EXPECT_EQ(toJSON(recado), whole);
}

TEST(Coding, LetsOtherMembersStandBesideThoseOfARecord) {
  constexpr std::string_view text =
      R"({"é\"":"\u0000","id":"R","createdAt":1750255402.25,"duration":0.1,"transcript":"","title":"","status":"pego","n":2})";
  const JSONObjectDecoder decoder(text);
  JSONObjectEncoder encoder;
  encoder.encodeText("é\"", decoder.decodeText("é\""));
  encode(decode<Recado>(decoder), encoder);
  encoder.encodeInteger("n", decoder.decodeInteger("n"));
  EXPECT_EQ(encoder.text(), text);
  EXPECT_THROW(encoder.encodeNumber("d", NAN), CodingError);
  EXPECT_THROW(JSONObjectEncoder().encodeDate("d", dateSince1970(NAN)), CodingError);
}

TEST(Coding, NamesTheKeyAndTheReasonOfAFailure) {
  const std::string good =
      R"({"id":"1","createdAt":1,"duration":1,"transcript":"","title":"","status":"pego","result":null})";
  const char* const cases[][3] = {
      {R"("title":")", "\"title\":\"\xFF", "none"},
      {R"("title":"",)", "", "title: missing"},
      {R"("1")", "null", "id: missing"},
      {"1,", "true,", "createdAt: not a number in the range of a double"},
      {"pego", "Pego", "status: no status is called \"Pego\""},
      {"}", "\xFF}", "not a JSON text"}};
  for (const auto& [part, instead, expected] : cases) {
    std::string json = good;
    EXPECT_EQ(failure<Recado>(json.replace(json.find(part), std::strlen(part), instead)), expected);
  }
  EXPECT_EQ(failure<Recado>("[]"), "not a JSON object");
  EXPECT_EQ(failure<RecadoStatus>("\"todos\""), "no status is called \"todos\"");
  EXPECT_STREQ(CodingError("key", "reason").what(), "key: reason");
}

TEST(Records, DifferAndHashByTheirFields) {
  EXPECT_NE(std::hash<Destino>{}({"", "", "", "", 1}), std::hash<Destino>{}({"", "", "", "", 0}));
  const Recado recado = TroviStore::recadoFrom(Row{});
  Recado other = recado;
  other.duration = -0.0;
  EXPECT_TRUE(other == recado && std::hash<Recado>{}(other) == std::hash<Recado>{}(recado));
  other.language = "";
  EXPECT_TRUE(other != recado && std::hash<Recado>{}(other) != std::hash<Recado>{}(recado));
}

TEST(RecadoStatus, KeepsItsStoredTextsItsLabelsAndItsOrder) {
  std::string found;
  for (const auto status : allCases()) {
    found += toJSON(fromJSON<RecadoStatus>(toJSON(status))) + std::string(label(status)) + ";";
  }
  EXPECT_EQ(found, R"("transcrevendo"Transcrevendo;"pendente"Pendente;"pego"Pego pela IA;)"
                   R"("resolvido"Resolvido;"falhou"Falhou;)");
}

}  // namespace
}  // namespace trovi
