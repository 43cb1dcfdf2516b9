#pragma once

#include <array>
#include <cstdint>

#include "imaging/codecs/group4_codes.h"

/// Look-up tables of the Group 4 reader, made at compile time. Each is indexed by the next bits of
/// the stream.
namespace orvane::group4 {

enum class Mode : std::uint8_t { None, Vertical, Horizontal, Pass };

struct ModeEntry {
  Mode mode = Mode::None;  ///< None: no mode code begins with these bits
  std::uint8_t length = 0;
  std::int8_t offset = 0;  ///< of a1 from b1, Vertical only
};

inline constexpr unsigned kModeBits = 7;
using ModeTable = std::array<ModeEntry, 1u << kModeBits>;

/// Mode codes that follow each other, to be taken in one step: some vertical ones, behind them some
/// pass ones, and at the end perhaps a horizontal one. Any of the three may be missing.
struct alignas(16) CodeGroup {
  static constexpr unsigned kMostVertical = 4;
  std::array<std::int16_t, kMostVertical> offsets{};
  std::array<std::uint8_t, kMostVertical> lengths{};  ///< up to and with each vertical code
  std::uint8_t verticals = 0;
  std::uint8_t moves = 0;   ///< of b1: one a vertical code, two a pass code
  std::uint8_t length = 0;  ///< of all codes; 0: no mode code begins with these bits
  bool horizontal = false;

  constexpr bool passes() const { return moves != verticals; }
};
static_assert(sizeof(CodeGroup) == 16);

inline constexpr unsigned kGroupBits = 10;
using GroupTable = std::array<CodeGroup, 1u << kGroupBits>;

/// A run code as run * 16 + length of the code; 0: no run code begins with these bits.
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
    const Code code = codeOf(codes[i]);
    const auto entry = static_cast<RunEntry>(runOfIndex(i) * 16 + code.length);
    forEachIndex(code, kRunBits, [&](std::uint32_t index) { table[index] = entry; });
  }
  return table;
}

/// Of the white runs, and of the black ones.
inline constexpr std::array<RunTable, 2> kRuns = {makeRunTable(kWhiteRuns),
                                                  makeRunTable(kBlackRuns)};

}  // namespace orvane::group4
