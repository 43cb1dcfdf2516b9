#include "foundation/local_time.h"

#include <ctime>

namespace orvane {

std::wstring localTime(const char* mask) {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  tzset();  // localtime_r need not look at a time zone that has changed
  localtime_r(&now, &parts);
  char digits[32];
  const std::size_t length = std::strftime(digits, sizeof digits, mask, &parts);
  return {digits, digits + length};
}

std::wstring timeStamp() {
  return localTime("%Y-%m-%d %H:%M:%S");
}

}  // namespace orvane
