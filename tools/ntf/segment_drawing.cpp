#include "segment_drawing.h"

#include "load_headers.h"
#include "segment_choice.h"

namespace ntf {

Outcome DrawSegment(const std::string &fileName, Door door, std::uint32_t index, KsLocalBitmap &picture) {
  constexpr std::int64_t kMargin = 8;  // for the width of lines
  constexpr std::uint32_t kWhite = 0xFFFFFF;
  LoadedFile loaded;
  if (Outcome failed = LoadHeaders(fileName, loaded, door)) return failed;
  const FileView file = loaded.View();
  if (Outcome missing = CheckSegment(fileName, file, SegmentKind::Graphic, index)) return missing;
  KsRect place;
  std::int32_t status = file.PlaceGraphic(index, &place);
  if (status != SUCCESS) return StatusProblem(fileName, status);
  const std::int64_t width = std::int64_t{place.right} - place.left + 2 * kMargin;
  const std::int64_t height = std::int64_t{place.bottom} - place.top + 2 * kMargin;
  status = KsBitmapCreate(picture.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, static_cast<std::uint32_t>(width),
                          static_cast<std::uint32_t>(height), 24, KS_ORDER_BGR, nullptr, 1, nullptr, 0);
  if (status != SUCCESS) return StatusProblem(fileName, status);
  KsBitmapFill(picture.Get(), kWhite);
  const KsLocalContext context(picture.Get());
  if (context.Get() == nullptr) return StatusProblem(fileName, ERROR_NO_MEMORY);
  const auto row = static_cast<std::int32_t>(kMargin - place.top);
  const auto column = static_cast<std::int32_t>(kMargin - place.left);
  return OutcomeOf(fileName, file.DrawGraphic(index, context.Get(), row, column));
}

}  // namespace ntf
