// The component DocumentHelper: merge, export, remove pages and documents, thumbnails.

#include "Station.h"
#include "docops/DocumentHelper.h"

namespace {

/// A document of a host: an object with the property "DocumentID".
class DocumentItem : public orvane::DispatchObject {
 public:
  explicit DocumentItem(std::wstring documentID) : documentID_(std::move(documentID)) {}
  std::wstring property(const std::wstring& sName) const override {
    if (sName != L"DocumentID") throw std::invalid_argument("no such property");
    return documentID_;
  }

 private:
  std::wstring documentID_;
};

}  // namespace

int main(int argc, char** argv) {
  const example::Station station(argc, argv);
  example::Report report;
  orvane::DocumentHelper helper;

  const std::wstring merged = helper.MakeOnlyOneFileName(L"merged");
  const DocumentItem document(station.document());
  const orvane::DispatchList twice{&document, &document};
  report(L"merge " + station.document() + L" with itself into " + merged,
         helper.MergeDocument(merged, &twice));

  const std::wstring folder = station.output("operations");
  report(L"export it as one TIFF file",
         helper.SaveAsDocument(merged, 0, false, 0, 0, folder, L"000", merged));
  const std::wstring file = folder + L"\\" + merged + L".tif";
  report(L"delete page 1 of the file", helper.DeletePage(file, 1));
  report(L"make a thumbnail, a quarter as wide and high", helper.CreateThumbnailImage(file, 4));
  report(L"delete the merged document", helper.DeleteDocumentForDocumentID(merged));
  helper.Terminate();
  return report.exitCode();
}
