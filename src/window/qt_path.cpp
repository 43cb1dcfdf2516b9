#include "window/qt_path.h"

#include <algorithm>
#include <cerrno>

#include "foundation/Failure.h"
#include "foundation/paths.h"
#include "foundation/text_encoding.h"
#include "window/qt_text.h"

namespace orvane {

QString toQtPath(std::wstring_view pathText) {
  try {
    const std::string native = nativePath(pathText);
    const std::wstring text = fromUtf8(native);
    return toUtf8(text) == native ? toQt(text) : QString();
  } catch (const Failure&) {
    return {};
  }
}

std::wstring fromQtPath(const QString& native) {
  const std::wstring text = fromQt(native);
  if (!std::ranges::all_of(text, isUnicodeScalar)) throw systemFailure(EILSEQ, text);
  return pathText(toUtf8(text));
}

}  // namespace orvane
