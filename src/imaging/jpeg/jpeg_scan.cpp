#include "imaging/jpeg/jpeg_scan.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace orvane {
namespace {

// The next 0xFF, or the end.
const std::uint8_t* findFF(const std::uint8_t* at, const std::uint8_t* end) {
  const void* found =
      at == end ? nullptr : std::memchr(at, 0xFF, static_cast<std::size_t>(end - at));
  return found == nullptr ? end : static_cast<const std::uint8_t*>(found);
}

}  // namespace

ByteView EntropySegments::next() {
  segment_.clear();
  segment_.reserve(data_.size());
  const std::uint8_t* at = data_.data();
  const std::uint8_t* const end = at + data_.size();
  for (;;) {
    const std::uint8_t* const ff = findFF(at, end);
    const bool stuffed = ff != end && ff + 1 != end && ff[1] == 0;
    segment_.insert(segment_.end(), at, ff + (stuffed ? 1 : 0));
    at = ff + (stuffed ? 2 : 0);
    if (!stuffed) break;
  }
  data_ = data_.subspan(static_cast<std::size_t>(at - data_.data()));
  return segment_;
}

// The position after `marker` if that comes next, and fill bytes before it are passed over; else 0.
std::size_t EntropySegments::afterMarker(std::uint8_t marker) const {
  const auto code = std::ranges::find_if(data_, [](std::uint8_t byte) { return byte != 0xFF; });
  if (code == data_.end() || code == data_.begin() || *code != marker) return 0;
  return static_cast<std::size_t>(code - data_.begin()) + 1;
}

bool EntropySegments::takeRestart() {
  const auto marker = static_cast<std::uint8_t>(jpeg_marker::kRestart0 + restarts_++ % 8);
  const std::size_t taken = afterMarker(marker);
  data_ = data_.subspan(taken);
  return taken != 0;
}

void appendStuffed(Bytes& stream, ByteView bytes) {
  const std::uint8_t* at = bytes.data();
  const std::uint8_t* const end = at + bytes.size();
  while (at != end) {
    const std::uint8_t* const ff = findFF(at, end);
    stream.insert(stream.end(), at, ff);
    if (ff == end) return;
    stream.push_back(0xFF);
    stream.push_back(0);
    at = ff + 1;
  }
}

JpegScan::JpegScan(const JpegSource& source) : source_(source), segments_(source.data) {
  for (std::size_t i = 0; i < source.components.size(); ++i) {
    std::optional<CoefficientDecoder>& dc = dcDecoders_[source.components[i].dcTable];
    std::optional<CoefficientDecoder>& ac = acDecoders_[source.components[i].acTable];
    if (!dc) dc.emplace(source.dcTableOf(i), kMostDcSize);
    if (!ac) ac.emplace(source.acTableOf(i), kMostAcSize);
    components_.push_back({*dc, *ac, source.blocksPerMcu(i)});
  }
}

void JpegScan::verify() {
  std::array<std::unique_ptr<const CoefficientRuns>, 4> runs;
  for (std::size_t i = 0; i < components_.size(); ++i) {
    std::unique_ptr<const CoefficientRuns>& ofTable = runs[source_.components[i].acTable];
    if (!ofTable) ofTable = std::make_unique<const CoefficientRuns>(components_[i].ac);
  }
  walkBlocks([&](BitReader& bits, std::size_t index) {
    Component& component = components_[index];
    takeDc(bits, component);
    passOverAc(bits, component.ac, *runs[source_.components[index].acTable]);
  });
}

// One comparison finds all that is not plain: the end of the block, no step, and steps that would
// reach or pass the last coefficient. The last are taken one by one: the block ends there, whatever
// its bits go on with.
void JpegScan::passOverAc(BitReader& bits, const CoefficientDecoder& decoder,
                          const CoefficientRuns& runs) const {
  constexpr unsigned kRunsARefill = 56 / CoefficientRuns::kBits;
  constexpr unsigned kEnd = CoefficientStep::kEndOfBlock;
  for (unsigned index = 0;;) {
    bits.refill();
    CoefficientRun run;
    unsigned taken = 0;
    for (; taken < kRunsARefill; ++taken) {
      run = runs.steps(bits.bits());
      if (index + run.advance >= 63) break;
      bits.skip(run.length);
      index += run.advance;
    }
    if (taken == kRunsARefill) continue;
    if (run.advance >= kEnd && index + run.advance - kEnd < 63) {
      bits.skip(run.length);
      return;
    }
    bits.refill();
    const CoefficientStep step = takeStep(bits, decoder);
    index += step.advance;
    if (index > 63 && index < kEnd) fail("a block is too long");
    if (index >= 63) return;
  }
}

void JpegScan::fail(const char* what) const {
  throw Failure("JPEG: row of blocks " + std::to_string(mcu_ / source_.mcusPerRow() + 1) + ": " +
                what);
}

}  // namespace orvane
