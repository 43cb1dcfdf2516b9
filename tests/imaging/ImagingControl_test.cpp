#include "imaging/ImagingControl.h"

#include <gmock/gmock.h>

#include "foundation/text_encoding.h"
#include "imaging/Random.h"
#include "imaging/differing_pixels.h"
#include "imaging/icc.h"
#include "imaging/mdlImageProcess.h"
#include "imaging/tiff/tiff_kinds.h"
#include "support/RecordingWindow.h"
#include "support/TempStation.h"
#include "support/failure_of.h"

/// The real instance with real files, made and judged by outside tools.
namespace orvane::test {
namespace {

using testing::HasSubstr;
using namespace std::string_view_literals;

// Hard edges and a gradient; 203 pixels wide so that rows do not end on a byte.
const std::string kPicture =
    "convert -size 203x151 gradient:black-white -fill white -draw 'circle 60,60 60,20' -fill black "
    "-draw 'polygon 90,120 101,31 140,120' -density 150 -units PixelsPerInch ";
const std::string kColour = "+level-colors red,blue ";

struct SourceKind {
  std::string name;
  std::string options;  ///< of ImageMagick, after the picture
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

  void loadWithProfile(const SourceKind& kind, const Bytes& profile) {
    load(kind);
    TIFF* tiff = TIFFOpen(station.native(kind.name).c_str(), "r+");
    TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<unsigned>(profile.size()), profile.data());
    TIFFRewriteDirectory(tiff);
    TIFFClose(tiff);
    engine.SourceFile(station.path(fromUtf8(kind.name)));
    station.write("profile", {profile.begin(), profile.end()});
  }

  void save(std::int32_t type, std::int32_t code, const std::wstring& name, bool append = false) {
    engine.SaveMultiPage(append);
    engine.TargetFile(station.path(name));
    engine.OutputType(type);
    engine.TiffCompression(code);
    engine.PdfCompression(code);
    engine.SaveFile();
  }

