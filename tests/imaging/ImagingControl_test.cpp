#include "imaging/ImagingControl.h"

#include <gmock/gmock.h>

#include "foundation/utf8_text.h"
#include "imaging/differingPixels.h"
#include "support/TempStation.h"
#include "support/failureOf.h"

/// The real instance with real files, made and judged by outside tools.
namespace orvane::test {
namespace {

using testing::HasSubstr;

// Hard edges and a gradient; 203 pixels wide so that rows do not end on a byte.
const std::string kPicture =
    "convert -size 203x151 gradient:black-white -fill white -draw 'circle 60,60 60,20' -fill black "
    "-draw 'polygon 90,120 101,31 140,120' -density 150 -units PixelsPerInch ";
const std::string kColour = "+level-colors red,blue ";

struct SourceKind {
  std::string name;
  std::string options;  ///< of ImageMagick, behind the picture
  std::int16_t bits;
};

const std::vector<SourceKind> kSources{
    {"g4", "-type bilevel -compress Group4", 1},
    {"lzw1", "-alpha off -depth 1 -type bilevel -compress LZW", 1},
    {"gray4", "-alpha off -depth 4 -type grayscale -compress None", 4},
    {"gray8", "-depth 8 -type grayscale -compress LZW", 8},
    {"gray16", "-depth 16 -type grayscale -compress Zip", 16},
    {"rgb8", kColour + "-depth 8 -type TrueColor -compress None", 24},
    {"rgb16", kColour + "-depth 16 -type TrueColor -compress LZW", 48},
    {"palette8", kColour + "-depth 8 -type Palette -compress LZW", 8},
    {"rgba", kColour + "-depth 8 -alpha set -channel A -evaluate set 60% -compress LZW", 32},
    {"cmyk", kColour + "-alpha off -depth 8 -colorspace CMYK -compress LZW", 32},
    {"white8", "-depth 8 -type grayscale -define quantum:polarity=min-is-white", 8},
};

struct RealEngine : testing::Test {
  TempStation station;
  ImagingControl engine;

  std::string file(const std::string& name) const { return quoted(station.native(name)); }

  void load(const SourceKind& kind) {
    outputOf(kPicture + kind.options + " TIFF:" + file(kind.name));
    engine.SourceFile(station.path(fromUtf8(kind.name)));
  }

