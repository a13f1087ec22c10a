// How libjpeg-turbo reports errors: it calls a function that must not return.
#pragma once

#include "internal/status.h"

#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <jerror.h>

#include <jpeglib.h>

namespace kscodec::jpeg {

/**
 * The way out of the library's calls. Its record of error handlers is the first member, so that the library's pointer
 * to that one leads here. Where `escape` is set, nothing between it and the library's calls may have a destructor.
 */
struct ErrorExit {
  jpeg_error_mgr handlers;
  std::jmp_buf escape;
  std::int32_t status; /**< why it was left */
};

[[noreturn]] inline void Leave(j_common_ptr state, std::int32_t status) {
  auto *const exit = reinterpret_cast<ErrorExit *>(state->err);
  exit->status = status;
  std::longjmp(exit->escape, 1);
}

inline std::int32_t StatusOf(int message) {
  switch (message) {
    case JERR_OUT_OF_MEMORY:
    case JERR_NO_BACKING_STORE:
      return ERROR_NO_MEMORY;
    case JERR_COMPONENT_COUNT:
    case JERR_FRACT_SAMPLE_NOTIMPL:
    case JERR_IMAGE_TOO_BIG:
    case JERR_NOTIMPL:
      return ERROR_NOT_SUPPORTED;
    default:
      return ERROR_FILE_FORMAT;
  }
}

/** Makes the library silent. Warnings are about damaged data, of which it decodes what it can. Returns its `err`. */
inline jpeg_error_mgr *SetErrorHandlers(ErrorExit *exit) {
  jpeg_std_error(&exit->handlers);
  exit->handlers.error_exit = [](j_common_ptr state) { Leave(state, StatusOf(state->err->msg_code)); };
  exit->handlers.output_message = [](j_common_ptr) {};
  exit->handlers.emit_message = [](j_common_ptr, int) {};
  return &exit->handlers;
}

}  // namespace kscodec::jpeg
