#include "imaging/codecs/jpeg.h"

#include "foundation/Failure.h"
#include "imaging/codecs/JpegCompressor.h"
#include "imaging/codecs/encoded_form.h"
#include "imaging/codecs/jpeg_quantisation.h"

namespace orvane {

EncodedImage encodeJpeg(const Raster& raster, JpegFactors factors, const Resolution& resolution) {
  EncodedImage image = encodedFormOf(raster);
  const bool gray = raster.model == ColourModel::MinIsBlack && raster.samplesPerPixel == 1;
  const bool rgb = raster.model == ColourModel::Rgb && raster.samplesPerPixel == 3;
  if (raster.bitsPerSample != 8 || (!gray && !rgb)) {
    throw Failure("JPEG holds pages of 8-bit gray or RGB only");
  }
  image.compression = Compression::Jpeg;
  image.rowsPerStrip = raster.height;
  image.resolution = resolution;
  if (rgb) {
    image.photometric = Photometric::YCbCr;
    image.chromaSubsampling = {2, 2};
  }
  JpegCompressor compressor;
  image.strips.push_back(compressor.compress(raster, quantisationTables(factors), resolution));
  return image;
}

}  // namespace orvane
