#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The codes of ITU-T T.6 (table 1; for the runs, tables 2 and 3 of ITU-T T.4) written as bits, and
/// the tables by which they are read.

namespace orvane::group4 {

inline constexpr std::string_view kPass = "0001";
inline constexpr std::string_view kHorizontal = "001";
inline constexpr std::string_view kExtension = "0000001";
inline constexpr std::string_view kEndOfLine = "000000000001";  ///< two form an end-of-block

/// Vertical codes, for a1 at -3 to +3 pixels from b1.
inline constexpr std::int32_t kMaxOffset = 3;
inline constexpr std::array<std::string_view, 7> kVertical = {"0000010", "000010", "010",    "1",
                                                              "011",     "000011", "0000011"};

/// The index in `kVertical` for a1 at `offset` pixels from b1.
constexpr std::size_t verticalIndex(std::int32_t offset) {
  return static_cast<std::size_t>(offset) + static_cast<std::size_t>(kMaxOffset);
}

/// A run is coded as any number of 2560s, at most one other multiple of 64, then 0 to 63.
inline constexpr std::int32_t kMakeUpUnit = 64;
inline constexpr std::int32_t kLongestMakeUp = 2560;

/// Codes of the runs 0 to 63.
using TerminatingCodes = std::array<std::string_view, 64>;
inline constexpr TerminatingCodes kWhiteTerminating = {
    "00110101", "000111",   "0111",     "1000",     "1011",     "1100",     "1110",     "1111",
    "10011",    "10100",    "00111",    "01000",    "001000",   "000011",   "110100",   "110101",
    "101010",   "101011",   "0100111",  "0001100",  "0001000",  "0010111",  "0000011",  "0000100",
    "0101000",  "0101011",  "0010011",  "0100100",  "0011000",  "00000010", "00000011", "00011010",
    "00011011", "00010010", "00010011", "00010100", "00010101", "00010110", "00010111", "00101000",
    "00101001", "00101010", "00101011", "00101100", "00101101", "00000100", "00000101", "00001010",
    "00001011", "01010010", "01010011", "01010100", "01010101", "00100100", "00100101", "01011000",
    "01011001", "01011010", "01011011", "01001010", "01001011", "00110010", "00110011", "00110100"};
inline constexpr TerminatingCodes kBlackTerminating = {
    "0000110111",   "010",          "11",           "10",           "011",          "0011",
    "0010",         "00011",        "000101",       "000100",       "0000100",      "0000101",
    "0000111",      "00000100",     "00000111",     "000011000",    "0000010111",   "0000011000",
    "0000001000",   "00001100111",  "00001101000",  "00001101100",  "00000110111",  "00000101000",
    "00000010111",  "00000011000",  "000011001010", "000011001011", "000011001100", "000011001101",
    "000001101000", "000001101001", "000001101010", "000001101011", "000011010010", "000011010011",
    "000011010100", "000011010101", "000011010110", "000011010111", "000001101100", "000001101101",
    "000011011010", "000011011011", "000001010100", "000001010101", "000001010110", "000001010111",
    "000001100100", "000001100101", "000001010010", "000001010011", "000000100100", "000000110111",
    "000000111000", "000000100111", "000000101000", "000001011000", "000001011001", "000000101011",
    "000000101100", "000001011010", "000001100110", "000001100111"};

/// Codes of the runs 64, 128, ... 1728.
using MakeUpCodes = std::array<std::string_view, 27>;
inline constexpr MakeUpCodes kWhiteMakeUp = {
    "11011",     "10010",     "010111",    "0110111",   "00110110",  "00110111",  "01100100",
    "01100101",  "01101000",  "01100111",  "011001100", "011001101", "011010010", "011010011",
    "011010100", "011010101", "011010110", "011010111", "011011000", "011011001", "011011010",
    "011011011", "010011000", "010011001", "010011010", "011000",    "010011011"};
inline constexpr MakeUpCodes kBlackMakeUp = {
    "0000001111",    "000011001000",  "000011001001",  "000001011011",  "000000110011",
    "000000110100",  "000000110101",  "0000001101100", "0000001101101", "0000001001010",
    "0000001001011", "0000001001100", "0000001001101", "0000001110010", "0000001110011",
    "0000001110100", "0000001110101", "0000001110110", "0000001110111", "0000001010010",
    "0000001010011", "0000001010100", "0000001010101", "0000001011010", "0000001011011",
    "0000001100100", "0000001100101"};

/// Codes of the runs 1792, 1856, ... 2560, the same for both colours.
inline constexpr std::array<std::string_view, 13> kLongMakeUp = {
    "00000001000",  "00000001100",  "00000001101",  "000000010010", "000000010011",
    "000000010100", "000000010101", "000000010110", "000000010111", "000000011100",
    "000000011101", "000000011110", "000000011111"};

/// A code as a number and its length.
struct Code {
  std::uint32_t bits = 0;
  std::uint8_t length = 0;
};

constexpr Code codeOf(std::string_view text) {
  Code code;
  for (const char bit : text) {
    code.bits = code.bits << 1 | (bit == '1' ? 1u : 0u);
    ++code.length;
  }
  return code;
}

/// Codes of the runs 0 to 63, then of 64, 128, ... 2560.
using RunCodes = std::array<Code, 64 + 40>;

/// The run length that entry `index` of a RunCodes table stands for.
constexpr std::int32_t runOfIndex(std::size_t index) {
  const auto i = static_cast<std::int32_t>(index);
  return i < kMakeUpUnit ? i : (i - kMakeUpUnit + 1) * kMakeUpUnit;
}

constexpr RunCodes makeRunCodes(const TerminatingCodes& terminating, const MakeUpCodes& makeUp) {
  RunCodes codes{};
  auto next = std::ranges::transform(terminating, codes.begin(), codeOf).out;
  next = std::ranges::transform(makeUp, next, codeOf).out;
  std::ranges::transform(kLongMakeUp, next, codeOf);
  return codes;
}

/// Of the white runs, and of the black ones.
inline constexpr std::array<RunCodes, 2> kRunCodes = {
    makeRunCodes(kWhiteTerminating, kWhiteMakeUp), makeRunCodes(kBlackTerminating, kBlackMakeUp)};

/// Look-up tables of the readers, made at compile time. Each is indexed by the next bits of the
/// stream.

enum class Mode : std::uint8_t { None, Vertical, Horizontal, Pass };

struct ModeEntry {
  Mode mode = Mode::None;  ///< None: the bits begin no mode code
  std::uint8_t length = 0;
  std::int8_t offset = 0;  ///< of a1 from b1, Vertical only
};

inline constexpr unsigned kModeBits = 7;
using ModeTable = std::array<ModeEntry, 1u << kModeBits>;

/// Consecutive mode codes that are read in one step: vertical ones, then pass ones, then at most
/// one horizontal one. Any of the three may be missing.
struct alignas(16) CodeGroup {
  static constexpr unsigned kMostVertical = 4;
  std::array<std::int16_t, kMostVertical> offsets{};
  std::array<std::uint8_t, kMostVertical> lengths{};  ///< up to the end of each vertical code
  std::uint8_t verticals = 0;
  std::uint8_t moves = 0;   ///< of b1: one for a vertical code, two for a pass code
  std::uint8_t length = 0;  ///< of all codes; 0: the bits begin no mode code
  bool horizontal = false;

