#pragma once

#include <cstdint>
#include <string>

#include "foundation/OutputFile.h"

/// PDF files of other programs. libqpdf reads and writes them.

namespace orvane {

/// The number of pages. Throws Failure for a file that is damaged or needs a password.
std::int32_t foreignPdfPageCount(const std::wstring& path);

/// Writes the file without page `page`, from 1, to `target`, which is empty. The streams are copied
/// as they are. The data of the page goes too, unless another page uses it; what refers to the page
/// refers to nothing. Throws Failure for a page that does not exist, for the only page, and for a
/// file that is damaged, needs a password, is signed, or forbids the removal.
void copyForeignPdfWithout(const std::wstring& path, std::int32_t page, OutputFile& target);

}  // namespace orvane
