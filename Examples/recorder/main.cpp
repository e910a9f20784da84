// What a recording application does with a note, on one page and with the public headers only: it
// files a message that is being transcribed, derives title and destination from the transcript, and
// makes the message available to assistants.
#include <TroviCore/Paths.h>
#include <TroviCore/Store.h>
#include <TroviCore/Text.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace {

using namespace trovi;

constexpr const char* usage =
    "uso: recorder CAIXA file [TRANSCRIÇÃO]   arquiva um recado; sem texto, lê a entrada padrão\n"
    "     recorder CAIXA counts               conta os recados por situação\n"
    "     recorder CAIXA reopen ID            torna um recado pendente outra vez\n"
    "     recorder CAIXA delete ID            apaga um recado\n"
    "CAIXA é um arquivo, uma pasta (uma nova, com / no fim) ou --user, a caixa do usuário;\n"
    "o que faltar é criado.\n";

/// The inbox file for an argument: a file, or a folder that exists or ends in a slash. The user's
/// own inbox is used only on request.
std::filesystem::path inboxFile(std::filesystem::path named) {
  if (named == "--user") return TroviPaths::databaseURL();
  if (!named.has_filename() || std::filesystem::is_directory(named)) named /= "trovi.sqlite";
  if (named.has_parent_path()) std::filesystem::create_directories(named.parent_path());
  return named;
}

/// Inserts the message before it is transcribed, so that nothing is lost if that fails.
void fileNote(TroviStore& store, const std::string& transcript) {
  const std::string id = newID();
  store.insert({.id = id,
                .createdAt = now(),
                .duration = 0,  // seconds; there is no recording
                .transcript = "",
                .title = "",
                .status = RecadoStatus::transcrevendo});
  const auto destino = TroviText::destinoMentioned(transcript, store.destinos());
  store.finishTranscription({.id = id,
                             .transcript = transcript,
                             .title = TroviText::titleFrom(transcript),
                             .destinoID = destino ? std::optional(destino->id) : std::nullopt,
                             .language = "pt"});
  if (const auto filed = store.recado(id)) {
    std::cout << filed->id << "\ntítulo:   " << filed->title
              << "\ndestino:  " << (destino ? destino->name : "nenhum")
              << "\nsituação: " << label(filed->status) << '\n';
  }
}

void printCounts(TroviStore& store) {
  const auto counts = store.counts();
  for (const RecadoStatus status : allCases<RecadoStatus>()) {
    const auto count = counts.find(status);
    std::cout << label(status) << ": " << (count != counts.end() ? count->second : 0) << '\n';
  }
}

int run(const std::vector<std::string>& arguments) {
  const std::string verb = arguments.size() > 1 ? arguments[1] : "";
  const bool named = arguments.size() == 3;
  const bool whole = arguments.size() == 2;
  if (!(verb == "file" && (named || whole)) && !(verb == "counts" && whole) &&
      !((verb == "reopen" || verb == "delete") && named)) {
    std::cerr << usage;
    return 2;
  }
  TroviStore store(inboxFile(arguments[0]));
  if (verb == "counts") {
    printCounts(store);
  } else if (verb == "file") {
    fileNote(store,
             named ? arguments[2] : std::string(std::istreambuf_iterator<char>(std::cin), {}));
  } else if (!store.recado(arguments[2])) {
    std::cerr << "nenhum recado com o id " << arguments[2] << '\n';
    return EXIT_FAILURE;
  } else if (verb == "reopen") {
    store.reopen(arguments[2]);
  } else {
    store.deleteRecado(arguments[2]);
  }
  return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char** arguments) {
  try {
    return run({arguments + 1, arguments + count});
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return EXIT_FAILURE;
  }
}
