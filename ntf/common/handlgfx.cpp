#include "handlgfx.h"

#include "internal/ksclasses_.h"

namespace {

std::int32_t CheckDataRead(NitfFile *file, std::uint32_t index) {
  const std::uint64_t bytes = DataLength(file, SegmentKind::Graphic, index);
  const std::int64_t size = KsSeek(file->fileHandle, 0, KS_SEEK_END);
  const std::int64_t start = SeekSegmentData(file, SegmentKind::Graphic, index);
  const bool held = start >= 0 && start <= size && bytes <= static_cast<std::uint64_t>(size - start);
  return held ? SUCCESS : ERROR_FILE_READ;
}

}  // namespace

std::int32_t MeasureGraphic(NitfFile *file, std::uint32_t index, const DisplayOffset &offset, std::uint32_t *right,
                            std::uint32_t *bottom) {
  const GraphicSubheader &graphic = *FindGraphic(file, index);
  const std::int32_t status = CheckDataRead(file, index);
  if (status != SUCCESS) return status;
  if (graphic.SFMT[0] == 'C') return ERROR_NOT_SUPPORTED;
  *right = static_cast<std::uint32_t>(offset.column) + static_cast<std::uint32_t>(graphic.secondBound[1]);
  *bottom = static_cast<std::uint32_t>(offset.row) + static_cast<std::uint32_t>(graphic.secondBound[0]);
  return SUCCESS;
}

std::int32_t DrawGraphic(KsDeviceContext *, NitfFile *, std::uint32_t, const DisplayOffset &) {
  return ERROR_NOT_SUPPORTED;
}
