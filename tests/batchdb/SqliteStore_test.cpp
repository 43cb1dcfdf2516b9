// One connection to one SQLite file, made and judged with the sqlite3 tool.

#include "batchdb/SqliteStore.h"

#include <chrono>
#include <filesystem>
#include <gmock/gmock.h>

#include "batchdb/Recordset.h"
#include "foundation/Failure.h"
#include "foundation/utf8_text.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

class SqliteFile : public testing::Test {
 protected:
  std::string sqlite(const std::string& sql) const {
    return outputOf("sqlite3 " + quoted(file) + " " + quoted(sql));
  }
  // The text of the failure of `action`; "none" when it succeeds.
  template <typename Action>
  std::string failureOf(Action action) {
    try {
      action();
    } catch (const Failure& failure) {
      return failure.what();
    }
    return "none";
  }

  TempStation station;
  RecordingWindow window;
  fs::path file = station.native("Orvane.dll");
  std::wstring path = station.path(L"Orvane.dll");
};

TEST_F(SqliteFile, OpensOnlyADatabaseThatIsThere) {
  sqlite("create table T_BatchInfo (BatchID text)");
  writeBytes(station.native("foreign"), std::string(5000, 'x'));
  writeBytes(station.native("cut"), readBytes(file).substr(0, 60));
  fs::create_directory(station.native("folder"));
  const std::pair<const wchar_t*, std::string> cases[] = {
      {L"Orvane.dll", "none"},
      {L"missing", "unable to open database file"},
      {L"folder", "unable to open database file"},
      {L"foreign", "file is not a database"},
      {L"cut", "database disk image is malformed"}};
  for (const auto& [name, text] : cases) {
    SqliteStore store;
    EXPECT_EQ(failureOf([&] { store.open(station.path(name)); }), text) << toUtf8(name);
    EXPECT_EQ(store.isOpen(), text == "none");
  }
  EXPECT_FALSE(fs::exists(station.native("missing")));
}

TEST_F(SqliteFile, AQueryGivesItsRowsByTheNamesOfTheirFields) {
  sqlite(
      "create table T (ID, Name text, Num); "
      "insert into T values (3,'丙',null),(1,'甲',2.5),(2,'乙','7 ')");
  SqliteStore store;
  store.open(path);
  Recordset rs;
  EXPECT_THROW(rs.RecordCount(), Failure);
  rs.Open(&store, L"SELECT Top 2 * from T order by  ID ; ", true);
  EXPECT_EQ(rs.RecordCount(), 2);
  EXPECT_EQ(rs.Fields(L"nAME").text() + rs.Fields(L"id").text() + rs.Fields(L"Num").text(),
            L"甲12.5");
  EXPECT_EQ(failureOf([&] { rs.Fields(L"Other"); }), "there is no field Other");

  rs.Open(&store, L"select * from T where ID > 9", true);
  EXPECT_EQ(rs.RecordCount(), 0);
  EXPECT_THROW(rs.Fields(L"ID"), Failure);

  EXPECT_THROW(rs.Open(&store, L"select nothing", true), Failure);
  EXPECT_FALSE(rs.IsOpen());
  EXPECT_EQ(failureOf([&] { rs.Open(&store, L"delete from T", true); }),
            "attempt to write a readonly database");
  EXPECT_THROW(rs.Open(nullptr, L"select 1", true), Failure);
  EXPECT_EQ(sqlite("select count(*) from T"), "3\n");
}

TEST_F(SqliteFile, AFieldBecomesASixteenBitNumberOrAFailure) {
  sqlite("create table T (V)");
  SqliteStore store;
  store.open(path);
  const std::pair<std::string, std::string> cases[] = {
      {"-32768", "-32768"},
      {"2.5", "2"},
      {"' 3.5 '", "4"},
      {"x'3132'", "12"},
      {"null", "the field V holds no value"},
      {"9223372036854775807", "number outside -32768 to 32767"},
      {"'12a'", "not a number: \"12a\""}};
  for (const auto& [value, expected] : cases) {
    sqlite("delete from T; insert into T values (" + value + ")");
    Recordset rs;
    rs.Open(&store, L"select V from T", true);
    std::string result;
    const std::string failure =
        failureOf([&] { result = std::to_string(rs.Fields(L"V").toInt16()); });
    EXPECT_EQ(failure == "none" ? result : failure, expected) << value;
  }
}

TEST_F(SqliteFile, WaitsForALockWithTheWindowAlive) {
  sqlite("create table T (V); insert into T values (1)");
  SqliteStore store;
  store.open(path);
  SqliteStore scanningStation;
  scanningStation.open(path);
  scanningStation.execute(L"begin exclusive");

  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(failureOf([&] { store.execute(L"update T set V=2"); }), "database is locked");
  const auto waited = std::chrono::steady_clock::now() - begin;
  EXPECT_GE(waited, std::chrono::seconds(5));
  EXPECT_LT(waited, std::chrono::seconds(8));
  EXPECT_GT(window.yields, 100);

  window.yields = 0;
  window.onYield = [&] {
    if (window.yields == 3) scanningStation.execute(L"commit");
  };
  store.execute(L"update T set V=?", {L"2"});
  EXPECT_EQ(window.yields, 3);
  EXPECT_EQ(sqlite("select V from T"), "2\n");
}

}  // namespace
}  // namespace orvane::test
