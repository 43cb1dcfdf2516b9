// The walk over a Group 4 strip. Whatever makes libtiff complain must be damage, and a strip that
// is none must keep its pixels when it is written anew.
#include "imaging/codecs/group4.h"

#include "fuzz/Workshop.h"
#include "imaging/codecs/libtiff_judge.h"

using namespace orvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 5) return 0;
  EncodedImage image;
  image.width = 1 + (data[0] + 256u * data[1]) % 4096;
  image.height = 1 + (data[2] + 256u * data[3]) % 1024;
  image.compression = Compression::Group4;
  image.photometric = Photometric::MinIsWhite;
  image.rowsPerStrip = image.height;
  image.strips.emplace_back(data + 4, data + size);
  if (findGroup4Damage(image)) return 0;
  const test::LibtiffReading reading = test::readWithLibtiff(image);
  fuzz::require(reading.messages.empty(), "libtiff noticed what we did not");
  fuzz::require(test::readWithLibtiff(joinGroup4Strips(image)).pixels == reading.pixels,
                "other pixels");
  return 0;
}
