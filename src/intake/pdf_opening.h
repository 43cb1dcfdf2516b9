#pragma once

#include <memory>
#include <string>

#include "imaging/pdf/qpdf.h"

namespace orvane {

/// Opens a PDF file in libqpdf. Many a writer counts wrongly: the offset of an object or the length
/// of a stream is wrong by a few bytes. The objects of such a file are looked for, as every viewer
/// does, but only if nothing is to be guessed: it has one trailer, and defines every object once.
/// Throws Failure with the reason, for the operator, for another damaged file, and what libqpdf
/// throws.
std::unique_ptr<QPDF> openPdf(const std::wstring& path);

}  // namespace orvane
