#include "compose/compose.h"

#include "drawings/handlgfx.h"
#include "drawings/handllbl.h"
#include "drawings/painting.h"
#include "headers/display_offset.h"
#include "images/block_grid.h"
#include "images/handlimg.h"
#include "internal/ksclasses_.h"
#include "platform.h"

#include <algorithm>
#include <span>
#include <utility>

namespace ksntfx {

namespace {

constexpr std::uint32_t kDefaultCanvas = 2048;
constexpr std::uint32_t kTextOnlyCanvas = 2;
constexpr std::uint32_t kLabelOnlyCanvas = 1;
constexpr std::uint32_t kLabelMargin = 10;

/** An entry of the display list. */
struct DisplayObject {
  std::uint32_t kind;
  std::uint32_t level;
  std::uint32_t index;
};

/** What the walk along an attachment chain needs of an object, whatever its kind. */
struct Placement {
  std::uint32_t level;
  std::uint32_t attachment;
  std::int32_t row;
  std::int32_t column;
};

template <class Record>
Placement PlacementOf(const Record &record) {
  return {record.displayLevel, record.attachmentLevel, record.locationRow, record.locationColumn};
}

/** The first object of each display level among the images or the graphics of a file. */
class FirstOfLevel {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  /** Takes the objects from `first` on, as many as `count`. False without memory. */
  bool Build(const Placement *placements, std::uint32_t first, std::uint32_t count) {
    entries = count;
    if (count == 0) return true;
    if (!sorted.Allocate(count)) return false;
    for (std::uint32_t at = 0; at < count; ++at) sorted[at] = {placements[first + at].level, first + at};
    std::sort(sorted.Get(), sorted.Get() + count);
    return true;
  }

  std::uint32_t Find(std::uint32_t level) const {
    const Entry *const begin = sorted.Get();
    const Entry *const end = begin + entries;
    const Entry *const found = std::lower_bound(begin, end, Entry{level, 0});
    return found == end || found->first != level ? kNone : found->second;
  }

 private:
  using Entry = std::pair<std::uint32_t, std::uint32_t>; /**< level and place */

  KsArray<Entry> sorted;
  std::uint32_t entries = 0;
};

/** All objects of a file that are shown. */
class DisplayList {
 public:
  /** Lists images, graphics and labels in file order, then sorts them. SUCCESS or ERROR_NO_MEMORY. */
  Status Build(const NitfFile *file) {
    images = CountImages(file);
    graphics = CountGraphics(file);
    labels = CountLabels(file);
    const std::uint32_t count = images + graphics + labels;
    if (count == 0) return SUCCESS;
    if (!objects.Allocate(count) || !placements.Allocate(count) || !visited.Allocate(count)) return ERROR_NO_MEMORY;
    Append<ImageSubheader>(file->imageList, kDisplayImage);
    Append<GraphicSubheader>(file->graphicList, kDisplayGraphic);
    Append<LabelSubheader>(file->labelList, kDisplayLabel);
    const bool found =
        firstImage.Build(placements.Get(), 0, images) && firstGraphic.Build(placements.Get(), images, graphics);
    if (!found) return ERROR_NO_MEMORY;
    Sort();
    return SUCCESS;
  }

  /**
   * The sum of the locations of all that an object is attached to; its own is not in it. A chain that would never end
   * ends before the object that it comes back to, which may be the one that it began with.
   */
  DisplayOffset OffsetsOf(const DisplayObject &object) {
    const std::uint32_t self = PlaceOf(object);
    const Chain whole = Walk(self, false);
    return whole.closed ? Walk(self, true).offset : whole.offset;
  }

  std::span<const DisplayObject> Objects() const { return {objects.Get(), listed}; }

  std::uint32_t images = 0;
  std::uint32_t graphics = 0;
  std::uint32_t labels = 0;

 private:
  struct Chain {
    std::uint32_t level;
    DisplayOffset offset;
    bool changed;
    bool closed;
  };

  /**
   * Walks from the object at `self` on. What is next depends on the level and on the kind that is searched, so a walk
   * that takes an object twice has no end; one that passes where it began may have, where objects share a level.
   */
  Chain Walk(std::uint32_t self, bool endsAtStart) {
    std::fill_n(visited.Get(), listed, std::uint8_t{0});
    visited[self] = endsAtStart ? 1 : 0;
    Chain chain{placements[self].attachment, {0, 0}, false, false};
    do {
      chain.changed = false;
      FollowThrough(chain, firstImage);
      FollowThrough(chain, firstGraphic);
      FollowLabels(chain);
    } while (chain.changed && !chain.closed);
    return chain;
  }

