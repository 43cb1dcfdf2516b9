#include <tiffio.h>

#include "imaging/raster/icc_profile.h"
#include "intake/intake.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;

/// A PDF file of one page, written by hand; qpdf adds what is missing.
struct Pdf {
  std::string content = "q 72 0 0 36 0 0 cm /Im Do Q";
  std::string page{};   // entries of the page
  std::string image{};  // entries of the image
  std::string data{};
  std::string more{};  // entries of the resources
  std::string objects{};

  std::string text() const {
    const auto stream = [](const std::string& entries, const std::string& bytes) {
      return "<< " + entries + " /Length " + std::to_string(bytes.size()) + " >>\nstream\n" +
             bytes + "\nendstream\nendobj\n";
    };
    return "%PDF-1.7\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\n"
           "2 0 obj\n<< /Type /Pages /Kids [3 0 R] /Count 1 /MediaBox [0 0 72 36] >>\nendobj\n"
           "3 0 obj\n<< /Type /Page /Parent 2 0 R /Contents 4 0 R " +
           page + " /Resources << /XObject << /Im 5 0 R /Fm 6 0 R >> " + more +
           " >> >>\nendobj\n"
           "4 0 obj\n" +
           stream("", content) + "5 0 obj\n" +
           stream("/Type /XObject /Subtype /Image " + image, data) + objects +
           "trailer\n<< /Root 1 0 R /Size 20 >>\n%%EOF\n";
  }
};

// An image of 20 x 10 gray pixels, each of them of its own.
Pdf grayPdf() {
  Pdf pdf;
  pdf.image = "/Width 20 /Height 10 /BitsPerComponent 8 /ColorSpace /DeviceGray";
  for (int i = 0; i < 200; ++i) pdf.data += static_cast<char>(i + 30);
  return pdf;
}

class PdfIntake : public Intake {
 protected:
  // qpdf writes the cross-reference table; it warns that there was none.
  void write(const Pdf& pdf, const std::string& options = "") const {
    station.write("raw.pdf", pdf.text());
    station.shell(
        "qpdf --warning-exit-0 --no-warn --object-streams=disable "
        "--stream-data=preserve --keep-files-open=n " +
        options + " raw.pdf in.pdf");
  }

  // The pixels as poppler takes them out of the file.
  void expectImage(const std::string& options = "") const {
    station.shell("rm -f im-*; pdfimages -png in.pdf im");
    EXPECT_EQ(differing("im-000.png", options), "0");
  }
};

TEST_F(PdfIntake, ImagesOfOtherProgramsKeepTheirPixels) {
  const std::string draw =
      "convert -size 90x70 -depth 8 gradient:navy-orange -fill black -draw 'line 0,0 80,60' "
      "-alpha off -units PixelsPerInch -density 150 ";
  struct Case {
    std::string make;  // `t.tif`
    std::string convert;
    std::string form;
  };
  for (const Case& c : std::vector<Case>{
           {"-threshold 50% -compress Group4", "", "Group4 1"},
           {"-threshold 50% -negate -compress Group4", "", "Group4 1"},
           {"-threshold 50% -compress Group4 g.tif && tiffcp -c none g.tif", "-z", "Group4 1"},
           {"-compress None", "-z", "LZW 8"},
           {"-compress None", "-n", "LZW 8"},
           {"-compress None -colorspace Gray", "-z", "LZW 8"},
           {"-compress None +dither -colors 9 -type Palette", "-z", "LZW 4"},
       }) {
    SCOPED_TRACE(c.make + " " + c.convert);
    station.shell(draw + c.make + " t.tif && tiff2pdf " + c.convert + " -o in.pdf t.tif");
    EXPECT_EQ(take("in.pdf"), "");
    EXPECT_EQ(differing("t.tif", "-fuzz 1%"), "0");
    EXPECT_EQ(identify("%C %z"), c.form);
    EXPECT_EQ(identify("%x"), "150");
  }
}

