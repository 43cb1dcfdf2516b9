// Every form of output, from the real window to files that other programs can read.
#include <gtest/gtest.h>

#include "end_to_end/Operator.h"
#include "end_to_end/Screen.h"
#include "settings/ExportSettings.h"

namespace orvane::test {
namespace {

struct Form {
  const char* name;
  std::int16_t saveFileType;
  bool isMutiPage;
  std::int16_t compressionType;
  std::string extension, bilevelCoding, multiBitCoding;
};

void PrintTo(const Form& form, std::ostream* stream) {
  *stream << form.name;
}

const Form kForms[] = {
    {"TiffPagesCompressed", 0, false, 0, ".tif", "TIFF Group4", "TIFF JPEG"},
    {"TiffPagesUncompressed", 0, false, 1, ".tif", "TIFF LZW", "TIFF LZW"},
    {"TiffDocumentsCompressed", 0, true, 0, ".tif", "TIFF Group4", "TIFF JPEG"},
    {"TiffDocumentsUncompressed", 0, true, 1, ".tif", "TIFF LZW", "TIFF LZW"},
    {"JpegPagesCompressed", 1, false, 0, ".jpg", "TIFF Group4", "JPEG JPEG"},
    {"JpegPagesUncompressed", 1, false, 1, ".jpg", "TIFF LZW", "TIFF LZW"},
    {"JpegDocumentsCompressed", 1, true, 0, ".jpg", "PDF ccitt", "PDF jpeg"},
    {"JpegDocumentsUncompressed", 1, true, 1, ".jpg", "PDF image", "PDF image"},
    {"PdfPagesCompressed", 2, false, 0, ".pdf", "PDF ccitt", "PDF jpeg"},
    {"PdfPagesUncompressed", 2, false, 1, ".pdf", "PDF image", "PDF image"},
    {"PdfDocumentsCompressed", 2, true, 0, ".pdf", "PDF ccitt", "PDF jpeg"},
    {"PdfDocumentsUncompressed", 2, true, 1, ".pdf", "PDF image", "PDF image"},
};

struct ScannedDocument {
  std::string batch, name;
  std::vector<std::string> pages;
};

// The waiting documents of the sample station, in the order of their names.
const std::vector<ScannedDocument> kDocuments{
    {"2024-0001", "0001", {"0001", "0002", "0003"}},
    {"2024-0001", "0002", {"0001", "0002"}},
    {"2024-0001", "0003", {"0001", "0002"}},
    {"2024-0003", "A01", {"P1", "P2", "P3"}},
    {"2024-0003", "A02", {"P1"}},
    {"文书档案2024年第2批", "关于加强档案管理的通知", {"第1页", "第2页"}},
    {"文书档案2024年第2批", "卷内目录", {"001", "002"}},
};

const char* const kList =
    "档案：2024-0001开始导出...\n0001 导出成功！\n0002 导出成功！\n0003 导出成功！\n"
    "档案导出成果成功！\n \n"
    "档案：文书档案2024年第2批开始导出...\n关于加强档案管理的通知 导出成功！\n卷内目录 导出成功！\n"
    "档案导出成果成功！\n \n"
    "档案：2024-0003开始导出...\nA01 导出成功！\nA02 导出成功！\n"
    "档案导出成果成功！\n \n"
    " 没有扫描完成的档案！";

class ExportForms : public testing::TestWithParam<Form> {
 protected:
  static void SetUpTestSuite() {
    Screen::forAllTests();
    sample = std::make_unique<ExportStation>();
    outputOf(quoted(std::string(SAMPLE_STATION)) + " " + quoted(sample->native()) + " --small");
  }
  static void TearDownTestSuite() { sample.reset(); }

  ExportForms() {
    station.shell("cp -r " + quoted(sample->native("Batchs")) + " " +
                  quoted(sample->native("Orvane.dll")) + " .");
    ExportSettings options;
    options.SavePath = station.outputText() + L"\\";
    options.SaveFileType = form.saveFileType;
    options.IsMutiPage = form.isMutiPage;
    options.CompressionType = form.compressionType;
    options.ReNameFormat = form.isMutiPage ? kNameOfBatchAndDocument : kNameOfBatchDocumentAndPage;
    options.IsCreateBatchFolder = true;
    options.IsCreateDocFolder = form.isMutiPage;
    layOut(station, options);
  }

  // The expected output of the judge.
  std::string expectedPages() const {
    std::string lines;
    for (const auto& [batch, document, pages] : kDocuments) {
      const std::string file =
          batch + "/" + (form.isMutiPage ? document + "/" : "") + batch + "-" + document;
      for (std::size_t i = 0; i < pages.size(); ++i) {
        const std::string number = std::to_string(i + 1);
        lines += form.isMutiPage
                     ? file + form.extension + " " + number + "/" + std::to_string(pages.size())
                     : file + "_00" + number + form.extension + " 1/1";
        lines += " " + lookOf(batch + "/" + document + "/" + pages[i] + ".tif") + "\n";
      }
    }
    return lines;
  }

  // The expected coding, size and resolution of an exported page. If the coding is lossless and the
  // judge can read it, also the checksum of the pixels.
  std::string lookOf(const std::string& page) const {
    static std::map<std::string, std::string> sources;  // depth and checksum of the pixels
    std::string& source = sources[page];
    if (source.empty()) source = outputOf("identify -format '%z %#' " + quoted(sample->scan(page)));
    const std::string coding = source.starts_with("1 ") ? form.bilevelCoding : form.multiBitCoding;
    const std::string look = coding + " 827x1169 at 100 dpi";
    if (coding.starts_with("PDF")) return look;
    return look + " " + (coding.ends_with("JPEG") ? "lossy" : source.substr(2));
  }

  static inline std::unique_ptr<ExportStation> sample;
  const Form& form = GetParam();
  ExportStation station;
};

TEST_P(ExportForms, ExportsAllWaitingBatches) {
  const auto scans = station.scanTree();
  Operator person(station);
  person.pressRun();
  EXPECT_EQ(person.listEndingWith(" 没有扫描完成的档案！"), kList);
  EXPECT_EQ(person.leave(), 0);

  EXPECT_EQ(station.shell("cd output && find * -type f | xargs -n 1 -P 2 " +
                          quoted(std::string(JUDGE)) + " | LC_ALL=C sort"),
            expectedPages());
  EXPECT_EQ(station.query("select BatchState, count(*), count(Remark) from T_BatchInfo "
                          "group by BatchState order by BatchState"),
            "完成成果输出|3|0\n正在扫描|1|0\n");
  EXPECT_EQ(station.scanTree(), scans);
  EXPECT_EQ(station.takeLog(), "");
}

INSTANTIATE_TEST_SUITE_P(Forms, ExportForms, testing::ValuesIn(kForms),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace orvane::test
