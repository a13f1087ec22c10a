#include "segment_image.h"

#include "load_headers.h"
#include "segment_choice.h"

namespace ntf {

Outcome DecodeSegment(const std::string &fileName, std::uint32_t index, SegmentImage &image) {
  LoadedFile loaded;
  if (Outcome failed = LoadHeaders(fileName, loaded, Door::Strict)) return failed;
  const FileView file = loaded.View();
  if (Outcome missing = CheckSegment(fileName, file, SegmentKind::Image, index)) return missing;
  const std::int32_t status = file.DecodeImage(index, image.bitmap.Get());
  const ImageNumbers numbers = file.Image(index);
  image.columns = numbers.columns;
  image.rows = numbers.rows;
  return OutcomeOf(fileName, status);
}

}  // namespace ntf
