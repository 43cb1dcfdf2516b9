// Reads and copies a Group 4 strip. If libtiff reports a coded row, we must report damage. We
// refuse rows that libtiff accepts only because of the data after them. A copy must have the same
// pixels.
#include "imaging/group4/group4.h"

#include "fuzz/Workshop.h"
#include "imaging/libtiff_judge.h"

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
  const Group4Copy copy = copyGroup4(image, Group4Output::OneStream);
  if (copy.damage) {
    const bool isLeftOver = copy.damage->find("other data") != std::string::npos;
    fuzz::require(isLeftOver || !test::readWithLibtiff(image).messages.empty(),
                  "we refused what libtiff accepts");
    return 0;
  }
  if (!copy.image) return 0;
  const test::LibtiffReading reading = test::readWithLibtiff(image, false, copy.codedRows);
  fuzz::require(reading.messages.empty(), "libtiff noticed what we did not");
  fuzz::require(test::readWithLibtiff(*copy.image).pixels == reading.pixels, "other pixels");
  return 0;
}
