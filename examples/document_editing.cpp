// Loads the page list of a document, changes it in memory, and saves it under another name.

#include "Station.h"
#include "docops/mdlDocumentHelper.h"
#include "docstore/Document.h"
#include "foundation/mdlFolderAndFile.h"

namespace {

std::wstring pagesOf(const orvane::Document& document) {
  std::wstring pages;
  for (std::int16_t index = 1; index <= document.PageCount(); ++index) {
    pages += (index > 1 ? L", " : L"") + document.GetPage(index);
  }
  return pages;
}

}  // namespace

int main(int argc, char** argv) {
  const example::Station station(argc, argv);
  example::Report report;

  orvane::Document original;
  report(L"load " + station.document(), original.LoadDocument(station.document()));

  // A new document with the same pages. Its folder and a page list must exist, because a save first
  // makes a backup of the old list.
  const std::wstring name = orvane::mdlDocumentHelper::MakeOnlyOneFileName(L"edited");
  orvane::mdlFolderAndFile::fileSystem().CreateFolder(orvane::GetDocumentPath(name));
  orvane::mdlFolderAndFile::fileSystem().CreateFile(orvane::GetDocDataPath(name));
  orvane::Document edited;
  report(L"create " + name, edited.CreateDocument(name));
  for (std::int16_t index = 1; index <= original.PageCount(); ++index) {
    report(L"add " + original.GetPage(index), edited.AddPage(original.GetPage(index)));
  }

  report(L"put a cover in front", edited.AddPage(L"cover", 1));
  report(L"move it after the second page", edited.MovePage(1, 3));
  report(L"remove the first page", edited.RemovePage(1));
  report(L"remove the cover by its name", edited.RemovePageForName(L"cover") == L"True");
  report(L"save", edited.SaveDocument());
  std::cout << "        pages: " << orvane::toUtf8(pagesOf(edited)) << '\n';

  orvane::Document again;
  report(L"load it again", again.LoadDocument(name) && pagesOf(again) == pagesOf(edited));
  report(L"delete it", orvane::mdlDocumentHelper::DeleteDocumentEx(name));
  return report.exitCode();
}
