#include "imaging/page_check.h"

#include "foundation/Failure.h"
#include "foundation/utf8_text.h"
#include "imaging/LoadedPage.h"

namespace orvane {

void checkPage(const std::wstring& path) {
  LoadedPage page(path, 1);
  const bool copied = page.group4Copy(Group4Form::Strips) || page.transcodedJpeg(JpegFactors{});
  if (!copied && !page.damage()) page.pixels();
  if (page.damage()) throw Failure(path + L": " + fromUtf8(*page.damage()));
}

}  // namespace orvane
