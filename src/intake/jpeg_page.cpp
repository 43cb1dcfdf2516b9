#include "intake/jpeg_page.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <jerror.h>
#include <jpeglib.h>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "foundation/Failure.h"
#include "foundation/text_encoding.h"
#include "imaging/raster/Raster.h"
#include "imaging/raster/jpeg_markers.h"
#include "intake/exif.h"
#include "intake/page_file.h"
#include "intake/resolution.h"

namespace orvane {
namespace {

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr int kProfileMarker = JPEG_APP0 + 2;

/// One JPEG stream in libjpeg. Its errors become Failure with libjpeg's text, and so do its
/// warnings about damaged data.
class JpegStream {
 public:
  JpegStream() {
    in_.err = jpeg_std_error(&errors_.base);
    errors_.base.error_exit = leave;
    errors_.base.emit_message = hear;
    out_.err = &errors_.base;
  }
  JpegStream(const JpegStream&) = delete;
  JpegStream& operator=(const JpegStream&) = delete;
  ~JpegStream() {
    // After an error too, libjpeg hands the memory over that it has written to.
    if (output_ != nullptr) out_.dest->term_destination(&out_);
    std::free(output_);
    std::free(profile_);
    jpeg_destroy_compress(&out_);
    jpeg_destroy_decompress(&in_);
  }

  /// Reads all that comes before the image data. To be called first.
  void readHead(ByteView stream) {
    if (!tryReadHead(stream)) fail();
  }

  const jpeg_decompress_struct& head() const { return in_; }
  jpeg_decompress_struct& head() { return in_; }

  /// The profile in the APP2 segments; empty for none and for an incomplete one.
  Bytes profile() {
    if (!tryReadProfile()) fail();
    return {profile_, profile_ + profileSize_};
  }

  /// A sequential stream of one scan with the same coefficients. To be called once.
  Bytes inOneScan() {
    // libjpeg holds all coefficients.
    std::uint64_t samples = 0;
    for (int i = 0; i < in_.num_components; ++i) {
      const jpeg_component_info& component = in_.comp_info[i];
      samples += std::uint64_t{component.width_in_blocks} * component.height_in_blocks * DCTSIZE2;
    }
    requireRoom(samples * sizeof(JCOEF));
    if (!tryRecode()) fail();
    requireNoDamage();
    return {output_, output_ + outputSize_};
  }

  /// The samples: gray, RGB, or the CMYK values that are stored. To be called once.
  Raster decode() {
    const bool isCmyk = in_.num_components == 4;
    const bool isGray = in_.num_components == 1;
    const RasterForm form{.bitsPerSample = 8,
                          .samplesPerPixel = static_cast<std::uint16_t>(isGray   ? 1
                                                                        : isCmyk ? 4
                                                                                 : 3),
                          .model = isGray   ? ColourModel::MinIsBlack
                                   : isCmyk ? ColourModel::Cmyk
                                            : ColourModel::Rgb};
    requireRoom(std::uint64_t{form.rowBytes(in_.image_width)} * in_.image_height);
    Raster raster = emptyRaster(form, in_.image_width, in_.image_height);
    in_.out_color_space = isGray ? JCS_GRAYSCALE : isCmyk ? JCS_CMYK : JCS_RGB;
    if (!tryDecode(raster)) fail();
    requireNoDamage();
    return raster;
  }

 private:
  struct Errors {
    jpeg_error_mgr base;  // first, so that libjpeg's pointer to it is a pointer to this
    std::jmp_buf jump;
    char text[JMSG_LENGTH_MAX];
    char damage[JMSG_LENGTH_MAX];
  };

  // libjpeg is C and is left by a jump; nothing that it skips may need a destructor.
  [[noreturn]] static void leave(j_common_ptr info) {
    auto* errors = reinterpret_cast<Errors*>(info->err);
    errors->base.format_message(info, errors->text);
    std::longjmp(errors->jump, 1);
  }

  static void hear(j_common_ptr info, int level) {
    auto* errors = reinterpret_cast<Errors*>(info->err);
    const int code = errors->base.msg_code;
    const bool isHarmless =
        code == JWRN_JFIF_MAJOR || code == JWRN_ADOBE_XFORM || code == JWRN_BOGUS_ICC;
    if (level >= 0 || isHarmless || errors->damage[0] != '\0') return;
    errors->base.format_message(info, errors->damage);
  }

  [[noreturn]] void fail() const {
    if (errors_.base.msg_code == JERR_OUT_OF_MEMORY) throw std::bad_alloc();
    throw Failure(L"JPEG 数据损坏，或者读不了：" + fromUtf8(errors_.text));
  }

