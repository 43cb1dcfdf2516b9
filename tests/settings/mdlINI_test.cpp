// Reading and writing keys of an INI file, byte for byte.

#include "settings/mdlINI.h"

#include <gtest/gtest.h>

#include "foundation/Failure.h"
#include "foundation/FileSystemObject.h"
#include "foundation/mdlFolderAndFile.h"
#include "support/AsOrdinaryUser.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

class Ini : public testing::Test {
 protected:
  std::wstring read(std::wstring section, std::wstring key, std::wstring defaultValue = L"") {
    return mdlINI::ReadIniValue(iniFile, section, key, defaultValue);
  }
  void write(std::wstring section, std::wstring key, std::wstring value) {
    mdlINI::WriteIniValue(iniFile, section, key, value);
  }
  std::string content() const { return station.read("data.ini"); }

  TempStation station;
  std::wstring iniFile = station.path(L"data.ini");
};

TEST_F(Ini, ReadsTheValueAfterTheEqualsSign) {
  const std::string before =
      "stray=outside\r\n[Commit]\r\n; a=comment\r\na = plain text \r\nno equals\r\n"
      "b=\"  quoted \"\r\nc='single'\r\nd=\"open\r\ne==x=y;z\r\nA=second\r\n\xBC\xFC=\xD6\xB5\n"
      "[ other ]\nlf=1\n[\x81]x]\nclosing=trail byte\n[Commit]\na2=second section\r\nlast=no end";
  station.write("data.ini", before);
  const struct {
    std::wstring section, key, value;
  } cases[] = {{L"Commit", L"a", L"plain text"},
               {L"COMMIT", L"A", L"plain text"},
               {L"Commit", L"b", L"  quoted "},
               {L"Commit", L"c", L"single"},
               {L"Commit", L"d", L"\"open"},
               {L"Commit", L"e", L"=x=y;z"},
               {L"Commit", L"键", L"值"},
               {L"Other", L"LF", L"1"},
               {fromAnsi("\x81]x"), L"closing", L"trail byte"}};
  for (const auto& c : cases) EXPECT_EQ(read(c.section, c.key), c.value);
  EXPECT_EQ(content(), before);  // reading an existing value writes nothing
  for (const wchar_t* key : {L"stray", L"; a", L"no equals", L"a2", L"lf"}) {
    EXPECT_EQ(read(L"Commit", key, L"d"), L"d") << toUtf8(key);
  }
}

TEST_F(Ini, ChangesOneLineAndKeepsEveryOtherByte) {
  const struct {
    std::string before;
    std::wstring section, key, value;
    std::string after;
  } cases[] = {
      {"", L"S", L"k", L"", "[S]\r\nk=\r\n"},
      {"[s]\r\n  K =  1  \n; c \r\n", L"S", L"k", L"新", "[s]\r\n  K =\xD0\xC2\n; c \r\n"},
      {"[S]\r\na=1\r\n\r\n\r\n[T]\r\n", L"S", L"k", L"v", "[S]\r\na=1\r\nk=v\r\n\r\n\r\n[T]\r\n"},
      {"[S]\n; only a comment", L"S", L"k", L"v", "[S]\n; only a comment\nk=v\n"},
      {"[S]\na=1", L"T", L"k", L"v", "[S]\na=1\n[T]\nk=v\n"},
      {"junk \xFF\x01\n[S\nk=0\n[S]\nk=1\nk=2\n[S]\nk=3\n", L"S", L"k", L"9",
       "junk \xFF\x01\n[S\nk=0\n[S]\nk=9\nk=2\n[S]\nk=3\n"},
      // Two characters whose trail bytes are "A" and "a" are different keys.
      {"[S]\n\201A=1\n\201a=2\n", L"S", fromAnsi("\201a"), L"9", "[S]\n\201A=1\n\201a=9\n"}};
  for (const auto& c : cases) {
    station.write("data.ini", c.before);
    for (int times = 0; times < 2; ++times) {
      write(c.section, c.key, c.value);
      EXPECT_EQ(content(), c.after);
    }
    EXPECT_EQ(read(c.section, c.key), c.value);
  }
}

