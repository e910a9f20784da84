#include <gtest/gtest.h>

#include <limits>

#include "TroviCore/Coding.h"
#include "TroviCore/Store.h"

namespace trovi {
namespace {

constexpr auto inSeconds = JSONDates::secondsSince1970;

/// What went wrong, as "key: reason".
template <class Work>
std::string failure(Work&& work) {
  try {
    work();
  } catch (const CodingError& error) {
    EXPECT_TRUE(std::string(error.what()).starts_with(error.key())) << error.what();
    EXPECT_TRUE(std::string(error.what()).ends_with(error.reason())) << error.what();
    return error.what();
  }
  return "none";
}

TEST(Coding, WritesTheFieldsNamesLeavesAbsentOnesOutAndReadsThemBack) {
  const Destino destino{"D1", "Casa \"nova\"/ç", "", "#FF6A1C", INT64_MIN};
  constexpr std::string_view written =
      R"({"id":"D1","name":"Casa \"nova\"/ç","instruction":"","colorHex":"#FF6A1C","sort":-9223372036854775808})";
  EXPECT_EQ(toJSON(destino), written);
  EXPECT_EQ(fromJSON<Destino>(written), destino);
  constexpr std::string_view small =
      R"({"id":"R1","createdAt":1750255402.25,"duration":0.1,"transcript":"fala","title":"título","status":"resolvido"})";
  Recado recado = fromJSON<Recado>(small);
  EXPECT_EQ(recado.createdAt, dateSince1970(1750255402.25));
  EXPECT_FALSE(recado.audioPath);
  EXPECT_EQ(toJSON(recado, inSeconds), small);
  constexpr std::string_view whole =
      R"({"id":"R1","createdAt":"2025-06-18T14:03:22Z","duration":0.1,"audioPath":"/a.m4a","transcript":"fala",)"
      R"("title":"título","destinoID":"D1","status":"resolvido","claimedBy":"IA","claimedAt":"1969-12-31T23:59:59Z",)"
      R"("result":"","resolvedAt":"2001-09-09T01:46:40Z","language":"pt"})";
  recado = fromJSON<Recado>(whole, JSONDates::iso8601);
  EXPECT_EQ(recado.claimedAt, dateSince1970(-1));
  EXPECT_EQ(recado.language, "pt");
  EXPECT_EQ(toJSON(recado, JSONDates::iso8601), whole);
}

TEST(Coding, NamesTheKeyAndTheReasonOfAFailure) {
  const std::string good =
      R"({"id":"1","createdAt":1,"duration":1,"transcript":"","title":"","status":"pego","result":null})";
  const struct {
    const char *part, *instead, *failure;
  } cases[] = {
      {"", "", "none"},
      {R"("title":"",)", "", "title: missing"},
      {R"("1")", "null", "id: not a text"},
      {"1,", "true,", "createdAt: not a number in the range of a double"},
      {R"("duration":1)", R"("duration":1e999)", "duration: not a number in the range of a double"},
      {"pego", "Pego", "status: no status is called \"Pego\""},
      {R"("result":null)", R"("result":7)", "result: not a text"},
      {"{", "[", "not a JSON text"},
      {"}", "\xFF}", "not a JSON text"},
  };
  for (const auto& [part, instead, expected] : cases) {
    std::string json = good;
    json.replace(json.find(part), std::string_view(part).size(), instead);
    EXPECT_EQ(failure([&] { fromJSON<Recado>(json); }), expected) << json;
  }
  EXPECT_EQ(failure([&] { fromJSON<Recado>("[]"); }), "not a JSON object");
  EXPECT_EQ(failure([&] { fromJSON<Recado>(good, JSONDates::iso8601); }), "createdAt: not a text");
  EXPECT_EQ(failure([] {
              fromJSON<Destino>(R"({"id":"","name":"","instruction":"","colorHex":"","sort":1.5})");
            }),
            "sort: not an integer of 64 bits");
}

TEST(Coding, RefusesToWriteWhatJSONCannotHold) {
  Recado recado = TroviStore::recadoFrom(Row{});
  recado.claimedAt = dateSince1970(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(failure([&] { toJSON(recado, inSeconds); }), "claimedAt: not a finite number");
  EXPECT_EQ(failure([&] { toJSON(recado, JSONDates::iso8601); }), "claimedAt: not a finite date");
  recado.duration = std::numeric_limits<double>::infinity();
  EXPECT_EQ(failure([&] { toJSON(recado, inSeconds); }), "duration: not a finite number");
}

TEST(Records, DifferAndHashByTheirFields) {
  const std::hash<Destino> hash;
  EXPECT_NE(hash({"1", "n", "i", "#", 1}), hash({"1", "n", "i", "#", 0}));
  const Recado recado = TroviStore::recadoFrom(Row{});
  Recado other = recado;
  other.duration = -0.0;
  EXPECT_EQ(other, recado);
  EXPECT_EQ(std::hash<Recado>{}(other), std::hash<Recado>{}(recado));
  other.language = "";
  EXPECT_NE(other, recado);
  EXPECT_NE(std::hash<Recado>{}(other), std::hash<Recado>{}(recado));
}

TEST(RecadoStatus, KeepsItsStoredTextsItsLabelsAndItsOrder) {
  std::string found;
  for (const auto status : allCases<RecadoStatus>()) {
    found += std::string(rawValue(status)) + "=" + std::string(label(status)) + ";";
    EXPECT_EQ(fromRawValue<RecadoStatus>(rawValue(status)), status);
  }
  EXPECT_EQ(found,
            "transcrevendo=Transcrevendo;pendente=Pendente;pego=Pego pela IA;resolvido=Resolvido;"
            "falhou=Falhou;");
  EXPECT_FALSE(fromRawValue<RecadoStatus>("pendente "));
}

}  // namespace
}  // namespace trovi