  constexpr bool passes() const { return moves != verticals; }
};
static_assert(sizeof(CodeGroup) == 16);

inline constexpr unsigned kGroupBits = 10;
using GroupTable = std::array<CodeGroup, 1u << kGroupBits>;

/// A run code as run * 16 + length of the code; 0: the bits begin no run code.
using RunEntry = std::uint16_t;
constexpr std::int32_t runOf(RunEntry entry) {
  return entry >> 4;
}
constexpr unsigned lengthOf(RunEntry entry) {
  return entry & 15u;
}
constexpr bool endsRun(RunEntry entry) {
  return entry != 0 && runOf(entry) < kMakeUpUnit;
}

inline constexpr unsigned kRunBits = 13;
using RunTable = std::array<RunEntry, 1u << kRunBits>;

/// Calls `visit` with every index of a table of `tableBits` that begins with `code`.
template <typename Visit>
constexpr void forEachIndex(Code code, unsigned tableBits, Visit visit) {
  const unsigned open = tableBits - code.length;
  for (std::uint32_t rest = 0; rest < 1u << open; ++rest) visit(code.bits << open | rest);
}

constexpr ModeTable makeModeTable() {
  ModeTable table{};
  const auto add = [&table](std::string_view text, Mode mode, std::int32_t offset) {
    const Code code = codeOf(text);
    const ModeEntry entry{mode, code.length, static_cast<std::int8_t>(offset)};
    forEachIndex(code, kModeBits, [&](std::uint32_t index) { table[index] = entry; });
  };
  for (std::int32_t offset = -kMaxOffset; offset <= kMaxOffset; ++offset) {
    add(kVertical[verticalIndex(offset)], Mode::Vertical, offset);
  }
  add(kHorizontal, Mode::Horizontal, 0);
  add(kPass, Mode::Pass, 0);
  return table;
}

inline constexpr ModeTable kModes = makeModeTable();

constexpr CodeGroup makeGroup(std::uint32_t bits) {
  CodeGroup group;
  while (!group.horizontal) {
    const std::uint32_t ahead = bits << kModeBits << group.length >> kGroupBits;
    const ModeEntry entry = kModes[ahead & ((1u << kModeBits) - 1)];
    const auto length = static_cast<std::uint8_t>(group.length + entry.length);
    if (entry.mode == Mode::None || length > kGroupBits) break;
    if (entry.mode == Mode::Vertical) {
      if (group.passes() || group.verticals == CodeGroup::kMostVertical) break;
      group.offsets[group.verticals] = entry.offset;
      group.lengths[group.verticals++] = length;
      ++group.moves;
    } else if (entry.mode == Mode::Pass) {
      group.moves += 2;
    } else {
      group.horizontal = true;
    }
    group.length = length;
  }
  return group;
}

constexpr GroupTable makeGroupTable() {
  GroupTable table{};
  for (std::uint32_t index = 0; index < table.size(); ++index) table[index] = makeGroup(index);
  return table;
}

inline constexpr GroupTable kGroups = makeGroupTable();

constexpr RunTable makeRunTable(const RunCodes& codes) {
  RunTable table{};
  for (std::size_t i = 0; i < codes.size(); ++i) {
    const Code code = codes[i];
    const auto entry = static_cast<RunEntry>(runOfIndex(i) * 16 + code.length);
    forEachIndex(code, kRunBits, [&](std::uint32_t index) { table[index] = entry; });
  }
  return table;
}

/// Of the white runs, and of the black ones.
inline constexpr std::array<RunTable, 2> kRuns = {makeRunTable(kRunCodes[0]),
                                                  makeRunTable(kRunCodes[1])};

}  // namespace orvane::group4
