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
#include <cerrno>
#include <csignal>
#include <cstddef>
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
using Words = std::vector<char*>;    // of the command line
using Failure = std::runtime_error;  // a sentence: what could not be done, and what to do
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
  file ID [DESTINO]        muda o destino do recado; sem DESTINO, tira
  reopen ID                volta o recado para pendente, e apaga o resultado e quem o pegou
  delete ID                apaga o recado e a gravação dele
  destinos                 lista os destinos com as suas instruções
  destino NOME INSTRUÇÃO   cria um destino, ou muda a instrução dele
  destino --delete NOME    apaga o destino; os recados dele ficam, sem destino
  counts                   conta os recados por status, e os deste mês
  --version, --help        mostra a versão, ou este texto
)";

struct Inbox : TroviStore {
  explicit Inbox(const path& file) : TroviStore(file), recordings(file.parent_path() / "Audio") {}
  std::vector<Row> rows(const std::string& sql, const std::string& text) {
    return db().query(sql, {SQLValue::text(text)});
  }
  path recordings;  ///< their folder, perhaps missing
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

/// A message in one line, and all of it.
constexpr const char* line = R"(SELECT printf('%s  %-13s  %s  %s  %s', substr(recado.id, 1, 8),
    status, strftime('%Y-%m-%d %H:%M', created_at, 'unixepoch', 'localtime'),
    IFNULL(name, '-'), title) FROM recado LEFT JOIN destino ON destino.id = destino_id WHERE )";
constexpr const char* everything = R"(SELECT 'id: ' || recado.id, 'status: ' || status,
    'gravado em: ' || datetime(created_at, 'unixepoch', 'localtime'),
    'duração: ' || round(duration, 1) || ' s', 'gravação: ' || audio_path, 'idioma: ' || language,
    'destino: ' || name, 'instrução: ' || instruction, 'pego por: ' || claimed_by,
    'pego em: ' || datetime(claimed_at, 'unixepoch', 'localtime'), 'resultado: ' || result,
    'resolvido em: ' || datetime(resolved_at, 'unixepoch', 'localtime'),
    'título: ' || title, 'transcrição: ' || transcript
FROM recado LEFT JOIN destino ON destino.id = destino_id WHERE recado.id = ?)";

void confirm(Inbox& inbox, const std::string& id) {
  print(inbox.rows(std::string(line) + "recado.id = ?", id), " ");
}

/// The message with this id, or the only one whose id begins so.
Recado found(Inbox& inbox, const std::string& id) {
  constexpr const char* beginning = R"(SELECT * FROM recado WHERE ?1 <> ''
    AND substr(id, 1, length(?1)) = ?1 COLLATE NOCASE ORDER BY id <> ?1, id LIMIT 10)";
  const auto rows = inbox.rows(beginning, id);
  std::string ids;
  for (const Row& row : rows) ids += " " + row.stringValue("id").value_or("");
  if (rows.empty())
    throw Failure("nenhum recado tem o id " + id + "; para ver os ids: trovi list todos");
  Recado recado = TroviStore::recadoFrom(rows[0]);
  if (rows.size() == 1 || recado.id == id) return recado;
  throw Failure("mais de um id começa com " + id + "; digite mais letras:" + ids);
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

enum : std::uint32_t { riff = 0x46464952, wave = 0x45564157, fmt = 0x20746D66, data = 0x61746164 };

/// The length of a WAV file in seconds, as far as the file goes; 0 for another.
double wavSeconds(const path& recording) {
  std::ifstream in(recording, std::ios::binary);
  const auto number = [&in] {  // four bytes, the lowest first; the names are read so too
    std::uint32_t value = 0;
    for (unsigned shift = 0; shift < 32; shift += 8)
      value |= std::uint32_t(in.get() & 0xFF) << shift;
    return value;
  };

  double bytesPerSecond = 0;
  if (number() != riff || (number(), number()) != wave) return 0;
  for (int chunk = 0; in && chunk < 100; ++chunk) {  // a hostile file has no end of them
    const std::uint32_t name = number();
    const std::uint32_t size = number();
    const std::streamoff start = in.tellg();
    if (name == fmt) bytesPerSecond = (number(), number(), number());
    if (name == data && bytesPerSecond > 0) {
      const auto left = static_cast<double>(in.seekg(0, std::ios::end).tellg() - start);
      return (size > 0 ? std::min<double>(size, left) : left) / bytesPerSecond;  // 0: a stream
    }
    in.seekg(start + size + size % 2);
  }
  return 0;
}

