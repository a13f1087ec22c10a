#include "segment_drawing.h"

#include "handlgfx.h"
#include "load_headers.h"
#include "segment_choice.h"

namespace ntf {

Outcome DrawSegment(const std::string &fileName, std::uint32_t index, KsLocalBitmap &picture) {
  constexpr std::int64_t kMargin = 8;  // for the width of lines
  constexpr std::uint32_t kWhite = 0xFFFFFF;
  LocalNitfFile file;
  if (Outcome failed = LoadHeaders(fileName, *file.Get())) return failed;
  if (Outcome missing = CheckSegment(fileName, *file.Get(), SegmentKind::Graphic, index)) return missing;
  KsRect place;
  std::int32_t status = PlaceGraphic(file.Get(), index, &place);
  if (status != SUCCESS) return StatusProblem(fileName, status);
  const std::int64_t width = std::int64_t{place.right} - place.left + 2 * kMargin;
  const std::int64_t height = std::int64_t{place.bottom} - place.top + 2 * kMargin;
  status = KsBitmapCreate(picture.Get(), sizeof(KsBitmap), KS_BITMAP_OWN, static_cast<std::uint32_t>(width),
                          static_cast<std::uint32_t>(height), 24, KS_ORDER_BGR, nullptr, 1, nullptr, 0);
  if (status != SUCCESS) return StatusProblem(fileName, status);
  KsBitmapFill(picture.Get(), kWhite);
  const KsLocalContext context(picture.Get());
  const DisplayOffset offset = {static_cast<std::int32_t>(kMargin - place.top),
                                static_cast<std::int32_t>(kMargin - place.left)};
  status = context.Get() == nullptr ? ERROR_NO_MEMORY : DrawGraphic(context.Get(), file.Get(), index, offset);
  return OutcomeOf(fileName, status);
}

}  // namespace ntf
