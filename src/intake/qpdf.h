#pragma once

// The headers of libqpdf. One of them, for JSON, cannot be read by clang 14 as C++20 with the
// library of GCC 12; nothing here uses it, so its guard keeps it out. The macro for pointers makes
// them std::shared_ptr.
#define JSON_HH
#define POINTERHOLDER_TRANSITION 4
class JSON;

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFObjectHandle.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
