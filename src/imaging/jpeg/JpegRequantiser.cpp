#include "imaging/jpeg/JpegRequantiser.h"

#include "imaging/jpeg/jpeg_scan.h"

namespace orvane {
namespace {

// What to add before the division by `to` so that it rounds. An AC coefficient stands for values
// that are more often below it than above, for small ones are the most frequent; so it is rounded
// down from a little above the middle: from^2 / (4 to) gave the best pictures of scanned pages. The
// DC coefficient is rounded at the middle.
std::uint32_t roundingOffset(std::size_t index, std::uint32_t from, std::uint32_t to) {
  return index == 0 ? to / 2 : to / 2 - (from * from + 2 * to) / (4 * to);
}

}  // namespace

JpegRequantiser::JpegRequantiser(const JpegHeader& target) : target_(target) {
  for (const JpegComponent& component : target.components) {
    coders_.push_back({HuffmanEncoder(*target.dcTables[component.dcTable]),
                       HuffmanEncoder(*target.acTables[component.acTable])});
  }
}

void JpegRequantiser::beginStream(const JpegHeader& source) {
  for (std::size_t i = 0; i < coders_.size(); ++i) {
    const QuantisationTable& from = source.quantisationOf(source.components[i]);
    const QuantisationTable& to = target_.quantisationOf(target_.components[i]);
    for (std::size_t k = 0; k < from.size(); ++k) {
      coders_[i].steps[k] = {from[k], roundingOffset(k, from[k], to[k]),
                             (1u << kReciprocalBits) / to[k] + 1};
    }
  }
}

void JpegRequantiser::finish(Bytes& stream) {
  bits_.reserve(1);
  const auto open = static_cast<unsigned>(-bits_.bitCount() % 8);
  if (open != 0) bits_.put((1u << open) - 1, open);
  appendStuffed(stream, bits_.take());
}

}  // namespace orvane
