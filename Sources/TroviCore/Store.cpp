#include "TroviCore/Store.h"

#include "System/Directories.h"
#include "System/FolderLock.h"

namespace trovi {

/// Lasts while a file is opened and migrated. None of our programs does the same meanwhile: two
/// would seed the file twice, and SQLite refuses at once to switch a file to write-ahead logging
/// while another program does.
struct TroviStore::Opening {
  platform::FolderLock lock;
};

TroviStore::TroviStore(const std::filesystem::path& path)
    : TroviStore(path,
                 Opening{{platform::absolutePath(path).parent_path(), Database::busyTimeout}}) {}

TroviStore::TroviStore(const std::filesystem::path& path, const Opening& /*lasts*/) : db_(path) {
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
