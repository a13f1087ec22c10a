#include "headers/held_data.h"

#include "internal/ksclasses_.h"

#include <algorithm>

namespace ksntfx {

Status CopyIntoMemory(char **held, const void *data, std::uint32_t length) {
  KsFreeAndClear(*held);
  KsArray<char> copy;
  if (!copy.Allocate(std::uint64_t{length} + 1)) return ERROR_NO_MEMORY;
  std::copy_n(static_cast<const char *>(data), length, copy.Get());
  *held = copy.Release();
  return SUCCESS;
}

}  // namespace ksntfx
