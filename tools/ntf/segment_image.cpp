#include "segment_image.h"

#include "handlimg.h"
#include "load_headers.h"

namespace ntf {
namespace {

Problem NoSuchImage(const std::string &fileName, std::uint32_t index, std::uint32_t count) {
  constexpr std::int32_t kIndexOutOfRange = 87;
  const std::string held = count == 0 ? "no image" : std::to_string(count) + (count == 1 ? " image" : " images");
  return {fileName, "there is no image " + std::to_string(index) + ": the file has " + held, kIndexOutOfRange};
}

}  // namespace

Outcome DecodeSegment(const std::string &fileName, std::uint32_t index, SegmentImage &image) {
  LocalNitfFile file;
  if (Outcome failed = LoadHeaders(fileName, *file.Get())) return failed;
  const ImageSubheader *subheader = FindImage(file.Get(), index);
  if (subheader == nullptr) return NoSuchImage(fileName, index, CountImages(file.Get()));
  const std::int32_t status = DecodeImageSegment(nullptr, file.Get(), index, image.bitmap.Get());
  if (status != SUCCESS) return StatusProblem(fileName, status);
  image.columns = subheader->columns;
  image.rows = subheader->rows;
  return {};
}

}  // namespace ntf
