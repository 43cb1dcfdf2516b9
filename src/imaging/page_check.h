#pragma once

#include <cstdint>
#include <string>

namespace orvane {

/// Reads the first page of an image file as an export does, and writes nothing: strips that would
/// be copied are verified, all others are decoded. Throws Failure "<path>: <reason>" for a page
/// that cannot be opened and for one whose image data is damaged: an export of it would fail.
void checkPage(const std::wstring& path);

}  // namespace orvane