  // page.tif looks like want.png in every form, and one line tells of its early end.
  void expectWhole() {
    engine.SourceFile(station.path(L"page.tif"));
    save(kSaveTiffBilevel, kTiffGroup4, L"g4.tif");
    save(kSaveTiff, kTiffLzw, L"lzw.tif");
    save(kSavePdf, kPdfGroup4, L"g4.pdf");
    EXPECT_EQ(engine.ImagError(), kNoImagError);
    EXPECT_EQ(station.shell("tiffcp -c none g4.tif lzw.tif judged.tif 2>&1; "
                            "pdfimages -png g4.pdf page 2>&1"),
              "");
    for (const std::string result : {"g4.tif", "lzw.tif", "page-000.png"}) {
      EXPECT_EQ(differingPixels(file("want.png"), file(result)), "0") << result;
    }
    const std::string log = station.takeLog();
    EXPECT_THAT(log, testing::EndsWith("图像数据提前结束:" + toUtf8(engine.SourceFile()) +
                                       "--第1页--应有 160 行，实有 151 行，其余按空白输出\n"));
    EXPECT_EQ(std::ranges::count(log, '\n'), 1) << log;
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
               {"-density 203x98 -units Undefined", 90, "96.5517, 200", "112.603 x 73.08"},
               {"-density 203x203 -units Undefined", 90, "200, 200", "54.36 x 146.16"}};
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

// 300 dots an inch written as if they were dots a millimetre; and a page that is too long for a PDF
// file at any usual resolution. Only a PDF file cannot say what they say.
TEST_F(RealEngine, AResolutionThatNoPdfPageCanHaveIsLeftOutThere) {
  const std::tuple<std::uint32_t, std::uint32_t, std::string, std::string, std::string> cases[] = {
      {2480, 3508, "12", "892.8 x 1262.88", "按其分辨率长21048点，改按每英寸200点输出"},
      {64, 50000, "240", "18.432 x 14400", "按其分辨率长15000点，改按每英寸250点输出"},
      {64, 48000, "240", "19.2 x 14400", ""}};
  for (const auto& [width, height, density, points, logged] : cases) {
    writeTiff(station.native("page.tif"), {.bits = 1, .width = width, .height = height});
    station.shell("for tag in 282 283; do tiffset -s $tag " + density + " page.tif; done");
    engine.SourceFile(station.path(L"page.tif"));
    save(kSavePdf, kPdfGroup4, L"out.pdf");
    EXPECT_THAT(station.shell("pdfinfo out.pdf"), HasSubstr(points + " pts"));
    EXPECT_THAT(station.takeLog(), HasSubstr(logged));
    save(kSaveTiffBilevel, kTiffGroup4, L"out.tif");
    EXPECT_THAT(station.shell("tiffinfo out.tif"), HasSubstr(density + ", " + density + " pixels"));
    EXPECT_EQ(station.takeLog(), "");
  }
}

// Rules across the page and one down it, turned on paper and scanned with 200 x 100 dots an inch.
TEST_F(RealEngine, APageIsStraightenedInTheProportionsOfThePaper) {
  station.shell(
      "convert -size 800x800 xc:white -draw \"$(for y in $(seq 100 60 700); do "
      "echo rectangle 50,$y 750,$((y + 3)); done) rectangle 398,50 401,750\" -virtual-pixel White "
      "-distort SRT -3 -scale '800x400!' -density 200x100 -units PixelsPerInch -threshold 60% "
      "-type bilevel -compress Group4 page.tif");
  engine.SourceFile(station.path(L"page.tif"));
  engine.DeskewFirstStep();
  engine.DeskewSecondStep(0);
  save(kSaveTiffBilevel, kTiffGroup4, L"out.tif");
  for (const std::string rule : {"8x340+396+30", "680x8+60+167"}) {
    const std::string line = rule.starts_with("8x") ? "8x1!" : "1x8!";
    EXPECT_EQ(station.shell("convert out.tif -crop " + rule + " +repage -depth 8 -scale '" + line +
                            "' -format '%[fx:minima<0.3]' info:"),
              "1")
        << rule;
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
  for (const auto& [kind, space] : {std::pair{0, "GRAY"}, {4, "GRAY"}, {6, "RGB "}, {7, "RGB "}}) {
    loadWithProfile(kSources[kind], iccProfile(space));
    for (const std::int32_t code : {kPdfNone, kind == 0 ? kPdfGroup4 : kPdfJpeg}) {
      save(kSavePdf, code, L"pdf\\profiles.pdf", true);
    }
  }
  EXPECT_EQ(station.shell("java -cp " + classPath +
                          " org.apache.pdfbox.preflight.Validator_A1b xml batch pdf >log; "
                          "cat pdf/*.xml | grep -c 'PDF/A1-b\">true</isValid>'"),
            "14\n");
  station.shell("pdfimages -list pdf/profiles.pdf | grep -c ' icc \\| index ' | grep '^8$'");
}

// A profile that says nothing of the samples that are written is left out, and the log says so.
TEST_F(RealEngine, AProfileGoesWithThePageAsFarAsItFits) {
  const struct {
    int kind;
    std::string space, keptIn;
  } rows[] = {{0, "GRAY", "lzw.tif dct.tif g4.tif page.jpg raw.pdf dct.pdf "},
              {4, "GRAY", "lzw.tif dct.tif g4.tif page.jpg raw.pdf dct.pdf "},
              {5, "RGB ", "lzw.tif dct.tif page.jpg raw.pdf dct.pdf "},
              {7, "RGB ", "lzw.tif dct.tif page.jpg raw.pdf dct.pdf "},
              {8, "RGB ", "lzw.tif dct.tif page.jpg raw.pdf dct.pdf "},
              {9, "CMYK", "lzw.tif "}};
  const std::string judges =
      "rm -f *.icc; for f in lzw.tif dct.tif g4.tif page.jpg; do convert -quiet $f icc:now.icc "
      "2>>quiet; cmp -s now.icc profile && printf \"$f \"; rm -f now.icc; done; for f in raw.pdf "
      "dct.pdf; do qpdf --show-object=6 --raw-stream-data $f 2>>quiet | cmp -s - profile && qpdf "
      "--show-object=7 $f | grep -q ICCBased.6.0.R && printf \"$f \"; done; true";
  for (const auto& [kind, space, keptIn] : rows) {
    for (const std::string other : {"GRAY", "RGB ", "CMYK"}) {
      SCOPED_TRACE(kSources[kind].name + " " + other);
      loadWithProfile(kSources[kind], iccProfile(other));
      save(kSaveTiff, kTiffLzw, L"lzw.tif");
      save(kSaveTiff, kTiffJpeg, L"dct.tif");
      save(kSaveTiff, kTiffGroup4, L"g4.tif");
      save(kSavePdf, kPdfNone, L"raw.pdf");
      engine.RotateImage(90);
      save(kSavePdf, kPdfJpeg, L"dct.pdf");
      save(kSaveJpeg, 0, L"page.jpg");
      EXPECT_EQ(engine.ImagError(), kNoImagError);
      const std::string kept = station.shell(judges);
      EXPECT_EQ(kept, other == space ? keptIn : "");
      const std::string log = station.takeLog();
      EXPECT_EQ(std::ranges::count(log, '\n') + std::ranges::count(kept, ' '), 6) << log;
      const std::string line =
          "ICC配置文件未保留:" + toUtf8(engine.SourceFile()) + "--第1页--颜色空间";
      EXPECT_TRUE(log.empty() || log.find(line) != log.npos) << log;
    }
  }
}

TEST_F(RealEngine, AnUnsoundProfileIsLeftOutAndToldInOneLine) {
  const std::pair<std::function<void(Bytes&)>, std::string> rows[] = {
      {[](Bytes& profile) { profile.pop_back(); }, "长度与其自述的不符"},
      {[](Bytes& profile) { profile.resize(100); }, "长度与其自述的不符"},
      {[](Bytes& profile) { profile[37] = 'x'; }, "没有acsp标志"},
      {[](Bytes& profile) { profile[8] = 5; }, "不支持第5版"},
      {[](Bytes& profile) { std::ranges::copy("link"sv, &profile[12]); }, "类别link不描述图像"},
      {[](Bytes& profile) { profile[16] = 7; }, "颜色空间?GB 与图像不符"},
      {[](Bytes& profile) { profile = iccProfile("RGB ", 4 << 20); }, "达到或超过4 MiB"},
      {[](Bytes& profile) { profile[8] = 4; }, "PDF/A-1b不容许第4版"},
      {[](Bytes& profile) { profile[128] = 1; }, "PDF/A-1b不容许损坏的标签表"},
      {[](Bytes& profile) { profile[140] = 1; }, "PDF/A-1b不容许损坏的标签表"},
      {[](Bytes& profile) { std::ranges::copy("none"sv, &profile[12]); },
       "PDF/A-1b不容许类别none"}};
  for (const auto& [change, reason] : rows) {
    SCOPED_TRACE(reason);
    Bytes profile = iccProfile("RGB ");
    change(profile);
    loadWithProfile(kSources[5], profile);
    save(kSavePdf, kPdfNone, L"page.pdf");
    EXPECT_THAT(station.takeLog(), testing::EndsWith("rgb8--第1页--" + reason + "\n"));
    save(kSaveTiff, kTiffLzw, L"page.tif");
    EXPECT_EQ(station.takeLog().empty(), reason.starts_with("PDF"));
    EXPECT_EQ(engine.ImagError(), kNoImagError);
    EXPECT_EQ(differingPixels(file("rgb8"), file("page.tif")), "0");
    station.shell("! grep -aq ICCBased page.pdf");
  }
  station.write("page.tif", rawGrayPage(2, 2, "abcd", {{34675, 7, 5000, 1 << 30}}));
  engine.SourceFile(station.path(L"page.tif"));
  save(kSaveTiff, kTiffLzw, L"out.tif");
  EXPECT_THAT(station.takeLog(), testing::EndsWith("page.tif--第1页--无法读取\n"));
  EXPECT_EQ(engine.ImagError(), kNoImagError);
}

// The tools of libjpeg-turbo write and read the segments of a stream.
TEST_F(RealEngine, AProfileInAJpegStreamIsKeptToo) {
  const auto saveJpegPage = [&](const std::string& stream) {
    station.write("page.tif", rawGrayPage(40, 30, stream, {{259, 3, 1, 7}}));
    engine.SourceFile(station.path(L"page.tif"));
    save(kSaveJpeg, 0, L"page.jpg");
    for (const bool append : {false, true}) {
      save(kSaveTiff, kTiffJpeg, L"dct.tif", append);
      save(kSavePdf, kPdfJpeg, L"dct.pdf", append);
    }
    EXPECT_EQ(engine.ImagError(), kNoImagError);
    return station.read("page.jpg") + station.read("dct.tif") + station.read("dct.pdf");
  };
  const Bytes gray = iccProfile("GRAY", 150'000);
  station.write("profile", {gray.begin(), gray.end()});
  station.shell("convert -size 40x30 gradient: -depth 8 pgm:- | cjpeg -icc profile >stream");
  const std::string stream = station.read("stream");
  EXPECT_EQ(saveJpegPage(stream), saveJpegPage(stream));
  ImagingControl thumbnail;
  thumbnail.hDIB(engine.CopyDIB());
  thumbnail.OutputType(kSaveJpeg);
  thumbnail.TargetFile(station.path(L"small.jpg"));
  thumbnail.SaveFile();
  for (const int pages : {2, 1}) {
    station.shell(
        "for f in page small; do djpeg -icc now.icc $f.jpg >p.pgm && cmp now.icc profile || exit; "
        "done && "
        "convert dct.tif[" +
        std::to_string(pages - 1) +
        "] icc:now.icc && cmp now.icc profile && qpdf --check dct.pdf && "
        "qpdf --show-object=6 --raw-stream-data dct.pdf | cmp - profile && "
        "test $(grep -ao acsp dct.pdf | wc -l) = 2 && "
        "test \"$(grep -ao ICC_PROFILE page.jpg dct.pdf dct.tif | uniq -c | xargs)\" = "
        "'3 page.jpg:ICC_PROFILE'");
    if (pages == 1) break;
    engine.DeletePageFromFile(station.path(L"dct.tif"), 1);
    engine.DeletePageFromFile(station.path(L"dct.pdf"), 1);
  }
  EXPECT_EQ(station.takeLog(), "");
  const std::size_t segment = stream.find("ICC_PROFILE");
  for (const auto& [place, value] : {std::pair{12, '\2'}, {12, '\0'}, {13, '\2'}, {0, 'J'}}) {
    std::string broken = stream;
    broken[segment + place] = value;
    saveJpegPage(broken);
    EXPECT_THAT(station.takeLog(), HasSubstr("JPEG数据中的分段不完整"));
    station.shell("djpeg -icc now.icc page.jpg >p.pgm; test ! -s now.icc");
  }
  const Bytes rgb = iccProfile("RGB ");
  station.write("profile", {rgb.begin(), rgb.end()});
  station.shell("convert -size 40x30 gradient:red-blue ppm:- | cjpeg -icc profile >stream");
  station.write("page.tif", oldStyleJpegPage(40, 30, station.read("stream")));
  engine.SourceFile(station.path(L"page.tif"));
  save(kSaveJpeg, 0, L"page.jpg");
  station.shell("djpeg -icc now.icc page.jpg >p.ppm && cmp now.icc profile");
}

// Some scanners promise more rows than they send. A cut is another matter.
TEST_F(RealEngine, APageThatEndsEarlyIsWholeAndToldOnce) {
  using namespace std::string_literals;
  const std::string endOfRows = "\0\x10\1\0\x10\1\0\x10\1"s;       // which libtiff leaves out
  const std::string withTags = "\0\x18\0\3\x60\0\x0C\x80\1\x30"s;  // in fill order 2
  const struct {
    std::string storage;  ///< of tiffcp
    std::uint16_t compression, photometric, orientation, fillOrder, options;
    std::string end;  ///< of the strip
  } cases[] = {{"g4", 4, 0, 1, 1, 0, ""},
               {"g4 -f lsb2msb", 4, 1, 1, 2, 2, "padding"},
               {"g4", 4, 1, 6, 1, 0, ""},
               {"g3:1d", 3, 0, 1, 1, 0, endOfRows},
               {"g3:2d -f lsb2msb", 3, 1, 1, 2, 1, withTags},
               {"g3:fill", 3, 0, 6, 1, 4, endOfRows + "padding"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.storage);
    outputOf(kPicture + "-alpha off -depth 1 -type bilevel -compress None -define " +
             "quantum:polarity=min-is-" + (c.photometric == 0 ? "white" : "black") +
             " TIFF:" + file("base.tif"));
    station.shell("tiffcp -r 151 -c " + c.storage + " base.tif page.tif; " +
                  "convert base.tif -background white -extent 203x160 " +
                  (c.orientation == 6 ? "-rotate 90 +repage" : "") + " want.png");
    std::uint32_t directory = 0;  // which libtiff writes after the strip
    const std::string made = station.read("page.tif");
    made.copy(reinterpret_cast<char*>(&directory), 4, 4);
    const auto writePage = [&](const std::string& strip) {
      const std::uint16_t optionsTag = c.compression == 3 ? 292 : 293;
      station.write("page.tif", rawGrayPage(203, 160, strip,
                                            {{258, 3, 1, 1},
                                             {259, 3, 1, c.compression},
                                             {262, 3, 1, c.photometric},
                                             {266, 3, 1, c.fillOrder},
                                             {274, 3, 1, c.orientation},
                                             {optionsTag, 4, 1, c.options}}));
    };
    writePage(made.substr(8, directory - 8) + c.end);
    expectWhole();
    writePage(made.substr(8, 60));
    engine.SourceFile(station.path(L"page.tif"));
    save(kSaveTiffBilevel, kTiffGroup4, L"cut.tif");
    EXPECT_EQ(engine.ImagError(), kDamagedData);
    EXPECT_EQ(station.takeLog(), "");
  }
  station.shell(
      "tiffcp -c g4 -r 50 base.tif page.tif && tiffset -s 257 160 page.tif && "
      "convert base.tif -background white -extent 203x160 want.png");
  expectWhole();
}

TEST_F(RealEngine, ADamagedPageIsRecordedAndWhatCannotBeLoadedIsThrown) {
  load(kSources[0]);
  station.shell("yes U | tr -d '\\n' | dd of=g4 bs=1 seek=40 count=20 conv=notrunc");
  engine.SourceFile(station.path(L"g4"));
  save(kSaveTiffBilevel, kTiffGroup4, L"out.tif");
  EXPECT_EQ(engine.ImagError(), kDamagedData);
  const std::string damaged = readBytes(station.native("g4"));  // which somebody may still mend
  EXPECT_THROW(save(kSaveTiffBilevel, kTiffGroup4, L"g4"), Failure);
  EXPECT_EQ(readBytes(station.native("g4")), damaged);
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

// libjpeg shows some damage as if it were the picture. A page is whole in all forms or in none, and
// `checkPage` says the same; it does not matter how its streams are laid out.
TEST_F(RealEngine, ADamagedJpegPageIsDamagedInEveryForm) {
  struct Form {
    std::int32_t type, compression;
    const wchar_t* file;
  };
  const Form forms[] = {
      {kSaveTiffMultiBit, kTiffJpeg, L"jpeg.tif"}, {kSaveTiff, kTiffLzw, L"lzw.tif"},
      {kSaveTiff, kTiffNone, L"none.tif"},         {kSaveJpeg, kTiffJpeg, L"page.jpg"},
      {kSavePdf, kPdfJpeg, L"jpeg.pdf"},           {kSavePdf, kPdfNone, L"none.pdf"}};
  outputOf(kPicture + kColour + "-depth 8 -type TrueColor -compress None TIFF:" + file("base.tif"));
  int silent = 0;
  for (const std::string storage :
       {"-c jpeg -r 151", "-c jpeg -t -w 64 -l 64", "-c jpeg:r -r 64"}) {
    station.shell("tiffcp " + storage + " base.tif whole.tif");
    const std::string whole = readBytes(station.native("whole.tif"));
    Random random(7);
    for (int i = 0; i < 40; ++i) {
      std::string flipped = whole;
      flipped[8 + random.below(directoryOf(whole) - 8)] ^= static_cast<char>(1 << random.below(8));
      writeBytes(station.native("page.tif"), flipped);
      const std::wstring path = station.path(L"page.tif");
      const bool sound = failureOf([&] { checkPage(LoadedPage(path, 1), path); }).empty();
      for (const Form& form : forms) {
        const std::string failure = failureOf([&] {
          engine.SourceFile(station.path(L"page.tif"));
          save(form.type, form.compression, form.file);
        });
        EXPECT_EQ(sound, failure.empty() && engine.ImagError() == 0) << storage << " try " << i;
      }
      const std::string tool = "tiffcp -c none page.tif copy.tif 2>&1";
      silent +=
          !sound && runCommand("cd " + quoted(station.native()) + " && " + tool).output.empty();
    }
  }
  EXPECT_GT(silent, 0);
}

TEST_F(RealEngine, SavingOverTheSourceGivesItUpOnlyForAWholeFile) {
  load(kSources[3]);
  const std::string before = readBytes(station.native("gray8"));
  EXPECT_THROW(save(kSaveTiff, 99, L"gray8"), Failure);
  EXPECT_EQ(readBytes(station.native("gray8")), before);
  // Mode, owner, links and what a stranger has beside it stay.
  station.shell(
      "mkdir -p Batchs/B; mv gray8 Batchs/B/P.TIF; ln -s Batchs/B/P.TIF gray8; cd Batchs/B; "
      "chmod 640 P.TIF; test $(id -u) != 0 || chown 12:34 P.TIF; stat -c '%a %u %g' P.TIF > stat; "
      "echo stranger > P.TIF.new; echo stranger > p.tif.new; mkdir links; ln P.TIF links/second");
  EXPECT_NE(failureOf([&] { save(kSaveTiff, kTiffNone, L"gray8"); }).find("second hard link"),
            std::string::npos);
  EXPECT_EQ(readBytes(station.native("gray8")), before);
  station.shell("rm -r Batchs/B/links");
  for (const wchar_t* target : {L"gray8", L"Batchs\\B\\P.TIF", L"Batchs\\b\\p.tif"}) {
    writeBytes(station.native("gray8"), before);
    engine.SourceFile(station.path(L"Batchs\\b\\p.tif"));
    save(kSaveTiff, kTiffNone, target);
    EXPECT_EQ(
        station.shell(
            "identify -format '%C %wx%h ' gray8; readlink gray8; cd Batchs/B; ls; "
            "cat *.new; stat -c '%a %u %g' P.TIF | diff - stat; find . -links +1 -type f"),
        "None 203x151 Batchs/B/P.TIF\nP.TIF\nP.TIF.new\np.tif.new\nstat\nstranger\nstranger\n");
  }
  // A page that is added to its own file finds it as well.
  const std::wstring page = station.path(L"Batchs\\b\\p.tif");
  for (const std::wstring& target : {std::wstring(), page}) {
    EXPECT_TRUE(mdlImageProcess::SaveImage(engine, page, 1, target, true, 0, true));
  }
  EXPECT_EQ(station.shell("cd Batchs; ls . B | xargs; identify -format '%C %wx%h ' B/P.TIF"),
            ".: B B: P.TIF P.TIF.new p.tif.new stat\nNone 203x151 JPEG 203x151 JPEG 203x151 ");
}

TEST_F(RealEngine, WhoeverExpectsPagesHearsOfWorkBeforeItBegins) {
  station.shell(
      "convert -size 2000x2000 gradient:red-blue -depth 8 a.tif; cp a.tif b.tif; "
      "touch -d '1 hour ago' a.tif b.tif");
  RecordingWindow window;
  bool told = false;
  std::vector<std::wstring> pages{L"b.tif", L"a.tif"};
  const auto forecast = [&]() -> std::optional<ExpectedPage> {
    if (pages.empty()) return std::nullopt;
    const std::wstring page = pages.back();
    pages.pop_back();
    return ExpectedPage{station.path(page), SaveChoice{.bCompression = false}};
  };
  engine.setWorkers(1);
  engine.expectPages(forecast, [&] { told = true; });
  const auto load = [&](const wchar_t* page) {
    told = false;
    window.yields = 0;
    engine.SourceFile(station.path(page));
  };
  for (const wchar_t* page : {L"a.tif", L"b.tif"}) {
    load(page);
    EXPECT_TRUE(told || window.yields == 0) << "it waits";
    told = false;
    save(kSaveTiff, kTiffNone, L"other.tif");
    EXPECT_TRUE(told) << "a page is encoded in another form than expected";
  }
  load(L"a.tif");
  EXPECT_TRUE(told) << "an unexpected page is loaded";
  engine.expectPages({}, {});
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
