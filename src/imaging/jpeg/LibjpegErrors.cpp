#include "imaging/jpeg/LibjpegErrors.h"

#include <jerror.h>
#include <new>

#include "foundation/Failure.h"

namespace orvane {
namespace {

[[noreturn]] void leave(j_common_ptr info) {
  auto* errors = reinterpret_cast<LibjpegErrors*>(info->err);
  errors->base.format_message(info, errors->text);
  std::longjmp(errors->jump, 1);
}

void silence(j_common_ptr, int) {}

}  // namespace

LibjpegErrors::LibjpegErrors() : base{}, jump{}, text{} {
  jpeg_std_error(&base);
  base.error_exit = leave;
  base.emit_message = silence;
}

void LibjpegErrors::fail() const {
  if (base.msg_code == JERR_OUT_OF_MEMORY) throw std::bad_alloc();
  throw Failure(text);
}

}  // namespace orvane
