#include "intake/open_source_file.h"

#include "imaging/raster/icc_profile.h"
#include "intake/intake.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;

// Edges, gradients and colours, with a resolution.
const std::string kDraw =
    "convert -size 61x43 -depth 8 gradient:navy-orange -fill red -draw 'rectangle 5,5 20,15' "
    "-fill black -draw 'line 0,0 60,42' -units PixelsPerInch -density 300 ";

TEST_F(Intake, PicturesKeepTheirPixelsAndTheirResolution) {
  struct Case {
    std::string make;       // after kDraw: the file `in`
    std::string file;       // read back by ImageMagick as it is
    std::string form;       // of the page: compression, depth, type
    std::string options{};  // for the comparison
  };
  // Without -alpha off ImageMagick 7 makes black transparent.
  const std::string black = "-colorspace Gray -threshold 50% -alpha off ";
  for (const Case& c : std::vector<Case>{
           // PNG of every colour type and depth
           {black + "PNG:in", "in", "Group4 1"},
           {black + "-negate -interlace PNG PNG:in", "in", "Group4 1"},
           {"-colorspace Gray -depth 2 -define png:color-type=0 -define png:bit-depth=2 PNG:in",
            "in", "LZW 2"},
           {"-colorspace Gray -depth 4 -define png:color-type=0 -define png:bit-depth=4 PNG:in",
            "in", "LZW 4"},
           {"-colorspace Gray PNG:in", "in", "LZW 8"},
           {"-colorspace Gray -depth 16 -define png:color-type=0 -define png:bit-depth=16 PNG:in",
            "in", "LZW 16"},
           {"-interlace PNG PNG24:in", "in", "LZW 8"},
           {"-depth 16 -interlace PNG PNG48:in", "in", "LZW 16"},
           {"+dither -colors 2 PNG8:in", "in", "LZW 8"},
           {"+dither -colors 200 -interlace PNG PNG8:in", "in", "LZW 8"},
           // opacity over white
           {"PNG32:in", "in", "LZW 8"},
           {"-alpha set -channel A -evaluate set 40% +channel PNG32:in",
            "in -background white -alpha remove", "LZW 8"},
           {"-depth 16 -alpha set -channel A -evaluate set 40% +channel PNG64:in",
            "in -background white -alpha remove", "LZW 16", "-fuzz 0.01%"},
           {"-colorspace Gray -alpha set -channel A -evaluate set 70% +channel "
            "-define png:color-type=4 PNG:in",
            "in -background white -alpha remove", "LZW 8"},
           {"-transparent red -define png:color-type=2 PNG:in",
            "in -background white -alpha remove", "LZW 8"},
           {"+dither -colors 16 -transparent red PNG8:in", "in -background white -alpha remove",
            "LZW 8"},
           // JPEG: gray, every usual subsampling and an unusual one, progressive, RGB, CMYK
           {"-colorspace Gray JPEG:in", "in", "JPEG 8"},
           {"-sampling-factor 4:4:4 JPEG:in", "in", "JPEG 8"},
           {"-sampling-factor 4:2:2 JPEG:in", "in", "JPEG 8"},
           {"-sampling-factor 4:2:0 JPEG:in", "in", "JPEG 8"},
           {"-sampling-factor 4:1:1 JPEG:in", "in", "JPEG 8"},
           {"-sampling-factor 1x2 JPEG:in", "in", "JPEG 8"},
           {"-sampling-factor 2x2,1x2,2x1 JPEG:in", "in", "LZW 8"},
           {"-interlace JPEG JPEG:in", "in", "JPEG 8"},
           {"-interlace JPEG -colorspace Gray JPEG:in", "in", "JPEG 8"},
           {"-set colorspace RGB -sampling-factor 1x1 JPEG:in", "in", "JPEG 8"},
           {"PPM:- | cjpeg -rgb -sample 1x1 >in", "in", "JPEG 8"},
           {"PPM:- | cjpeg -arithmetic >in", "in", "JPEG 8"},
           {"PPM:- | cjpeg -grayscale -sample 2x2 >in", "in", "JPEG 8"},
           {"-colorspace CMYK JPEG:in", "in", "LZW 8"},
       }) {
    SCOPED_TRACE(c.make);
    station.shell(kDraw + c.make);
    EXPECT_EQ(take("in"), "");
    EXPECT_EQ(differing(c.file, c.options), "0");
    EXPECT_THAT(identify("%C %[tiff:depth]%z"), c.form);
    const bool statesResolution = c.make.find("cjpeg") == std::string::npos;
    EXPECT_EQ(identify("%x"), statesResolution ? "300" : "200");
  }
}

