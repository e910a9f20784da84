// What a synchroniser does with an inbox, on two pages and with the public headers only: it keeps
// the inboxes of several machines in step through a folder. README.md says what its user must know.
//
// A run can be killed at any time. Each compares anew what there is with what there should be; it
// remembers nothing but the machine's name, and a file appears complete or not at all.
#include <TroviCore/Coding.h>
#include <TroviCore/Store.h>

#include <cmath>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace trovi;
using std::filesystem::path;

constexpr const char* usage =
    "usage: synchroniser INBOX FOLDER\n"
    "Brings the inbox in the file INBOX up to date with the documents below FOLDER, and this\n"
    "machine's own documents there with the inbox.\n";

/// A message as one machine has it.
struct Document {
  Recado recado;
  double updatedAt;  ///< time of its state, seconds since 1970
};

/// What all machines have written: each only in its own folder, so that no file has two writers.
struct Folder {
  path own;                                ///< of this machine
  std::map<std::string, Document> mine{};  ///< the documents in it, by the message's id
  std::vector<Document> documents{};       ///< all, of all machines
  std::set<std::string> deleted{};         ///< the names of messages that any machine deleted
  std::set<std::string> known{};           ///< the names of those that another machine knows of
};

/// Whether a message is synchronised: its id fits into a file name, and it is neither being
/// transcribed nor failed, which concerns only the machine with the recording.
bool fits(const std::string& id) { return !id.empty() && id.size() <= 120; }
bool travels(const Recado& recado) {
  return fits(recado.id) && recado.status != RecadoStatus::transcrevendo &&
         recado.status != RecadoStatus::falhou;
}

/// The name of a message's files, in hexadecimal because an id may be any text.
std::string nameOf(const std::string& id) {
  std::ostringstream name;
  name << std::hex << std::setfill('0');
  for (const char c : id) name << std::setw(2) << unsigned{static_cast<unsigned char>(c)};
  return name.str();
}

void report(const char* what, const Recado& recado) {
  std::cout << what << ": " << recado.id << " " << recado.title << '\n';
}

void writeWhole(const path& file, const std::string& text) {
  const path draft = file.parent_path() / (newID() + ".tmp");
  std::ofstream out(draft, std::ios::binary);
  out << text;
  out.close();
  if (!out) throw std::runtime_error("cannot write " + draft.string());
  rename(draft, file);
}

/// The message as a JSON object, with its time as one more member.
std::string textOf(Document document) {
  document.recado.audioPath.reset();  // the recording stays here
  JSONObjectEncoder encoder;
  encoder.encodeNumber("updatedAt", document.updatedAt);
  encode(document.recado, encoder);
  return encoder.text();
}

/// Absent if the file is not what a machine writes.
std::optional<Document> documentIn(const path& file) {
  if (file.extension() != ".json") return {};
  std::ifstream in(file, std::ios::binary);
  try {
    const JSONObjectDecoder decoder(std::string(std::istreambuf_iterator<char>(in), {}));
    Document document{decode<Recado>(decoder), decoder.decodeNumber("updatedAt")};
    if (travels(document.recado) && nameOf(document.recado.id) == file.stem()) return document;
  } catch (const CodingError&) {
  }
  std::cerr << "not understood: " << file.string() << '\n';
  return {};
}

Folder read(const path& shared, const std::string& machine) {
  Folder folder{.own = shared / machine};
  create_directory(folder.own);
  for (const auto& place : std::filesystem::directory_iterator(shared)) {
    if (!place.is_directory()) continue;
    const bool isMine = place.path().filename() == machine;
    for (const auto& entry : std::filesystem::directory_iterator(place)) {
      const path& file = entry.path();
      if (file.extension() == ".deleted") {
        folder.deleted.insert(file.stem());
        if (!isMine) folder.known.insert(file.stem());
      } else if (const auto document = documentIn(file)) {
        folder.documents.push_back(*document);
        if (isMine) folder.mine.insert({document->recado.id, *document});
      } else if (isMine && file.extension() == ".tmp" && file.stem().string().size() == 36) {
        remove(file);  // the draft of a run that was killed
      }
    }
  }
  return folder;
}

/// Makes the deletions of every machine this machine's own. The store forgets one only when another
/// machine knows of it, so that it outlives the loss of this machine's folder.
void exchangeDeletions(TroviStore& store, Folder& folder) {
  for (const std::string& id : store.pendingDeletions(-1)) {
    if (!fits(id) || folder.known.contains(nameOf(id))) {
      store.clearDeletions({id});
    } else if (folder.deleted.insert(nameOf(id)).second) {
      std::cout << "deleted: " << id << '\n';
    }
  }
  for (const std::string& name : folder.deleted) {
    const path mark = folder.own / (name + ".deleted");
    if (!exists(mark)) writeWhole(mark, "");
    remove(folder.own / (name + ".json"));
  }
  for (const Recado& recado : store.recados({.limit = -1})) {
    if (!folder.deleted.contains(nameOf(recado.id))) continue;
    store.deleteRecado(recado.id);
    report("deleted", recado);
  }
}

