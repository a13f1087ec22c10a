#include "headers/segment_data.h"

#include <algorithm>
#include <cstring>

namespace ksntfx {

Status ReadSegmentData(const NitfFile *file, SegmentKind kind, std::uint32_t index, SegmentData *data) {
  data->length = DataLength(file, kind, index);
  if (data->length == 0) return SUCCESS;
  // The bytes of a segment that was added in memory would be those of another one.
  if (index >= CountInFile(file, kind)) return ERROR_FILE_READ;
  const std::int64_t size = KsSeek(file->fileHandle, 0, KS_SEEK_END);
  const std::int64_t start = SeekSegmentData(file, kind, index);
  if (start < 0 || start > size || data->length > size - start) return ERROR_FILE_READ;
  if (!data->bytes.Allocate(std::uint64_t{data->length} + 1)) return ERROR_NO_MEMORY;
  return KsRead(file->fileHandle, data->bytes.Get(), data->length) == data->length ? SUCCESS : ERROR_FILE_READ;
}

Status ReadText(const NitfFile *file, std::uint32_t index, char *buffer) {
  const TextSubheader &text = *FindText(file, index);
  std::size_t length = TextDataLength(file, index);
  if (text.hasMemoryData != 0) {
    // Whatever length a caller has given the header.
    length = text.memoryData == nullptr ? 0 : std::strlen(text.memoryData);
    std::copy_n(text.memoryData, length, buffer);
  } else if (length != 0) {
    SeekSegmentData(file, SegmentKind::Text, index);
    if (KsRead(file->fileHandle, buffer, length) != length) return ERROR_FILE_READ;
  }
  buffer[length] = '\0';
  return SUCCESS;
}

}  // namespace ksntfx
