// A program that uses only what the library installs. Its argument is a new folder.
#include <TroviCore/Coding.h>
#include <TroviCore/Paths.h>
#include <TroviCore/Store.h>
#include <TroviCore/Text.h>
#include <TroviCore/Version.h>

#if TROVI_VERSION_NUMBER < 100
#error "the version is not that of CMakeLists.txt"
#endif
#if defined(SQLITE_VERSION) || defined(UTF8PROC_VERSION_MAJOR)
#error "a public header shows a library that is ours to choose"
#endif

#include <unordered_set>

/// A custom encoder, whose base class is on the other side of the library's border.
struct KeyCounter : trovi::KeyedEncoder {
  void encodeText(std::string_view, std::string_view) override { ++count; }
  void encodeInteger(std::string_view, std::int64_t) override { ++count; }
  void encodeNumber(std::string_view, double) override { ++count; }
  void encodeDate(std::string_view, trovi::Date) override { ++count; }

  int count = 0;
};

int main(int, char** arguments) {
  const std::filesystem::path folder = arguments[1];
  std::filesystem::create_directories(folder);
  trovi::TroviStore store(folder / "trovi.sqlite");
  const std::string transcript = "Pra ideias soltas: um relógio. Que anda para trás.";
  store.insert({.id = "r",
                .createdAt = trovi::now(),
                .duration = 3,
                .transcript = transcript,
                .title = trovi::TroviText::titleFrom(transcript),
                .destinoID = trovi::TroviText::destinoMentioned(transcript, store.destinos())->id,
                .status = trovi::RecadoStatus::pendente});
  const auto claimed = store.claim({.id = "r", .by = "stranger"});
  KeyCounter counter;
  encode(claimed.value(), counter);
  const auto read =
      trovi::fromJSON<trovi::Recado>(toJSON(*claimed, trovi::JSONDates::secondsSince1970));
  if (counter.count != 9 || !std::unordered_set{*claimed}.contains(read)) return 1;
  try {
    store.insert(*claimed);
  } catch (const trovi::DatabaseError& error) {
    return error.kind() == trovi::DatabaseError::Kind::query ? 0 : 2;
  }
  return 3;
}
