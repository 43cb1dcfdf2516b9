// One connection to one SQLite file, made and judged with the sqlite3 tool.

#include "batchdb/SqliteStore.h"

#include <chrono>
#include <gtest/gtest.h>

#include "batchdb/Recordset.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "support/failureOf.h"

namespace orvane::test {
namespace {

class SqliteFile : public testing::Test {
 protected:
  SqliteFile() { sqlite("create table T (ID, Name text, Num)"); }
  std::string sqlite(const std::string& sql) const {
    return station.shell("sqlite3 Orvane.dll " + quoted(sql));
  }
  TempStation station;
  RecordingWindow window;
  SqliteStore store;
  Recordset rs;
};

TEST_F(SqliteFile, OpensOnlyADatabaseThatIsThere) {
  station.shell("yes | head -c 5000 > foreign; head -c 60 Orvane.dll > cut; mkdir folder");
  const std::pair<const wchar_t*, std::string> cases[] = {
      {L"Orvane.dll", ""},
      {L"missing", "unable to open database file"},
      {L"folder", "unable to open database file"},
      {L"foreign", "file is not a database"},
      {L"cut", "database disk image is malformed"}};
  for (const auto& [name, text] : cases) {
    SqliteStore opened;
    EXPECT_EQ(failureOf([&, name = name] { opened.open(station.path(name)); }), text);
    EXPECT_EQ(opened.isOpen(), text == "");
  }
  EXPECT_EQ(station.shell("ls"), "Orvane.dll\ncut\nfolder\nforeign\n");
}

TEST_F(SqliteFile, AQueryGivesItsRowsByTheNamesOfTheirFields) {
  sqlite("insert into T values (3,'丙',null),(1,'甲',2.5),(2,'乙','7 ')");
  store.open(station.path(L"Orvane.dll"));
  EXPECT_THROW(rs.RecordCount(), Failure);
  rs.Open(&store, L"SELECT Top 2 * from T order by  ID ; ", true);
  EXPECT_EQ(rs.RecordCount(), 2);
  EXPECT_EQ(rs.Fields(L"nAME").text() + rs.Fields(L"id").text() + rs.Fields(L"Num").text(),
            L"甲12.5");
  EXPECT_EQ(failureOf([&] { rs.Fields(L"Other"); }), "there is no field Other");
  rs.Open(&store, L"select * from T where ID > 9", true);
  EXPECT_EQ(rs.RecordCount(), 0);
  EXPECT_THROW(rs.Fields(L"ID"), Failure);

  EXPECT_EQ(failureOf([&] { rs.Open(&store, L"delete from T", true); }),
            "attempt to write a readonly database");
  EXPECT_FALSE(rs.IsOpen());
  EXPECT_THROW(rs.Open(nullptr, L"select 1", true), Failure);
  EXPECT_EQ(sqlite("select count(*) from T"), "3\n");
}

TEST_F(SqliteFile, WaitsForALockWithTheWindowAlive) {
  sqlite("insert into T values (1,'',1)");
  SqliteStore scanningStation;
  for (SqliteStore* opened : {&store, &scanningStation}) opened->open(station.path(L"Orvane.dll"));
  scanningStation.execute(L"begin exclusive");
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(failureOf([&] { store.execute(L"update T set ID=2"); }), "database is locked");
  const auto waited = std::chrono::steady_clock::now() - begin;
  EXPECT_TRUE(waited >= std::chrono::seconds(5) && waited < std::chrono::seconds(8));
  EXPECT_GT(window.yields, 100);

  window.yields = 0;
  window.onYield = [&] {
    if (window.yields == 3) scanningStation.execute(L"commit");
  };
  store.execute(L"update T set ID=?", {L"2"});
  EXPECT_EQ(window.yields, 3);
  EXPECT_EQ(sqlite("select ID from T"), "2\n");
}

}  // namespace
}  // namespace orvane::test
