// The schema of the database file. The recording application opens the same file, and old files are
// still in use: no text here ever changes under its name.
#include <array>
#include <set>

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

void ignoringFailure(Database& db, const char* statement) {
  try {
    db.execute(statement);
  } catch (const DatabaseError&) {
  }
}

/// Runs `work` with one commit, so that a program that is killed leaves either all of it or
/// nothing. After a failure, what succeeded before stays, unless SQLite itself has rolled back.
template <class Work>
void inOneCommit(Database& db, const Work& work) {
  db.execute("BEGIN;");
  try {
    work();
  } catch (...) {
    ignoringFailure(db, "COMMIT;");  // keeps what succeeded; the first failure is the one to report
    throw;
  }
  db.execute("COMMIT;");
}

}  // namespace

void TroviStore::migrate() {
  db_.execute(baseSchema);
  migrateSync();
  if (!db_.query("SELECT value FROM meta WHERE key = 'seeded'").empty()) return;
  inOneCommit(db_, [this] {
    std::int64_t sort = 0;
    for (const Seed& seed : seeds) {
      saveDestino({.id = newID(),
                   .name = seed.name,
                   .instruction = seed.instruction,
                   .colorHex = seed.color,
                   .sort = sort++});
    }
    db_.run("INSERT OR REPLACE INTO meta(key, value) VALUES ('seeded', '1')");
  });
}

void TroviStore::migrateSync() {
  std::set<std::string> columns;
  for (Row& row : db_.query("PRAGMA table_info(recado)")) {
    if (auto name = row.stringValue("name")) columns.insert(*std::move(name));
  }
  // Another program may have added a column after we looked. If it is missing for any other reason,
  // a later statement fails.
  if (!columns.contains("updated_at")) {
    inOneCommit(db_, [this] {
      ignoringFailure(db_, "ALTER TABLE recado ADD COLUMN updated_at REAL;");
      db_.execute(
          "UPDATE recado SET updated_at = COALESCE(updated_at, resolved_at, claimed_at, "
          "created_at);");
    });
  }
  if (!columns.contains("dirty")) {
    ignoringFailure(db_, "ALTER TABLE recado ADD COLUMN dirty INTEGER NOT NULL DEFAULT 1;");
  }
  db_.execute(syncSchema);
}

}  // namespace trovi
