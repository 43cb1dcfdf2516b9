// Texts and numbers at the edges of the program.

#include <gtest/gtest.h>

#include "foundation/Failure.h"
#include "foundation/Outcome.h"
#include "foundation/plain_text.h"
#include "support/TempStation.h"

namespace orvane::test {
namespace {

TEST(AnsiText, AgreesWithIconvOnEveryPair) {
  const TempStation station;
  std::string pairs = "\x80 plain";
  for (int lead = 0x81; lead <= 0xFE; ++lead) {
    for (int trail = 0x40; trail <= 0xFE; ++trail) {
      if (trail != 0x7F) pairs += {static_cast<char>(lead), static_cast<char>(trail), '\n'};
    }
  }
  station.write("pairs", pairs);
  std::wstring decoded = fromAnsi(pairs);
  // -c leaves out what is no character; here that is a U+FFFD.
  EXPECT_GT(std::erase(decoded, L'\uFFFD'), 0U);
  EXPECT_EQ(toUtf8(decoded), station.shell("iconv -c -f CP936 -t UTF-8 pairs; true"));
  EXPECT_EQ(fromAnsi(toAnsiStrict(decoded)), decoded);
}

TEST(AnsiText, KeepsReadingBehindWhatIsNoCharacter) {
  const std::pair<std::string, std::wstring> cases[] = {
      {"\201\177A", L"\uFFFD\177A"},  // no second byte of a pair
      {"\377A", L"\uFFFDA"},          // no lead byte
      {"\xAA\241A", L"\uFFFDA"},      // the form of a pair, but no character: one mark
      {"\xC9\xA8\x80", L"扫€"},       // the one single byte above 0x7F
      {std::string("a\0b", 3), std::wstring(L"a\0b", 3)}};
  for (const auto& [bytes, text] : cases) EXPECT_EQ(fromAnsi(bytes), text);
  EXPECT_EQ(toAnsi(L"a\u301C扫\U0001F600\xDC80z"), "a?\xC9\xA8??z");
  EXPECT_THROW(toAnsiStrict(L"ok\U0001F600"), Failure);
}

TEST(Utf8Text, RefusesEveryMalformedForm) {
  const std::pair<std::string, std::wstring> cases[] = {
      {"\xE6\x89\xAB\xF0\x9F\x98\x80z", L"扫\U0001F600z"},
      {"\xC0\xAF", L"\uFFFD\uFFFD"},                      // overlong
      {"\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"},            // a surrogate
      {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"},  // above U+10FFFF
      {"\xE6\x89", L"\uFFFD\uFFFD"},                      // cut off
      {"a\x80z", L"a\uFFFDz"}};
  for (const auto& [bytes, text] : cases) EXPECT_EQ(fromUtf8(bytes), text);
  EXPECT_EQ(toUtf8(L"\u00E9扫\U0001F600\xD800"),
            "\xC3\xA9\xE6\x89\xAB\xF0\x9F\x98\x80\xEF\xBF\xBD");
}

TEST(Numbers, AreReadAsFarAsTheyGoOrWhole) {
  const std::pair<std::wstring, double> prefixes[] = {
      {L"  12abc", 12}, {L"-3.5e2x", -350}, {L"+.5", 0.5}, {L"1e", 1},
      {L"1.2.3", 1.2},  {L"", 0},           {L"+-1", 0},   {L"inf", 0},
      {L"１", 0},       {L"0x10", 0},       {L"5-3", 5},   {L"1e-999", 0}};
  for (const auto& [text, value] : prefixes) EXPECT_EQ(numericPrefix(text), value) << toUtf8(text);
  EXPECT_GT(numericPrefix(L"1e999"), 1e300);

  const std::pair<std::wstring, int> wholes[] = {
      {L"0.5", 0}, {L"1.5", 2}, {L"-2.5", -2}, {L" 32767.49 ", 32767}};
  for (const auto& [text, value] : wholes) EXPECT_EQ(toInt16(text), value) << toUtf8(text);
  for (const wchar_t* text : {L"32767.5", L"-32769", L"1e999", L"", L"12a", L"1 2", L"True"}) {
    EXPECT_THROW(toInt16(std::wstring_view(text)), Failure) << toUtf8(text);
  }
  for (const wchar_t* text : {L"TRUE", L" true ", L"-1", L"0.5"}) EXPECT_TRUE(toBoolean(text));
  for (const wchar_t* text : {L"fAlse", L"0.0"}) EXPECT_FALSE(toBoolean(text));
  for (const wchar_t* text : {L"", L"truely"}) EXPECT_THROW(toBoolean(text), Failure);
}

TEST(Outcome, KeepsTheLastMessagesAndTheResultOfTheLastStep) {
  Outcome part, whole;
  for (const wchar_t* message : {L"1", L"2", L"3", L"4", L"5\r6", L"7"}) part.add(message);
  EXPECT_EQ(part.reason, L"1\n2\n3\n4\n5 6\n7");
  whole.take({});
  whole.add(L"0");
  whole.take(part);
  EXPECT_TRUE(whole.ok);
  EXPECT_EQ(whole.reason, part.reason);
  part.fail(L"\n");
  whole.take(part);
  EXPECT_FALSE(whole.ok);
  EXPECT_EQ(whole.reason, L"2\n3\n4\n5 6\n7\n ");
}

}  // namespace
}  // namespace orvane::test
