#include "imaging/ImagingControl.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "foundation/Failure.h"
#include "foundation/utf8_text.h"
#include "support/TempStation.h"
#include "support/command.h"

/// The real instance with real files. Sources come from ImageMagick, and what was saved is judged
/// by ImageMagick and the tools of libtiff, poppler and qpdf.
namespace orvane::test {
namespace {

// A picture with fine detail, hard edges and a gradient; 203 pixels wide so that rows do not end on
// a byte.
const std::string kPicture =
    "convert -size 203x151 gradient:white-black -fill white -draw 'circle 60,60 60,20' -fill black "
    "-draw 'polygon 90,120 101,31 140,120' -density 150 -units PixelsPerInch ";
const std::string kColourPicture =
    "convert -size 203x151 gradient:red-blue -fill yellow -draw 'circle 60,60 60,20' -density 150 "
    "-units PixelsPerInch ";

struct SourceKind {
  std::string name;
  std::string options;  ///< of ImageMagick, behind the picture
  bool colour;
  std::int16_t bits;
};

const std::vector<SourceKind> kSources{
    {"g4", "-type bilevel -compress Group4", false, 1},
    {"lzw1", "-alpha off -depth 1 -type bilevel -compress LZW", false, 1},
    {"gray4", "-alpha off -depth 4 -type grayscale -compress None", false, 4},
    {"gray8", "-depth 8 -type grayscale -compress LZW", false, 8},
    {"gray16", "-depth 16 -type grayscale -compress Zip", false, 16},
    {"rgb8", "-depth 8 -type TrueColor -compress None", true, 24},
    {"rgb16", "-depth 16 -type TrueColor -compress LZW", true, 48},
    {"palette8", "-colors 60 -type Palette -compress LZW", true, 8},
    {"rgba", "-depth 8 -alpha set -channel A -evaluate set 60% +channel -compress LZW", true, 32},
    {"cmyk", "-alpha off -depth 8 -colorspace CMYK -compress LZW", true, 32},
};

class RealEngine : public testing::Test {
 protected:
  TempStation station;
  ImagingControl engine;

  std::string file(const std::string& name) const { return quoted(station.native(name)); }

  std::wstring makeSource(const SourceKind& kind) {
    outputOf((kind.colour ? kColourPicture : kPicture) + kind.options +
             " TIFF:" + file(kind.name + ".tif"));
    return station.path(fromUtf8(kind.name) + L".tif");
  }

  std::wstring save(std::int32_t type, std::int32_t code, const std::wstring& name,
                    bool append = false) {
    const std::wstring target = station.path(name);
    engine.SaveMultiPage(append);
    engine.TargetFile(target);
    engine.OutputType(type);
    engine.TiffCompression(code);
    engine.PdfCompression(code);
    engine.SaveFile();
    return target;
  }

