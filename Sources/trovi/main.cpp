// The inbox in a person's hands, on the library's public headers alone: from a note, typed or
// spoken, to what an assistant made of it. Each verb is a function in the table near the end.
#include <TroviCore/Paths.h>
#include <TroviCore/Store.h>
#include <TroviCore/Text.h>
#include <TroviCore/Version.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// No header of POSIX declares it. NOLINTNEXTLINE(readability-redundant-declaration)
extern char** environ;

namespace {

using namespace trovi;
using enum RecadoStatus;
using std::filesystem::path;
using Words = std::vector<std::string>;  // of the command line
using Failure = std::runtime_error;      // a sentence: what could not be done, and what to do
struct WrongUse {};

constexpr const char* usage = R"(uso: trovi [--inbox ARQUIVO] seguido de um destes:
  note [TEXTO]             guarda um recado; sem TEXTO, lê a entrada padrão
  transcribe GRAVAÇÃO COMANDO [ARGUMENTO…]
                           guarda a gravação, com o texto que COMANDO [ARGUMENTO…] GRAVAÇÃO imprime
  transcribe --again ID COMANDO [ARGUMENTO…]
                           o mesmo para um recado cuja transcrição falhou ou parou no meio
  list [STATUS]            lista os recados, o mais novo primeiro, sem os resolvidos; STATUS:
                           transcrevendo, pendente, pego, resolvido, falhou ou todos
  show ID                  mostra tudo de um recado; de um ID basta o começo
  file ID [DESTINO]        muda o destino do recado; sem DESTINO, tira o destino
  reopen ID                deixa o recado pendente de novo, e apaga o resultado e quem o pegou
  delete ID                apaga o recado e a gravação dele
  destinos                 lista os destinos com as suas instruções
  destino NOME INSTRUÇÃO   cria um destino, ou muda a instrução dele
  destino --delete NOME    apaga o destino; os recados dele ficam, sem destino
  counts                   conta os recados por status, e os deste mês
  --version, --help        mostra a versão, ou este texto
)";

struct Inbox : TroviStore {
  explicit Inbox(const path& file) : TroviStore(file), recordings(file.parent_path() / "Audio") {}
  /// What follows happens at once with `commit`, or not at all if an exception ends the program.
  void begin() { db().execute("BEGIN IMMEDIATE;"); }
  void commit() { db().execute("COMMIT;"); }
  std::vector<Row> rows(const std::string& sql, const std::string& text) {
    return db().query(sql, {SQLValue::text(text)});
  }
  path recordings;                ///< their folder, perhaps missing
  std::string command = "trovi";  ///< with the option that names this inbox
};

/// `text` as a terminal may get it: valid UTF-8, with a blank for each control character.
std::string shown(std::string_view text, std::string_view lineBreak = " ") {
  std::string shown;
  for (const char c : TroviText::trimmed(text)) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isC1 = shown.ends_with('\xC2') && byte < 0xA0;
    if (isC1) shown.pop_back();
    const bool isControl = byte < 0x20 || byte == 0x7F || isC1;
    shown += c == '\n' ? lineBreak : std::string_view(isControl ? " " : &c, 1);
  }
  return shown;
}

/// Prints the texts in the rows, each in a line.
void print(const std::vector<Row>& rows, std::string_view lineBreak) {
  for (const Row& row : rows) {
    for (const auto& [name, value] : row.columns()) {
      if (value->asText() != nullptr) std::cout << shown(*value->asText(), lineBreak) << '\n';
    }
  }
  if (rows.empty()) std::cerr << "nada para listar\n";
}

/// Prints a line for each message that meets a condition, which may name `text` as ?1.
void printLines(Inbox& inbox, const std::string& condition, const std::string& text) {
  constexpr const char* lines = R"(SELECT printf('%s  %-13s  %s  %s  %s', substr(recado.id, 1, 8),
      status, strftime('%Y-%m-%d %H:%M', created_at, 'unixepoch', 'localtime'),
      IFNULL(name, '-'), title) FROM recado LEFT JOIN destino ON destino.id = destino_id WHERE )";
  print(inbox.rows(lines + condition, text), " ");
}

void confirm(Inbox& inbox, const std::string& id) { printLines(inbox, "recado.id = ?1", id); }

/// The message with this id, or the only one whose id begins so.
Recado found(Inbox& inbox, const std::string& id) {
  constexpr const char* beginning = R"(SELECT id FROM recado WHERE ?1 <> ''
      AND substr(id, 1, length(?1)) = ?1 COLLATE NOCASE ORDER BY id <> ?1, id)";
  const auto rows = inbox.rows(beginning, id);
  if (rows.empty())
    throw Failure("nenhum recado tem o id \"" + id + "\"; para ver os ids: trovi list todos");
  const std::string first = rows[0].stringValue("id").value_or("");
  std::string ids;
  for (const Row& row : rows) ids += " " + row.stringValue("id").value_or("");
  if (rows.size() > 1 && first != id)
    throw Failure("mais de um id começa com " + id + "; digite mais caracteres:" + ids);
  if (auto recado = inbox.recado(first)) return *std::move(recado);
  throw Failure("o id " + first + " está danificado no banco");
}

