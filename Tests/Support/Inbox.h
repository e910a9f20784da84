#pragma once

#include <gtest/gtest.h>

#include <string>

#include "TemporaryFolder.h"
#include "TroviCore/Store.h"

namespace trovi::tests {

/// A message as a recorder would insert it, `pendente`.
inline Recado someRecado(const std::string& id, double createdAt = 1750255402.25) {
  return {.id = id,
          .createdAt = dateSince1970(createdAt),
          .duration = 12.5,
          .transcript = "Ligar para o João às três.",
          .title = "Ligar para o João",
          .status = RecadoStatus::pendente};
}

/// A new inbox in a folder of its own, and a second connection to its file. It acts as another
/// program that inspects, changes and breaks the file.
class Inbox : public testing::Test {
 protected:
  /// The SQL `expression` as text for each row: "first;second;". Nulls are left out.
  std::string each(const std::string& expression, const std::string& from = "recado") {
    const auto rows = other.query("SELECT (" + expression + ") || ';' AS x FROM " + from);
    std::string all;
    for (const Row& row : rows) all += row.stringValue("x").value_or("");
    return all;
  }
  /// Lets another program's trigger refuse a change, such as "DELETE ON recado", and only this one.
  void refuse(const std::string& change, const std::string& how = "ABORT") {
    other.execute("DROP TRIGGER IF EXISTS refusal; CREATE TRIGGER refusal BEFORE " + change +
                  " BEGIN SELECT RAISE(" + how + ", 'refused'); END");
  }

  TemporaryFolder folder;
  std::filesystem::path file = folder.path() / "trovi.sqlite";
  TroviStore store{file};
  Database other{file};
};

/// Expects that SQLite finds no damage in the file.
inline void expectSound(Database& db) {
  EXPECT_EQ(db.query("PRAGMA integrity_check").at(0).stringValue("integrity_check"), "ok");
}

/// The message of the DatabaseError that `work` throws; fails the test if it throws none.
template <class Work>
std::string databaseError(Work&& work) {
  try {
    work();
  } catch (const DatabaseError& error) {
    EXPECT_NE(error.code(), 0);
    return error.description();
  }
  ADD_FAILURE() << "nothing was thrown";
  return {};
}

}  // namespace trovi::tests