TEST_F(Ini, AMissingOrEmptyKeyGetsItsDefault) {
  station.write("data.ini", "[Commit]\r\nSp1=   \r\nSp2=\"\"\r\n");
  EXPECT_EQ(read(L"Commit", L"Sp1", L"-") + read(L"Commit", L"Sp2", L"_") +
                read(L"Commit", L"LiuShuiHao", L"3") + read(L"Setting", L"SavePath"),
            L"-_3");
  EXPECT_EQ(content(), "[Commit]\r\nSp1=-\r\nSp2=_\r\nLiuShuiHao=3\r\n[Setting]\r\nSavePath=\r\n");
}

TEST_F(Ini, AValueIsCutAt1023BytesAndAtANul) {
  const std::wstring longest = std::wstring(511, L'甲') + L"x";  // 1023 bytes
  write(L"S", L"k", longest + L"y");
  EXPECT_EQ(read(L"S", L"k"), longest);
  write(L"S", L"k", std::wstring(600, L'甲'));  // the limit is inside a character
  EXPECT_EQ(read(L"S", L"k"), std::wstring(511, L'甲'));
  station.write("data.ini", std::string("[S]\nk=ab\0cd\n", 12));
  EXPECT_EQ(read(L"S", L"k"), L"ab");
}

TEST_F(Ini, ParametersAreConvertedThroughTheCodePage) {
  std::wstring section = L"S\u301C", key = L"k\r\n[T]", value = L"扫\U0001F600";
  value += std::wstring(L"\0cut", 4);
  mdlINI::WriteIniValue(iniFile, section, key, value);
  EXPECT_EQ(section + L"|" + key + L"|" + value, L"S?|k??[T]|扫?");
  EXPECT_EQ(content(), "[S?]\r\nk??[T]=\xC9\xA8?\r\n");
  std::wstring defaultValue = L"\U0001F600";
  EXPECT_EQ(mdlINI::ReadIniValue(iniFile, section, section, defaultValue) + defaultValue, L"??");
}

TEST_F(Ini, AReplacedFileKeepsItsPermissionsAndTheLinkToIt) {
  station.write("elsewhere/real.ini", "[S]\nk=1\n");
  station.shell(
      "ln -s elsewhere/real.ini data.ini; cd elsewhere; chmod 640 real.ini; ln real.ini old; "
      "echo of a stranger > real.ini.new");
  write(L"S", L"k", L"2");
  EXPECT_EQ(station.shell("stat -c %F data.ini; cd elsewhere; ls; stat -c %a real.ini; cat *"),
            "symbolic link\nold\nreal.ini\nreal.ini.new\n640\n[S]\nk=1\n[S]\nk=2\nof a stranger\n");
}

TEST_F(Ini, AFileThatCannotBeWrittenStaysUnchanged) {
  station.write("data.ini", "[S]\nk=1\n");
  station.shell("chmod 777 .; chmod 444 data.ini; truncate -s 65M large.ini");
  {
    const AsOrdinaryUser user;
    write(L"S", L"k", L"2");
    EXPECT_EQ(read(L"S", L"other", L"d"), L"d");
  }
  // A folder or an implausibly large file is not replaced, and no folder is created.
  const std::pair<std::wstring, std::wstring> cases[] = {
      {L"", L"d"}, {L"large.ini", L""}, {L"no-folder\\data.ini", L"d"}};
  for (const auto& [path, value] : cases) {
    iniFile = station.path(path);
    EXPECT_EQ(read(L"S", L"k", L"d"), value);
  }
  EXPECT_EQ(station.shell("ls; stat -c %s large.ini; cat data.ini"),
            "data.ini\nlarge.ini\n68157440\n[S]\nk=1\n");
}

TEST_F(Ini, AFailedReadDoesNotOverwriteTheValueWithTheDefault) {
  struct FailsOnce : FileSystemObject {
    std::string ReadFile(const std::wstring& path) override {
      return ++reads == 1 ? throw Failure("input/output error") : FileSystemObject::ReadFile(path);
    }
    int reads = 0;
  };
  station.write("data.ini", "[S]\nk=1\n");
  gFileSystem = std::make_unique<FailsOnce>();
  EXPECT_EQ(read(L"S", L"k", L"d"), L"");
  EXPECT_EQ(read(L"S", L"k", L"d"), L"1");
  gFileSystem.reset();
}

}  // namespace
}  // namespace orvane::test
