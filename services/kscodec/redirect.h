// Who answers for a stream that has no header of its own.
#pragma once

#include "kskernel.h"

namespace kscodec {

struct Redirect {
  KsRedirectCallback callback;
  void *userData;
};

/** What KsSetRedirect set in this thread. */
Redirect CurrentRedirect();

}  // namespace kscodec
