// Every form of output, from the real window to files that other programs read.
#include <gtest/gtest.h>
#include <sstream>

#include "end_to_end/Operator.h"
#include "end_to_end/Screen.h"
#include "end_to_end/judges.h"
#include "foundation/utf8_text.h"
#include "settings/NamingPattern.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

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
    {"TiffPagesCompressed", 0, false, 0, ".tif", "TIFF CCITT Group 4", "TIFF JPEG"},
    {"TiffPagesUncompressed", 0, false, 1, ".tif", "TIFF LZW", "TIFF LZW"},
    {"TiffDocumentsCompressed", 0, true, 0, ".tif", "TIFF CCITT Group 4", "TIFF JPEG"},
    {"TiffDocumentsUncompressed", 0, true, 1, ".tif", "TIFF LZW", "TIFF LZW"},
    {"JpegPagesCompressed", 1, false, 0, ".jpg", "TIFF CCITT Group 4", "JPEG file"},
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
  std::vector<fs::path> pages;
};

// The sample station, drawn once, and what lies in it.
class Sample {
 public:
  static const Sample& instance() {
    static const Sample sample;
    return sample;
  }
  void copyTo(const ExportStation& station) const {
    fs::copy(drawn_.native("Batchs"), station.native("Batchs"), fs::copy_options::recursive);
    fs::copy(drawn_.native("Orvane.dll"), station.native("Orvane.dll"));
  }
  const std::vector<ScannedDocument>& documents() const { return documents_; }
  bool isBilevel(const fs::path& page) const { return bilevel_.at(page); }
  const std::string& sizeOf(const fs::path& page) const { return sizes_.at(page); }

 private:
  Sample() {
    outputOf(quoted(fs::path(SAMPLE_STATION)) + " " + quoted(drawn_.native()) + " --small");
    std::istringstream batches(drawn_.query(
        "select BatchID from T_BatchInfo where BatchState='完成扫描' order by CreateDate"));
    for (std::string batch; std::getline(batches, batch);) readBatch(batch);
  }
  void readBatch(const std::string& batch) {
    std::set<fs::path> folders;
    for (const auto& entry : fs::directory_iterator(drawn_.scan(batch))) {
      if (fs::exists(entry.path() / "Doc.dat")) folders.insert(entry.path());
    }
    for (const fs::path& folder : folders) {
      documents_.push_back({batch, folder.filename().string(), {}});
      std::istringstream names(toUtf8(fromAnsi(readBytes(folder / "Doc.dat"))));
      for (std::string name; std::getline(names, name, '$');) {
        const fs::path page = folder / (name + ".tif");
        documents_.back().pages.push_back(page);
        bilevel_[page] = test::isBilevel(page);
        sizes_[page] = pagesOf(page).at(0).size;
      }
    }
  }

  ExportStation drawn_;
  std::vector<ScannedDocument> documents_;
  std::map<fs::path, bool> bilevel_;
  std::map<fs::path, std::string> sizes_;
};

struct ExpectedPage {
  fs::path source;
  PageLook look;
};
using ExpectedFiles = std::map<std::string, std::vector<ExpectedPage>>;

ExpectedFiles expectedFiles(const Form& form) {
  const Sample& sample = Sample::instance();
  ExpectedFiles files;
  for (const ScannedDocument& document : sample.documents()) {
    std::string front = document.batch + "/";
    if (form.isMutiPage) front += document.name + "/";
    front += document.batch + "-" + document.name;
    for (std::size_t i = 0; i < document.pages.size(); ++i) {
      const fs::path& page = document.pages[i];
      const std::string number = "_00" + std::to_string(i + 1);
      const bool bilevel = sample.isBilevel(page);
      files[front + (form.isMutiPage ? "" : number) + form.extension].push_back(
          {page, {bilevel ? form.bilevelCoding : form.multiBitCoding, sample.sizeOf(page)}});
    }
  }
  return files;
}

std::vector<std::string> expectedLines() {
  std::vector<std::string> lines;
  const auto& documents = Sample::instance().documents();
  for (std::size_t i = 0; i < documents.size(); ++i) {
    const std::string& batch = documents[i].batch;
    if (i == 0 || documents[i - 1].batch != batch)
      lines.push_back("档案：" + batch + "开始导出...");
    lines.push_back(documents[i].name + " 导出成功！");
    if (i + 1 < documents.size() && documents[i + 1].batch == batch) continue;
    lines.insert(lines.end(), {"档案导出成果成功！", " "});
  }
  lines.push_back(" 没有扫描完成的档案！");
  return lines;
}

ExportSettings optionsOf(const Form& form, const ExportStation& station) {
  ExportSettings options;
  options.SavePath = station.outputText() + L"\\";
  options.SaveFileType = form.saveFileType;
  options.IsMutiPage = form.isMutiPage;
  options.CompressionType = form.compressionType;
  options.ReNameFormat = form.isMutiPage ? kNameOfBatchAndDocument : kNameOfBatchDocumentAndPage;
  options.IsCreateBatchFolder = true;
  options.IsCreateDocFolder = form.isMutiPage;
  return options;
}

bool isLossless(const PageLook& look) {
  return look.coding == "TIFF LZW" || look.coding == "TIFF CCITT Group 4";
}

class ExportForms : public testing::TestWithParam<Form> {
 protected:
  static void SetUpTestSuite() { Screen::forAllTests(); }
};

TEST_P(ExportForms, AllBatchesLeaveTheStation) {
  ExportStation station;
  Sample::instance().copyTo(station);
  layOut(station, optionsOf(GetParam(), station));
  const auto scans = station.scanTree();

  Operator person(station);
  person.pressRun();
  EXPECT_EQ(person.listEndingWith(" 没有扫描完成的档案！"), expectedLines());
  EXPECT_EQ(person.leave(), 0);

  const ExpectedFiles expected = expectedFiles(GetParam());
  std::set<std::string> names;
  for (const auto& [name, pages] : expected) {
    names.insert(name);
    const std::vector<PageLook> found = pagesOf(station.output(name));
    ASSERT_EQ(found.size(), pages.size()) << name;
    for (std::size_t i = 0; i < pages.size(); ++i) {
      EXPECT_EQ(found[i], pages[i].look) << name << " page " << i;
      if (!isLossless(found[i])) continue;
      EXPECT_TRUE(hasPixelsOf(pages[i].source, station.output(name), i)) << name << " page " << i;
    }
  }
  EXPECT_EQ(station.outputFiles(), names);
  EXPECT_EQ(station.scanTree(), scans);
  EXPECT_EQ(station.query("select BatchState, count(*), count(Remark) from T_BatchInfo "
                          "group by BatchState order by BatchState"),
            "完成成果输出|3|0\n正在扫描|1|0\n");
  EXPECT_TRUE(station.logEntries().empty());
}

INSTANTIATE_TEST_SUITE_P(Forms, ExportForms, testing::ValuesIn(kForms),
                         [](const auto& form) { return std::string(form.param.name); });

}  // namespace
}  // namespace orvane::test