  void requireNoDamage() const {
    if (errors_.damage[0] != '\0') throw Failure(L"JPEG 数据损坏：" + fromUtf8(errors_.damage));
  }

  bool tryReadHead(ByteView stream) {
    if (setjmp(errors_.jump) != 0) return false;
    jpeg_create_decompress(&in_);
    jpeg_mem_src(&in_, stream.data(), stream.size());
    jpeg_save_markers(&in_, kExifMarker, 0xFFFF);
    jpeg_save_markers(&in_, kProfileMarker, 0xFFFF);
    jpeg_read_header(&in_, TRUE);
    return true;
  }

  bool tryReadProfile() {
    if (setjmp(errors_.jump) != 0) return false;
    if (profile_ == nullptr) jpeg_read_icc_profile(&in_, &profile_, &profileSize_);
    return true;
  }

  bool tryRecode() {
    if (setjmp(errors_.jump) != 0) return false;
    jvirt_barray_ptr* const coefficients = jpeg_read_coefficients(&in_);
    jpeg_create_compress(&out_);
    jpeg_mem_dest(&out_, &output_, &outputSize_);
    jpeg_copy_critical_parameters(&in_, &out_);
    out_.optimize_coding = TRUE;
    jpeg_write_coefficients(&out_, coefficients);
    for (jpeg_saved_marker_ptr marker = in_.marker_list; marker; marker = marker->next) {
      jpeg_write_marker(&out_, marker->marker, marker->data, marker->data_length);
    }
    jpeg_finish_compress(&out_);
    jpeg_finish_decompress(&in_);
    return true;
  }

  bool tryDecode(Raster& raster) {
    if (setjmp(errors_.jump) != 0) return false;
    jpeg_start_decompress(&in_);
    while (in_.output_scanline < in_.output_height) {
      JSAMPROW row = raster.row(in_.output_scanline);
      jpeg_read_scanlines(&in_, &row, 1);
    }
    jpeg_finish_decompress(&in_);
    return true;
  }