Destino foundDestino(Inbox& inbox, const std::string& name) {
  if (auto destino = inbox.destinoNamed(name)) return *std::move(destino);
  std::string names;
  for (const Destino& destino : inbox.destinos()) names += " \"" + destino.name + "\"";
  throw Failure("não há destino \"" + name + "\"; os que existem:" + names);
}

/// `text` without white space around it. A NUL, which would end it in the store, becomes a blank.
std::string cleaned(std::string text) {
  std::replace(text.begin(), text.end(), '\0', ' ');
  return TroviText::trimmed(text);
}

/// A new message, not yet in the inbox.
Recado drafted(const Inbox& inbox, const std::string& text) {
  const auto destino = TroviText::destinoMentioned(text, inbox.destinos());
  const auto destinoID = destino ? std::optional(destino->id) : std::nullopt;
  return {newID(), now(), 0, {}, text, TroviText::titleFrom(text), destinoID, pendente};
}

void note(Inbox& inbox, const Words& words) {
  using Input = std::istreambuf_iterator<char>;
  const std::string text = words.empty() ? std::string(Input(std::cin), {}) : words[0];
  const Recado recado = drafted(inbox, cleaned(text));
  if (recado.transcript.empty()) throw Failure("o recado está vazio, e nada foi guardado");
  inbox.insert(recado);
  confirm(inbox, recado.id);
}

/// The length of a WAV file in seconds, as far as the file goes; 0 for another.
double wavSeconds(const path& recording) {
  const std::uint64_t bytes = file_size(recording);
  std::string start(std::min<std::uint64_t>(bytes, 1 << 20), '\0');  // precedes the sound
  std::ifstream(recording, std::ios::binary).read(start.data(), std::ssize(start));
  if (!start.starts_with("RIFF") || start.find("WAVE", 8) != 8) return 0;
  const auto number = [&start](std::uint64_t at) {  // four bytes, the lowest first
    std::uint64_t value = 0;
    for (auto i = at + 4; i-- > at;) value = value << 8 | static_cast<unsigned char>(start[i]);
    return value;
  };
  double bytesPerSecond = 0;
  std::uint64_t size = 0;  // of the chunk that starts `at`
  for (std::uint64_t at = 12; at + 20 <= start.size(); at += 8 + size + size % 2) {
    size = number(at + 4);
    if (start.compare(at, 4, "fmt ") == 0) bytesPerSecond = static_cast<double>(number(at + 16));
    if (start.compare(at, 4, "data") == 0 && bytesPerSecond > 0) {
      const std::uint64_t left = bytes - at - 8;  // a stream has size 0, or an absurd one
      return static_cast<double>(size > 0 ? std::min(size, left) : left) / bytesPerSecond;
    }
  }
  return 0;
}

/// The text that a program prints on standard output, and what went wrong, if anything did.
std::pair<std::string, std::string> textFrom(Words command) {
  // Unlike a pipe, a file takes any amount, and nobody waits for a program left in the background.
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
  if (!file) return {"", "não começou: não consegui criar um arquivo temporário"};
  std::vector<char*> arguments;
  for (std::string& word : command) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions{};
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fileno(file.get()), 1);
  // Our own input may be a loop's list of recordings, and is not for the program to read.
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  std::signal(SIGCHLD, SIG_DFL);  // if our caller ignores it, the status would be lost
  pid_t child = 0;
  int status = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (status != 0) return {"", "não existe ou não é um programa"};
  waitpid(child, &status, 0);
  struct statvfs disk {};  // few programs notice that it is full, and the text would be cut off
  const bool isFull = fstatvfs(fileno(file.get()), &disk) == 0 && disk.f_bavail == 0;
  if (isFull) return {"", "não terminou: não há espaço para arquivos temporários"};
  if (status != 0) return {"", WIFSIGNALED(status) ? "parou de repente" : "falhou"};
  std::string output;
  std::rewind(file.get());
  for (int c = 0; (c = std::getc(file.get())) != EOF;) output += static_cast<char>(c);
  const std::string text = cleaned(output);
  return {text, text.empty() ? "não imprimiu nada" : ""};
}

bool waitsForText(const Recado& recado) {
  return recado.status == transcrevendo || recado.status == falhou;
}

