#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <type_traits>

#include "TroviCore/Coding.h"
#include "TroviCore/Store.h"

namespace trovi {
namespace {

static_assert(std::is_nothrow_copy_constructible_v<CodingError>);

/// The members of a JSON object, each with its text.
using Members = std::vector<std::pair<std::string, std::string>>;

std::string object(const Members& members) {
  std::string text;
  for (const auto& [key, value] : members) {
    text.append(text.empty() ? "{\"" : ",\"").append(key).append("\":").append(value);
  }
  return text + "}";
}

const Members destino{{"id", R"("D")"},
                      {"name", R"("\"ç\"/")"},
                      {"instruction", R"("i")"},
                      {"colorHex", R"("#F")"},
                      {"sort", "-9223372036854775808"}};
const Members recado{
    {"id", R"("R")"},         {"createdAt", "1750255402.25"}, {"duration", "0.1"},
    {"audioPath", R"("/a")"}, {"transcript", R"("f")"},       {"title", R"("t")"},
    {"destinoID", R"("D")"},  {"status", R"("pego")"},        {"claimedBy", R"("c")"},
    {"claimedAt", "-1"},      {"result", R"("r")"},           {"resolvedAt", "0"},
    {"language", R"("pt")"}};

/// What is wrong with a JSON text of a `Type`, as "key|reason".
template <class Type>
std::string failure(const std::string& text) {
  try {
    fromJSON<Type>(text);
  } catch (const CodingError& error) {
    return error.key() + "|" + error.reason();
  }
  return "none";
}

/// Expects that a record is written as it is read; that each field is refused if it is missing, if
/// it is null unless `optional` says that it may be, and if it is of another kind; and that records
/// which differ in one field are neither equal nor of the same hash.
template <class Type>
void expectEveryFieldToCount(const Members& members, const std::set<std::string>& optional) {
  const auto whole = fromJSON<Type>(object(members));
  EXPECT_EQ(toJSON(whole), object(members));
  const auto expectDifferent = [&](const Members& other) {
    const auto record = fromJSON<Type>(object(other));
    EXPECT_FALSE(record == whole);
    EXPECT_NE(std::hash<Type>{}(record), std::hash<Type>{}(whole));
  };
  for (std::size_t i = 0; i < members.size(); ++i) {
    const auto& [key, text] = members[i];
    SCOPED_TRACE(key);
    Members other = members;
    const bool isText = text[0] == '"';
    other[i].second = key == "status" ? "\"falhou\"" : isText ? "\"\"" : "3";
    expectDifferent(other);
    other[i].second = "null";
    EXPECT_EQ(failure<Type>(object(other)), optional.contains(key) ? "none" : key + "|missing");
    if (optional.contains(key)) expectDifferent(other);
    for (const std::string kind : {"{}", "[]", "true", isText ? "7" : "\"7\""}) {
      other[i].second = kind;
      EXPECT_EQ(failure<Type>(object(other)).substr(0, key.size() + 5), key + "|not ") << kind;
    }
    other.erase(other.begin() + static_cast<std::ptrdiff_t>(i));
    EXPECT_EQ(failure<Type>(object(other)), optional.contains(key) ? "none" : key + "|missing");
  }
}

TEST(Coding, NeedsEveryFieldOfADestination) { expectEveryFieldToCount<Destino>(destino, {}); }

TEST(Coding, NeedsEveryFieldOfAMessageThatIsNotOptional) {
  expectEveryFieldToCount<Recado>(recado, {"audioPath", "destinoID", "claimedBy", "claimedAt",
                                           "result", "resolvedAt", "language"});
  Recado zero = TroviStore::recadoFrom(Row{});
  Recado negative = zero;
  negative.duration = -0.0;
  EXPECT_EQ(std::hash<Recado>{}(negative), std::hash<Recado>{}(zero));
  EXPECT_EQ(toJSON(Recado{"R", Date{}, 0, {}, "", "", {}, RecadoStatus::pego}),
            R"({"id":"R","createdAt":0,"duration":0,"transcript":"","title":"","status":"pego"})");
}

TEST(Coding, NamesTheReasonOfAFailure) {
  const std::string good = object(destino);
  EXPECT_EQ(failure<Destino>("[" + good + "]"), "|not a JSON object");
  EXPECT_EQ(failure<Destino>(good + "\xFF"), "|not a JSON text");
  EXPECT_EQ(failure<Destino>(R"({"id":7})"), "id|not a text");
  EXPECT_EQ(failure<Destino>(R"({"id":"","name":"","instruction":"","colorHex":"","sort":1.5})"),
            "sort|not an integer of 64 bits");
  EXPECT_EQ(failure<Recado>(R"({"id":"","createdAt":1e999})"),
            "createdAt|not a number in the range of a double");
  EXPECT_EQ(failure<RecadoStatus>("\"todos\""), "|no status is called \"todos\"");
  EXPECT_EQ(failure<RecadoStatus>("1"), "|not a text");
  EXPECT_STREQ(CodingError("key", "reason").what(), "key: reason");
}

TEST(Coding, LetsOtherMembersStandBesideThoseOfARecord) {
  const std::string text = R"({"é\"":"\u0000",)" + object(destino).substr(1);
  const JSONObjectDecoder decoder(text);
  JSONObjectEncoder encoder;
  encoder.encodeText("é\"", decoder.decodeText("é\""));
  encode(decode<Destino>(decoder), encoder);
  EXPECT_EQ(encoder.text(), text);
  EXPECT_THROW(encoder.encodeNumber("d", NAN), CodingError);
  EXPECT_THROW(encoder.encodeDate("d", dateSince1970(INFINITY)), CodingError);
  EXPECT_EQ(encoder.text(), text);
  const JSONObjectDecoder repeated("{\"n\":1,\"n\":2,\"none\":null,\"\xFF\":\"\xFF\"}");
  EXPECT_FALSE(repeated.contains("none") || repeated.contains("x"));
  EXPECT_EQ(repeated.decodeInteger("n"), 2);
  JSONObjectEncoder repaired;
  repaired.encodeText("\xFF", "\xFF");
  EXPECT_EQ(repaired.text(), "{\"\uFFFD\":\"\uFFFD\"}");
}

TEST(RecadoStatus, KeepsItsStoredTextsItsLabelsAndItsOrder) {
  std::string found;
  for (const auto status : allCases<RecadoStatus>()) {
    found += toJSON(fromJSON<RecadoStatus>(toJSON(status))) + std::string(label(status)) + ";";
  }
  EXPECT_EQ(found, R"("transcrevendo"Transcrevendo;"pendente"Pendente;"pego"Pego pela IA;)"
                   R"("resolvido"Resolvido;"falhou"Falhou;)");
  for (const char* text : {"Pego", "pego ", " pego", "todos", ""}) {
    EXPECT_EQ(fromRawValue<RecadoStatus>(text), std::nullopt) << text;
  }
  EXPECT_THROW(rawValue(static_cast<RecadoStatus>(5)), std::out_of_range);
}

TEST(Date, IsWrittenInWholeSeconds) {
  EXPECT_EQ(toISO8601(dateSince1970(1750255402.75)), "2025-06-18T14:03:22Z");
  EXPECT_EQ(toISO8601(dateSince1970(-0.5)), "1969-12-31T23:59:59Z");
  EXPECT_EQ(toISO8601(dateSince1970(NAN)), "1970-01-01T00:00:00Z");
}

}  // namespace
}  // namespace trovi