TEST_F(PdfIntake, SamplesOfEveryFormKeepTheirPixels) {
  struct Case {
    std::string image;  // of 20 x 10 pixels
    std::size_t bytes;
    std::string form;
    std::string options{};  // for the comparison: poppler takes 8 bits of 16
  };
  for (const Case& c : std::vector<Case>{
           {"/BitsPerComponent 1 /ColorSpace /DeviceGray", 30, "Group4 1"},
           {"/BitsPerComponent 1 /ColorSpace /DeviceGray /Decode [1 0]", 30, "Group4 1"},
           {"/BitsPerComponent 1 /ColorSpace [/Indexed /DeviceRGB 1 <FFFFFF000000>]", 30,
            "Group4 1"},
           {"/BitsPerComponent 2 /ColorSpace /DeviceGray", 50, "LZW 2"},
           {"/BitsPerComponent 4 /ColorSpace /DeviceGray", 100, "LZW 4"},
           {"/BitsPerComponent 16 /ColorSpace /DeviceGray", 400, "LZW 16", "-fuzz 1%"},
           {"/BitsPerComponent 8 /ColorSpace /DeviceRGB", 600, "LZW 8"},
           {"/BitsPerComponent 8 /ColorSpace /DeviceRGB /Decode [1 0 1 0 1 0]", 600, "LZW 8"},
           {"/BitsPerComponent 4 /ColorSpace [/Indexed /DeviceGray 15 "
            "<00102030405060708090A0B0C0D0E0F0>]",
            100, "LZW 4"},
       }) {
    SCOPED_TRACE(c.image);
    Pdf pdf;
    pdf.image = "/Width 20 /Height 10 " + c.image;
    for (std::size_t i = 0; i < c.bytes; ++i) pdf.data += static_cast<char>(i * 37 % 251);
    write(pdf);
    EXPECT_EQ(take("in.pdf"), "");
    expectImage(c.options);
    EXPECT_EQ(identify("%C %[tiff:depth]%z"), c.form);
  }
}

TEST_F(PdfIntake, JpegAndFaxStreamsAreKept) {
  const std::string draw =
      "convert -size 96x70 -depth 8 gradient:navy-orange -fill black "
      "-draw 'line 0,0 80,60' -alpha off ";
  const std::string fax = draw + "-threshold 50% -compress Group4 t.tif && tiffcp -r 70 -c ";
  const std::string strip =
      " t.tif s.tif && set -- $(tiffinfo -s s.tif | "
      "sed -n 's/.*0: \\[ *\\([0-9]*\\), *\\([0-9]*\\).*/\\1 \\2/p') && "
      "tail -c +$(($1+1)) s.tif | head -c $2 >data";
  const std::string columns =
      "/BitsPerComponent 1 /Filter /CCITTFaxDecode /DecodeParms << /Columns 96 /Rows 70 ";
  const std::string jpeg = "/BitsPerComponent 8 /Filter /DCTDecode /ColorSpace ";
  struct Case {
    std::string make;  // `data`
    std::string image;
    std::string form;
    bool isKept = true;
  };
  for (const Case& c : std::vector<Case>{
           {draw + "JPEG:data", jpeg + "/DeviceRGB", "JPEG 8"},
           {draw + "-colorspace Gray JPEG:data", jpeg + "/DeviceGray", "JPEG 8"},
           {draw + "JPEG:- | zlib-flate -compress >data",
            "/BitsPerComponent 8 /Filter [/FlateDecode /DCTDecode] /ColorSpace /DeviceRGB",
            "JPEG 8", false},
           {draw + "PPM:- | cjpeg -rgb -sample 1x1 >data", jpeg + "/DeviceRGB", "JPEG 8"},
           {draw + "JPEG:data", jpeg + "/DeviceRGB /Decode [1 0 1 0 1 0]", "LZW 8", false},
           {draw + "-colorspace CMYK JPEG:data", jpeg + "/DeviceCMYK /Decode [1 0 1 0 1 0 1 0]",
            "LZW 8", false},
           {fax + "g4" + strip, columns + "/K -1 >> /ColorSpace /DeviceGray", "Group4 1"},
           {fax + "g4" + strip, columns + "/K -1 /BlackIs1 true >> /ColorSpace /DeviceGray",
            "Group4 1"},
           {fax + "g4" + strip, columns + "/K -1 >> /ColorSpace /DeviceGray /Decode [1 0]",
            "Group4 1"},
           {fax + "g4" + strip,
            columns + "/K -1 >> /ColorSpace [/Indexed /DeviceRGB 1 <FFFFFF000000>]", "Group4 1"},
           {fax + "g3:1d" + strip, columns + "/EndOfLine true >> /ColorSpace /DeviceGray", "Fax 1"},
           {fax + "g3:2d" + strip, columns + "/K 4 /EndOfLine true >> /ColorSpace /DeviceGray",
            "Fax 1"},
       }) {
    SCOPED_TRACE(c.make + " " + c.image);
    station.shell(c.make);
    Pdf pdf;
    pdf.data = station.read("data");
    pdf.image = "/Width 96 /Height 70 " + c.image;
    write(pdf);
    EXPECT_EQ(take("in.pdf"), "");
    station.shell("rm -f im-*; pdfimages -tiff in.pdf im");
    EXPECT_EQ(differing("im-000.tif", "-fuzz 1%"), "0");
    EXPECT_EQ(identify("%C %[tiff:depth]%z"), c.form);
    EXPECT_TRUE(!c.isKept || station.read("page.tif").find(pdf.data) != std::string::npos);
  }
}

