// The conversions: from a multi-page image file to a PDF file, and to one file per page.

#include <array>

#include "ConsoleList.h"
#include "Station.h"
#include "docops/DocumentHelper.h"
#include "imaging/DocumentConversion.h"
#include "imaging/ImagingControl.h"

int main(int argc, char** argv) {
  const example::Station station(argc, argv);
  example::Report report;
  const std::wstring folder = station.output("conversion");

  orvane::DocumentHelper helper;
  report(L"make a multi-page file of " + station.document(),
         helper.SaveAsDocument(station.document(), 0, false, 0, 0, folder, L"", L"source"));

  std::array<orvane::ImagingControl, 6> engines;
  example::ConsoleList list;
  orvane::DocumentConversion conversion(
      {engines[0], engines[1], engines[2], engines[3], engines[4], engines[5]}, list);
  const std::wstring source = folder + L"\\source.tif";
  const std::wstring log = station.output("errors.log");
  report(L"convert it to one PDF file",
         conversion.ChangeToDocPDF(source, folder + L"\\document.pdf", log, 2, 0));
  report(L"convert it to one TIFF file a page",
         conversion.ChangeToPagePDF(source, folder + L"\\pages", log, 0, 0));
  report(L"both have every page",
         engines[5].FilePageCount(folder + L"\\document.pdf") == engines[5].FilePageCount(source));
  return report.exitCode();
}
