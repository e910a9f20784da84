#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "TroviCore/Coding.h"

namespace trovi {
namespace {

const Destino destino{.id = "D1",
                      .name = "Casa \"nova\"/ç",
                      .instruction = "",
                      .colorHex = "#FF6A1C",
                      .sort = std::numeric_limits<std::int64_t>::min()};

Recado smallRecado() {
  return {.id = "R1",
          .createdAt = dateSince1970(1750255402.25),
          .duration = 0.1,
          .transcript = "fala",
          .title = "título",
          .status = RecadoStatus::resolvido};
}

Recado wholeRecado() {
  Recado recado = smallRecado();
  recado.audioPath = "/a.m4a";
  recado.destinoID = "D1";
  recado.claimedBy = "IA";
  recado.claimedAt = dateSince1970(-0.5);
  recado.result = "";
  recado.resolvedAt = dateSince1970(1e9 + 1.0 / 3);
  recado.language = "pt";
  return recado;
}

/// What went wrong, as "key: reason".
template <class Work>
std::string failure(Work&& work) {
  try {
    work();
  } catch (const CodingError& error) {
    EXPECT_EQ(error.what(),
              error.key().empty() ? error.reason() : error.key() + ": " + error.reason());
    return error.what();
  }
  return "none";
}

TEST(Coding, ReadsBackWhatItWrote) {
  EXPECT_EQ(fromJSON<Destino>(toJSON(destino)), destino);
  for (const Recado& recado : {smallRecado(), wholeRecado()}) {
    EXPECT_EQ(fromJSON<Recado>(toJSON(recado, JSONDates::secondsSince1970)), recado);
  }
  Recado wholeSeconds = smallRecado();
  wholeSeconds.createdAt = dateSince1970(1750255402);
  EXPECT_EQ(fromJSON<Recado>(toJSON(wholeSeconds, JSONDates::iso8601), JSONDates::iso8601),
            wholeSeconds);
}

TEST(Coding, WritesTheFieldsNamesAndLeavesAbsentOnesOut) {
  EXPECT_EQ(
      toJSON(destino),
      R"({"id":"D1","name":"Casa \"nova\"/ç","instruction":"","colorHex":"#FF6A1C","sort":-9223372036854775808})");
  EXPECT_EQ(
      toJSON(smallRecado(), JSONDates::secondsSince1970),
      R"({"id":"R1","createdAt":1750255402.25,"duration":0.1,"transcript":"fala","title":"título","status":"resolvido"})");
  EXPECT_EQ(
      toJSON(wholeRecado(), JSONDates::iso8601),
      R"({"id":"R1","createdAt":"2025-06-18T14:03:22Z","duration":0.1,"audioPath":"/a.m4a","transcript":"fala",)"
      R"("title":"título","destinoID":"D1","status":"resolvido","claimedBy":"IA","claimedAt":"1969-12-31T23:59:59Z",)"
      R"("result":"","resolvedAt":"2001-09-09T01:46:40Z","language":"pt"})");
}

TEST(Coding, NamesTheKeyAndTheReasonOfAFailure) {
  const struct {
    const char* json;
    const char* failure;
  } cases[] = {
      {R"({"createdAt":1,"duration":1,"transcript":"","title":"","status":"pego"})", "id: missing"},
      {R"({"id":"1","createdAt":1,"duration":1,"transcript":"","status":"pego"})",
       "title: missing"},
      {R"({"id":null,"createdAt":1,"duration":1,"transcript":"","title":"","status":"pego"})",
       "id: not a text"},
      {R"({"id":"1","createdAt":"x","duration":1,"transcript":"","title":"","status":"pego"})",
       "createdAt: not a number in the range of a double"},
      {R"({"id":"1","createdAt":1,"duration":1e999,"transcript":"","title":"","status":"pego"})",
       "duration: not a number in the range of a double"},
      {R"({"id":"1","createdAt":1,"duration":1,"transcript":"","title":"","status":"Pego"})",
       "status: no status is called \"Pego\""},
      {R"({"id":"1","createdAt":1,"duration":1,"transcript":"","title":"","status":"pego","result":7})",
       "result: not a text"},
      {R"({"id":"1","createdAt":1,"duration":1,"transcript":"","title":"","status":"pego","result":null})",
       "none"},
      {"[]", "not a JSON object"},
      {"{", "not a JSON text"},
      {"", "not a JSON text"},
      {"\xFF", "not a JSON text"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(failure([&] { fromJSON<Recado>(each.json); }), each.failure) << each.json;
  }
  EXPECT_EQ(failure([] {
              fromJSON<Destino>(R"({"id":"","name":"","instruction":"","color":"","sort":1})");
            }),
            "colorHex: missing");
  EXPECT_EQ(failure([] {
              fromJSON<Destino>(R"({"id":"","name":"","instruction":"","colorHex":"","sort":1.5})");
            }),
            "sort: not an integer of 64 bits");
  EXPECT_EQ(
      failure([] {
        fromJSON<Recado>(
            R"({"id":"1","createdAt":7,"duration":1,"transcript":"","title":"","status":"pego"})",
            JSONDates::iso8601);
      }),
      "createdAt: not a text");
}

TEST(Coding, RefusesToWriteWhatJSONCannotHold) {
  Recado recado = smallRecado();
  recado.duration = std::numeric_limits<double>::infinity();
  EXPECT_EQ(failure([&] { toJSON(recado, JSONDates::iso8601); }), "duration: not a finite number");
  recado = smallRecado();
  recado.claimedAt = dateSince1970(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(failure([&] { toJSON(recado, JSONDates::secondsSince1970); }),
            "claimedAt: not a finite number");
  EXPECT_EQ(failure([&] { toJSON(recado, JSONDates::iso8601); }), "claimedAt: not a finite date");
}

/// An encoder of someone else's, with dates of its own.
class Listing : public KeyedEncoder {
 public:
  std::string text;

  void encodeText(std::string_view key, std::string_view value) override {
    add(key, std::string(value));
  }
  void encodeInteger(std::string_view key, std::int64_t value) override {
    add(key, std::to_string(value));
  }
  void encodeNumber(std::string_view key, double value) override {
    add(key, std::to_string(value));
  }
  void encodeDate(std::string_view key, Date value) override {
    add(key, "day " + std::to_string(static_cast<int>(secondsSince1970(value) / 86400)));
  }

 private:
  void add(std::string_view key, const std::string& value) {
    text += std::string(key) + "=" + value + ";";
  }
};

TEST(Coding, LeavesTheFormOfADateToTheEncoder) {
  Listing listing;
  encode(smallRecado(), listing);
  EXPECT_EQ(
      listing.text,
      "id=R1;createdAt=day 20257;duration=0.100000;transcript=fala;title=título;status=resolvido;");
}

}  // namespace
}  // namespace trovi
