#pragma once

#include <csetjmp>
#include <cstdio>
#include <jpeglib.h>

namespace orvane {

/// The errors of one libjpeg object, which are kept as text. libjpeg is C and is left by a jump;
/// nothing that it skips may need a destructor. So it is called in functions of this form:
///
///     if (setjmp(errors.jump) != 0) return false;
///     jpeg_...
///     return true;
struct LibjpegErrors {
  LibjpegErrors();

  /// Throws the error as Failure, or as bad_alloc when memory ran out.
  [[noreturn]] void fail() const;

  jpeg_error_mgr base;  ///< first, so that libjpeg's pointer to it is a pointer to this
  std::jmp_buf jump;
  char text[JMSG_LENGTH_MAX];
};

}  // namespace orvane