  template <class Record>
  void Append(const SegmentNode *node, std::uint32_t kind) {
    for (std::uint32_t index = 0; node != nullptr; node = node->next, ++index) {
      if (node->subheader == nullptr) continue;
      placements[listed] = PlacementOf(*static_cast<const Record *>(node->subheader));
      objects[listed] = {kind, placements[listed].level, index};
      ++listed;
    }
  }

  /**
   * An exchange sort, on purpose: objects of equal level are drawn in the order that it leaves them in, which is not
   * that of the file where a lower level stands behind them.
   */
  void Sort() {
    for (std::uint32_t i = 0; i + 1 < listed; ++i) {
      for (std::uint32_t j = i + 1; j < listed; ++j) {
        if (objects[i].level > objects[j].level) std::swap(objects[i], objects[j]);
      }
    }
  }

  /** Where an object stands in `placements`, which keeps the order of the file. */
  std::uint32_t PlaceOf(const DisplayObject &object) const {
    const std::uint32_t before = object.kind == kDisplayImage     ? 0
                                 : object.kind == kDisplayGraphic ? images
                                                                  : images + graphics;
    return before + object.index;
  }

  /** Takes the object at `place` into the chain if it is the one that the chain is attached to. */
  bool Follow(Chain &chain, std::uint32_t place) {
    const Placement &object = placements[place];
    if (object.level != chain.level) return false;
    if (visited[place] != 0) {
      chain.closed = true;
      return false;
    }
    visited[place] = 1;
    chain.offset = {Add(chain.offset.row, object.row), Add(chain.offset.column, object.column)};
    chain.level = object.attachment;
    chain.changed = true;
    return true;
  }

  /** Follows the chain through images or graphics, to the first one of its level each time. */
  void FollowThrough(Chain &chain, const FirstOfLevel &kind) {
    std::uint32_t place = kind.Find(chain.level);
    while (place != FirstOfLevel::kNone && Follow(chain, place)) place = kind.Find(chain.level);
  }

  /** Follows it through the labels, where a match goes on to the labels behind it before the search starts anew. */
  void FollowLabels(Chain &chain) {
    bool matched = true;
    while (matched && !chain.closed) {
      matched = false;
      for (std::uint32_t step = 0; step < labels && !chain.closed; ++step) {
        if (Follow(chain, images + graphics + step)) matched = true;
      }
    }
  }

