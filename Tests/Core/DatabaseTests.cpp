#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>

#include "Inbox.h"
#include "TroviCore/Database.h"

namespace trovi {
namespace {

using tests::databaseError;

class Connection : public testing::Test {
 protected:
  tests::TemporaryFolder folder;
  std::filesystem::path file = folder.path() / "test.sqlite";
  Database db{file};
};

TEST(SQLValue, IsNullForWhatIsAbsent) {
  EXPECT_TRUE(SQLValue::from(std::optional<std::string>()).isNull());
  EXPECT_TRUE(SQLValue::from(std::optional<double>()).isNull());
  EXPECT_TRUE(SQLValue::from(std::optional<Date>()).isNull());
  EXPECT_EQ(*SQLValue::from(std::optional<Date>(dateSince1970(0))).asReal(), 0.0);
  EXPECT_EQ(*SQLValue::from(std::string("a")).asText(), "a");
}

TEST(Row, ConvertsBetweenNumbersButNeverBetweenNumbersAndTexts) {
  const Row row{{"sort", SQLValue::integer(3)},       {"duration", SQLValue::real(-2.9)},
                {"created_at", SQLValue::text("17")}, {"result", SQLValue::null()},
                {"id", SQLValue::text("first")},      {"id", SQLValue::text("second")}};
  EXPECT_EQ(row.intValue("sort"), 3);
  EXPECT_EQ(row.doubleValue("sort"), 3.0);
  EXPECT_EQ(row.dateValue("sort"), dateSince1970(3));
  EXPECT_FALSE(row.stringValue("sort"));
  EXPECT_EQ(row.intValue("duration"), -2);
  EXPECT_EQ(row.doubleValue("duration"), -2.9);
  EXPECT_FALSE(row.stringValue("duration"));
  for (const char* column : {"created_at", "result", "missing"}) {
    EXPECT_FALSE(row.intValue(column)) << column;
    EXPECT_FALSE(row.doubleValue(column)) << column;
    EXPECT_FALSE(row.dateValue(column)) << column;
  }
  EXPECT_FALSE(row.stringValue("result"));
  EXPECT_TRUE(row.find("result")->isNull());
  EXPECT_EQ(row.find("missing"), nullptr);
  EXPECT_EQ(row.stringValue("id"), "second");
}

TEST(Row, HasNoIntegerForARealThatIsNone) {
  const struct {
    double real;
    std::optional<std::int64_t> integer;
  } cases[] = {{-0x1p63, std::numeric_limits<std::int64_t>::min()},
               {0x1p63, {}},
               {std::nextafter(0x1p63, 0), 9223372036854774784},
               {1e300, {}},
               {-std::numeric_limits<double>::infinity(), {}},
               {std::numeric_limits<double>::quiet_NaN(), {}}};
  for (const auto& [real, integer] : cases) {
    EXPECT_EQ(Row({{"n", SQLValue::real(real)}}).intValue("n"), integer) << real;
  }
}

TEST_F(Connection, KeepsWhatCameBeforeTheStatementThatFailed) {
  EXPECT_EQ(databaseError(
                [&] { db.execute("CREATE TABLE a(x); CREATE TABLE a(x); CREATE TABLE b(x);"); }),
            "Erro no banco: table a already exists");
  EXPECT_EQ(db.run("INSERT INTO a VALUES (1), (2), (3)"), 3);
  EXPECT_EQ(databaseError([&] { db.query("SELECT * FROM b"); }), "Erro no banco: no such table: b");
}

TEST_F(Connection, CountsTheRowsThatTheStatementItselfChanged) {
  db.execute(
      "CREATE TABLE a(x); CREATE TABLE log(x); INSERT INTO a VALUES (1), (2), (3);"
      "CREATE TRIGGER t AFTER UPDATE ON a BEGIN INSERT INTO log VALUES (1), (2); END;");
  EXPECT_EQ(db.run("UPDATE a SET x = x + 1"), 3);
  EXPECT_EQ(db.run("UPDATE a SET x = 0 WHERE x > ?", {SQLValue::integer(99)}), 0);
  EXPECT_EQ(db.query("SELECT * FROM log").size(), 6U);
  db.run("DELETE FROM log WHERE rowid = 1");
  EXPECT_EQ(db.run("SELECT * FROM a"), 1);  // the count of the statement before it
  EXPECT_TRUE(db.query("SELECT * FROM a WHERE x = 99").empty());
}

TEST_F(Connection, BindsByPositionAndCutsTextsAtTheirFirstNUL) {
  const auto rows = db.query("SELECT ? AS a, ? AS b, ? AS c, ? AS d, ? AS e; SELECT 'never'",
                             {SQLValue::text(std::string("ab\0c", 4)), SQLValue::real(0.5),
                              SQLValue::integer(-7), SQLValue::null()});
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0].stringValue("a"), "ab");
  EXPECT_EQ(rows[0].doubleValue("b"), 0.5);
  EXPECT_EQ(rows[0].intValue("c"), -7);
  EXPECT_TRUE(rows[0].find("d")->isNull());
  EXPECT_TRUE(rows[0].find("e")->isNull());
  EXPECT_EQ(
      db.query("SELECT ? AS a", {SQLValue::integer(1), SQLValue::integer(2)}).at(0).intValue("a"),
      1);
}

