// The inbox in a person's hands, with the library's public headers only: from a note, typed or
// spoken, to what an assistant made of it. The verbs are the functions in the table at the end.
#include <TroviCore/Coding.h>
#include <TroviCore/Paths.h>
#include <TroviCore/Store.h>
#include <TroviCore/Text.h>
#include <TroviCore/Version.h>
#include <sys/stat.h>
#include <termios.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <exception>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <limits>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Recording.h"

namespace {

using namespace trovi;
using Arguments = std::vector<std::string>;

struct Inbox {
  TroviStore store;
  std::filesystem::path recordings;  ///< their folder
};

/// The line of the user is none that we know.
struct WrongUse {};

/// What could not be done, in one sentence, and what the user may do.
struct Refusal : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// `text` as it may be written to a terminal, and in valid UTF-8: without control characters.
std::string shown(const std::string& text, std::string_view lineBreak = " ") {
  JSONObjectEncoder encoder;
  encoder.encodeText("", text);
  const std::string valid = JSONObjectDecoder(encoder.text()).decodeText("");
  std::string shown;
  for (std::size_t i = 0; i < valid.size(); ++i) {
    const auto byte = static_cast<unsigned char>(valid[i]);
    const bool isC1 = byte == 0xC2 && static_cast<unsigned char>(valid[i + 1]) < 0xA0;
    if (byte == '\n') {
      shown += lineBreak;
    } else if (byte == '\t') {
      shown += ' ';
    } else if (byte < 0x20 || byte == 0x7F || isC1) {
      shown += "\uFFFD";
      if (isC1) ++i;
    } else {
      shown += valid[i];
    }
  }
  return shown;
}

/// A date as the user's clock showed it; one beyond the years 0 to 9999 is shown as the nearest.
std::string localTime(Date date) {
  const double seconds = secondsSince1970(fromISO8601(toISO8601(date)).value());
  const auto time = static_cast<std::time_t>(seconds);
  std::ostringstream text;
  text << std::put_time(std::localtime(&time), "%Y-%m-%d %H:%M");
  return text.str();
}

/// The first eight characters of an id.
std::string shortID(const std::string& id) {
  std::size_t end = 0;
  for (int count = 0; end < id.size(); ++end) {
    const bool begins = (static_cast<unsigned char>(id[end]) & 0xC0U) != 0x80;
    if (begins && ++count > 8) break;
  }
  return id.substr(0, end);
}

/// The message in one line.
std::string line(const Recado& recado, const std::vector<Destino>& destinos) {
  const auto destino = std::find_if(destinos.begin(), destinos.end(), [&](const Destino& each) {
    return each.id == recado.destinoID;
  });
  std::ostringstream line;
  line << shortID(recado.id) << "  " << std::left << std::setw(13) << rawValue(recado.status)
       << "  " << localTime(recado.createdAt) << "  "
       << (destino != destinos.end() ? destino->name : "-") << "  " << recado.title;
  return shown(line.str());
}

/// Prints the message as it is now: what a change is confirmed with.
void confirm(Inbox& inbox, const std::string& id) {
  const auto recado = inbox.store.recado(id);
  if (!recado) throw Refusal("outro programa acaba de apagar o recado " + id);
  std::cout << line(*recado, inbox.store.destinos()) << '\n';
}

/// The message with this id, or the only one whose id begins with it.
Recado find(Inbox& inbox, const std::string& id) {
  const auto rows = inbox.store.db().query(
      "SELECT * FROM recado WHERE substr(id, 1, length(?1)) = ?1 AND ?1 <> '' "
      "ORDER BY id <> ?1, id LIMIT 10",
      {SQLValue::text(id)});
  if (rows.empty()) {
    throw Refusal("nenhum recado tem um id que começa com \"" + id +
                  "\"; para ver os ids: trovi list todos");
  }
  Recado recado = TroviStore::recadoFrom(rows.front());
  if (rows.size() == 1 || recado.id == id) return recado;
  std::string fitting;
  for (const Row& row : rows) fitting += " " + row.stringValue("id").value_or("");
  throw Refusal("mais de um recado tem um id que começa com \"" + id +
                "\"; digite mais letras de um destes:" + fitting);
}

Destino findDestino(Inbox& inbox, const std::string& name) {
  if (auto destino = inbox.store.destinoNamed(name)) return *std::move(destino);
  std::string known;
  for (const Destino& destino : inbox.store.destinos()) known += " \"" + destino.name + "\"";
  throw Refusal("não há nenhum destino \"" + name + "\"; os que existem:" + known);
}

/// `text` without white space around it. A NUL, where the store would end it, becomes a blank.
std::string cleaned(Inbox& inbox, std::string text) {
  std::replace(text.begin(), text.end(), '\0', ' ');
  constexpr const char* whiteSpace =
      "\t\n\v\f\r \u0085\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009"
      "\u200A\u2028\u2029\u202F\u205F\u3000";
  const auto rows = inbox.store.db().query("SELECT trim(?, ?) AS text",
                                           {SQLValue::text(text), SQLValue::text(whiteSpace)});
  return rows.at(0).stringValue("text").value_or("");
}

void note(Inbox& inbox, const Arguments& arguments) {
  termios settings{};
  if (arguments.empty() && tcgetattr(0, &settings) == 0) {
    std::cerr << "Escreva o recado e termine com Ctrl-D numa linha vazia.\n";
  }
  const std::string text =
      cleaned(inbox, arguments.empty() ? std::string(std::istreambuf_iterator<char>(std::cin), {})
                                       : arguments[0]);
  if (text.empty()) throw Refusal("o recado está vazio, e nada foi guardado");
  const auto destino = TroviText::destinoMentioned(text, inbox.store.destinos());
  const std::string id = newID();
  inbox.store.insert({.id = id,
                      .createdAt = now(),
                      .duration = 0,
                      .transcript = text,
                      .title = TroviText::titleFrom(text),
                      .destinoID = destino ? std::optional(destino->id) : std::nullopt,
                      .status = RecadoStatus::pendente});
  confirm(inbox, id);
}

/// Lets the program transcribe the recording of a message that is `transcrevendo`.
void transcribe(Inbox& inbox, const Recado& recado, Arguments command) {
  const std::string program = command.front();
  std::cerr << shown("transcrevendo o recado " + shortID(recado.id) + "; a gravação está em " +
                     *recado.audioPath)
            << std::endl;
  command.push_back(*recado.audioPath);
  auto [output, failure] = cli::run(std::move(command));
  const std::string transcript = cleaned(inbox, output);
  if (failure.empty() && transcript.empty()) failure = "não imprimiu nada";
  // It took long: another program may have finished the message, and an assistant taken it.
  const auto current = inbox.store.recado(recado.id);
  if (!current || current->status != RecadoStatus::transcrevendo) {
    throw Refusal("o recado " + shortID(recado.id) + " mudou enquanto isso e ficou como está; " +
                  program + " imprimiu: " + transcript);
  }
  if (!failure.empty()) {
    inbox.store.setStatus(recado.id, RecadoStatus::falhou);
    throw Refusal(program + " " + failure + "; o recado e a gravação ficam. Tente outra vez: " +
                  "trovi transcribe --again " + shortID(recado.id) + " " + program + " …");
  }
  const auto destino = TroviText::destinoMentioned(transcript, inbox.store.destinos());
  inbox.store.finishTranscription({.id = recado.id,
                                   .transcript = transcript,
                                   .title = TroviText::titleFrom(transcript),
                                   .destinoID = destino ? destino->id : current->destinoID,
                                   .language = current->language});
  confirm(inbox, recado.id);
}

void transcribeNew(Inbox& inbox, const Arguments& arguments) {
  const std::filesystem::path recording = arguments[0];
  Recado recado{.id = newID(),
                .createdAt = now(),
                .duration = 0,
                .transcript = "",
                .title = recording.filename().string(),
                .status = RecadoStatus::transcrevendo};
  mkdir(inbox.recordings.c_str(), 0700);  // if there is none
  std::filesystem::path copy = inbox.recordings / recado.id;
  copy += recording.extension();
  if (!cli::copyPrivately(recording, copy)) {
    throw Refusal("não consegui copiar \"" + recording.string() + "\" para \"" +
                  inbox.recordings.string() + "\"; veja se a gravação existe e se há espaço livre");
  }
  recado.audioPath = copy.string();
  recado.duration = cli::wavSeconds(copy);
  try {
    inbox.store.insert(recado);
  } catch (...) {
    std::filesystem::remove(copy);
    throw;
  }
  transcribe(inbox, recado, {arguments.begin() + 1, arguments.end()});
}

void transcribeAgain(Inbox& inbox, const Arguments& arguments) {
  const Recado recado = find(inbox, arguments[0]);
  if (recado.status != RecadoStatus::falhou && recado.status != RecadoStatus::transcrevendo) {
    throw Refusal("o recado " + shortID(recado.id) + " já foi transcrito; para lê-lo: trovi show " +
                  shortID(recado.id));
  }
  if (!recado.audioPath || !std::filesystem::is_regular_file(*recado.audioPath)) {
    throw Refusal("falta a gravação do recado " + shortID(recado.id) + ": " +
                  recado.audioPath.value_or("ele não tem nenhuma"));
  }
  inbox.store.setStatus(recado.id, RecadoStatus::transcrevendo);
  transcribe(inbox, recado, {arguments.begin() + 1, arguments.end()});
}

void list(Inbox& inbox, const Arguments& arguments) {
  const bool all = !arguments.empty() && arguments[0] == "todos";
  std::optional<RecadoStatus> status;
  if (!arguments.empty() && !all) {
    status = fromRawValue<RecadoStatus>(arguments[0]);
    if (!status) throw WrongUse{};
  }
  const auto destinos = inbox.store.destinos();
  bool isEmpty = true;
  for (const Recado& recado : inbox.store.recados({.status = status, .limit = -1})) {
    if (!all && !status && recado.status == RecadoStatus::resolvido) continue;
    std::cout << line(recado, destinos) << '\n';
    isEmpty = false;
  }
  if (isEmpty) std::cerr << "nenhum recado\n";
}

void show(Inbox& inbox, const Arguments& arguments) {
  const Recado recado = find(inbox, arguments[0]);
  const auto destino = inbox.store.destino(recado.destinoID);
  const auto field = [](const char* name, const std::optional<std::string>& value) {
    if (value) std::cout << name << ": " << shown(*value, "\n    ") << '\n';
  };
  const auto time = [&](const char* name, const std::optional<Date>& value) {
    if (value) field(name, localTime(*value));
  };
  field("id", recado.id);
  field("status", std::string(rawValue(recado.status)));
  time("gravado em", recado.createdAt);
  std::cout << "duração: " << recado.duration << " s\n";
  field("gravação", recado.audioPath);
  field("idioma", recado.language);
  field("destino", destino ? std::optional(destino->name) : recado.destinoID);
  if (destino) field("instrução", destino->instruction);
  field("pego por", recado.claimedBy);
  time("pego em", recado.claimedAt);
  time("resolvido em", recado.resolvedAt);
  field("resultado", recado.result);
  field("título", recado.title);
  field("transcrição", recado.transcript);
}

void file(Inbox& inbox, const Arguments& arguments) {
  const std::string id = find(inbox, arguments[0]).id;
  std::optional<std::string> destinoID;
  if (arguments.size() > 1) destinoID = findDestino(inbox, arguments[1]).id;
  inbox.store.setDestino({.id = id, .destinoID = destinoID});
  confirm(inbox, id);
}

void reopen(Inbox& inbox, const Arguments& arguments) {
  const std::string id = find(inbox, arguments[0]).id;
  inbox.store.reopen(id);
  confirm(inbox, id);
}

void deleteRecado(Inbox& inbox, const Arguments& arguments) {
  const Recado recado = find(inbox, arguments[0]);
  const std::string was = line(recado, inbox.store.destinos());
  inbox.store.deleteRecado(recado.id);
  std::cout << "apagado: " << was << '\n';
  if (!recado.audioPath) return;
  std::error_code unknown;
  if (std::filesystem::exists(*recado.audioPath, unknown)) {
    throw Refusal("o recado foi apagado, mas a gravação não; apague você: " + *recado.audioPath);
  }
  std::cout << "gravação apagada: " << shown(*recado.audioPath) << '\n';
}

void listDestinos(Inbox& inbox, const Arguments&) {
  const auto destinos = inbox.store.destinos();
  for (const Destino& destino : destinos) {
    std::cout << shown(destino.name) << ": " << shown(destino.instruction, "\n    ") << '\n';
  }
  if (destinos.empty()) std::cerr << "nenhum destino\n";
}

void saveDestino(Inbox& inbox, const Arguments& arguments) {
  const std::string name = cleaned(inbox, arguments[0]);  // else a blank at its end would hide it
  if (name.empty()) throw Refusal("um destino precisa de um nome");
  auto destino = inbox.store.destinoNamed(name);
  const char* done = destino ? "instrução mudada: " : "destino criado: ";
  if (!destino) {
    const auto others = inbox.store.destinos();
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    destino = {.id = newID(),
               .name = name,
               .instruction = "",
               .colorHex = "#FF6A1C",
               .sort = others.empty() ? 0 : std::min(others.back().sort, most - 1) + 1};
  }
  destino->instruction = arguments[1];
  inbox.store.saveDestino(*destino);
  std::cout << done << shown(destino->name) << '\n';
}

void deleteDestino(Inbox& inbox, const Arguments& arguments) {
  const Destino destino = findDestino(inbox, arguments[0]);
  const auto filed = inbox.store.recados({.destinoID = destino.id, .limit = -1}).size();
  inbox.store.deleteDestino(destino.id);
  std::cout << "destino apagado: " << shown(destino.name)
            << "; recados que ficaram sem destino: " << filed << '\n';
}

void counts(Inbox& inbox, const Arguments&) {
  auto counts = inbox.store.counts();
  for (const RecadoStatus status : allCases<RecadoStatus>()) {
    std::cout << rawValue(status) << ": " << counts[status] << '\n';
  }
  std::cout << "neste mês: " << inbox.store.countThisMonth() << '\n';
}

struct Verb {
  std::string_view name, operands, purpose;
  std::size_t least, most;  ///< operands
  void (*perform)(Inbox&, const Arguments&);
};
constexpr std::size_t any = std::numeric_limits<std::size_t>::max();
constexpr Verb verbs[] = {
    {"note", " [TEXTO]", "guarda um recado; sem TEXTO, lê a entrada padrão", 0, 1, note},
    {"transcribe", " GRAVAÇÃO COMANDO [ARGUMENTO…]",
     "guarda uma gravação e o texto que COMANDO imprime ao recebê-la como último argumento", 2, any,
     transcribeNew},
    {"transcribe --again", " ID COMANDO [ARGUMENTO…]",
     "o mesmo para um recado cuja transcrição falhou ou foi interrompida", 2, any, transcribeAgain},
    {"list", " [STATUS]",
     "lista os recados, do mais novo ao mais antigo, sem os resolvidos; STATUS: transcrevendo, "
     "pendente, pego, resolvido, falhou ou todos",
     0, 1, list},
    {"show", " ID", "mostra tudo de um recado; do ID basta o começo", 1, 1, show},
    {"file", " ID [DESTINO]", "põe um recado em outro destino, ou em nenhum", 1, 2, file},
    {"reopen", " ID", "torna um recado pendente outra vez, sem quem o pegou e sem resultado", 1, 1,
     reopen},
    {"delete", " ID", "apaga um recado e a gravação dele", 1, 1, deleteRecado},
    {"destinos", "", "lista os destinos com as suas instruções", 0, 0, listDestinos},
    {"destino", " NOME INSTRUÇÃO", "cria um destino, ou muda a instrução dele", 2, 2, saveDestino},
    {"destino --delete", " NOME", "apaga um destino; os recados ficam, sem destino", 1, 1,
     deleteDestino},
    {"counts", "", "conta os recados por status, e os deste mês", 0, 0, counts},
};

std::string usage() {
  std::string text = "uso: trovi [--inbox ARQUIVO] VERBO …, com um destes:\n";
  for (const Verb& verb : verbs) {
    text.append("  trovi ").append(verb.name).append(verb.operands).append("\n      ");
    text.append(verb.purpose).append("\n");
  }
  return text + "  trovi --version\n  trovi --help\n";
}

void run(Arguments arguments) {
  std::filesystem::path file;
  if (arguments.size() > 1 && arguments[0] == "--inbox" && !arguments[1].empty()) {
    file = std::filesystem::absolute(arguments[1]);
    arguments.erase(arguments.begin(), arguments.begin() + 2);
  }
  if (arguments.empty()) throw WrongUse{};
  std::string name = arguments[0];
  arguments.erase(arguments.begin());
  // Only the first argument can be an option: what follows is the user's own, to the last one.
  if (!arguments.empty() && arguments[0].starts_with("--")) {
    if (arguments[0] != "--") name += " " + arguments[0];
    arguments.erase(arguments.begin());
  }
  if (name.ends_with("--help")) {
    std::cout << usage();
    return;
  }
  if (name == "--version") {
    std::cout << "trovi " TROVI_VERSION << '\n';
    return;
  }
  const auto verb = std::find_if(std::begin(verbs), std::end(verbs), [&](const Verb& each) {
    return each.name == name && arguments.size() >= each.least && arguments.size() <= each.most;
  });
  if (verb == std::end(verbs)) throw WrongUse{};
  if (file.empty()) file = TroviPaths::databaseURL();
  Inbox inbox{.store = TroviStore(file), .recordings = file.parent_path() / "Audio"};
  verb->perform(inbox, arguments);
}

}  // namespace

int main(int count, char** arguments) {
  try {
    run({arguments + std::min(count, 1), arguments + count});
    if (!std::cout.flush()) throw Refusal("não consegui escrever na saída padrão");
    return 0;
  } catch (const WrongUse&) {
    std::cerr << usage();
    return 2;
  } catch (const std::exception& error) {
    std::cerr << "trovi: " << shown(error.what()) << '\n';
    return 1;
  }
}
