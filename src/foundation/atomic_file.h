#pragma once

#include <string>
#include <string_view>

namespace orvane {

/// Makes `bytes` the whole content of a file in one step: whatever happens, a crash included, the
/// file holds either all of the old or all of the new. An existing file keeps its permissions, one
/// that may not be written is refused, and where `path` is a symbolic link the file behind it is
/// replaced. Throws Failure and then leaves the file as it was.
void replaceFile(const std::wstring& path, std::string_view bytes);

}  // namespace orvane
