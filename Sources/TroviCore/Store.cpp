#include "TroviCore/Store.h"

#include "System/Directories.h"
#include "System/FolderLock.h"

namespace trovi {

/// Held while a file is opened and migrated, so that our programs do it one after the other. Two at
/// once would both add the first destinations, and SQLite refuses at once to switch a file to
/// write-ahead logging while another program does.
struct TroviStore::Opening {
  platform::FolderLock lock;
};

TroviStore::TroviStore(const std::filesystem::path& path)
    : TroviStore(path,
                 Opening{{platform::absolutePath(path).parent_path(), Database::busyTimeout}}) {}

TroviStore::TroviStore(const std::filesystem::path& path, const Opening& /*held*/) : db_(path) {
  migrate();
}

std::optional<std::string> TroviStore::meta(const std::string& key) const {
  auto rows = db_.query("SELECT value FROM meta WHERE key = ?", {SQLValue::text(key)});
  return rows.empty() ? std::nullopt : rows.front().takeString("value");
}

void TroviStore::setMeta(const std::string& key, const std::optional<std::string>& value) {
  if (value) {
    db_.run("INSERT OR REPLACE INTO meta(key, value) VALUES (?, ?)",
            {SQLValue::text(key), SQLValue::text(*value)});
  } else {
    db_.run("DELETE FROM meta WHERE key = ?", {SQLValue::text(key)});
  }
}

}  // namespace trovi
