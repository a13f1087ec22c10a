#include "images/image_source.h"

#include "table/file_bytes.h"

namespace ksntfx {

Status ImageSource::Read(std::int64_t offset, void *buffer, std::uint64_t bytes) const {
  if (offset < 0 || KsSeek(file, dataStart + offset, KS_SEEK_START) < 0) return ERROR_FILE_READ;
  return KsRead(file, buffer, bytes) == bytes ? SUCCESS : ERROR_FILE_READ;
}

bool ImageSource::Holds(std::int64_t end) const {
  return end >= 0 && dataStart >= 0 &&
         static_cast<std::uint64_t>(dataStart) + static_cast<std::uint64_t>(end) <= fileSize;
}

ImageSource OpenSource(const NitfFile *file, ImageSubheader *image, std::uint32_t index) {
  return {file->fileHandle, image, DataLength(file, SegmentKind::Image, index),
          SeekSegmentData(file, SegmentKind::Image, index), FileSize(file->fileHandle)};
}

}  // namespace ksntfx