/// Has a program transcribe the recording of a message.
void recognise(Inbox& inbox, const Recado& recado, Words command) {
  const std::string& id = recado.id;
  const std::string program = command[0];
  const std::string recording = recado.audioPath.value_or("");
  const std::string retry = inbox.command + " transcribe --again " + id + " " + program + " …";
  std::cerr << shown("transcrevendo " + id + "; a gravação está em " + recording +
                     "; se parar no meio: " + retry)
            << '\n';
  command.push_back(recording);
  const auto [text, failure] = textFrom(std::move(command));
  const std::string outcome = failure.empty() ? "o texto era: " + text : program + " " + failure;
  try {  // it took long: the message may have changed, or the inbox be locked
    inbox.begin();
    const auto current = inbox.recado(id);
    if (!current || !waitsForText(*current))
      throw Failure(id + " mudou enquanto isso e fica como está; " + outcome);
    if (failure.empty()) {
      const Recado draft = drafted(inbox, text);
      const auto destinoID = draft.destinoID ? draft.destinoID : current->destinoID;
      inbox.finishTranscription({id, text, draft.title, destinoID, current->language});
    } else {
      inbox.setStatus(id, falhou);
    }
    inbox.commit();
  } catch (const DatabaseError& error) {
    throw Failure(error.what() + ("; " + outcome) + "; tente outra vez: " + retry);
  }
  if (!failure.empty())
    throw Failure(outcome + "; a gravação está guardada. Tente outra vez: " + retry);
  confirm(inbox, id);
}

void again(Inbox& inbox, const Words& words) {
  inbox.begin();
  const Recado recado = found(inbox, words[0]);
  if (!waitsForText(recado))
    throw Failure("o recado " + recado.id + " já tem texto; para ler: trovi show " + recado.id);
  const path recording = recado.audioPath.value_or("");
  std::error_code error;
  if (!is_regular_file(recording, error))
    throw Failure("falta a gravação de " + recado.id + ": " + recording.string());
  inbox.setStatus(recado.id, transcrevendo);
  inbox.commit();
  recognise(inbox, recado, {words.begin() + 1, words.end()});
}

/// Whether `to` is now a copy of a recording, whole and not empty. The umask keeps it private.
bool copied(const path& from, const path& to) {
  std::error_code error;
  if (!is_regular_file(from, error)) return false;  // a device may have no end
  std::ofstream(to, std::ios::binary) << std::ifstream(from, std::ios::binary).rdbuf();
  const auto size = file_size(to, error);  // a full disk shows here alone
  return !error && size > 0 && size == file_size(from, error);
}

/// Copies a recording and files a message for it, to be transcribed.
void transcribe(Inbox& inbox, const Words& words) {
  const path recording = words[0];
  Recado recado = drafted(inbox, "");
  const path copy = inbox.recordings / (recado.id + shown(recording.extension().string()));
  recado.title = recording.filename().string();
  recado.status = transcrevendo;
  recado.audioPath = copy.string();
  try {
    std::error_code error;
    create_directory(inbox.recordings, error);
    if (!copied(recording, copy) || shown(copy.string()) != copy)  // or no message can name it
      throw Failure("não consegui copiar " + words[0] + " para " + inbox.recordings.string() +
                    "; veja se é um arquivo que você pode ler, não vazio, e se há espaço");
    recado.duration = wavSeconds(copy);
    inbox.insert(recado);
  } catch (...) {
    std::remove(copy.c_str());
    throw;
  }
  recognise(inbox, recado, {words.begin() + 1, words.end()});
}

void list(Inbox& inbox, const Words& words) {
  if (!words.empty() && words[0] != "todos" && !fromRawValue(words[0])) throw WrongUse{};
  constexpr const char* some = R"((?1 IN (status, 'todos') OR ?1 = '' AND status IS NOT 'resolvido')
      ORDER BY created_at DESC)";
  printLines(inbox, some, words.empty() ? "" : words[0]);
}

void show(Inbox& inbox, const Words& words) {
  constexpr const char* everything = R"(SELECT 'id: ' || recado.id, 'status: ' || status,
      'gravado em: ' || datetime(created_at, 'unixepoch', 'localtime'),
      'duração: ' || round(duration, 1) || ' s', 'gravação: ' || audio_path,
      'idioma: ' || language, 'destino: ' || name, 'instrução: ' || instruction,
      'pego por: ' || claimed_by, 'pego em: ' || datetime(claimed_at, 'unixepoch', 'localtime'),
      'resultado: ' || result, 'resolvido em: ' || datetime(resolved_at, 'unixepoch', 'localtime'),
      'título: ' || title, 'transcrição: ' || transcript
      FROM recado LEFT JOIN destino ON destino.id = destino_id WHERE recado.id = ?)";
  print(inbox.rows(everything, found(inbox, words[0]).id), "\n    ");
}

void file(Inbox& inbox, const Words& words) {
  const std::string id = found(inbox, words[0]).id;
  std::optional<std::string> destinoID;
  if (words.size() > 1) destinoID = foundDestino(inbox, words[1]).id;
  inbox.setDestino({id, destinoID});
  confirm(inbox, id);
}