// Rows of codes without line ends, each from a byte on (TIFF 6.0 section 10).
std::string modifiedHuffman(const std::string& file) {
  TIFF* const tiff = TIFFOpen(file.c_str(), "w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 96);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 70);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 70);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTRLE);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  for (std::uint32_t y = 0; y < 70; ++y) {
    std::array<std::uint8_t, 12> row{};
    row[y / 6] = static_cast<std::uint8_t>(y * 37 | 1);
    TIFFWriteScanline(tiff, row.data(), y, 0);
  }
  TIFFClose(tiff);
  TIFF* const written = TIFFOpen(file.c_str(), "r");
  std::string codes(static_cast<std::size_t>(TIFFRawStripSize(written, 0)), '\0');
  TIFFReadRawStrip(written, 0, codes.data(), static_cast<tmsize_t>(codes.size()));
  TIFFClose(written);
  return codes;
}

TEST_F(PdfIntake, FaxWithoutLineEndsIsTakenIfItsRowsAreAligned) {
  Pdf pdf;
  pdf.data = modifiedHuffman(station.native("m.tif"));
  for (const bool isAligned : {true, false}) {
    pdf.image =
        "/Width 96 /Height 70 /BitsPerComponent 1 /ColorSpace /DeviceGray "
        "/Filter /CCITTFaxDecode /DecodeParms << /Columns 96 /Rows 70 /EncodedByteAlign " +
        std::string(isAligned ? "true >>" : "false >>");
    write(pdf);
    EXPECT_EQ(take("in.pdf"), isAligned ? "" : "第 1 页的传真图像没有行结束码，不能登记");
    if (isAligned) expectImage();
  }
}

TEST_F(PdfIntake, TheProfileOfTheColourSpaceIsKept) {
  const std::string profile = srgbProfile();
  Pdf pdf = grayPdf();
  pdf.image = "/Width 10 /Height 6 /BitsPerComponent 8 /ColorSpace [/ICCBased 6 0 R]";
  pdf.objects = "6 0 obj\n<< /N 3 /Length " + std::to_string(profile.size()) + " >>\nstream\n" +
                profile + "\nendstream\nendobj\n";
  write(pdf);
  EXPECT_EQ(take("in.pdf"), "");
  station.shell("convert page.tif kept.icc");
  EXPECT_EQ(station.read("kept.icc"), profile);
}

