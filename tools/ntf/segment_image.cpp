#include "segment_image.h"

#include "handlimg.h"
#include "load_headers.h"
#include "segment_choice.h"

namespace ntf {

Outcome DecodeSegment(const std::string &fileName, std::uint32_t index, SegmentImage &image) {
  LocalNitfFile file;
  if (Outcome failed = LoadHeaders(fileName, *file.Get())) return failed;
  if (Outcome missing = CheckSegment(fileName, *file.Get(), SegmentKind::Image, index)) return missing;
  const std::int32_t status = DecodeImageSegment(nullptr, file.Get(), index, image.bitmap.Get());
  if (status != SUCCESS) return StatusProblem(fileName, status);
  const ImageSubheader &subheader = *FindImage(file.Get(), index);
  image.columns = subheader.columns;
  image.rows = subheader.rows;
  return {};
}

}  // namespace ntf
