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

/// Vertical codes that follow each other, to be taken in one step. Most pages are made of them.
struct VerticalGroup {
  static constexpr std::size_t kMost = 4;
  std::array<std::int8_t, kMost> offsets{};
  std::uint8_t count = 0;
  std::uint8_t length = 0;  ///< of all its codes
};

inline constexpr unsigned kGroupBits = 10;
using GroupTable = std::array<VerticalGroup, 1u << kGroupBits>;

/// A run code as run * 16 + length of the code; 0: no run code begins with these bits.
using RunEntry = std::uint16_t;

inline constexpr unsigned kWhiteBits = 12;
inline constexpr unsigned kBlackBits = 13;

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

constexpr VerticalGroup makeGroup(std::uint32_t bits) {
  VerticalGroup group;
  while (group.count < VerticalGroup::kMost) {
    const std::uint32_t ahead = bits << kModeBits << group.length >> kGroupBits;
    const ModeEntry entry = kModes[ahead & ((1u << kModeBits) - 1)];
    if (entry.mode != Mode::Vertical || group.length + entry.length > kGroupBits) break;
    group.offsets[group.count++] = entry.offset;
    group.length = static_cast<std::uint8_t>(group.length + entry.length);
  }
  return group;
}

constexpr GroupTable makeGroupTable() {
  GroupTable table{};
  for (std::uint32_t index = 0; index < table.size(); ++index) table[index] = makeGroup(index);
  return table;
}

inline constexpr GroupTable kGroups = makeGroupTable();

template <unsigned kBits>
constexpr auto makeRunTable(const RunCodes& codes) {
  std::array<RunEntry, 1u << kBits> table{};
  for (std::size_t i = 0; i < codes.size(); ++i) {
    const Code code = codeOf(codes[i]);
    const auto entry = static_cast<RunEntry>(runOfIndex(i) * 16 + code.length);
    forEachIndex(code, kBits, [&](std::uint32_t index) { table[index] = entry; });
  }
  return table;
}

inline constexpr auto kWhiteTable = makeRunTable<kWhiteBits>(kWhiteRuns);
inline constexpr auto kBlackTable = makeRunTable<kBlackBits>(kBlackRuns);

}  // namespace orvane::group4