  Errors errors_{};
  jpeg_decompress_struct in_{};
  jpeg_compress_struct out_{};
  unsigned char* output_ = nullptr;  // of malloc, as the profile
  unsigned long outputSize_ = 0;
  JOCTET* profile_ = nullptr;
  unsigned profileSize_ = 0;
};

// Calls `visit` with each marker that has a segment, and with the segment. Returns the size of the
// stream up to its end marker. A camera puts other pictures after it.
template <typename Visit>
std::size_t walkMarkers(ByteView stream, Visit visit) {
  using namespace jpeg_marker;
  const MemorySource bytes(stream);
  JpegMarkers markers(bytes, 2);
  for (markers.skipData(); const auto marker = markers.takeMarker(); markers.skipData()) {
    const bool isStuffed = marker == 0;
    const bool isAlone = marker == 1 || (marker >= kRestart0 && marker < kRestart0 + 8);
    if (isStuffed || isAlone) continue;
    if (marker == kEndOfImage) return markers.position();
    const std::optional<JpegSegment> segment = markers.takeSegment();
    if (!segment) break;
    visit(*marker, *segment);
  }
  throw Failure(L"JPEG 数据不完整");
}

// A copy of a stream up to its end. A stream of one component has no subsampling, but may state
// factors that TIFF readers refuse; they become 1.
Bytes plainStream(ByteView stream, bool isGray) {
  constexpr std::size_t kFactorsInFrame = 7;
  std::uint64_t frame = 0;
  const std::size_t size = walkMarkers(stream, [&](std::uint8_t marker, JpegSegment segment) {
    const bool isFrame =
        marker == jpeg_marker::kFrameBaseline || marker == jpeg_marker::kFrameExtended;
    if (isFrame) frame = segment.at;
  });
  Bytes copy(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size));
  if (isGray && frame != 0 && frame + kFactorsInFrame < size) {
    copy[frame + kFactorsInFrame] = 0x11;
  }
  return copy;
}

bool isFactor(int factor) {
  return factor == 1 || factor == 2 || factor == 4;
}

// TIFF states one subsampling for both chroma components, and none for other colours.
bool fitsTiff(const jpeg_decompress_struct& head) {
  if (head.jpeg_color_space == JCS_GRAYSCALE) return true;
  if (head.jpeg_color_space != JCS_YCbCr && head.jpeg_color_space != JCS_RGB) return false;
  const jpeg_component_info* const parts = head.comp_info;
  for (int i = 1; i < head.num_components; ++i) {
    if (parts[i].h_samp_factor != 1 || parts[i].v_samp_factor != 1) return false;
  }
  if (head.jpeg_color_space == JCS_RGB) {
    return parts[0].h_samp_factor == 1 && parts[0].v_samp_factor == 1;
  }
  return isFactor(parts[0].h_samp_factor) && isFactor(parts[0].v_samp_factor);
}

void requireKnownColours(const jpeg_decompress_struct& head) {
  const J_COLOR_SPACE space = head.jpeg_color_space;
  const bool isKnown = space == JCS_GRAYSCALE || space == JCS_YCbCr || space == JCS_RGB ||
                       space == JCS_CMYK || space == JCS_YCCK;
  if (!isKnown) {
    throw Failure(L"有 " + std::to_wstring(head.num_components) + L" 个分量的 JPEG 图像不能登记");
  }
}

EncodedImage embedded(JpegStream& jpeg, ByteView stream) {
  const jpeg_decompress_struct& head = jpeg.head();
  const bool isGray = head.jpeg_color_space == JCS_GRAYSCALE;
  EncodedImage image;
  image.width = head.image_width;
  image.height = head.image_height;
  image.bitsPerSample = 8;
  image.samplesPerPixel = static_cast<std::uint16_t>(head.num_components);
  image.photometric = isGray                               ? Photometric::MinIsBlack
                      : head.jpeg_color_space == JCS_YCbCr ? Photometric::YCbCr
                                                           : Photometric::Rgb;
  if (image.photometric == Photometric::YCbCr) {
    image.chromaSubsampling = {static_cast<std::uint16_t>(head.comp_info[0].h_samp_factor),
                               static_cast<std::uint16_t>(head.comp_info[0].v_samp_factor)};
  }
  image.compression = Compression::Jpeg;
  image.rowsPerStrip = image.height;
  const bool isPlain = head.progressive_mode == FALSE && head.arith_code == FALSE &&
                       head.comps_in_scan == head.num_components;
  image.strips.push_back(isPlain ? plainStream(stream, isGray)
                                 : plainStream(jpeg.inOneScan(), isGray));
  return image;
}

EncodedImage decoded(JpegStream& jpeg, bool invert) {
  Raster raster = jpeg.decode();
  if (invert) {
    for (std::uint8_t& sample : raster.pixels) sample = static_cast<std::uint8_t>(~sample);
  }
  return encodeWithoutLoss(std::move(raster));
}

// JFIF states a density as dots per inch or centimetre, or only the shape of a pixel.
Resolution jfifResolution(const jpeg_decompress_struct& head) {
  if (head.saw_JFIF_marker == FALSE || head.density_unit < 1 || head.density_unit > 2) return {};
  return statedResolution(head.X_density, head.Y_density,
                          head.density_unit == 2 ? kCentimetresPerInch : 1);
}

ExifNotes exifOf(const jpeg_decompress_struct& head) {
  for (jpeg_saved_marker_ptr marker = head.marker_list; marker != nullptr; marker = marker->next) {
    if (marker->marker != kExifMarker) continue;
    const ByteView segment(marker->data, marker->data_length);
    if (segment.size() > 4 && std::equal(segment.begin(), segment.begin() + 4, "Exif")) {
      return readExif(segment);
    }
  }
  return {};
}

}  // namespace

JpegSummary readJpegSummary(ByteView stream) {
  JpegStream jpeg;
  jpeg.readHead(stream);
  requireKnownColours(jpeg.head());
  return {jpeg.head().image_width, jpeg.head().image_height,
          static_cast<unsigned>(jpeg.head().num_components)};
}

EncodedImage jpegPage(ByteView stream, const JpegMeaning& meaning) {
  JpegStream jpeg;
  jpeg.readHead(stream);
  requireKnownColours(jpeg.head());
  if (meaning.isPlainRgb && jpeg.head().num_components == 3 && !jpeg.head().saw_Adobe_marker) {
    jpeg.head().jpeg_color_space = JCS_RGB;
  }
  const ExifNotes exif = exifOf(jpeg.head());
  Resolution resolution = jfifResolution(jpeg.head());
  if (!resolution.isStated) resolution = exif.resolution;
  Bytes profile = jpeg.profile();

  const bool isCmyk = jpeg.head().num_components == 4;
  const bool invert = meaning.isInverted != (isCmyk && meaning.isInvertedCmyk);
  EncodedImage image =
      fitsTiff(jpeg.head()) && !invert ? embedded(jpeg, stream) : decoded(jpeg, invert);
  image.resolution = resolution;
  image.orientation = exif.orientation;
  image.iccProfile = std::move(profile);
  return image;
}

}  // namespace orvane