/// What a program prints on standard output, and what went wrong, if anything did.
std::pair<std::string, std::string> outputOf(Words command) {
  // Unlike a pipe, a file takes any amount, and nobody waits for a program left in the background.
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
  if (!file) return {"", "não começou: não há espaço para arquivos temporários"};
  fcntl(fileno(file.get()), F_SETFD, FD_CLOEXEC);
  command.push_back(nullptr);
  posix_spawn_file_actions_t actions{};
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fileno(file.get()), 1);
  // Our own input may be a loop's list of recordings, and is not for the program to read.
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  std::signal(SIGCHLD, SIG_DFL);  // if our caller ignores it, the status would be lost
  pid_t child = 0;
  int status = posix_spawnp(&child, command[0], &actions, nullptr, command.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (status != 0) return {"", "não existe ou não é um programa"};
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  struct statvfs disk {};  // few programs notice that it is full, and the text would be cut off
  const bool isFull = fstatvfs(fileno(file.get()), &disk) == 0 && disk.f_bavail == 0;
  if (isFull) return {"", "não terminou: não há espaço para arquivos temporários"};
  std::string output;
  std::rewind(file.get());
  for (int c = 0; (c = std::getc(file.get())) != EOF;) output += static_cast<char>(c);
  return {output, status == 0 ? "" : WIFSIGNALED(status) ? "foi interrompido" : "falhou"};
}

bool waitsForText(const Recado& recado) {
  return recado.status == transcrevendo || recado.status == falhou;
}

/// Has a program transcribe the recording of a message.
void again(Inbox& inbox, const Words& words) {
  const Recado recado = found(inbox, words[0]);
  const std::string& id = recado.id;
  const std::string program = words[1];
  std::string recording = recado.audioPath.value_or("");
  if (!waitsForText(recado)) {
    throw Failure("o recado " + id + " já tem texto; para ler: trovi show " + id);
  }
  if (!std::ifstream(recording)) throw Failure("falta a gravação de " + id + ": " + recording);
  inbox.setStatus(id, transcrevendo);
  const std::string retry = "trovi transcribe --again " + id + " " + program + " …";
  std::cerr << shown("transcrevendo " + id + "; a gravação está em " + recording +
                     "; se parar no meio: " + retry) +
                   "\n";
  Words command(words.begin() + 1, words.end());
  command.push_back(recording.data());
  auto [output, failure] = outputOf(command);
  const std::string text = cleaned(output);
  if (failure.empty() && text.empty()) failure = "não imprimiu nada";
  const std::string outcome =
      failure.empty() ? "; o texto era: " + text : "; " + program + " " + failure;
  try {  // it took long: the message may have changed, or the inbox be locked
    const Recado current = found(inbox, id);
    if (!waitsForText(current)) {
      throw Failure(id + " mudou enquanto isso e fica como está" + outcome);
    }
    if (!failure.empty()) {
      inbox.setStatus(id, falhou);
      throw Failure(program + " " + failure +
                    "; a gravação está guardada. Tente outra vez: " + retry);
    }
    const Recado draft = drafted(inbox, text);
    inbox.finishTranscription({.id = id,
                               .transcript = text,
                               .title = draft.title,
                               .destinoID = draft.destinoID ? draft.destinoID : current.destinoID,
                               .language = current.language});
  } catch (const DatabaseError& error) {
    throw Failure(error.what() + outcome + "; tente outra vez: " + retry);
  }
  confirm(inbox, id);
}

/// Copies a file, or a part of it, to a new one. Whether it is all of it, and not empty.
bool copied(const path& from, const path& to) {
  std::error_code unknown;
  if (!is_regular_file(from, unknown)) return false;  // a device may have no end
  std::ifstream in(from, std::ios::binary);
  std::ofstream out(to, std::ios::binary);
  out << in.rdbuf();  // does not report a full disk
  out.close();
  return out && in.peek() == EOF;
}

