#include <gtest/gtest.h>

#include <cmath>
#include <locale>
#include <regex>
#include <set>

#include "TroviCore/Coding.h"
#include "TroviCore/Store.h"

namespace trovi {
namespace {

const std::string destino =
    R"({"id":"D","name":"\"ç\"/","instruction":"i","colorHex":"#F","sort":-9223372036854775808})";
const std::string recado =
    R"({"id":"R","createdAt":1750255402.25,"duration":0.30000000000000004,"audioPath":"/a","transcript":"f",)"
    R"("title":"t","destinoID":"D","status":"pego","claimedBy":"c","claimedAt":-0.1,"result":"",)"
    R"("resolvedAt":0,"language":"pt"})";

/// What is wrong with a JSON text of a `Type`.
template <class Type>
std::string failure(const std::string& text) {
  try {
    fromJSON<Type>(text);
  } catch (const CodingError& error) {
    return error.what();
  }
  return "none";
}

/// Expects that a record is written as it is read, that each field is refused when it is missing or
/// null, unless it is one of the `optional` ones, or of another kind, and that records which differ
/// in one field are neither equal nor of the same hash.
template <class Type>
void expectEachFieldToCount(const std::string& json, const std::set<std::string>& optional = {}) {
  const auto whole = fromJSON<Type>(json);
  EXPECT_EQ(toJSON(whole), json);
  const auto negative = fromJSON<Type>(std::regex_replace(json, std::regex(":0,"), ":-0,"));
  EXPECT_EQ(std::hash<Type>{}(negative), std::hash<Type>{}(whole));  // as -0.0 equals 0.0
  const std::regex member(R"re("(\w+)":("?)[^,}]*)re");
  for (std::sregex_iterator at(json.begin(), json.end(), member), end; at != end; ++at) {
    const std::string key = (*at)[1];
    const bool isText = (*at)[2].length() > 0;
    SCOPED_TRACE(key);
    const auto with = [&](const std::string& name, const std::string& value) {
      return std::string(json).replace(static_cast<std::size_t>(at->position()),
                                       static_cast<std::size_t>(at->length()),
                                       '"' + name + "\":" + value);
    };
    const auto expectDifferent = [&](const std::string& value) {
      const auto record = fromJSON<Type>(with(key, value));
      EXPECT_TRUE(record != whole && std::hash<Type>{}(record) != std::hash<Type>{}(whole));
    };
    expectDifferent(key == "status" ? R"("falhou")" : isText ? R"("x")" : "3");
    if (optional.contains(key)) expectDifferent("null");
    const std::string missing = optional.contains(key) ? "none" : key + ": missing";
    EXPECT_EQ(failure<Type>(with(key, "null")), missing);
    EXPECT_EQ(failure<Type>(with("other", "1")), missing);
    const char* const wrong = isText          ? ": not a text"
                              : key == "sort" ? ": not an integer of 64 bits"
                                              : ": not a number in the range of a double";
    for (auto* value : {"{}", "[]", "true", isText ? "7" : R"("7")", isText ? "8" : "1e999"}) {
      EXPECT_EQ(failure<Type>(with(key, value)), key + wrong) << value;
    }
  }
}

/// The number format of an application in Brazil.
struct DecimalComma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
};

TEST(Coding, NeedsEveryFieldThatIsNotOptionalInAnyLocale) {
  const auto before = std::locale::global(std::locale(std::locale(), new DecimalComma));
  expectEachFieldToCount<Destino>(destino);
  expectEachFieldToCount<Recado>(recado, {"audioPath", "destinoID", "claimedBy", "claimedAt",
                                          "result", "resolvedAt", "language"});
  EXPECT_EQ(toJSON(Recado{"R", Date{}, 0, {}, "", "", {}, RecadoStatus::pego}),
            R"({"id":"R","createdAt":0,"duration":0,"transcript":"","title":"","status":"pego"})");
  std::locale::global(before);
}

TEST(Coding, NamesTheReasonOfAFailure) {
  EXPECT_EQ(failure<Destino>("[]"), "not a JSON object");
  EXPECT_EQ(failure<Destino>("{}\xFF"), "not a JSON text");
  EXPECT_EQ(failure<RecadoStatus>("\"todos\""), "no status is called \"todos\"");
  EXPECT_EQ(failure<RecadoStatus>("1"), "not a text");
  EXPECT_STREQ(CodingError("key", "reason").what(), "key: reason");
  EXPECT_THROW(JSONObjectDecoder(R"({"n":1.5})").decodeInteger("n"), CodingError);
  EXPECT_THROW(JSONObjectEncoder().encodeNumber("d", NAN), CodingError);
  EXPECT_THROW(JSONObjectEncoder().encodeDate("d", dateSince1970(INFINITY)), CodingError);
  EXPECT_EQ(toISO8601(dateSince1970(NAN)), "1970-01-01T00:00:00Z");
}

TEST(Coding, LetsOtherMembersStandBesideThoseOfARecord) {
  const std::string text = R"({"é\"":"\u0000","�":"�",)" + destino.substr(1);
  const JSONObjectDecoder decoder("{\"x\xFF\":\"\xFF\",\"none\":null,\"sort\":0," + text.substr(1));
  JSONObjectEncoder encoder;
  encoder.encodeText("é\"", decoder.decodeText("é\""));
  encoder.encodeText("\xFF", "\xFF");
  encode(decode<Destino>(decoder), encoder);
  EXPECT_EQ(encoder.text(), text);
  EXPECT_EQ(decoder.decodeText("x\uFFFD"), "\uFFFD");
  EXPECT_FALSE(decoder.contains("none") || decoder.contains("x"));
}

TEST(RecadoStatus, KeepsItsStoredTextsItsLabelsAndItsOrder) {
  std::string found;
  for (const auto status : allCases()) {
    found += toJSON(fromJSON<RecadoStatus>(toJSON(status))) + std::string(label(status)) + ";";
  }
  EXPECT_EQ(found, R"("transcrevendo"Transcrevendo;"pendente"Pendente;"pego"Pego pela IA;)"
                   R"("resolvido"Resolvido;"falhou"Falhou;)");
  for (const char* none : {"Pego", " pego"}) EXPECT_FALSE(fromRawValue(none));
  EXPECT_THROW(label(static_cast<RecadoStatus>(5)), std::out_of_range);
}

}  // namespace
}  // namespace trovi