/// Adds a message that is neither here nor deleted here, by one statement that carries its time:
/// whenever the program is killed, nothing looks newer than it is.
bool insert(Database& db, const Recado& recado, double updatedAt) {
  return db.run(
             R"(INSERT INTO recado(id, created_at, duration, transcript, title, destino_id, status,
    claimed_by, claimed_at, result, resolved_at, language, updated_at)
SELECT ?1, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ? WHERE NOT EXISTS
    (SELECT id FROM recado WHERE id = ?1 UNION SELECT id FROM recado_apagado WHERE id = ?1))",
             {SQLValue::text(recado.id), SQLValue::real(secondsSince1970(recado.createdAt)),
              SQLValue::real(recado.duration), SQLValue::text(recado.transcript),
              SQLValue::text(recado.title), SQLValue::from(recado.destinoID),
              SQLValue::text(std::string(rawValue(recado.status))),
              SQLValue::from(recado.claimedBy), SQLValue::from(recado.claimedAt),
              SQLValue::from(recado.result), SQLValue::from(recado.resolvedAt),
              SQLValue::from(recado.language), SQLValue::real(updatedAt)}) > 0;
}

/// What decides between two states of the same time, in the same way on every machine.
auto rank(const Recado& recado) {
  return std::tie(recado.status, recado.claimedBy, recado.claimedAt, recado.result,
                  recado.resolvedAt);
}

void takeOver(TroviStore& store, const Folder& folder) {
  for (const auto& [recado, updatedAt] : folder.documents) {
    if (folder.deleted.contains(nameOf(recado.id))) continue;
    const auto mine = folder.mine.find(recado.id);
    const bool wins = mine != folder.mine.end() && updatedAt == mine->second.updatedAt &&
                      rank(recado) > rank(mine->second.recado);
    if (insert(store.db(), recado, updatedAt)) report("received", recado);
    if (store.applyRemoteStatus(
            {.id = recado.id,
             .status = recado.status,
             .claimedBy = recado.claimedBy,
             .claimedAt = recado.claimedAt,
             .result = recado.result,
             .resolvedAt = recado.resolvedAt,
             .updatedAt = wins ? std::nextafter(updatedAt, HUGE_VAL) : updatedAt})) {
      report("updated", recado);
    }
  }
}

/// Marks what this machine's folder lacks, or has in another state: the folder may be new or lost,
/// and states came from other machines.
void markMissing(TroviStore& store, const Folder& folder) {
  for (const Row& row : store.db().query(
           "SELECT id, IFNULL(updated_at, created_at) AS time FROM recado WHERE dirty = 0")) {
    const auto mine = folder.mine.find(row.stringValue("id").value_or(""));
    if (mine != folder.mine.end() && mine->second.updatedAt == row.doubleValue("time")) continue;
    store.db().run("UPDATE recado SET dirty = 1 WHERE id = ? AND dirty = 0", {*row.find("id")});
  }
}

/// A message that changes meanwhile stays marked.
void writeChanges(TroviStore& store, const Folder& folder) {
  for (const auto& upload : store.pendingUploads(-1)) {
    if (!travels(upload.recado)) continue;
    writeWhole(folder.own / (nameOf(upload.recado.id) + ".json"),
               textOf({.recado = upload.recado, .updatedAt = upload.updatedAt}));
    store.markUploaded({upload});
    report("written", upload.recado);
  }
}

int run(const std::vector<std::string>& arguments) {
  if (arguments.size() != 2) {
    std::cerr << usage;
    return 2;
  }
  // The store would make a new inbox of what is none.
  if (!is_regular_file(path(arguments[0]))) throw std::runtime_error("no inbox: " + arguments[0]);
  Database(arguments[0]).query("SELECT id FROM recado LIMIT 0");
  TroviStore store(arguments[0]);
  store.db().run("INSERT OR IGNORE INTO meta(key, value) VALUES ('synchroniser.machine', ?)",
                 {SQLValue::text(newID())});
  Folder folder = read(arguments[1], store.meta("synchroniser.machine").value());
  exchangeDeletions(store, folder);
  takeOver(store, folder);
  markMissing(store, folder);
  writeChanges(store, folder);
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  try {
    return run({arguments + 1, arguments + count});
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