TEST_F(Intake, AJpegStreamIsInThePageByteForByte) {
  station.shell(kDraw + "in.jpg && cp in.jpg tail.jpg && printf 'more' >>tail.jpg");
  for (const char* file : {"in.jpg", "tail.jpg"}) {
    EXPECT_EQ(take(file), "");
    EXPECT_THAT(station.read("page.tif"), HasSubstr(station.read("in.jpg")));
    EXPECT_THAT(station.read("page.tif"), Not(HasSubstr("more")));
  }
}

// A TIFF directory of four fields in an APP1 segment, in both byte orders.
std::string exif(int orientation, bool bigEndian) {
  std::string bytes;
  const auto put = [&](unsigned value, int width) {
    for (int i = 0; i < width; ++i) {
      bytes += static_cast<char>(value >> (8 * (bigEndian ? width - 1 - i : i)));
    }
  };
  const auto field = [&](unsigned tag, unsigned type, unsigned value) {
    put(tag, 2);
    put(type, 2);
    put(1, 4);
    put(value, type == 3 ? 2 : 4);
    if (type == 3) put(0, 2);
  };
  bytes += bigEndian ? "MM" : "II";
  put(42, 2);
  put(8, 4);
  put(4, 2);
  field(0x112, 3, static_cast<unsigned>(orientation));
  field(0x11A, 5, 62);
  field(0x11B, 5, 70);
  field(0x128, 3, 3);  // centimetres
  put(0, 4);
  for (const unsigned number : {2400U, 20U, 1200U, 20U}) put(number, 4);  // 120 and 60
  const std::size_t length = 2 + 6 + bytes.size();
  return std::string("\xFF\xE1") + static_cast<char>(length >> 8) + static_cast<char>(length) +
         std::string("Exif\0\0", 6) + bytes;
}

TEST_F(Intake, ExifTurnsTheJpegPage) {
  station.shell(kDraw + "-sampling-factor 4:4:4 in.jpg");
  const std::string jpeg = station.read("in.jpg");
  const std::size_t afterJfif = 20;  // this segment states a resolution, so it goes
  for (int orientation = 1; orientation <= 8; ++orientation) {
    SCOPED_TRACE(orientation);
    station.write("in.jpg", jpeg.substr(0, 2) + exif(orientation, orientation % 2 == 0) +
                                jpeg.substr(afterJfif));
    EXPECT_EQ(take("in.jpg"), "");
    EXPECT_EQ(differing("in.jpg"), "0");
    EXPECT_THAT(station.shell("tiffinfo page.tif"), HasSubstr("Resolution: 304.8, 152.4"));
    const LoadedPage page(station.path(L"page.tif"), 1);
    EXPECT_EQ(page.width(), orientation < 5 ? 61U : 43U);
  }
}

TEST_F(Intake, ProfilesAreKept) {
  station.write("p.icc", srgbProfile());
  for (const char* file : {"in.jpg", "in.png"}) {
    station.shell(kDraw + "-profile p.icc " + file);
    EXPECT_EQ(take(file), "");
    station.shell("convert page.tif kept.icc && cmp kept.icc p.icc");
  }
}