  KsArray<DisplayObject> objects;
  KsArray<Placement> placements;
  KsArray<std::uint8_t> visited;
  FirstOfLevel firstImage;
  FirstOfLevel firstGraphic;
  std::uint32_t listed = 0;
};

// ---- size of the canvas -------------------------------------------------------------------------------------------

struct Edges {
  std::uint32_t right;
  std::uint32_t bottom;
};

/** An edge in the format's unsigned 32 bits. A picture too large for them stays at their limit, as no canvas does. */
std::uint32_t Edge(std::uint64_t size, std::int32_t location, std::int32_t offset) {
  if (size > UINT32_MAX) return UINT32_MAX;
  const std::int64_t edge = static_cast<std::int64_t>(size) + Add(location, offset);
  return edge > UINT32_MAX ? UINT32_MAX : static_cast<std::uint32_t>(edge);
}

Status MeasureObject(NitfFile *file, const DisplayObject &object, const DisplayOffset &offset, Edges *edges) {
  if (object.kind == kDisplayGraphic) {
    return MeasureGraphic(file, object.index, offset, &edges->right, &edges->bottom);
  }
  if (object.kind == kDisplayImage) {
    const ImageSubheader &image = *FindImage(file, object.index);
    *edges = {Edge(PaddedWidth(image), image.locationColumn, offset.column),
              Edge(PaddedHeight(image), image.locationRow, offset.row)};
  }
  return SUCCESS;
}

/** The canvas of a file that shows nothing, or nothing but labels and graphics; 0 for all others. */
std::uint32_t CanvasWithoutImages(const DisplayList &list, std::uint32_t texts) {
  if (list.Objects().empty()) return texts != 0 ? kTextOnlyCanvas : kDefaultCanvas;
  return list.images == 0 && list.labels != 0 ? kLabelOnlyCanvas : 0;
}

// ---- placing an image ---------------------------------------------------------------------------------------------

/**
 * The colour that TPXCD stands for: its palette entry, or black in an image without a palette. An index behind the
 * palette names no colour, and the image is painted whole.
 */
Status PadColor(const KsBitmap *bitmap, const ImageSubheader &image, KsPaletteEntry *color, bool *transparent) {
  *color = {};
  *transparent = true;
  if (bitmap->colorCount == 0) return SUCCESS;
  KsArray<KsPaletteEntry> entries;
  if (!entries.Allocate(bitmap->colorCount)) return ERROR_NO_MEMORY;
  KsBitmapGetPalette(bitmap, 0, bitmap->colorCount, entries.Get());
  const std::uint32_t index = image.padCode[0];
  *transparent = index < bitmap->colorCount;
  if (*transparent) *color = entries[index];
  return SUCCESS;
}

Status PaintImage(KsDeviceContext *context, const KsBitmap *bitmap, const ImageSubheader &image, const KsRect &place) {
  if (image.padCode == nullptr) return PaintWhole(context, bitmap, place);
  KsPaletteEntry color;
  bool transparent = false;
  const Status status = PadColor(bitmap, image, &color, &transparent);
  if (status != SUCCESS) return status;
  return transparent ? PaintTransparent(context, bitmap, place, color) : PaintWhole(context, bitmap, place);
}

/** Puts the parts of one image on the canvas. */
class ImagePlacer final : public ImageSink {
 public:
  ImagePlacer(KsDeviceContext *deviceContext, KsBitmap *canvasBitmap, const ImageSubheader &header,
              const DisplayOffset &offset)
      : context(deviceContext),
        canvas(canvasBitmap),
        image(header),
        quantised(KindOf(image).layout == ImageLayout::VectorQuantised),
        left(Add(image.locationColumn, offset.column)),
        top(Add(image.locationRow, offset.row)) {}

  ~ImagePlacer() override {
    if (canvasOpen) KsBitmapRelease(canvas, 1, 1);
  }

  /**
   * Places the first `rows` rows of `part` at row `partTop` of the image, within its padded size; vector-quantised data
   * have that of their recorded blocks.
   */
  Status Place(KsBitmap *part, std::uint32_t partTop, std::uint32_t rows) override {
    // Transparent pixels can only be painted.
    if (image.padCode != nullptr && context == nullptr) return ERROR_INVALID_VALUE;
    const std::int32_t placeTop = Add(top, static_cast<std::int32_t>(partTop));
    const bool isEnlarged = (part->flags & KS_BITMAP_ENLARGED) != 0;
    const std::uint64_t rowsLeft = PaddedHeight(image) - partTop;
    const auto width = static_cast<std::int32_t>(quantised ? part->width : PaddedWidth(image));
    const auto height = static_cast<std::int32_t>(quantised    ? rows
                                                  : isEnlarged ? rowsLeft
                                                               : std::min<std::uint64_t>(rows, rowsLeft));
    if (context == nullptr) return KsCombine(canvas, left, placeTop, width, height, part, 0, 0, KS_COMBINE_COPY, 0);
    KsRect place;
    platform::SetRect(&place, left, placeTop, Add(left, width), Add(placeTop, height));
    const SelectedPalette palette(context, part);
    return PaintImage(context, part, image, place);
  }

  /** Where full colour meets a full-colour canvas and nothing is clipped or painted, the canvas is the place. */
  bool Lend(KsBitmap *view, std::uint32_t partTop, std::uint32_t rows, std::uint32_t depth) override {
    if (depth != kFullColour || context != nullptr || image.padCode != nullptr || canvas->bitsPerPixel != kFullColour)
      return false;
    const std::int32_t placeTop = Add(top, static_cast<std::int32_t>(partTop));
    if (left < 0 || placeTop < 0) return false;
    const auto width = static_cast<std::uint32_t>(PaddedWidth(image));
    return KsBitmapView(view, sizeof *view, canvas, static_cast<std::uint32_t>(left),
                        static_cast<std::uint32_t>(placeTop), width, rows) == SUCCESS &&
           OpenCanvas();
  }

