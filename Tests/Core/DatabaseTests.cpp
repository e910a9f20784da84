#include <gtest/gtest.h>

#include <cmath>
#include <future>

#include "Inbox.h"

namespace trovi {
namespace {

class Connection : public testing::Test {
 protected:
  tests::TemporaryFolder folder;
  Database db{folder.path() / "test.sqlite"};
};

/// What a failed operation throws: kind, message and code.
template <class Work>
std::string failure(const Work& work) {
  try {
    work();
  } catch (const DatabaseError& error) {
    const bool isOpening = error.kind() == DatabaseError::Kind::open;
    return (isOpening ? "open: " : "query: ") + error.message() + " " +
           std::to_string(error.code());
  }
  return "none";
}

TEST(Row, ConvertsBetweenNumbersButNeverBetweenNumbersAndTexts) {
  const Row row{
      {"3", SQLValue::integer(3)},        {"-2.9", SQLValue::real(-2.9)},
      {"-2^63", SQLValue::real(-0x1p63)}, {"2^63", SQLValue::real(0x1p63)},
      {"nan", SQLValue::real(NAN)},       {"17", SQLValue::text("17")},
      {"0", SQLValue::from(Date{})},      {"null", SQLValue::from(std::optional<Date>())}};
  EXPECT_EQ(row.doubleValue("3"), 3);
  EXPECT_EQ(row.dateValue("3"), dateSince1970(3));
  EXPECT_EQ(row.doubleValue("0"), 0);
  EXPECT_EQ(row.intValue("-2.9"), -2);
  EXPECT_EQ(row.intValue("-2^63"), INT64_MIN);
  for (const char* x : {"2^63", "nan", "17", "null", "missing"}) EXPECT_FALSE(row.intValue(x)) << x;
  for (const char* x : {"17", "null", "missing"}) {
    EXPECT_FALSE(row.doubleValue(x) || row.dateValue(x)) << x;
  }
  for (const char* x : {"3", "-2.9", "null", "missing"}) EXPECT_FALSE(row.stringValue(x)) << x;
  EXPECT_THROW(Row({}, {SQLValue::null()}), std::invalid_argument);
}

TEST_F(Connection, CountsTheRowsThatTheStatementItselfChanged) {
  db.execute(
      "CREATE TABLE a(x); CREATE TABLE log(x); INSERT INTO a VALUES (1), (2), (3);"
      "CREATE TRIGGER t AFTER UPDATE ON a BEGIN INSERT INTO log VALUES (1), (2); END");
  EXPECT_EQ(db.run("UPDATE a SET x = x + 1"), 3);
  EXPECT_EQ(db.run("UPDATE a SET x = 0 WHERE x > ?", {SQLValue::integer(99)}), 0);
  EXPECT_EQ(db.query("SELECT * FROM log").size(), 6U);
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
  EXPECT_EQ(db.query("PRAGMA synchronous").at(0).intValue("synchronous"), 2);
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

TEST_F(Connection, SaysWhatFailedInWordsAndInNumbers) {
  const std::string unknown = "SELECT \xFF";
  const std::string taken = "INSERT INTO a VALUES (2), (1)";
  const std::string later = "SELECT abs(x) FROM a";  // fails on its second row
  db.execute("CREATE TABLE a(x PRIMARY KEY); INSERT INTO a VALUES (1), (-9223372036854775808)");
  EXPECT_EQ(failure([&] { db.run(unknown); }), "query: no such column: \uFFFD 1");
  EXPECT_EQ(failure([&] { db.query(unknown); }), "query: no such column: \uFFFD 1");
  EXPECT_EQ(failure([&] { db.execute(unknown); }), "query: no such column: \uFFFD 1");
  EXPECT_EQ(failure([&] { db.run(taken); }), "query: UNIQUE constraint failed: a.x 1555");
  EXPECT_EQ(failure([&] { db.query(taken); }), "query: UNIQUE constraint failed: a.x 1555");
  EXPECT_EQ(failure([&] { db.query(later); }), "query: integer overflow 1");
  EXPECT_EQ(failure([&] { db.run(later); }), "none");  // up to its first row
  EXPECT_EQ(failure([&] { db.execute("DELETE FROM a; " + later + "x; DROP TABLE a"); }),
            "query: no such table: ax 1");
  EXPECT_TRUE(db.query("SELECT * FROM a").empty());
  EXPECT_EQ(failure([&] { Database{folder.path()}; }), "open: unable to open database file 14");
}

/// Several threads on one connection and on one store.
class Threads : public tests::Inbox {};

TEST_F(Threads, GetTheirOwnAnswersAndEveryChangeCounts) {
  store.insert(tests::someRecado("shared"));
  const auto work = [&](const std::string& name) {
    for (int round = 1; round <= 25; ++round) {
      const std::string own = name + std::to_string(round);
      store.insert(tests::someRecado(own));
      EXPECT_EQ(store.claim({.id = own, .by = own})->claimedBy, own);
      EXPECT_EQ(store.resolve({.id = own, .result = own})->result, own);
      EXPECT_EQ(store.claim({.id = own, .by = "again"}), std::nullopt);
      EXPECT_NE(store.claim({.id = "shared", .by = own}), std::nullopt);
      EXPECT_EQ(store.db().run("UPDATE recado SET duration = 0 WHERE id GLOB ?",
                               {SQLValue::text(name + "*")}),
                round);
      EXPECT_EQ(failure([&] { store.db().query("SELECT " + name); }),
                "query: no such column: " + name + " 1");
    }
  };
  {
    std::vector<std::future<void>> workers;
    for (const char* name : {"w", "x", "y", "z"}) {
      workers.push_back(std::async(std::launch::async, work, name));
    }
  }
  EXPECT_EQ(each("dirty", "recado WHERE id = 'shared'"), "102;");
}

}  // namespace
}  // namespace trovi