TEST_F(Intake, TiffPagesAreCopied) {
  station.shell(kDraw + "-compress LZW a.tif && " + kDraw +
                "-colorspace Gray -compress JPEG b.tif && " + kDraw +
                "-threshold 50% -compress Group4 c.tif && tiffcp a.tif b.tif c.tif all.tif && "
                "tiffcp -8 -t -w 16 -l 16 a.tif c.tif big.tif && tiffcp -B -c none b.tif one.TIF");
  EXPECT_EQ(take("one.TIF"), "");
  EXPECT_EQ(station.read("page.tif"), station.read("one.TIF"));
  // To another file system too, which shares no blocks.
  const std::filesystem::path far = "/dev/shm/intake-" + station.native().filename().native();
  openSourceFile(station.path(L"one.TIF"))->writePage(1, pathText(far));
  EXPECT_EQ(readBytes(far), station.read("one.TIF"));
  std::filesystem::remove(far);
  for (const auto& [file, pages] : {std::pair("all.tif", 3), {"big.tif", 2}}) {
    ASSERT_EQ(openSourceFile(station.path(fromUtf8(file)))->pageCount(), pages);
    for (int page = 1; page <= pages; ++page) {
      SCOPED_TRACE(std::string(file) + std::to_string(page));
      EXPECT_EQ(take(file, page), "");
      // The page alone against the same page of the whole file: tags, and then pixels.
      const std::string name = std::string(file) + "," + std::to_string(page - 1);
      station.shell(
          "tiffcp -s " + name +
          " expected.tif && tiffcp -s page.tif actual.tif && tiffcmp expected.tif actual.tif");
      EXPECT_EQ(station.shell("tiffinfo page.tif | grep -c 'TIFF Directory'"), "1\n");
      EXPECT_LT(station.read("page.tif").size(), station.read(file).size());
    }
  }
}

TEST_F(Intake, WhatIsNoPageIsRefusedAndNamed) {
  struct Case {
    std::string name;
    std::string make;
    std::string reason;
  };
  station.shell(kDraw + "-noise 8 good.png && " + kDraw + "-noise 8 good.jpg && " + kDraw +
                "-interlace JPEG prog.jpg && " + kDraw + "-compress Zip good.tif");
  for (const Case& c : std::vector<Case>{
           {"x.jp2", "printf '\\0\\0\\0\\014jP  \\r\\n\\207\\n' >x.jp2", "JPEG 2000 图像不能登记"},
           {"x.dat", "printf '\\377\\117\\377\\121' >x.dat", "JPEG 2000 图像不能登记"},
           {"x.jb2", "printf '\\227JB2\\r\\n\\032\\n' >x.jb2", "JBIG2 图像不能登记"},
           {"x.bmp", kDraw + "x.bmp", "BMP 图像不能登记"},
           {"x.gif", kDraw + "x.gif", "GIF 图像不能登记"},
           {"x.webp", "printf 'RIFF1234WEBPVP8 ' >x.webp", "WebP 图像不能登记"},
           {"x", "printf '\\0\\0\\0\\030ftypheic' >x", "HEIF 图像不能登记"},
           {"empty.TiF", ": >empty.TiF", "文件是空的"},
           {"text.PDF", "echo text >text.PDF", "不是图像文件"},
           {"text.txt", "echo text >text.txt", "not an image"},
           {"BM.txt", "echo 'BM, a text that is longer than a header' >BM.txt", "not an image"},
           {"cut.png", "head -c -40 good.png >cut.png", "PNG 数据损坏"},
           {"head.png", "head -c 20 good.png >head.png", "PNG 数据损坏"},
           {"cut.jpg", "head -c -9 good.jpg >cut.jpg", "JPEG 数据不完整"},
           {"head.jpg", "head -c 30 good.jpg >head.jpg", "JPEG 数据损坏"},
           {"cutprog.jpg", "{ head -c -200 prog.jpg; printf '\\377\\331'; } >cutprog.jpg",
            "JPEG 数据损坏"},
           {"cut.tif", "head -c 100 good.tif >cut.tif", "cut.tif"},
           // 900,000 pixels square, with the checksum of that
           {"huge.png",
            "{ head -c 12 good.png; printf 'IHDR\\000\\015\\273\\240\\000\\015\\273\\240\\020\\006"
            "\\000\\000\\000\\200\\055\\115\\314'; tail -c +34 good.png; } >huge.png",
            "图像太大"},
       }) {
    SCOPED_TRACE(c.name);
    station.shell(c.make);
    const std::string reason = take(c.name);
    EXPECT_THAT(reason, HasSubstr(c.reason));
    EXPECT_NE(reason, "");
  }
  EXPECT_EQ(openSourceFile(station.path(L"text.txt")), nullptr);
}

}  // namespace
}  // namespace orvane::test
