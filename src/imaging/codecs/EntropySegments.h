#pragma once

#include "imaging/page/Bytes.h"

namespace orvane {

/// The entropy-coded data of a JPEG scan, cut at its markers and freed of the zero bytes that are
/// stuffed behind each 0xFF (ITU-T T.81 B.1.1.5).
class EntropySegments {
 public:
  explicit EntropySegments(ByteView data) : data_(data) {}

  /// The bytes up to the next marker, or to the end where there is none. They live until the next
  /// call.
  ByteView next();

  /// Takes the restart marker that is due, if it is the next one.
  bool takeRestart();

  bool atEndOfImage() const;

  /// What has not been taken yet.
  ByteView left() const { return data_; }

 private:
  bool atMarker(std::uint8_t marker) const;

  ByteView data_;
  Bytes segment_;
  std::uint8_t restarts_ = 0;
};

/// Appends `bytes` to a JPEG stream with a zero byte stuffed behind each 0xFF.
void appendStuffed(Bytes& stream, ByteView bytes);

}  // namespace orvane
