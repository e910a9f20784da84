// What a synchroniser does with an inbox, on two pages and with the public headers only. It keeps
// the inbox in step with a folder of JSON documents, one per message, which any file synchroniser
// can carry to another machine. The newer state of a message wins, and a deletion is final. Later
// changes of content stay on their machine, as recordings and destinations do.
//
// It can be killed at any time and run again: a file appears complete or not at all, and a change
// is marked as uploaded only when its file is there.
#include <TroviCore/Coding.h>
#include <TroviCore/Store.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <locale>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace trovi;
using std::filesystem::path;

constexpr const char* usage =
    "uso: synchroniser CAIXA PASTA\n"
    "Deixa a caixa de recados no arquivo CAIXA em dia com os documentos da PASTA, e a PASTA com "
    "ela.\n";

/// A message as stored in the folder.
struct Document {
  Recado recado;
  double updatedAt;  ///< time of its state, seconds since 1970
};

/// Whether the id is short enough for a file name.
bool fits(const std::string& id) { return id.size() <= 120; }

/// Whether a message is synchronised. One that is being transcribed, or failed, concerns only the
/// machine with the recording.
bool travels(const Recado& recado) {
  return fits(recado.id) && recado.status != RecadoStatus::transcrevendo &&
         recado.status != RecadoStatus::falhou;
}

/// The name of a message's file, in hexadecimal because an id may be any text.
std::string nameOf(const std::string& id) {
  std::ostringstream name;
  name << std::hex << std::setfill('0');
  for (const char c : id) name << std::setw(2) << unsigned{static_cast<unsigned char>(c)};
  return name.str();
}

void tell(const char* what, const Recado& recado) {
  std::cout << what << ": " << recado.id << " " << recado.title << '\n';
}

std::string contentOf(const path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

void writeWhole(const path& file, const std::string& text) {
  const path draft = file.parent_path() / (newID() + ".tmp");
  std::ofstream out(draft, std::ios::binary);
  out << text;
  out.close();
  if (!out) throw std::runtime_error("não escrevi " + draft.string());
  rename(draft, file);
}

constexpr std::string_view timeKey = R"({"updatedAt":)";

/// The message's JSON with the time as its first member.
std::string textOf(const Document& document) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << timeKey << std::setprecision(17) << document.updatedAt << ','
       << toJSON(document.recado).substr(1);
  return text.str();
}

/// Absent if the file is missing or invalid.
std::optional<Document> documentIn(const path& file) {
  const std::string text = contentOf(file);
  if (text.empty()) return {};
  try {
    Document document{.recado = fromJSON<Recado>(text), .updatedAt = 0};
    std::istringstream time(text.substr(timeKey.size()));
    time.imbue(std::locale::classic());
    if (text.starts_with(timeKey) && time >> document.updatedAt) {
      document.recado.audioPath.reset();  // it is on another machine
      return document;
    }
  } catch (const CodingError&) {
  }
  std::cerr << "não entendi " << file.filename().string() << '\n';
  return {};
}

void takeOver(TroviStore& store, const Document& document) {
  const auto& [remote, updatedAt] = document;
  if (!travels(remote)) return;
  if (!store.recado(remote.id)) {
    // One transaction, or a killed program could leave a message that looks new.
    store.db().execute("BEGIN IMMEDIATE");
    store.insert(remote);
    store.db().run("UPDATE recado SET updated_at = ?, dirty = 0 WHERE id = ?",
                   {SQLValue::from(updatedAt), SQLValue::from(remote.id)});
    store.db().execute("COMMIT");
    tell("recebido", remote);
  } else if (store.applyRemoteStatus({.id = remote.id,
                                      .status = remote.status,
                                      .claimedBy = remote.claimedBy,
                                      .claimedAt = remote.claimedAt,
                                      .result = remote.result,
                                      .resolvedAt = remote.resolvedAt,
                                      .updatedAt = updatedAt})) {
    tell("atualizado", remote);
  }
}

void deleteHere(TroviStore& store, const std::string& id) {
  const auto local = store.recado(id);
  if (!local) return;
  store.deleteRecado(id);
  store.clearDeletions({id});  // the deletion came from the folder
  tell("apagado", *local);
}

void takeOver(TroviStore& store, const path& folder) {
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const path& file = entry.path();
    if (file.extension() == ".deleted") {
      deleteHere(store, contentOf(file));
    } else if (file.extension() == ".json" && !exists(path(file).replace_extension(".deleted"))) {
      if (const auto document = documentIn(file)) takeOver(store, *document);
    }
  }
}

/// Runs before `takeOver`, or messages that were deleted here would come back.
void uploadDeletions(TroviStore& store, const path& folder) {
  for (const std::string& id : store.pendingDeletions(-1)) {
    if (fits(id)) {
      writeWhole(folder / (nameOf(id) + ".deleted"), id);
      remove(folder / (nameOf(id) + ".json"));
      std::cout << "apagado na pasta: " << id << '\n';
    }
    store.clearDeletions({id});
  }
}

/// A message stays marked if it changes meanwhile or the folder has a newer state of it.
void uploadChanges(TroviStore& store, const path& folder) {
  for (auto& upload : store.pendingUploads(-1)) {
    if (!travels(upload.recado)) continue;
    const path file = folder / (nameOf(upload.recado.id) + ".json");
    const auto known = documentIn(file);
    if (known && known->updatedAt > upload.updatedAt) continue;
    writeWhole(file, textOf({.recado = upload.recado, .updatedAt = upload.updatedAt}));
    store.markUploaded({upload});
    tell("enviado", upload.recado);
  }
}

int run(const std::vector<std::string>& arguments) {
  if (arguments.size() != 2) {
    std::cerr << usage;
    return 2;
  }
  TroviStore store(arguments[0]);
  const path folder = std::filesystem::canonical(arguments[1]);
  // Remembers the last folder: any other one does not know this inbox yet.
  const std::string place = "synchroniser.folder";
  if (store.meta(place) != folder.string()) {
    store.markAllForUpload();
    store.setMeta(place, folder.string());
  }
  uploadDeletions(store, folder);
  takeOver(store, folder);
  uploadChanges(store, folder);
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
