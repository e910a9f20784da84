#include <gtest/gtest.h>

#include <cmath>
#include <future>

#include "Inbox.h"

namespace trovi {
namespace {

using tests::databaseError;

class Connection : public testing::Test {
 protected:
  tests::TemporaryFolder folder;
  Database db{folder.path() / "test.sqlite"};
};

TEST(Row, ConvertsBetweenNumbersButNeverBetweenNumbersAndTexts) {
  const Row row{{"3", SQLValue::integer(3)},       {"-2", SQLValue::real(-2.9)},
                {"large", SQLValue::real(0x1p63)}, {"none", SQLValue::real(NAN)},
                {"17", SQLValue::text("17")},      {"null", SQLValue::from(std::optional<Date>())}};
  EXPECT_EQ(row.dateValue("3"), dateSince1970(3));
  EXPECT_EQ(row.intValue("-2"), -2);
  EXPECT_FALSE(row.stringValue("3"));
  for (const char* column : {"large", "none", "17", "null", "missing"}) {
    EXPECT_FALSE(row.intValue(column)) << column;
    EXPECT_EQ(row.doubleValue(column).has_value(), column[0] == 'l' || column[2] == 'n') << column;
  }
  EXPECT_THROW(Row({}, {SQLValue::null()}), std::invalid_argument);
}

TEST_F(Connection, CountsTheRowsThatTheStatementItselfChanged) {
  const auto failing = [&] {
    db.execute(
        "CREATE TABLE a(x); CREATE TABLE log(x); INSERT INTO a VALUES (1), (2), (3);"
        "CREATE TRIGGER t AFTER UPDATE ON a BEGIN INSERT INTO log VALUES (1), (2); END;"
        "CREATE TABLE a(x); DROP TABLE a");
  };
  EXPECT_EQ(databaseError(failing), "Erro no banco: table a already exists");
  EXPECT_EQ(db.run("UPDATE a SET x = x + 1"), 3);
  EXPECT_EQ(db.run("UPDATE a SET x = 0 WHERE x > ?", {SQLValue::integer(99)}), 0);
  EXPECT_EQ(db.query("SELECT * FROM log").size(), 6U);
  db.run("DELETE FROM log WHERE rowid = 1");
  EXPECT_EQ(db.run("SELECT * FROM a"), 1);  // the count of the previous statement
}

TEST_F(Connection, BindsByPositionAndReadsEveryKindOfValue) {
  const std::vector parameters{SQLValue::text(std::string("ab\0c", 4)),
                               SQLValue::from(dateSince1970(0.5)), SQLValue::integer(-7)};
  const auto bound = db.query("SELECT ? || ? || ? AS x, ? AS y; nonsense", parameters);
  EXPECT_EQ(bound.at(0).stringValue("x"), "ab0.5-7");
  EXPECT_TRUE(bound[0].find("y")->isNull());
  EXPECT_EQ(db.query("SELECT ? AS a", parameters).at(0).stringValue("a"), "ab");
  const auto rows = db.query(
      "SELECT x'00ff' AS blob, CAST(x'61ff62006364' AS TEXT) AS broken, 1 AS twice, 'two' AS "
      "twice, '' AS empty");
  std::string columns;
  for (const auto& [name, value] : rows.at(0).columns()) {
    columns.append(name).append(value->isNull() ? " is null;" : "=" + *value->asText() + ";");
  }
  EXPECT_EQ(columns, "blob is null;broken=a\uFFFDb;twice=two;empty=;");
}

TEST_F(Connection, HasTheSettingsThatTheOtherProgramsCountOn) {
  EXPECT_EQ(db.query("PRAGMA journal_mode").at(0).stringValue("journal_mode"), "wal");
  EXPECT_EQ(db.query("PRAGMA foreign_keys").at(0).intValue("foreign_keys"), 1);
  EXPECT_EQ(db.query("PRAGMA busy_timeout").at(0).intValue("timeout"), 4000);
}

TEST_F(Connection, WaitsForALockAlsoWhileItOpens) {
  db.execute("PRAGMA journal_mode=DELETE; CREATE TABLE a(x); BEGIN EXCLUSIVE");
  auto opening = std::async(std::launch::async, [&] { Database(folder.path() / "test.sqlite"); });
  EXPECT_EQ(opening.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  db.execute("COMMIT");
  EXPECT_NO_THROW(opening.get());
}

TEST_F(Connection, TreatsURIsAndMemoryNamesAsFileNames) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  for (const char* name : {":memory:", "file:x?mode=memory"}) {
    Database(name).execute("CREATE TABLE kept(x)");
    EXPECT_TRUE(Database(folder.path() / name).query("SELECT * FROM kept").empty()) << name;
  }
  std::filesystem::current_path(before);
}

TEST_F(Connection, SaysWhatFailedInWordsAndInNumbersAndLeavesNoNewFile) {
  const auto deep = folder.path() / std::string(250, 'a') / std::string(250, 'b');
  create_directories(deep);
  for (const auto& none : {folder.path() / "missing" / "a.sqlite", folder.path(), deep / "long"}) {
    EXPECT_EQ(databaseError([&] { Database opened(none); }),
              "Não abri o banco: unable to open database file");
  }
  EXPECT_TRUE(is_empty(deep));
  try {
    db.execute("CREATE TABLE a(x PRIMARY KEY); INSERT INTO a VALUES (1), (1)");
    ADD_FAILURE() << "inserted twice";
  } catch (const DatabaseError& error) {
    EXPECT_EQ(error.message(), "UNIQUE constraint failed: a.x");
    EXPECT_EQ(error.kind(), DatabaseError::Kind::query);
    EXPECT_EQ(error.code(), 1555);  // SQLITE_CONSTRAINT_PRIMARYKEY
  }
}

/// Several threads on one connection and on one store.
class Threads : public tests::Inbox {};

TEST_F(Threads, GetTheirOwnAnswersAndEveryChangeCounts) {
  Database& db = store.db();
  store.insert(tests::someRecado("shared"));
  const auto work = [&](int thread) {
    const std::string name = std::to_string(thread);
    for (int round = 0; round < 25; ++round) {
      const std::string own = name + "." + std::to_string(round);
      store.insert(tests::someRecado(own));
      EXPECT_EQ(store.claim({.id = own, .by = own})->claimedBy, own);
      EXPECT_EQ(store.resolve({.id = own, .result = own})->result, own);
      EXPECT_FALSE(store.claim({.id = own, .by = "again"}));
      EXPECT_TRUE(store.claim({.id = "shared", .by = own}));
      EXPECT_EQ(
          db.run("UPDATE recado SET duration = 0 WHERE id GLOB ?", {SQLValue::text(name + ".*")}),
          round + 1);
      EXPECT_EQ(tests::databaseError([&] { db.query("SELECT x" + name); }),
                "Erro no banco: no such column: x" + name);
    }
  };
  {
    std::vector<std::future<void>> workers;
    for (int i = 0; i < 4; ++i) workers.push_back(std::async(std::launch::async, work, i));
  }
  EXPECT_EQ(each("dirty", "recado WHERE id = 'shared'"), "102;");
  EXPECT_EQ(each("n", "(SELECT count(*) AS n FROM recado WHERE result = id)"), "100;");
}

}  // namespace
}  // namespace trovi
