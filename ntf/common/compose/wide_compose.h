// The composition of a file of any version, in full color: images as their samples are, all symbols, all labels.
#pragma once

#include "compose/display_list.h"
#include "headers/wide_file.h"
#include "images/shown_image.h"

#include <functional>
#include <set>
#include <utility>

namespace ksntfx {

/** The segment that could not be drawn, and why. */
struct UndrawnSegment {
  SegmentKind kind;
  std::uint32_t index;
  Status status;
};

class WideComposition {
 public:
  /**
   * `file` must outlive it. A segment that can't be measured or drawn is passed to `onUndrawn`, and the composition
   * goes on without it where that returns true.
   */
  WideComposition(WideFile &wideFile, const ShowChoice &showChoice, bool fills,
                  std::function<bool(const UndrawnSegment &)> onUndrawn)
      : file(wideFile), choice(showChoice), fillsMissing(fills), undrawn(std::move(onUndrawn)) {}

  /** Lists what is drawn, and measures the canvas: 0 x 0 where nothing is. */
  Status Measure();
  std::uint64_t Rows() const { return static_cast<std::uint64_t>(bottom); }
  std::uint64_t Columns() const { return static_cast<std::uint64_t>(right); }

  /** After Measure: makes a 24-bit bitmap of that size and draws on it. ERROR_NO_MEMORY for one that is too large. */
  Status Draw(std::uint32_t background, KsBitmap *canvas);

 private:
  Status MeasureObject(const DisplayObject &object, const DisplayOffset &offset, KsRect *place);
  Status MeasureGraphicObject(std::uint32_t index, const DisplayOffset &offset, KsRect *place);
  Status MeasureLabel(std::uint32_t index, const DisplayOffset &offset, KsRect *place);
  Status DrawObject(const DisplayObject &object, KsDeviceContext *context, KsBitmap *canvas);
  Status DrawWideImage(std::uint32_t index, const DisplayOffset &offset, KsBitmap *canvas);
  /** SUCCESS where the composition goes on without a segment that has failed. */
  Status Skip(const DisplayObject &object, Status status);
  bool IsReadable(const DisplayObject &object) const;

  WideFile &file;
  ShowChoice choice;
  bool fillsMissing;
  std::function<bool(const UndrawnSegment &)> undrawn;
  DisplayList list;
  std::set<std::pair<SegmentKind, std::uint32_t>> leftOut; /**< segments that could not be measured */
  std::int64_t right = 0;
  std::int64_t bottom = 0;
};

}  // namespace ksntfx
