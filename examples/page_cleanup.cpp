// The page clean-up: sets the steps, then cleans a document page by page into a new file.

#include <array>

#include "ConsoleList.h"
#include "Station.h"
#include "docstore/Document.h"
#include "foundation/mdlFolderAndFile.h"
#include "imaging/ImagingControl.h"
#include "imaging/PageCleanup.h"

int main(int argc, char** argv) {
  const example::Station station(argc, argv);
  example::Report report;

  orvane::mdlBatchAutoProcessStep::AutoDeskew = true;
  orvane::mdlBatchAutoProcessStep::AutoCrop = {true, 10, 10, 10, 10};
  orvane::mdlBatchAutoProcessStep::AutoRotate = L"向右旋转90度";

  std::array<orvane::ImagingControl, 6> engines;
  example::ConsoleList list;
  orvane::PageCleanup cleanup(
      {engines[0], engines[1], engines[2], engines[3], engines[4], engines[5]}, list);

  const std::wstring target = station.output("cleaned.tif");
  orvane::mdlFolderAndFile::FileDelete(target);  // pages would be appended to an existing file
  orvane::Document document;
  report(L"load " + station.document(), document.LoadDocument(station.document()));
  for (std::int16_t index = 1; index <= document.PageCount(); ++index) {
    const std::wstring page = orvane::GetPagePath(document.DocName(), document.GetPage(index));
    report(L"clean page " + document.GetPage(index),
           cleanup.ImageDocProcess(page, target, station.output("errors.log")));
  }
  report(L"the cleaned file has every page",
         engines[5].FilePageCount(target) == document.PageCount());
  return report.exitCode();
}
