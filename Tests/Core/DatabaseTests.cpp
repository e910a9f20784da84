#include <gtest/gtest.h>

#include <cmath>
#include <future>

#include "Inbox.h"

namespace trovi {
namespace {

using tests::databaseError;

/// The connection is the fixture's `other`.
class Connection : public tests::Inbox {};

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
  other.execute(
      "CREATE TABLE a(x); CREATE TABLE log(x); INSERT INTO a VALUES (1), (2), (3);"
      "CREATE TRIGGER t AFTER UPDATE ON a BEGIN INSERT INTO log VALUES (1), (2); END");
  EXPECT_EQ(other.run("UPDATE a SET x = x + 1"), 3);
  EXPECT_EQ(other.run("UPDATE a SET x = 0 WHERE x > ?", {SQLValue::integer(99)}), 0);
  EXPECT_EQ(other.query("SELECT * FROM log").size(), 6U);
}

TEST_F(Connection, BindsByPositionAndReadsEveryKindOfValue) {
  const auto rows = other.query(
      "SELECT ? AS a, ? || ? AS b, ? AS missing, x'00ff' AS blob, CAST(x'61ff62006364' AS TEXT) AS "
      "broken, 1 AS twice, 'two' AS twice, '' AS empty; nonsense",
      {SQLValue::text(std::string("ab\0c", 4)), SQLValue::from(dateSince1970(0.5)),
       SQLValue::integer(-7)});
  std::string columns;
  for (const auto& [name, value] : rows.at(0).columns()) {
    columns.append(name).append(value->isNull() ? " is null;" : "=" + *value->asText() + ";");
  }
  EXPECT_EQ(columns, "a=ab;b=0.5-7;missing is null;blob is null;broken=a\uFFFDb;twice=two;empty=;");
  EXPECT_EQ(other.query("SELECT 1", {SQLValue::null(), SQLValue::null()}).size(), 1U);
}

TEST_F(Connection, HasTheSettingsThatTheOtherProgramsCountOn) {
  EXPECT_EQ(other.query("PRAGMA journal_mode").at(0).stringValue("journal_mode"), "wal");
  EXPECT_EQ(other.query("PRAGMA foreign_keys").at(0).intValue("foreign_keys"), 1);
  EXPECT_EQ(other.query("PRAGMA synchronous").at(0).intValue("synchronous"), 2);
  EXPECT_EQ(other.query("PRAGMA busy_timeout").at(0).intValue("timeout"), 4000);
}

TEST_F(Connection, WaitsForALockAlsoWhileItOpens) {
  Database db(folder.path() / "new");
  db.execute("PRAGMA journal_mode=DELETE; CREATE TABLE a(x); BEGIN EXCLUSIVE");
  auto opening = std::async(std::launch::async, [&] { Database(folder.path() / "new"); });
  EXPECT_EQ(opening.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  db.execute("COMMIT");
  EXPECT_NO_THROW(opening.get());
}

TEST_F(Connection, SaysWhatFailedInWordsAndInNumbers) {
  const std::string unknown = "SELECT \xFF";
  const std::string taken = "INSERT INTO a VALUES (2), (1)";
  const std::string later = "SELECT abs(x) FROM a";  // fails on its second row
  other.execute("CREATE TABLE a(x PRIMARY KEY); INSERT INTO a VALUES (1), (-9223372036854775808)");
  const std::string noColumn = "Erro no banco: no such column: \uFFFD";
  EXPECT_EQ(databaseError([&] { other.run(unknown); }), noColumn);
  EXPECT_EQ(databaseError([&] { other.query(unknown); }), noColumn);
  EXPECT_EQ(databaseError([&] { other.execute(unknown); }), noColumn);
  EXPECT_EQ(databaseError([&] { other.query(later); }), "Erro no banco: integer overflow");
  EXPECT_NO_THROW(other.run(later));  // up to its first row
  EXPECT_EQ(databaseError([&] { other.execute("DELETE FROM a WHERE x < 1; x; DROP TABLE a"); }),
            "Erro no banco: near \"x\": syntax error");
  EXPECT_EQ(databaseError([&] { Database{""}; }), "Não abri o banco: unable to open database file");
  EXPECT_EQ(DatabaseError::open("").kind(), DatabaseError::Kind::open);
  EXPECT_THROW(other.query(taken), DatabaseError);
  try {
    other.run(taken);
    ADD_FAILURE() << "inserted twice";
  } catch (const DatabaseError& error) {
    EXPECT_EQ(error.message(), "UNIQUE constraint failed: a.x");
    EXPECT_EQ(error.kind(), DatabaseError::Kind::query);
    EXPECT_EQ(error.code(), 1555);  // SQLITE_CONSTRAINT_PRIMARYKEY
  }
  EXPECT_EQ(other.query("SELECT * FROM a").size(), 1U);
}

TEST_F(Connection, GivesEachThreadItsOwnAnswersAndCountsEveryChange) {
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
      EXPECT_EQ(databaseError([&] { store.db().query("SELECT " + name); }),
                "Erro no banco: no such column: " + name);
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
