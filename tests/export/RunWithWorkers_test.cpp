#include <gtest/gtest.h>
#include <map>

#include "export/WholeRun.h"
#include "support/open_files.h"

namespace orvane {
namespace {

using test::joined;

// What a run leaves that the operator or a later run can see.
struct Trace {
  std::map<std::string, std::string> files;
  std::string list, log, states, next;
  bool operator==(const Trace&) const = default;
};

void PrintTo(const Trace& trace, std::ostream* stream) {
  *stream << trace.list << "\n" << trace.log << trace.states;
  for (const auto& [name, bytes] : trace.files) {
    *stream << name << " " << bytes.size() << " " << std::hash<std::string>()(bytes) << "\n";
  }
}

class RunWithWorkers : public testing::Test {
 protected:
  // Pages of every kind, one page damaged, one missing and one that promises more rows than it has.
  RunWithWorkers() {
    station.shell(R"(mkdir p && cd p
      draw() { convert -size 203x151 gradient:black-white -fill white -draw 'circle 60,60 60,20' \
        -density 150 -units PixelsPerInch "$@"; }
      colour='+level-colors red,blue -depth'
      draw -type bilevel -compress Group4 g4.tif
      draw -alpha off -depth 1 -type bilevel -compress LZW lzw1.tif
      draw -depth 8 -type grayscale gray.tif
      draw -depth 16 -type grayscale -compress Zip gray16.tif
      draw $colour 8 -type TrueColor -compress JPEG -quality 95 jpeg.tif
      draw $colour 16 -type TrueColor -compress LZW rgb16.tif
      draw $colour 8 -type Palette -compress LZW palette.tif
      draw $colour 8 -colorspace CMYK -compress LZW cmyk.tif
      cp g4.tif early.tif && tiffset -s 278 160 early.tif && tiffset -s 257 160 early.tif
      cp g4.tif bad.tif && dd if=/dev/zero of=bad.tif bs=1 seek=40 count=60 conv=notrunc status=none
      document() { mkdir -p ../good/$1; name=$1; shift
        for page; do [ $page = missing ] || cp $page.tif ../good/$name; printf "$page$" >>../good/$name/Doc.dat; done; }
      document Good/D1 g4 lzw1 gray
      document Good/D2 jpeg rgb16 gray16
      document Good/D3 palette early
      document Good/D4 cmyk g4 jpeg
      document Damaged/D1 lzw1 jpeg
      document Damaged/D2 g4 early bad gray jpeg
      document Damaged/D3 g4
      document Missing/D1 gray
      document Missing/D2 g4 jpeg missing lzw1
      document Missing/D3 g4
      find ../good -exec touch -d '1 hour ago' {} +)");
  }

  Trace run(const ExportSettings& options, unsigned workers) {
    test::JournalHost host(workers);
    host.options = options;
    host.stopAfterBatch = true;
    host.whenLineAdded = [&](const std::string& line) {
      if (line != "D2 导出成功！") return;
      if (workers > 0) test::waitUntilOpen("Good/D3/palette.tif");
      station.shell("cp p/gray.tif Batchs/Good/D3/palette.tif");
    };
    Trace trace;
    station.shell("rm -rf output Batchs && mkdir output && cp -a good Batchs");
    for (const char* batch : {"Good", "Damaged", "Missing"}) {
      station.createTable({batch});
      orvane::RunOutPutBatch(host);
      trace.states += station.stateOf(batch) + "\n";
    }
    trace.list = joined(host.lines) + joined(host.reasons);
    trace.log = station.takeLog();
    trace.files = station.outputTree();
    // The settings that the instance is left with decide what one more save makes.
    ImagingEngine& engine = host.imaging().ImgControl;
    for (const wchar_t* page : {L"p\\jpeg.tif", L"p\\g4.tif"}) {
      engine.SourceFile(station.path(page));
      engine.TargetFile(station.path(L"next"));
      engine.SaveFile();
      trace.next += station.read("next");
    }
    return trace;
  }

  test::ExportStation station;
};

TEST_F(RunWithWorkers, LeavesWhatARunWithoutThemLeaves) {
  const struct {
    std::int16_t fileType;
    bool multiPage;
    std::int16_t compressionType, ratios;
  } forms[] = {
      {0, true, 0, 0}, {0, false, 1, 0}, {1, false, 0, 1}, {2, true, 0, 1}, {2, false, 1, 2}};
  for (const auto& [fileType, multiPage, compressionType, ratios] : forms) {
    ExportSettings options;
    options.SavePath = station.outputText();
    options.ReNameFormat = kNameOfDocumentAndPage;
    options.SaveFileType = fileType;
    options.IsMutiPage = multiPage;
    options.CompressionType = compressionType;
    options.CompressionRatios = ratios;
    const Trace alone = run(options, 0);
    EXPECT_EQ(alone.states, "完成成果输出|\n完成扫描|成果输出失败！\n完成扫描|成果输出失败！\n");
    EXPECT_NE(alone.log.find("图像数据提前结束"), std::string::npos) << alone.log;
    const std::size_t early = alone.list.find("图像数据提前结束");
    EXPECT_LT(early, alone.list.find("bad.tif: ")) << "in the reason of Damaged/D2: " << alone.list;
    for (const unsigned workers : {1U, 2U, 4U}) {
      SCOPED_TRACE(std::to_string(workers) + " workers");
      EXPECT_EQ(run(options, workers), alone);
    }
  }
}

}  // namespace
}  // namespace orvane
