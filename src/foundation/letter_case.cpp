#include "foundation/letter_case.h"

#include <cwctype>
#include <locale.h>

namespace orvane {

wchar_t upperCase(wchar_t character) {
  static const locale_t letters = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{});
  const auto code = static_cast<wint_t>(character);
  return static_cast<wchar_t>(letters == locale_t{} ? towupper(code) : towupper_l(code, letters));
}

}  // namespace orvane
