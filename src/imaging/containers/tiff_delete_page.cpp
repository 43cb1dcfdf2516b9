#include <string>
#include <vector>

#include "foundation/atomic_file.h"
#include "imaging/containers/TiffFile.h"
#include "imaging/containers/TiffKeeper.h"
#include "imaging/containers/page_choice.h"
#include "imaging/containers/tiff_structure.h"

namespace orvane {

void TiffFile::deletePage(const std::wstring& path, std::int32_t page) {
  const OutputFile file = OutputFile::openToReplace(path);
  const TiffStructure structure(file);
  std::vector<TiffDirectoryPlace> pages = structure.pages();
  requireDeletablePage(path, page, pages.size());
  pages.erase(pages.begin() + (page - 1));

  const TiffKeeper keeper(structure, pages);
  FileReplacement replacement(file.path());
  OutputFile shorter = OutputFile::createAnew(replacement.temporaryPath());
  keeper.writeTo(shorter, file);
  shorter.close();
  replacement.commit();
}

}  // namespace orvane
