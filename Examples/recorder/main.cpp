// What a recording application does with a note, on one page and with the public headers only: it
// files a message that is being transcribed, derives title and destination from the transcript, and
// makes the message available to assistants.
#include <TroviCore/Paths.h>
#include <TroviCore/Store.h>
#include <TroviCore/Text.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace trovi;

constexpr const char* usage =
    "uso: recorder CAIXA file [TRANSCRIÇÃO [GRAVAÇÃO]]\n"
    "                                arquiva um recado; sem texto, lê a entrada padrão\n"
    "     recorder CAIXA fail GRAVAÇÃO\n"
    "                                arquiva uma gravação que ninguém conseguiu transcrever\n"
    "     recorder CAIXA list        lista os recados com os ids, o mais novo primeiro\n"
    "     recorder CAIXA counts      conta os recados por situação\n"
    "     recorder CAIXA reopen ID   torna um recado pendente outra vez\n"
    "     recorder CAIXA delete ID   apaga um recado e a sua gravação\n"
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

/// Inserts the message before it is transcribed, so that nothing is lost if that fails. Without a
/// transcript it has failed, and the message keeps the recording for another attempt.
void fileNote(TroviStore& store, const std::optional<std::string>& transcript,
              const std::optional<std::filesystem::path>& recording) {
  const std::string id = newID();
  std::optional<std::string> audioPath;  // absolute, for programs in other working folders
  if (recording) audioPath = absolute(*recording).string();
  store.insert({.id = id,
                .createdAt = now(),
                .duration = 0,  // seconds; a real recorder knows
                .audioPath = audioPath,
                .transcript = "",
                .title = "",
                .status = RecadoStatus::transcrevendo});
  std::optional<Destino> destino;
  if (transcript) {
    destino = TroviText::destinoMentioned(*transcript, store.destinos());
    store.finishTranscription({.id = id,
                               .transcript = *transcript,
                               .title = TroviText::titleFrom(*transcript),
                               .destinoID = destino ? std::optional(destino->id) : std::nullopt,
                               .language = "pt"});
  } else {
    store.setStatus(id, RecadoStatus::falhou, "Gravação sem transcrição");
  }
  if (const auto filed = store.recado(id)) {
    std::cout << filed->id << "\ntítulo:   " << filed->title
              << "\ndestino:  " << (destino ? destino->name : "nenhum")
              << "\nsituação: " << label(filed->status) << '\n';
    if (filed->audioPath) std::cout << "gravação: " << *filed->audioPath << '\n';
  }
}

void printList(TroviStore& store) {
  for (const Recado& recado : store.recados({.limit = -1})) {
    std::cout << recado.id << "  " << label(recado.status) << "  " << recado.title << '\n';
  }
}

void printCounts(TroviStore& store) {
  const auto counts = store.counts();
  for (const RecadoStatus status : allCases()) {
    const auto count = counts.find(status);
    std::cout << label(status) << ": " << (count != counts.end() ? count->second : 0) << '\n';
  }
}

struct Verb {
  std::string_view name;
  std::size_t least, most;  ///< arguments after it
};
constexpr Verb verbs[] = {{"file", 0, 2},   {"fail", 1, 1},   {"list", 0, 0},
                          {"counts", 0, 0}, {"reopen", 1, 1}, {"delete", 1, 1}};

int run(const std::vector<std::string>& arguments) {
  const auto fits = [&](const Verb& verb) {
    return arguments.size() >= 2 + verb.least && arguments.size() <= 2 + verb.most &&
           arguments[1] == verb.name;
  };
  if (std::none_of(std::begin(verbs), std::end(verbs), fits)) {
    std::cerr << usage;
    return 2;
  }
  const std::string& verb = arguments[1];
  const std::string argument = arguments.size() > 2 ? arguments[2] : "";
  TroviStore store(inboxFile(arguments[0]));
  if (verb == "list") {
    printList(store);
  } else if (verb == "counts") {
    printCounts(store);
  } else if (verb == "file") {
    const std::string transcript =
        arguments.size() > 2 ? argument : std::string(std::istreambuf_iterator<char>(std::cin), {});
    fileNote(store, transcript, arguments.size() > 3 ? std::optional(arguments[3]) : std::nullopt);
  } else if (verb == "fail") {
    fileNote(store, {}, argument);
  } else if (!store.recado(argument)) {
    std::cerr << "nenhum recado com o id " << argument << '\n';
    return EXIT_FAILURE;
  } else if (verb == "reopen") {
    store.reopen(argument);
  } else {
    store.deleteRecado(argument);
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