  double differingPixels(const std::string& a, const std::string& b) const {
    // compare writes the count to standard error and ends with 1 when there are any.
    return std::stod(runCommand("compare -metric AE " + a + " " + b + " null:").output);
  }
};

TEST_F(RealEngine, LosslessFormsKeepEveryPixel) {
  for (const SourceKind& kind : kSources) {
    SCOPED_TRACE(kind.name);
    engine.SourceFile(makeSource(kind));
    EXPECT_EQ(engine.BitsPerPixel(), kind.bits);
    EXPECT_EQ(engine.ImageWidth(), 203);
    EXPECT_EQ(engine.ImageHeight(), 151);
    const std::string source = file(kind.name + ".tif");

    save(kSaveTiff, kTiffLzw, L"lzw.tif");
    save(kSaveTiff, kTiffNone, L"none.tif");
    EXPECT_EQ(differingPixels(source, file("lzw.tif")), 0);
    EXPECT_EQ(differingPixels(source, file("none.tif")), 0);
    const std::string info = outputOf("tiffinfo -D " + file("lzw.tif"));
    EXPECT_NE(info.find("Resolution: 150, 150 pixels/inch"), info.npos) << info;
    EXPECT_NE(info.find("Compression Scheme: LZW"), info.npos) << info;

    if (kind.bits == 1) {
      save(kSaveTiffBilevel, kTiffGroup4, L"g4.tif");
      EXPECT_EQ(differingPixels(source, file("g4.tif")), 0);
      save(kSavePdf, kPdfGroup4, L"g4.pdf");
      outputOf("pdfimages -png " + file("g4.pdf") + " " + file("page") + " && qpdf --check " +
               file("g4.pdf"));
      EXPECT_EQ(differingPixels(source, file("page-000.png")), 0);
    }
    EXPECT_EQ(engine.ImagError(), 0);
  }
}

TEST_F(RealEngine, EveryPageGoesToPdfAndJpegAtItsOwnSize) {
  for (const SourceKind& kind : kSources) {
    SCOPED_TRACE(kind.name);
    engine.SourceFile(makeSource(kind));
    save(kSavePdf, kPdfNone, L"raw.pdf");
    save(kSavePdf, kPdfJpeg, L"dct.pdf");
    save(kSaveJpeg, 0, L"page.jpg_B");
    for (const char* pdf : {"raw.pdf", "dct.pdf"}) {
      outputOf("qpdf --check " + file(pdf));
      const std::string info = outputOf("pdfinfo " + file(pdf));
      EXPECT_NE(info.find("97.44 x 72.48 pts"), info.npos) << info;
    }
    const std::string jpeg = outputOf("identify -format '%m %w %h %x' " + file("page.jpg_B"));
    EXPECT_EQ(jpeg.substr(0, 16), "JPEG 203 151 150");
  }
}

TEST_F(RealEngine, TheOutputResolutionSetsThePdfPage) {
  engine.SourceFile(makeSource(kSources[0]));
  engine.OutputResolutionX(200.0);
  engine.OutputResolutionY(100.0);
  save(kSavePdf, kPdfGroup4, L"a.pdf");
  const std::string info = outputOf("pdfinfo " + file("a.pdf"));
  EXPECT_NE(info.find("73.08 x 108.72 pts"), info.npos) << info;
}

TEST_F(RealEngine, AppendedPagesStandInTheirOrderWhateverTheirKind) {
  for (const SourceKind& kind : kSources) {
    engine.SourceFile(makeSource(kind));
    const bool bilevel = kind.bits == 1;
    save(bilevel ? kSaveTiffBilevel : kSaveTiffMultiBit, bilevel ? kTiffGroup4 : kTiffJpeg,
         L"m.tif", true);
    save(kSavePdf, bilevel ? kPdfGroup4 : kPdfJpeg, L"m.pdf", true);
  }
  const auto pages = static_cast<std::int32_t>(kSources.size());
  EXPECT_EQ(engine.FilePageCount(station.path(L"m.tif")), pages);
  EXPECT_EQ(engine.FilePageCount(station.path(L"m.pdf")), pages);
  EXPECT_EQ(outputOf("identify " + file("m.tif") + " | wc -l"), std::to_string(pages) + "\n");

  engine.DeletePageFromFile(station.path(L"m.tif"), 1);
  engine.DeletePageFromFile(station.path(L"m.pdf"), 1);
  EXPECT_EQ(outputOf("identify " + file("m.tif") + " | wc -l"), std::to_string(pages - 1) + "\n");
  EXPECT_EQ(outputOf("qpdf --show-npages " + file("m.pdf")), std::to_string(pages - 1) + "\n");
  EXPECT_EQ(differingPixels(file("lzw1.tif"), file("m.tif") + "'[0]'"), 0);
}

TEST_F(RealEngine, ADamagedPageIsRecordedAndWhatCannotBeLoadedIsThrown) {
  makeSource(kSources[0]);
  std::string bytes = readBytes(station.native("g4.tif"));
  for (std::size_t i = 40; i < 60; ++i) bytes[i] = '\x55';
  writeBytes(station.native("damaged.tif"), bytes);
  engine.SourceFile(station.path(L"damaged.tif"));
  save(kSaveTiffBilevel, kTiffGroup4, L"out.tif");
  EXPECT_EQ(engine.ImagError(), kDamagedData);

  try {
    engine.SourceFile(station.path(L"absent.tif"));
    ADD_FAILURE() << "a missing file was loaded";
  } catch (const Failure& failure) {
    EXPECT_NE(description(failure).find(L"absent.tif"), std::wstring::npos);
  }
  EXPECT_EQ(engine.ImagError(), kFailed);
  EXPECT_THROW(engine.SaveFile(), Failure);
  engine.SourceFile(L"");
  EXPECT_EQ(engine.ImagError(), 0);
  EXPECT_EQ(engine.BitsPerPixel(), 0);
}

TEST_F(RealEngine, SavingOverTheSourceGivesItUpOnlyForAWholeFile) {
  engine.SourceFile(makeSource(kSources[3]));
  const std::string before = readBytes(station.native("gray8.tif"));
  EXPECT_THROW(save(kSaveTiff, 99, L"gray8.tif"), Failure);
  EXPECT_EQ(readBytes(station.native("gray8.tif")), before);
  save(kSaveTiff, kTiffNone, L"gray8.tif");
  EXPECT_EQ(outputOf("identify -format '%C %wx%h' " + file("gray8.tif")), "None 203x151");
  EXPECT_EQ(outputOf("ls " + file("") + " | wc -l"), "1\n");
}

TEST_F(RealEngine, ABitmapGoesToAnotherInstanceOnceByItsHandle) {
  engine.SourceFile(makeSource(kSources[5]));
  const std::int32_t handle = engine.CopyDIB();
  ImagingControl thumbnail;
  thumbnail.hDIB(handle);
  thumbnail.ResizeImage(50, 37);
  thumbnail.OutputType(kSaveJpeg);
  thumbnail.TargetFile(station.path(L"rgb8.tif_B"));
  thumbnail.SaveFile();
  EXPECT_EQ(outputOf("identify -format '%m %wx%h' " + file("rgb8.tif_B")), "JPEG 50x37");
  EXPECT_EQ(engine.ImageWidth(), 203);
  EXPECT_THROW(thumbnail.hDIB(handle), Failure);
  EXPECT_NE(thumbnail.ImagError(), 0);
}

}  // namespace
}  // namespace orvane::test
