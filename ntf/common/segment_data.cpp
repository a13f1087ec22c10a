#include "segment_data.h"

std::int32_t ReadSegmentData(const NitfFile *file, SegmentKind kind, std::uint32_t index, SegmentData *data) {
  data->length = DataLength(file, kind, index);
  if (data->length == 0) return SUCCESS;
  const std::int64_t size = KsSeek(file->fileHandle, 0, KS_SEEK_END);
  const std::int64_t start = SeekSegmentData(file, kind, index);
  if (start < 0 || start > size || data->length > size - start) return ERROR_FILE_READ;
  if (!data->bytes.Allocate(std::uint64_t{data->length} + 1)) return ERROR_NO_MEMORY;
  return KsRead(file->fileHandle, data->bytes.Get(), data->length) == data->length ? SUCCESS : ERROR_FILE_READ;
}
