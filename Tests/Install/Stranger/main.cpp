// A program that knows nothing of the library but what is installed. Its argument is a new folder.
#include <TroviCore/Coding.h>
#include <TroviCore/Database.h>
#include <TroviCore/Date.h>
#include <TroviCore/Models.h>
#include <TroviCore/Paths.h>
#include <TroviCore/Store.h>
#include <TroviCore/Text.h>

#if defined(SQLITE_VERSION) || defined(UTF8PROC_VERSION_MAJOR) || defined(RAPIDJSON_NAMESPACE)
#error "a public header shows a library that is ours to choose"
#endif

#include <cstdio>
#include <unordered_set>

namespace {

int failures = 0;

void expect(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "not so: %s\n", what);
  ++failures;
}

/// An encoder of one's own: its class is derived across the border of the library.
class KeyCounter : public trovi::KeyedEncoder {
 public:
  void encodeText(std::string_view, std::string_view) override { ++count; }
  void encodeInteger(std::string_view, std::int64_t) override { ++count; }
  void encodeNumber(std::string_view, double) override { ++count; }
  void encodeDate(std::string_view, trovi::Date) override { ++count; }

  int count = 0;
};

}  // namespace

int main(int, char** arguments) {
  const std::filesystem::path folder = arguments[1];
  std::filesystem::create_directories(folder);
  trovi::TroviStore store(folder / "trovi.sqlite");
  const std::string transcript = "Pra ideias soltas: um relógio. Que anda para trás.";
  const auto destino = trovi::TroviText::destinoMentioned(transcript, store.destinos());
  expect(destino.has_value(), "the destination is found");
  store.insert({.id = "r",
                .createdAt = trovi::now(),
                .duration = 3,
                .transcript = transcript,
                .title = trovi::TroviText::titleFrom(transcript),
                .destinoID = destino ? std::optional(destino->id) : std::nullopt,
                .status = trovi::RecadoStatus::pendente});
  const auto claimed = store.claim({.id = "r", .by = "stranger"});
  expect(claimed.has_value() && label(claimed->status) == "Pego pela IA", "the claim holds");
  expect(store.pendingUploads(-1).at(0).version == 3, "the triggers count");

  const trovi::Recado recado = claimed.value();
  KeyCounter counter;
  encode(recado, counter);
  expect(counter.count == 9, "absent fields are left out");
  const std::string json = toJSON(recado, trovi::JSONDates::secondsSince1970);
  expect(std::unordered_set<trovi::Recado>{recado}.contains(trovi::fromJSON<trovi::Recado>(json)),
         "a record survives its coding");
  try {
    store.insert(recado);
    expect(false, "an id that is taken is refused");
  } catch (const trovi::DatabaseError& error) {
    expect(error.kind() == trovi::DatabaseError::Kind::query, "the error tells its kind");
  }
  try {
    trovi::fromJSON<trovi::Destino>("{}");
    expect(false, "a key that is missing is refused");
  } catch (const trovi::CodingError& error) {
    expect(error.key() == "id", "the error names the key");
  }
  return failures == 0 ? 0 : 1;
}
