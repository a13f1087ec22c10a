#include "images/image_data.h"

#include <cstring>

namespace ksntfx {

Status ImageData::Read(std::uint64_t offset, void *buffer, std::uint64_t bytes) const {
  const std::uint64_t held = HeldBytes();
  const std::uint64_t wanted = offset < held ? std::min(bytes, held - offset) : 0;
  if (wanted < bytes && !fillsMissing) return ERROR_FILE_READ;
  const std::uint64_t read =
      wanted == 0 ? 0 : KsReadAt(file, static_cast<std::int64_t>(Samples() + offset), buffer, wanted);
  if (read < wanted) return ERROR_FILE_READ;
  std::memset(static_cast<std::uint8_t *>(buffer) + read, 0, bytes - read);
  return SUCCESS;
}

}  // namespace ksntfx
