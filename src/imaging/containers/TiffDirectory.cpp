#include "imaging/containers/TiffDirectory.h"

#include <cmath>
#include <limits>

namespace orvane {
namespace {

struct Fraction {
  std::uint64_t numerator;
  std::uint64_t denominator;
};

// Continued fractions, until the value is met to single precision: resolutions come out of other
// TIFF files as single-precision numbers.
Fraction nearestFraction(double value) {
  constexpr double kTolerance = 1e-7;
  constexpr std::uint64_t kLimit = std::numeric_limits<std::uint32_t>::max();
  Fraction last{1, 0};
  Fraction current{static_cast<std::uint64_t>(value), 1};
  double rest = value - std::floor(value);
  const auto error = [&] {
    return std::abs(
        static_cast<double>(current.numerator) / static_cast<double>(current.denominator) - value);
  };
  while (error() > kTolerance * value && rest > 0) {
    const double inverse = 1 / rest;
    if (inverse > static_cast<double>(kLimit)) break;
    const auto term = static_cast<std::uint64_t>(inverse);
    const Fraction next{term * current.numerator + last.numerator,
                        term * current.denominator + last.denominator};
    if (next.numerator > kLimit || next.denominator > kLimit) break;
    last = current;
    current = next;
    rest = inverse - std::floor(inverse);
  }
  return current;
}

}  // namespace

Bytes& TiffDirectory::add(std::uint16_t tag, TiffType type, std::uint64_t count) {
  return (entries_[tag] = Entry{type, count, {}}).value;
}

void TiffDirectory::addShorts(std::uint16_t tag, std::span<const std::uint16_t> values) {
  Bytes& out = add(tag, TiffType::Short, values.size());
  for (const std::uint16_t value : values) form_.put(out, value, 2);
}

void TiffDirectory::addLong(std::uint16_t tag, std::uint32_t value) {
  form_.put(add(tag, TiffType::Long, 1), value, 4);
}

void TiffDirectory::addSizes(std::uint16_t tag, std::span<const std::uint64_t> values) {
  Bytes& out = add(tag, form_.bigTiff ? TiffType::Long8 : TiffType::Long, values.size());
  for (const std::uint64_t value : values) form_.put(out, value, form_.offsetBytes());
}

void TiffDirectory::addRationals(std::uint16_t tag, std::span<const double> values) {
  Bytes& out = add(tag, TiffType::Rational, values.size());
  for (const double value : values) {
    const Fraction fraction = nearestFraction(value);
    form_.put(out, fraction.numerator, 4);
    form_.put(out, fraction.denominator, 4);
  }
}

void TiffDirectory::addText(std::uint16_t tag, std::string_view text) {
  Bytes& out = add(tag, TiffType::Ascii, text.size() + 1);
  out.assign(text.begin(), text.end());
  out.push_back(0);
}

void TiffDirectory::addBytes(std::uint16_t tag, ByteView bytes) {
  add(tag, TiffType::Undefined, bytes.size()).assign(bytes.begin(), bytes.end());
}

std::uint64_t TiffDirectory::linkPlace() const {
  return form_.countBytes() + entries_.size() * form_.entryBytes();
}

Bytes TiffDirectory::bytes(std::uint64_t offset) const {
  Bytes directory;
  Bytes behind;
  const std::uint64_t behindOffset = offset + linkPlace() + form_.offsetBytes();
  form_.put(directory, entries_.size(), form_.countBytes());
  for (const auto& [tag, entry] : entries_) {
    form_.put(directory, tag, 2);
    form_.put(directory, static_cast<std::uint16_t>(entry.type), 2);
    form_.put(directory, entry.count, form_.offsetBytes());
    if (entry.value.size() <= form_.offsetBytes()) {
      directory.insert(directory.end(), entry.value.begin(), entry.value.end());
      directory.resize(directory.size() + form_.offsetBytes() - entry.value.size());
    } else {
      form_.put(directory, behindOffset + behind.size(), form_.offsetBytes());
      behind.insert(behind.end(), entry.value.begin(), entry.value.end());
      behind.resize((behind.size() + 1) / 2 * 2);
    }
  }
  form_.put(directory, 0, form_.offsetBytes());
  directory.insert(directory.end(), behind.begin(), behind.end());
  return directory;
}

}  // namespace orvane