TEST_F(PdfIntake, PageSaysHowTheImageIsShown) {
  struct Case {
    std::string page;
    std::string content;
    std::string size;  // upright, of 20 x 10 pixels
    std::string resolution;
  };
  for (const Case& c : std::vector<Case>{
           {"", "q 72 0 0 36 0 0 cm /Im Do Q", "20x10", "20, 20"},
           {"/Rotate 90", "q 72 0 0 36 0 0 cm /Im Do Q", "10x20", "20, 20"},
           {"/Rotate 180", "q 72 0 0 36 0 0 cm /Im Do Q", "20x10", "20, 20"},
           {"/Rotate -90", "q 72 0 0 36 0 0 cm /Im Do Q", "10x20", "20, 20"},
           {"/MediaBox [10 10 46 28] /UserUnit 2", "36 0 0 18 10 10 cm /Im Do", "20x10", "20, 20"},
           {"/MediaBox [0 0 48 12]", "q 0 0 48 12 re W n 48 0 0 12 0 0 cm /Im Do Q", "20x10",
            "30, 60"},
           {"", "/P << /MCID 0 >> BDC q 1 w 0 J 2 0 0 2 0 0 cm /Fm Do Q EMC", "20x10", "20, 20"},
       }) {
    SCOPED_TRACE(c.page + c.content);
    Pdf pdf = grayPdf();
    pdf.page = c.page;
    pdf.content = c.content;
    pdf.objects =
        "6 0 obj\n<< /Subtype /Form /BBox [0 0 36 18] /Length 28 >>\nstream\n"
        "q 36 0 0 18 0 0 cm /Im Do Q \nendstream\nendobj\n";
    write(pdf);
    EXPECT_EQ(take("in.pdf"), "");
    EXPECT_THAT(station.shell("tiffinfo page.tif"), HasSubstr("Resolution: " + c.resolution));
    EXPECT_EQ(station.shell("convert page.tif -auto-orient -format %wx%h info:"), c.size);
    // Turned as poppler shows the page.
    station.shell("pdftoppm -r 20 -gray -singlefile in.pdf im");
    if (c.page.find("/Rotate") != std::string::npos) {
      EXPECT_EQ(differing("im.pgm", "-fuzz 5%"), "0");
    }
  }
}

TEST_F(PdfIntake, AnEncryptedFileThatOpensIsServed) {
  write(grayPdf(), "--encrypt '' owner 256 --");
  EXPECT_EQ(take("in.pdf"), "");
  expectImage();
  write(grayPdf(), "--encrypt user owner 256 --");
  EXPECT_EQ(take("in.pdf"), "PDF 文件有密码，不能登记");
}