void reopen(Inbox& inbox, const Words& words) {
  const std::string id = found(inbox, words[0]).id;
  inbox.reopen(id);
  confirm(inbox, id);
}

void deleteRecado(Inbox& inbox, const Words& words) {
  inbox.begin();  // or a locked inbox would keep the message without its recording
  const Recado recado = found(inbox, words[0]);
  const path recording = recado.audioPath.value_or("");
  inbox.deleteRecado(recado.id);
  inbox.commit();
  std::cout << shown("apagado: " + recado.title + "  " + recording.string()) << '\n';
  std::error_code error;
  if (exists(recording, error) || error)
    throw Failure("não consegui apagar a gravação; apague à mão: " + recording.string());
}

void destinos(Inbox& inbox, const Words& /*none*/) {
  constexpr const char* all = "SELECT name || ': ' || instruction FROM destino ORDER BY sort, name";
  print(inbox.rows(all, ""), "\n    ");
}

void destino(Inbox& inbox, const Words& words) {
  const std::string name = cleaned(words[0]);  // a blank at its end would hide it
  if (name.empty()) throw Failure("o destino precisa de um nome");
  const auto others = inbox.destinos();
  const auto sort = others.empty() ? 0 : std::min(others.back().sort, INT64_MAX - 1) + 1;
  auto destino = inbox.destinoNamed(name).value_or(Destino{newID(), name, "", "#FF6A1C", sort});
  destino.instruction = words[1];
  inbox.saveDestino(destino);
  std::cout << shown(destino.name + ": " + destino.instruction, "\n    ") << '\n';
}

void deleteDestino(Inbox& inbox, const Words& words) {
  inbox.begin();
  const Destino destino = foundDestino(inbox, words[0]);
  const auto filed = inbox.recados({.destinoID = destino.id}).size();
  inbox.deleteDestino(destino.id);
  inbox.commit();
  std::cout << shown("apagado: " + destino.name) << "; recados agora sem destino: " << filed
            << '\n';
}

void counts(Inbox& inbox, const Words& /*none*/) {
  auto counts = inbox.counts();
  for (const RecadoStatus status : allCases())
    std::cout << rawValue(status) << ": " << counts[status] << '\n';
  std::cout << "neste mês: " << inbox.countThisMonth() << '\n';
}

struct Verb {
  std::string_view name;
  std::size_t least, most;  ///< words after it
  void (*perform)(Inbox&, const Words&);
};
constexpr std::size_t any = SIZE_MAX;
constexpr Verb verbs[] = {
    {"note", 0, 1, note},
    {"transcribe", 2, any, transcribe},
    {"transcribe --again", 2, any, again},
    {"list", 0, 1, list},
    {"show", 1, 1, show},
    {"file", 1, 2, file},
    {"reopen", 1, 1, reopen},
    {"delete", 1, 1, deleteRecado},
    {"destinos", 0, 0, destinos},
    {"destino", 2, 2, destino},
    {"destino --delete", 1, 1, deleteDestino},
    {"counts", 0, 0, counts},
};

void run(Words words) {
  path file;
  if (words.size() > 1 && words[0] == "--inbox" && !words[1].empty()) {
    file = std::filesystem::absolute(words[1]);
    words.erase(words.begin(), words.begin() + 2);
  }
  if (words.empty()) throw WrongUse{};
  std::string name = words[0];
  words.erase(words.begin());
  while (!words.empty() && words[0].starts_with("--")) {
    const std::string option = words[0];
    words.erase(words.begin());
    if (option == "--") break;  // the end of the options
    name += " " + option;
  }
  if (name == "--version") return void(std::cout << "trovi " TROVI_VERSION "\n");
  if (name == "--help") return void(std::cout << usage);
  const auto verb = std::find_if(std::begin(verbs), std::end(verbs), [&](const Verb& each) {
    return name == each.name && words.size() >= each.least && words.size() <= each.most;
  });
  if (verb == std::end(verbs)) throw WrongUse{};
  Inbox inbox(file.empty() ? TroviPaths::databaseURL() : file);
  if (!file.empty()) inbox.command += " --inbox " + file.string();
  verb->perform(inbox, words);
}

}  // namespace

int main(int count, char** arguments) {
  umask(077);  // what is made from a recording is private, too
  try {
    run({arguments + std::min(count, 1), arguments + count});
    if (!std::cout.flush()) throw Failure("feito, mas não consegui escrever na saída padrão");
    return 0;
  } catch (const WrongUse&) {
    std::cerr << usage;
    return 2;
  } catch (const std::exception& error) {
    std::cerr << "trovi: " + shown(error.what()) + "\n";
    return 1;
  }
}