/// Copies a recording and files a message for it, to be transcribed.
void transcribe(Inbox& inbox, const Words& words) {
  const path recording = words[0];
  Recado recado = drafted(inbox, "");
  const std::string copy = inbox.recordings / (recado.id + shown(recording.extension().string()));
  if (shown(copy) != copy)
    throw Failure("o caminho da pasta das gravações tem caracteres que não dá para mostrar: " +
                  copy);
  std::unique_ptr<const char, int (*)(const char*)> orphan(copy.c_str(), std::remove);
  mkdir(inbox.recordings.c_str(), 0700);
  if (!copied(recording, copy)) {
    throw Failure("não consegui copiar " + recording.string() + " para " +
                  inbox.recordings.string() +
                  "; veja se é um arquivo que você pode ler, não vazio, e se há espaço");
  }
  recado.title = recording.filename().string();
  recado.status = transcrevendo;
  recado.audioPath = copy;
  recado.duration = wavSeconds(copy);
  inbox.insert(recado);
  static_cast<void>(orphan.release());
  Words filed = words;
  filed[0] = recado.id.data();
  again(inbox, filed);
}

void list(Inbox& inbox, const Words& words) {
  const std::string status = words.empty() ? "" : words[0];
  const bool isStatus = status == "todos" || fromRawValue(status);
  if (!words.empty() && !isStatus) throw WrongUse{};
  const char* condition = isStatus ? "?1 IN (status, 'todos')" : "status IS NOT 'resolvido'";
  print(inbox.rows(std::string(line) + condition + " ORDER BY created_at DESC", status), " ");
}

void show(Inbox& inbox, const Words& words) {
  print(inbox.rows(everything, found(inbox, words[0]).id), "\n    ");
}

void file(Inbox& inbox, const Words& words) {
  Recado recado = found(inbox, words[0]);
  recado.destinoID.reset();
  if (words.size() > 1) recado.destinoID = foundDestino(inbox, words[1]).id;
  inbox.setDestino({.id = recado.id, .destinoID = recado.destinoID});
  confirm(inbox, recado.id);
}

void reopen(Inbox& inbox, const Words& words) {
  const std::string id = found(inbox, words[0]).id;
  inbox.reopen(id);
  confirm(inbox, id);
}

void deleteRecado(Inbox& inbox, const Words& words) {
  const Recado recado = found(inbox, words[0]);
  const std::string recording = recado.audioPath.value_or("");
  try {
    inbox.deleteRecado(recado.id);  // the recording first
  } catch (const DatabaseError& error) {
    throw Failure(error.what() +
                  std::string("; apague de novo, porque a gravação pode já ter sido apagada"));
  }
  std::cout << shown("apagado: " + recado.title + "  " + recording) << '\n';
  if (std::ifstream(recording))
    throw Failure("não consegui apagar a gravação; apague à mão: " + recording);
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
  const Destino destino = foundDestino(inbox, words[0]);
  const auto filed = inbox.recados({.destinoID = destino.id}).size();
  inbox.deleteDestino(destino.id);
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
  if (words.size() > 1 && words[0] == std::string_view("--inbox") && *words[1] != '\0') {
    file = std::filesystem::absolute(words[1]);
    words.erase(words.begin(), words.begin() + 2);
  }
  if (words.empty()) throw WrongUse{};
  std::string name = words[0];
  words.erase(words.begin());
  std::string option;
  if (!words.empty() && std::string_view(words[0]).starts_with("--")) {
    option = words[0];
    words.erase(words.begin());
  }
  if (!option.empty() && option != "--") name += " " + option;  // "--" ends the options
  if (name == "--version") return void(std::cout << "trovi " TROVI_VERSION "\n");
  if (name == "--help" || option == "--help") return void(std::cout << usage);
  const auto verb = std::find_if(std::begin(verbs), std::end(verbs), [&](const Verb& each) {
    return name == each.name && words.size() >= each.least && words.size() <= each.most;
  });
  if (verb == std::end(verbs)) throw WrongUse{};
  Inbox inbox(file.empty() ? TroviPaths::databaseURL() : file);
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