  void save(std::int32_t type, std::int32_t code, const std::wstring& name, bool append = false) {
    engine.SaveMultiPage(append);
    engine.TargetFile(station.path(name));
    engine.OutputType(type);
    engine.TiffCompression(code);
    engine.PdfCompression(code);
    engine.SaveFile();
  }
};

TEST_F(RealEngine, EveryPageGoesToEveryFormAtItsSizeAndUnchangedWhereItCan) {
  for (const SourceKind& kind : kSources) {
    SCOPED_TRACE(kind.name);
    load(kind);
    EXPECT_EQ(engine.BitsPerPixel(), kind.bits);
    save(kSaveTiff, kTiffLzw, L"lzw.tif");
    save(kSaveTiff, kTiffNone, L"none.tif");
    EXPECT_EQ(differingPixels(file(kind.name), file("lzw.tif")), "0");
    EXPECT_EQ(differingPixels(file(kind.name), file("none.tif")), "0");
    save(kSavePdf, kPdfNone, L"raw.pdf");
    save(kSavePdf, kPdfJpeg, L"dct.pdf");
    save(kSaveJpeg, 0, L"page.jpg_B");
    save(kSaveTiffBilevel, kTiffGroup4, L"g4.tif");
    station.shell("pdfimages -png raw.pdf raw");
    const std::string shown = "-background white -alpha remove -alpha off -colorspace sRGB ";
    EXPECT_EQ(differingPixels(file(kind.name), file("raw-000.png"), shown, "1%"), "0");
    for (const auto& [lossy, options] :
         {std::pair{"page.jpg_B", ""}, {"g4.tif", "-grayscale Rec601Luma -threshold 50%"}}) {
      EXPECT_LT(std::stoi(differingPixels(file(kind.name), file(lossy), shown + options, "30%")),
                kind.bits == 1 ? 1 : 200)
          << lossy;
    }
    station.shell(
        "for f in raw dct; do qpdf --check $f.pdf && pdfinfo $f.pdf | grep '97.44 x 72.48 pts'; "
        "done && tiffinfo lzw.tif | grep 'Resolution: 150, 150 pixels/inch' && "
        "identify -format '%m %w %h %x' page.jpg_B | grep '^JPEG 203 151 150'");
    if (kind.bits == 1) {
      save(kSavePdf, kPdfGroup4, L"g4.pdf");
      station.shell("qpdf --check g4.pdf && pdfimages -png g4.pdf page");
      EXPECT_EQ(differingPixels(file(kind.name), file("page-000.png")), "0");
    }
    save(kSaveTiff, kind.bits == 1 ? kTiffGroup4 : kTiffJpeg, L"m.tif", true);
    save(kSavePdf, kind.bits == 1 ? kPdfGroup4 : kPdfJpeg, L"m.pdf", true);
    EXPECT_EQ(engine.ImagError(), kNoImagError);
  }
  station.shell("test -z \"$(tiffinfo -D m.tif 2>&1 >/dev/null; qpdf --check m.pdf | grep WARN)\"");
  for (const std::wstring name : {L"m.tif", L"m.pdf"}) {
    EXPECT_EQ(engine.FilePageCount(station.path(name)), 11);
    engine.DeletePageFromFile(station.path(name), 1);
  }
  station.shell("test $(identify m.tif | wc -l)$(qpdf --show-npages m.pdf) = 1010");
  EXPECT_EQ(differingPixels(file("lzw1"), file("m.tif[0]")), "0");
}

// A page's own resolution stays with its pixels, and an output resolution does not take its place.
TEST_F(RealEngine, ResolutionBelongsToThePage) {
  const struct {
    std::string stated;  ///< of ImageMagick
    double angle;
    std::string written, points;
  } cases[] = {{"-density 203x98", 0, "203, 98", "72 x 110.939"},
               {"-density 203x98", 90, "98, 203", "110.939 x 72"},
               {"-density 203x98", -270, "98, 203", "110.939 x 72"},
               {"-density 203x98", 180, "203, 98", "72 x 110.939"},
               {"-density 203x98", 0.1, "203, 98", "72.3547 x 111.673"},
               {"-density 203x98 -units Undefined", 90, "200, 200", "54.36 x 146.16"}};
  engine.OutputResolutionX(200.0);  // as an earlier conversion leaves them
  engine.OutputResolutionY(100.0);
  for (const auto& [stated, angle, written, points] : cases) {
    SCOPED_TRACE(stated + " turned by " + std::to_string(angle));
    load({"page.tif", stated + " -type bilevel -compress Group4", 1});
    engine.RotateImage(angle);
    ImagingControl other;
    other.hDIB(engine.CopyDIB());
    other.TargetFile(station.path(L"out.tif"));
    other.SaveFile();
    save(kSavePdf, kPdfGroup4, L"out.pdf");
    EXPECT_THAT(station.shell("tiffinfo out.tif"), HasSubstr("Resolution: " + written + " pixels"));
    EXPECT_THAT(station.shell("pdfinfo out.pdf"), HasSubstr(points + " pts"));
  }
}

TEST_F(RealEngine, ItsPdfFilesAreArchiveFiles) {
  std::string classPath;
  for (const std::string jar : {"preflight", "xmpbox", "pdfbox2", "fontbox2", "commons-logging",
                                "javax.activation", "jaxb-api"}) {
    const std::string library = "/usr/share/java/" + jar + ".jar";
    if (!std::filesystem::exists(library)) GTEST_SKIP() << library << " is not installed";
    classPath += library + ":";
  }
  if (runCommand("java -version").exitCode != 0) GTEST_SKIP() << "no Java runtime";
  station.shell("mkdir pdf");
  for (const SourceKind& kind : kSources) {
    load(kind);
    save(kSavePdf, kPdfNone, L"pdf\\" + fromUtf8(kind.name) + L".pdf");
    for (const std::int32_t code : {kPdfNone, kPdfGroup4, kPdfJpeg}) {
      save(kSavePdf, code, L"pdf\\all.pdf", true);
    }
  }
  for (int i = 0; i < 201; ++i) save(kSavePdf, kPdfGroup4, L"pdf\\long.pdf", true);
  EXPECT_EQ(station.shell("java -cp " + classPath +
                          " org.apache.pdfbox.preflight.Validator_A1b xml batch pdf >log; "
                          "cat pdf/*.xml | grep -c 'PDF/A1-b\">true</isValid>'"),
            "13\n");
}

TEST_F(RealEngine, ADamagedPageIsRecordedAndWhatCannotBeLoadedIsThrown) {
  load(kSources[0]);
  station.shell("yes U | tr -d '\\n' | dd of=g4 bs=1 seek=40 count=20 conv=notrunc");
  engine.SourceFile(station.path(L"g4"));
  save(kSaveTiffBilevel, kTiffGroup4, L"out.tif");
  EXPECT_EQ(engine.ImagError(), kDamagedData);
  const std::string failure = failureOf([&] { engine.SourceFile(station.path(L"absent.tif")); });
  EXPECT_NE(failure.find("absent.tif"), std::string::npos);
  EXPECT_EQ(engine.ImagError(), kFailed);
  EXPECT_THROW(engine.SaveFile(), Failure);
  engine.SourceFile(station.path(L"g4"));
  EXPECT_THROW(engine.FinishingFilter(7, 1), Failure);  // takes the page with it
  EXPECT_THROW(engine.SaveFile(), Failure);
  engine.SourceFile(L"");
  EXPECT_EQ(engine.ImagError(), kNoImagError);
  EXPECT_EQ(engine.BitsPerPixel(), 0);
}

TEST_F(RealEngine, SavingOverTheSourceGivesItUpOnlyForAWholeFile) {
  load(kSources[3]);
  const std::string before = readBytes(station.native("gray8"));
  EXPECT_THROW(save(kSaveTiff, 99, L"gray8"), Failure);
  EXPECT_EQ(readBytes(station.native("gray8")), before);
  save(kSaveTiff, kTiffNone, L"gray8");
  station.shell("identify -format '%C %wx%h' gray8 | grep 'None 203x151' && test $(ls) = gray8");
}

TEST_F(RealEngine, ABitmapGoesToAnotherInstanceOnceByItsHandle) {
  load(kSources[5]);
  const std::int32_t handle = engine.CopyDIB();
  ImagingControl thumbnail;
  thumbnail.hDIB(handle);
  thumbnail.ResizeImage(50, 37);
  thumbnail.OutputType(kSaveJpeg);
  thumbnail.TargetFile(station.path(L"rgb8.tif_B"));
  thumbnail.SaveFile();
  station.shell("identify -format '%m %wx%h' rgb8.tif_B | grep 'JPEG 50x37'");
  EXPECT_EQ(engine.ImageWidth(), 203);
  EXPECT_THROW(thumbnail.hDIB(handle), Failure);
  EXPECT_EQ(thumbnail.ImagError(), kFailed);
}

}  // namespace
}  // namespace orvane::test
