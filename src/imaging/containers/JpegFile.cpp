#include "imaging/containers/JpegFile.h"

#include "imaging/containers/OutputFile.h"
#include "imaging/containers/image_checks.h"

namespace orvane {

void writeJpegFile(const std::wstring& path, const EncodedImage& image) {
  requireWholeImage(path, image);
  if (image.compression != Compression::Jpeg || image.strips.size() != 1) {
    throw fileFailure(path, "the image is not one JPEG stream");
  }
  OutputFile file = OutputFile::createAnew(path);
  file.write(0, image.strips.front());
  file.close();
}

}  // namespace orvane
