// How libjpeg tells what is wrong: it calls functions, and can't go on behind the one for errors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include <jpeglib.h>

namespace kscodec::jpeg {

/**
 * Makes the library silent: an error calls `escape`, which must not return, and warnings, which are about damaged data,
 * give what picture they can. The result is what a codec's `err` points to.
 */
inline jpeg_error_mgr *SetErrorHandlers(jpeg_error_mgr *errors, void (*escape)(j_common_ptr)) {
  jpeg_std_error(errors);
  errors->error_exit = escape;
  errors->output_message = [](j_common_ptr) {};
  errors->emit_message = [](j_common_ptr, int) {};
  return errors;
}

}  // namespace kscodec::jpeg
