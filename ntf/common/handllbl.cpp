#include "handllbl.h"

std::int32_t DrawLabel(KsDeviceContext *, NitfFile *, std::uint32_t, const DisplayOffset &) {
  return ERROR_NOT_SUPPORTED;
}
