// Reading and writing keys of an INI file, byte for byte.

#include "settings/mdlINI.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "foundation/Failure.h"
#include "foundation/ansi_text.h"
#include "foundation/mdlFolderAndFile.h"
#include "support/AsOrdinaryUser.h"
#include "support/TempStation.h"
#include "support/command.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

class Ini : public testing::Test {
 protected:
  Ini() { mdlINI::IniFilePath = station.path(L"data.ini"); }
  ~Ini() override { mdlINI::IniFilePath.clear(); }

  std::wstring read(std::wstring section, std::wstring key, std::wstring defaultValue = L"") {
    return mdlINI::ReadIniValue(mdlINI::IniFilePath, section, key, defaultValue);
  }
  void write(std::wstring section, std::wstring key, std::wstring value) {
    mdlINI::WriteIniValue(mdlINI::IniFilePath, section, key, value);
  }
  std::string content() const { return readBytes(file); }

  TempStation station;
  fs::path file = station.native("data.ini");
};

TEST_F(Ini, ReadsWhatStandsBehindTheEqualsSign) {
  writeBytes(
      file,
      "stray=outside\r\n[Commit]\r\n; a=comment\r\na = plain text \r\nno equals\r\nb=\"  quoted "
      "\"\r\n"
      "c='single'\r\nd=\"open\r\ne==x=y;z\r\nA=second\r\n\xBC\xFC=\xD6\xB5\n"
      "[ other ]\nlf=1\n[\x81]x]\nclosing=trail byte\n[Commit]\na2=second section\r\nlast=no end");
  const struct {
    const wchar_t *section, *key, *value;
  } cases[] = {{L"Commit", L"a", L"plain text"}, {L"COMMIT", L"A", L"plain text"},
               {L"Commit", L"b", L"  quoted "},  {L"Commit", L"c", L"single"},
               {L"Commit", L"d", L"\"open"},     {L"Commit", L"e", L"=x=y;z"},
               {L"Commit", L"键", L"值"},        {L"Other", L"LF", L"1"}};
  const std::string before = content();
  for (const auto& c : cases) EXPECT_EQ(read(c.section, c.key), c.value);
  EXPECT_EQ(read(fromAnsi("\x81]x"), L"closing"), L"trail byte");
  EXPECT_EQ(content(), before);  // a value that is there is never written
  for (const wchar_t* key : {L"stray", L"; a", L"no equals", L"a2", L"last", L"lf"}) {
    EXPECT_EQ(read(L"Commit", key, L"d"), L"d") << testing::PrintToString(key);
  }
}

TEST_F(Ini, ChangesOneLineAndLeavesEveryOtherByteAlone) {
  const std::wstring aPair = fromAnsi("\201a");
  const struct {
    std::string before;
    const wchar_t *section, *key, *value;
    std::string after;
  } cases[] = {
      {"", L"S", L"k", L"v", "[S]\r\nk=v\r\n"},
      {"", L"S", L"k", L"", "[S]\r\nk=\r\n"},
      {"[S]\nk=1\n", L"S", L"k", L"2", "[S]\nk=2\n"},
      {"[s]\r\n  K =  1  \n; c \r\n", L"S", L"k", L"新", "[s]\r\n  K =\xD0\xC2\n; c \r\n"},
      {"[S]\r\na=1\r\n\r\n\r\n[T]\r\n", L"S", L"k", L"v", "[S]\r\na=1\r\nk=v\r\n\r\n\r\n[T]\r\n"},
      {"[S]\n; only a comment", L"S", L"k", L"v", "[S]\n; only a comment\nk=v\n"},
      {"[S]\na=1", L"T", L"k", L"v", "[S]\na=1\n[T]\nk=v\n"},
      {"junk \xFF\x01\n[S\nk=0\n[S]\nk=1\nk=2\n[S]\nk=3\n", L"S", L"k", L"9",
       "junk \xFF\x01\n[S\nk=0\n[S]\nk=9\nk=2\n[S]\nk=3\n"},
      // Two characters whose second bytes are an "A" and an "a" are two keys.
      {"[S]\r\n\201A=1\r\n\201a=2\r\n", L"S", aPair.c_str(), L"9",
       "[S]\r\n\201A=1\r\n\201a=9\r\n"}};
  for (const auto& c : cases) {
    writeBytes(file, c.before);
    write(c.section, c.key, c.value);
    EXPECT_EQ(content(), c.after);
    EXPECT_EQ(read(c.section, c.key), c.value);
    write(c.section, c.key, c.value);
    EXPECT_EQ(content(), c.after);
  }
}

