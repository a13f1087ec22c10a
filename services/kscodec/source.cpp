#include "kscodec/source.h"

#include <algorithm>
#include <cstring>

namespace kscodec {

Status MemorySource::Read(std::uint64_t at, void *buffer, std::uint64_t count) const {
  if (at > bytes.size() || count > bytes.size() - at) return ERROR_FILE_READ;
  if (count != 0) std::memcpy(buffer, bytes.data() + at, count);
  return SUCCESS;
}

Status CallbackSource::Read(std::uint64_t at, void *buffer, std::uint64_t bytes) const {
  if (at > source.size || bytes > source.size - at) return ERROR_FILE_READ;
  if (bytes == 0) return SUCCESS;
  const std::int64_t read = source.read(source.user, at, buffer, bytes);
  return read >= 0 && static_cast<std::uint64_t>(read) == bytes ? SUCCESS : ERROR_FILE_READ;
}

Stream SourcePart::Memory() const {
  const Stream whole = source.Memory();
  return whole.empty() ? whole : whole.subspan(first, count);
}

Stream PieceReader::At(std::uint64_t at, std::uint64_t count) {
  constexpr std::uint64_t kReadAhead = 512;
  if (!memory.empty() && Has(at, count)) return memory.subspan(at, count);
  const bool isHeld = at >= heldAt && at - heldAt <= held.size() && count <= held.size() - (at - heldAt);
  if (!isHeld) {
    const std::uint64_t left = Has(at, 0) ? Size() - at : 0;
    const std::uint64_t wanted = std::min(std::max(count, kReadAhead), left);
    held.assign(std::max(wanted, count), 0);
    heldAt = at;
    if (source.Read(at, held.data(), wanted) != SUCCESS) {
      hasFailed = true;
      held.assign(held.size(), 0);
    }
  }
  return Stream(held).subspan(at - heldAt, count);
}

}  // namespace kscodec