TEST_F(PdfIntake, AnyOtherPageIsRefusedWithItsNumber) {
  const std::string image = "q 72 0 0 36 0 0 cm /Im Do Q ";
  struct Case {
    Pdf pdf;
    std::string reason;
  };
  const auto with = [](auto change) {
    Pdf pdf = grayPdf();
    change(pdf);
    return pdf;
  };
  const auto content = [&](const std::string& text) {
    return with([&](Pdf& pdf) {
      pdf.content = text;
      pdf.more = "/ExtGState << /Pale << /ca 0.5 >> /Mix << /BM /Multiply >> >>";
    });
  };
  const auto entry = [&](const std::string& text) {
    return with([&](Pdf& pdf) { pdf.image += text; });
  };
  const auto form = [&](const std::string& text) {
    return with([&](Pdf& pdf) { pdf.image = "/Width 20 /Height 10 " + text; });
  };
  for (const Case& c : std::vector<Case>{
           {content(""), "第 1 页没有图像"},
           {content(image + image), "第 1 页有几幅图像"},
           {content(image + "BT /F 9 Tf (text) Tj ET"), "第 1 页有文字"},
           {content(image + "BT 3 Tr [(hidden)] TJ ET"), "第 1 页有文字"},
           {content(image + "0 0 9 9 re f"), "第 1 页有画的图形"},
           {content(image + "0 0 m 9 9 l S"), "第 1 页有画的图形"},
           {content("BI /W 1 /H 1 /BPC 8 /CS /G ID x EI"), "第 1 页有内嵌图像"},
           {content("q 0 72 -36 0 36 0 cm /Im Do Q"), "第 1 页的图像不是正放的"},
           {content("q -72 0 0 36 72 0 cm /Im Do Q"), "第 1 页的图像不是正放的"},
           {content("q 60 0 0 36 0 0 cm /Im Do Q"), "第 1 页的图像没有盖满页面"},
           {content("q 144 0 0 72 0 0 cm /Im Do Q"), "第 1 页的图像比页面大"},
           {content("0 0 36 36 re W n " + image), "第 1 页裁去了图像的一部分"},
           {content("/Pale gs " + image), "第 1 页有透明效果"},
           {content("/Mix gs " + image), "第 1 页有透明效果"},
           {content("/OC /Layer BDC " + image + "EMC"), "第 1 页有可以隐藏的图层"},
           {content("/Nothing Do"), "第 1 页的内容损坏"},
           {content(image + "what"), "第 1 页有不认识的指令 what"},
           {with([](Pdf& pdf) {
              pdf.page = "/Annots [<< /Type /Annot /Subtype /Stamp /Rect [0 0 9 9] >>]";
            }),
            "第 1 页有批注"},
           {with([](Pdf& pdf) { pdf.page = "/CropBox [0 0 30 30]"; }), "第 1 页的图像比页面大"},
           {with([](Pdf& pdf) { pdf.page = "/Rotate 45"; }), "第 1 页的方向不是 90 度的倍数"},
           {with([](Pdf& pdf) { pdf.data.resize(150); }), "第 1 页的图像数据不完整"},
           {entry("/SMask 5 0 R"), "第 1 页的图像有蒙版"},
           {entry("/Mask [0 0]"), "第 1 页的图像有蒙版"},
           {entry("/ImageMask true"), "第 1 页的图像只是蒙版"},
           {entry("/Decode [0 0.5]"), "第 1 页的图像有特别的 Decode 数组"},
           {entry("/Filter /JPXDecode"), "第 1 页的图像是 JPEG 2000，不能登记"},
           {entry("/Filter /JBIG2Decode"), "第 1 页的图像是 JBIG2，不能登记"},
           {entry("/Filter /FlateDecode"), "第 1 页压缩数据损坏"},
           {entry("/Filter /DCTDecode"), "第 1 页JPEG 数据损坏"},
           {form("/BitsPerComponent 8 /ColorSpace [/Lab << /WhitePoint [1 1 1] >>]"),
            "第 1 页的图像的颜色空间不能登记：/Lab"},
           {form("/BitsPerComponent 3 /ColorSpace /DeviceGray"), "第 1 页的图像没有有效的位深"},
           {form(
                "/ColorSpace /DeviceGray /Filter /CCITTFaxDecode /DecodeParms << /K -1 /Columns 20 "
                "/EncodedByteAlign true >>"),
            "第 1 页的传真图像按字节对齐，不能登记"},
       }) {
    SCOPED_TRACE(c.pdf.content + c.pdf.page + c.pdf.image);
    write(c.pdf);
    EXPECT_THAT(take("in.pdf"), HasSubstr(c.reason));
    // Only what is wrong with the data becomes known no earlier than with the data.
    const bool isInData = c.reason.find("数据损坏") != std::string::npos ||
                          c.reason.find("不完整") != std::string::npos;
    const auto source = openSourceFile(station.path(L"in.pdf"));
    EXPECT_EQ(failureOf([&] { source->requirePage(1); }).empty(), isInData);
  }
}

TEST_F(PdfIntake, ADamagedFileIsReadOnlyIfNothingIsGuessed) {
  const std::string whole = grayPdf().text();  // without a cross-reference table
  const auto changed = [&](const std::string& from, const std::string& to) {
    return std::string(whole).replace(whole.find(from), from.size(), to);
  };
  const std::string remedy = "请用 qpdf 原文件 新文件 修复";
  const std::pair<std::string, std::string> cases[] = {
      {whole, ""},
      {changed("/Length 200", "/Length 197"), ""},
      {whole + " 5 0 obj\n<< >>\nendobj\n", remedy},
      {whole + "trailer\r<< /Root 1 0 R >>\r", remedy},
      {whole.substr(0, whole.find("trailer")), remedy},
      {changed("/Count 1", "/Count 2"), "应有 2 页，只找到 1 页"},
      {"%PDF-1.7\nnothing\n%%EOF\n", "PDF 文件损坏"},
  };
  for (const auto& [file, reason] : cases) {
    SCOPED_TRACE(file);
    station.write("in.pdf", file);
    if (reason.empty()) {
      EXPECT_EQ(take("in.pdf"), "");
      expectImage();
    } else {
      EXPECT_THAT(take("in.pdf"), HasSubstr(reason));
    }
  }
}

}  // namespace
}  // namespace orvane::test
