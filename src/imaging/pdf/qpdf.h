#pragma once

#include <qpdf/DLL.h>

// The headers of libqpdf. Before version 12 one of them, for JSON, cannot be read by clang 14 as
// C++20 with the library of GCC 12; nothing here uses it, so its guard keeps it out. The macro for
// pointers makes them std::shared_ptr.
#if QPDF_MAJOR_VERSION < 12
#define JSON_HH
class JSON;
#endif
#define POINTERHOLDER_TRANSITION 4

#include <qpdf/Pipeline.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>