TEST_F(Ini, AMissingOrEmptyKeyIsFilledWithItsDefault) {
  EXPECT_EQ(read(L"Setting", L"SavePath"), L"");
  EXPECT_EQ(read(L"Commit", L"LiuShuiHao", L"3"), L"3");
  EXPECT_EQ(content(), "[Setting]\r\nSavePath=\r\n[Commit]\r\nLiuShuiHao=3\r\n");
  writeBytes(file, "[Commit]\r\nReNameSp1=   \r\nReNameSp2=\"\"\r\n");
  EXPECT_EQ(read(L"Commit", L"ReNameSp1", L"-") + read(L"Commit", L"ReNameSp2", L"_"), L"-_");
  EXPECT_EQ(content(), "[Commit]\r\nReNameSp1=-\r\nReNameSp2=_\r\n");
}

TEST_F(Ini, AValueIsCutAt1023Bytes) {
  const std::wstring longest = std::wstring(511, L'甲') + L"x";  // 1023 bytes
  write(L"S", L"k", longest);
  EXPECT_EQ(read(L"S", L"k"), longest);
  write(L"S", L"k", longest + L"y");
  EXPECT_EQ(read(L"S", L"k"), longest);
  write(L"S", L"k", std::wstring(600, L'甲'));  // the cut falls into a character
  EXPECT_EQ(read(L"S", L"k"), std::wstring(511, L'甲'));
  writeBytes(file, std::string("[S]\nk=ab\0cd\n", 12));
  EXPECT_EQ(read(L"S", L"k"), L"ab");
}

TEST_F(Ini, TextsComeBackAsTheCodePageHoldsThem) {
  std::wstring section = L"S\u301C", key = L"k\r\n[T]", value = L"扫\U0001F600";
  value += std::wstring(L"\0cut", 4);
  mdlINI::WriteIniValue(mdlINI::IniFilePath, section, key, value);
  EXPECT_EQ(section + L"|" + key + L"|" + value, L"S?|k??[T]|扫?");
  EXPECT_EQ(content(), "[S?]\r\nk??[T]=\xC9\xA8?\r\n");
  std::wstring defaultValue = L"\U0001F600";
  EXPECT_EQ(mdlINI::ReadIniValue(mdlINI::IniFilePath, section, section, defaultValue), L"?");
  EXPECT_EQ(defaultValue, L"?");
}

TEST_F(Ini, TheFileIsReplacedWithItsPermissionsAndBehindItsLink) {
  writeBytes(station.native("elsewhere/real.ini"), "[S]\nk=1\n");
  chmod(station.native("elsewhere/real.ini").c_str(), 0640);
  fs::create_symlink("elsewhere/real.ini", file);
  writeBytes(station.native("elsewhere/real.ini.new"), "left by a crash");
  const std::string inode = outputOf("stat -L -c %i " + quoted(file));
  write(L"S", L"k", L"2");
  EXPECT_TRUE(fs::is_symlink(file));
  EXPECT_EQ(content(), "[S]\nk=2\n");
  EXPECT_EQ(outputOf("stat -L -c %a " + quoted(file)), "640\n");
  EXPECT_NE(outputOf("stat -L -c %i " + quoted(file)), inode);  // replaced, not written over
  EXPECT_EQ(outputOf("ls -A " + quoted(station.native("elsewhere"))), "real.ini\n");
}

TEST_F(Ini, WhatCannotBeWrittenStaysAsItWas) {
  EXPECT_EQ(chmod(station.native().c_str(), 0777), 0);
  writeBytes(file, "[S]\nk=1\n");
  EXPECT_EQ(chmod(file.c_str(), 0444), 0);
  {
    const AsOrdinaryUser user;
    write(L"S", L"k", L"2");
    EXPECT_EQ(read(L"S", L"other", L"d"), L"d");
  }
  EXPECT_EQ(content(), "[S]\nk=1\n");

  // Nor is a folder or a file too large to be one of ours replaced, nor a folder made.
  outputOf("truncate -s 65M " + quoted(station.native("large.ini")));
  const std::wstring cases[][2] = {
      {L"", L"d"}, {L"large.ini", L""}, {L"no-folder\\data.ini", L"d"}};
  for (const auto& [path, value] : cases) {
    mdlINI::IniFilePath = station.path(path);
    EXPECT_EQ(read(L"S", L"k", L"d"), value);
  }
  EXPECT_EQ(fs::file_size(station.native("large.ini")), 65U << 20);
  EXPECT_EQ(outputOf("ls -A " + quoted(station.native())), "data.ini\nlarge.ini\n");
}

TEST_F(Ini, AReadThatFailsForOnceDoesNotPutTheDefaultOverTheValue) {
  struct FailsOnce : FileSystemObject {
    std::string ReadFile(const std::wstring& path) override {
      return ++reads == 1 ? throw Failure("input/output error") : FileSystemObject::ReadFile(path);
    }
    int reads = 0;
  };
  writeBytes(file, "[S]\nk=1\n");
  gFileSystem = std::make_unique<FailsOnce>();
  EXPECT_EQ(read(L"S", L"k", L"d"), L"");
  EXPECT_EQ(read(L"S", L"k", L"d"), L"1");
  gFileSystem.reset();
}

}  // namespace
}  // namespace orvane::test