TEST_F(Connection, ReadsEveryKindOfValueOfAForeignHand) {
  const auto rows = db.query(
      "SELECT x'00ff' AS blob, CAST(x'61ff62' AS TEXT) AS broken, CAST(x'610062' AS TEXT) AS cut, "
      "9e999 AS infinite, 1 AS twice, 'two' AS twice, '' AS empty");
  EXPECT_TRUE(rows.at(0).find("blob")->isNull());
  EXPECT_EQ(rows[0].stringValue("broken"), "a\uFFFDb");
  EXPECT_EQ(rows[0].stringValue("cut"), "a");
  EXPECT_EQ(rows[0].doubleValue("infinite"), std::numeric_limits<double>::infinity());
  EXPECT_FALSE(rows[0].intValue("infinite"));
  EXPECT_EQ(rows[0].stringValue("twice"), "two");
  EXPECT_FALSE(rows[0].intValue("twice"));
  EXPECT_EQ(rows[0].stringValue("empty"), "");
}

TEST_F(Connection, HasTheSettingsThatTheOtherProgramsCountOn) {
  EXPECT_EQ(db.query("PRAGMA journal_mode").at(0).stringValue("journal_mode"), "wal");
  EXPECT_EQ(db.query("PRAGMA foreign_keys").at(0).intValue("foreign_keys"), 1);
  EXPECT_EQ(db.query("PRAGMA busy_timeout").at(0).intValue("timeout"), 4000);
}

TEST_F(Connection, SaysWhatSQLiteSaysWhenAFileCannotBeOpened) {
  EXPECT_EQ(databaseError([&] { Database(folder.path() / "missing" / "a.sqlite"); }),
            "Não abri o banco: unable to open database file");
  EXPECT_EQ(databaseError([&] { Database(folder.path()); }),
            "Não abri o banco: unable to open database file");
  EXPECT_EQ(databaseError([&] { Database(""); }), "Não abri o banco: unable to open database file");
  std::ofstream(folder.path() / "text") << std::string(4096, 'x');
  EXPECT_EQ(databaseError([&] { Database(folder.path() / "text"); }),
            "Erro no banco: file is not a database");
}

TEST_F(Connection, OpensAFileAndNoURIAndNoMemory) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  for (const char* name : {":memory:", "file:x?mode=memory", "plain"}) {
    Database(name).execute("CREATE TABLE kept(x)");
    EXPECT_TRUE(std::filesystem::exists(folder.path() / name)) << name;
  }
  std::filesystem::current_path(before);
}

}  // namespace
}  // namespace trovi
