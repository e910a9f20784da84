// The schema of the database file. The recording application opens the same file, and old files are
// still in use: no text here ever changes.
#include <array>
#include <set>

#include "PrivateFile.h"
#include "TroviCore/Store.h"

namespace trovi {
namespace {

constexpr const char* baseSchema =
    R"(CREATE TABLE IF NOT EXISTS destino (
    id TEXT PRIMARY KEY,
    name TEXT NOT NULL,
    instruction TEXT NOT NULL DEFAULT '',
    color TEXT NOT NULL DEFAULT '#FF6A1C',
    sort INTEGER NOT NULL DEFAULT 0
);
CREATE TABLE IF NOT EXISTS recado (
    id TEXT PRIMARY KEY,
    created_at REAL NOT NULL,
    duration REAL NOT NULL DEFAULT 0,
    audio_path TEXT,
    transcript TEXT NOT NULL DEFAULT '',
    title TEXT NOT NULL DEFAULT '',
    destino_id TEXT,
    status TEXT NOT NULL,
    claimed_by TEXT,
    claimed_at REAL,
    result TEXT,
    resolved_at REAL,
    language TEXT
);
CREATE INDEX IF NOT EXISTS recado_status_idx ON recado(status, created_at);
CREATE TABLE IF NOT EXISTS meta (key TEXT PRIMARY KEY, value TEXT);)";

constexpr const char* syncSchema =
    R"(CREATE TABLE IF NOT EXISTS recado_apagado (id TEXT PRIMARY KEY, deleted_at REAL NOT NULL);
CREATE TRIGGER IF NOT EXISTS recado_sync_insert AFTER INSERT ON recado
BEGIN
    UPDATE recado SET updated_at = COALESCE(NEW.updated_at, (julianday('now') - 2440587.5) * 86400.0),
                      dirty = NEW.dirty + 1
    WHERE id = NEW.id;
    DELETE FROM recado_apagado WHERE id = NEW.id;
END;
CREATE TRIGGER IF NOT EXISTS recado_sync_status AFTER UPDATE OF status, claimed_by, claimed_at, result, resolved_at ON recado
WHEN NEW.updated_at IS OLD.updated_at
BEGIN
    UPDATE recado SET updated_at = (julianday('now') - 2440587.5) * 86400.0, dirty = OLD.dirty + 1
    WHERE id = NEW.id;
END;
CREATE TRIGGER IF NOT EXISTS recado_sync_content AFTER UPDATE OF title, transcript, destino_id, language ON recado
WHEN NEW.dirty IS OLD.dirty
BEGIN
    UPDATE recado SET dirty = OLD.dirty + 1 WHERE id = NEW.id;
END;
CREATE TRIGGER IF NOT EXISTS recado_sync_delete AFTER DELETE ON recado
BEGIN
    INSERT OR REPLACE INTO recado_apagado(id, deleted_at)
    VALUES (OLD.id, (julianday('now') - 2440587.5) * 86400.0);
END;)";

struct Seed {
  const char* name;
  const char* color;
  const char* instruction;
};

constexpr std::array seeds{
    Seed{"Ideias soltas", "#F5788B",
         "Organize a ideia em tópicos claros, aponte o que está em aberto e sugira os próximos "
         "passos."},
    Seed{"Corvane", "#FF6A1C",
         "Transforme em uma issue: título curto, contexto, o que fazer e critérios de aceite."},
    Seed{
        "Roadmap", "#FFAE56",
        "Rascunhe um PRD curto: problema, proposta, escopo, fora de escopo e perguntas em aberto."},
};

/// Ignores a failure: another process may have added the column after we looked. If the column is
/// missing for any other reason, a later statement fails.
void addColumn(Database& db, const char* statement) {
  try {
    db.execute(statement);
  } catch (const DatabaseError&) {
  }
}

struct TemporaryFile {
  ~TemporaryFile() {
    std::error_code leftBehind;
    std::filesystem::remove(path, leftBehind);
  }
  std::filesystem::path path;
};

}  // namespace

TroviStore::TroviStore(const std::filesystem::path& path) : db_(made(path)) { migrate(); }

TroviStore::TroviStore(const std::filesystem::path& path, Database::Draft draft)
    : db_(path, draft) {
  migrate();
  db_.execute("PRAGMA journal_mode=WAL;");
}

/// If nothing is at `path`, creates a complete inbox there, in write-ahead log mode; others see it
/// complete or not at all. If several programs do so, the first one wins. If the log of a deleted
/// inbox is left, does nothing: SQLite would apply that log to the new file, but discards it if
/// there is no file beside it. Failures are reported when the file is opened.
const std::filesystem::path& TroviStore::made(const std::filesystem::path& path) {
  const std::string place = path.c_str();
  for (const char* part : {"", "-wal", "-journal"}) {
    std::error_code unknown;
    const auto status = std::filesystem::symlink_status(place + part, unknown);
    if (status.type() != std::filesystem::file_type::not_found) return path;
  }
  const TemporaryFile draft{place + ".draft-" + newID()};
  try {
    { const TroviStore whole(draft.path, Database::Draft()); }  // and closed again
    platform::publish(draft.path, place);
  } catch (const DatabaseError&) {
  }
  return path;
}

void TroviStore::migrate() {
  db_.execute(baseSchema);
  migrateSync();
  if (!db_.query("SELECT value FROM meta WHERE key = 'seeded'").empty()) return;
  std::int64_t sort = 0;
  for (const Seed& seed : seeds) {
    saveDestino({.id = newID(),
                 .name = seed.name,
                 .instruction = seed.instruction,
                 .colorHex = seed.color,
                 .sort = sort++});
  }
  db_.run("INSERT OR REPLACE INTO meta(key, value) VALUES ('seeded', '1')");
}

void TroviStore::migrateSync() {
  std::set<std::string> columns;
  for (Row& row : db_.query("PRAGMA table_info(recado)")) {
    if (auto name = row.stringValue("name")) columns.insert(*std::move(name));
  }
  if (!columns.contains("updated_at")) {
    addColumn(db_, "ALTER TABLE recado ADD COLUMN updated_at REAL;");
    db_.execute(
        "UPDATE recado SET updated_at = COALESCE(updated_at, resolved_at, claimed_at, "
        "created_at);");
  }
  if (!columns.contains("dirty")) {
    addColumn(db_, "ALTER TABLE recado ADD COLUMN dirty INTEGER NOT NULL DEFAULT 1;");
  }
  db_.execute(syncSchema);
}

}  // namespace trovi