 private:
  static constexpr std::uint32_t kFullColour = 24;

  bool OpenCanvas() {
    if (!canvasOpen) canvasOpen = KsBitmapAccess(canvas, 0) == SUCCESS;
    return canvasOpen;
  }

  KsDeviceContext *context;
  KsBitmap *canvas;
  bool canvasOpen = false;
  const ImageSubheader &image;
  bool quantised;
  std::int32_t left;
  std::int32_t top;
};

/** Spreads an image all of whose levels lie below 20 over the full range. */
Status CheckTone(KsBitmap *bitmap) {
  constexpr std::uint32_t kLevels = 256;
  constexpr std::uint32_t kLowLevels = 20;
  constexpr std::uint32_t kSpreadFully = 350;
  std::uint64_t counters[kLevels] = {};
  const Status status = KsHistogram(bitmap, counters, kLevels, 0);
  if (status != SUCCESS) return status;
  const auto occupied = [](std::uint64_t count) { return count != 0; };
  if (std::any_of(counters + kLowLevels, counters + kLevels, occupied)) return SUCCESS;
  if (std::none_of(counters, counters + kLowLevels, occupied)) return SUCCESS;
  return KsToneAdjust(bitmap, kSpreadFully, 0);
}

/** Whether an image can turn out to be damaged when a part of it is on the canvas already. */
bool MayFailHalfway(const ImageSubheader &image) {
  return KindOf(image).layout == ImageLayout::Tiles && !BlockGrid(image).IsSingle();
}

Status DrawImage(FilterLoadRecord *loadContext, const Canvas &canvas, NitfFile *file, std::uint32_t index,
                 const DisplayOffset &offset) {
  const ImageSubheader &image = *FindImage(file, index);
  ImagePlacer placer(canvas.context, canvas.bitmap, image, offset);
  const bool inStrips = file->toneCheck == 0 && (canvas.isDiscarded || !MayFailHalfway(image));
  if (inStrips) return DecodeImageInStrips(loadContext, file, index, placer);
  KsLocalBitmap bitmap;
  Status status = DecodeImageSegment(loadContext, file, index, bitmap.Get());
  if (status == SUCCESS && file->toneCheck != 0) status = CheckTone(bitmap.Get());
  return status == SUCCESS ? placer.Place(bitmap.Get(), 0, bitmap->height) : status;
}

}  // namespace

Status MeasureCanvas(NitfFile *file, std::uint32_t *width, std::uint32_t *height) {
  *width = *height = kDefaultCanvas;
  if (file->fixedCanvas != 0) return SUCCESS;
  DisplayList list;
  const Status built = list.Build(file);
  if (built != SUCCESS) return built;
  if (const std::uint32_t side = CanvasWithoutImages(list, file->textCount); side != 0) {
    *width = *height = side;
    return SUCCESS;
  }
  Edges canvas{0, 0};
  for (const DisplayObject &object : list.Objects()) {
    Edges edges{0, 0};
    const Status status = MeasureObject(file, object, list.OffsetsOf(object), &edges);
    if (status != SUCCESS) return status;
    canvas = {std::max(canvas.right, edges.right), std::max(canvas.bottom, edges.bottom)};
  }
  const std::uint32_t margin = list.labels == 0 ? 0 : kLabelMargin;
  canvas = {canvas.right + margin, canvas.bottom + margin};
  if (canvas.right == 0 && canvas.bottom == 0) return SUCCESS;
  *width = canvas.right;
  *height = canvas.bottom;
  return SUCCESS;
}

Status DrawObjects(FilterLoadRecord *loadContext, const Canvas &canvas, NitfFile *file) {
  DisplayList list;
  Status status = list.Build(file);
  if (status != SUCCESS) return status;
  if (canvas.context == nullptr && list.graphics + list.labels != 0) return ERROR_INVALID_VALUE;
  for (const DisplayObject &object : list.Objects()) {
    const DisplayOffset offset = list.OffsetsOf(object);
    if (object.kind == kDisplayImage) {
      status = DrawImage(loadContext, canvas, file, object.index, offset);
    } else if (object.kind == kDisplayGraphic) {
      status = DrawGraphic(canvas.context, file, object.index, offset);
    } else {
      status = DrawLabel(canvas.context, file, object.index, offset);
    }
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

}  // namespace ksntfx
