// The operations on drawings, over the model in their records.
#include "internal/status.h"
#include "kscore/allocation.h"
#include "kscore/context.h"
#include "kskernel.h"
#include "ksvect/cgm/reader.h"
#include "ksvect/cgm/writer.h"
#include "ksvect/model/drawing.h"
#include "ksvect/objects.h"
#include "ksvect/paint/bounds.h"
#include "ksvect/paint/painter.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string>

namespace {

using ksvect::Drawing;

/** Layers are few; more than this are somebody's mistake. */
constexpr std::size_t kMostLayers = 1U << 16;

Drawing *DrawingOf(const KsVector *vector) {
  return vector == nullptr ? nullptr : static_cast<Drawing *>(vector->drawing);
}

/** Runs `work`, which may run out of memory, for an export. */
template <class Work>
std::int32_t Guarded(Work work) {
  try {
    return Status(work()).Code();
  } catch (const std::bad_alloc &) {
    return ERROR_NO_MEMORY;
  }
}

/** Runs `work` on the drawing, and makes one where there is none. */
template <class Work>
std::int32_t WithDrawing(KsVector *vector, Work work) {
  if (vector == nullptr) return ERROR_INVALID_VALUE;
  return Guarded([&] {
    std::unique_ptr<Drawing> made;
    if (vector->drawing == nullptr) made = std::make_unique<Drawing>();
    Status status = work(made ? *made : *DrawingOf(vector));
    if (made && status == SUCCESS) vector->drawing = made.release();
    return status;
  });
}

std::int32_t TellDrawing(const KsVector *vector) {
  return DrawingOf(vector) == nullptr ? ERROR_INVALID_VALUE : SUCCESS;
}

std::int32_t PixelAt(double place) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<double>(place, Limits::min(), Limits::max()));
}

/** With the edges that belong to the left and the top there. */
KsRect Sorted(const KsRect &rectangle) {
  const auto [left, right] = std::minmax({rectangle.left, rectangle.right});
  const auto [top, bottom] = std::minmax({rectangle.top, rectangle.bottom});
  return {left, top, right, bottom};
}

/** The box of a drawing, y upwards, whose units are the pixels of a rectangle of the canvas. */
ksvect::Box BoxOnCanvas(const KsRect &rectangle) {
  const KsRect sorted = Sorted(rectangle);
  return {{static_cast<double>(sorted.left), -static_cast<double>(sorted.bottom)},
          {static_cast<double>(sorted.right), -static_cast<double>(sorted.top)}};
}

/** The day in UTC, as in 20050131. */
std::string Today() {
  const std::chrono::year_month_day day(std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now()));
  const int number = static_cast<int>(day.year()) * 10000 + static_cast<int>(static_cast<unsigned>(day.month())) * 100 +
                     static_cast<int>(static_cast<unsigned>(day.day()));
  return std::to_string(number);
}

/** Writes a metafile of the drawing, laid onto `viewport` where that isn't null. */
Status Encode(const Drawing &drawing, const KsRect *viewport, std::vector<std::uint8_t> &data) {
  ksvect::Box extent;
  const bool hasExtent = ksvect::ExtentOf(drawing, extent);
  if (viewport == nullptr || !hasExtent) return ksvect::WriteCgm(drawing, hasExtent ? &extent : nullptr, Today(), data);
  Drawing laid = drawing;
  ksvect::LayOnto(laid, extent, BoxOnCanvas(*viewport));
  return ksvect::WriteCgm(laid, nullptr, Today(), data);
}

/** The bytes as a global block. */
Status HandOver(const std::vector<std::uint8_t> &data, void **handle, uint64_t *size) {
  void *const block = kscore::AllocateGlobal(data.size());
  if (block == nullptr) return ERROR_NO_MEMORY;
  std::copy(data.begin(), data.end(), static_cast<std::uint8_t *>(block));
  *handle = block;
  *size = data.size();
  return SUCCESS;
}

}  // namespace

void KsVectorInit(KsVector *vector) {
  if (vector == nullptr) return;
  const std::uint32_t options = vector->options;
  *vector = {};
  vector->options = options;
}

void KsVectorFree(KsVector *vector) {
  if (vector == nullptr) return;
  delete DrawingOf(vector);
  const std::uint32_t flags = vector->flags;
  KsVectorInit(vector);
  vector->flags = flags;
}

int32_t KsVectorIsEmpty(const KsVector *vector) {
  return DrawingOf(vector) == nullptr ? 1 : 0;
}

int32_t KsVectorCopy(KsVector *target, const KsVector *source, uint32_t) {
  if (target == nullptr || source == nullptr) return ERROR_INVALID_VALUE;
  if (target == source) return SUCCESS;
  return Guarded([&] {
    auto copy = source->drawing == nullptr ? nullptr : std::make_unique<Drawing>(*DrawingOf(source));
    KsVectorFree(target);
    *target = *source;
    target->drawing = copy.release();
    return SUCCESS;
  });
}

int32_t KsVectorAddLayer(KsVector *vector, const KsVectorLayer *description, uint32_t *layer, uint32_t layerBytes) {
  const bool known = description != nullptr && description->structureSize == sizeof(KsVectorLayer);
  if (!known || layer == nullptr || layerBytes != sizeof *layer) return ERROR_INVALID_VALUE;
  return WithDrawing(vector, [&](Drawing &drawing) -> Status {
    if (drawing.layers.size() >= kMostLayers) return ERROR_INVALID_VALUE;
    std::array<char16_t, sizeof description->name / sizeof(char16_t)> name;
    std::memcpy(name.data(), &description->name, sizeof name);
    drawing.layers.push_back({{name.begin(), std::find(name.begin(), name.end(), u'\0')}, {}});
    *layer = static_cast<std::uint32_t>(drawing.layers.size() - 1);
    return SUCCESS;
  });
}

int32_t KsVectorSetLayer(KsVector *vector, uint32_t layer) {
  Drawing *const drawing = DrawingOf(vector);
  if (drawing == nullptr || layer >= drawing->layers.size()) return ERROR_INVALID_VALUE;
  drawing->currentLayer = layer;
  return SUCCESS;
}

void KsVectorObjectInit(KsVectorObject *description) {
  if (description != nullptr) *description = {};
}

int32_t KsVectorAddObject(KsVector *vector, uint32_t, uint32_t kind, const void *description, uint32_t) {
  if (description == nullptr) return ERROR_INVALID_VALUE;
  return WithDrawing(vector, [&](Drawing &drawing) { return ksvect::AddDescribed(drawing, kind, description); });
}

int32_t KsVectorBounds(const KsVector *vector, uint32_t, KsRect *bounds, uint32_t) {
  KsVectorPoint low;
  KsVectorPoint high;
  if (bounds == nullptr || KsVectorExtents(vector, &low, &high) != SUCCESS) return ERROR_INVALID_VALUE;
  *bounds = {PixelAt(std::floor(low.x)), PixelAt(std::floor(-high.y)), PixelAt(std::ceil(high.x)),
             PixelAt(std::ceil(-low.y))};
  return SUCCESS;
}

int32_t KsVectorExtents(const KsVector *vector, KsVectorPoint *low, KsVectorPoint *high) {
  const Drawing *const drawing = DrawingOf(vector);
  if (drawing == nullptr || low == nullptr || high == nullptr) return ERROR_INVALID_VALUE;
  return Guarded([&]() -> Status {
    ksvect::Box bounds;
    if (!ksvect::BoundsOf(*drawing, bounds)) return ERROR_INVALID_VALUE;
    *low = {bounds.low.x, bounds.low.y};
    *high = {bounds.high.x, bounds.high.y};
    return SUCCESS;
  });
}

int32_t KsVectorWindow(const KsVector *vector, KsVectorPoint *low, KsVectorPoint *high) {
  const Drawing *const drawing = DrawingOf(vector);
  if (drawing == nullptr || !drawing->hasExtent || low == nullptr || high == nullptr) return ERROR_INVALID_VALUE;
  *low = {drawing->extent.low.x, drawing->extent.low.y};
  *high = {drawing->extent.high.x, drawing->extent.high.y};
  return SUCCESS;
}

int32_t KsVectorSetWindow(KsVector *vector, const KsVectorPoint *low, const KsVectorPoint *high) {
  Drawing *const drawing = DrawingOf(vector);
  if (drawing == nullptr || low == nullptr || high == nullptr) return ERROR_INVALID_VALUE;
  if (!(low->x <= high->x && low->y <= high->y)) return ERROR_INVALID_VALUE;
  drawing->extent = {{low->x, low->y}, {high->x, high->y}};
  drawing->hasExtent = true;
  return SUCCESS;
}

int32_t KsVectorMove(KsVector *vector, const KsVectorPoint *offset, uint32_t, uint32_t) {
  const bool known = offset != nullptr && std::isfinite(offset->x) && std::isfinite(offset->y);
  if (DrawingOf(vector) == nullptr || !known) return ERROR_INVALID_VALUE;
  vector->pending = {vector->pending.x + offset->x, vector->pending.y + offset->y};
  return SUCCESS;
}

int32_t KsVectorApply(KsVector *vector) {
  Drawing *const drawing = DrawingOf(vector);
  if (drawing == nullptr) return ERROR_INVALID_VALUE;
  ksvect::Move(*drawing, {vector->pending.x, vector->pending.y});
  vector->pending = {};
  return SUCCESS;
}

int32_t KsVectorSetViewport(KsVector *vector, const KsRect *viewport) {
  if (vector == nullptr || viewport == nullptr) return ERROR_INVALID_VALUE;
  vector->viewport = *viewport;
  vector->hasViewport = 1;
  return SUCCESS;
}

int32_t KsVectorSetBackground(KsVector *vector, uint32_t color) {
  Drawing *const drawing = DrawingOf(vector);
  if (drawing == nullptr) return ERROR_INVALID_VALUE;
  drawing->background = color & 0xFFFFFFU;
  return SUCCESS;
}

int32_t KsVectorSetMode(KsVector *vector, uint32_t mode) {
  if (vector == nullptr || mode > KS_VECTOR_UPWARDS) return ERROR_INVALID_VALUE;
  vector->mode = mode;
  return SUCCESS;
}

int32_t KsVectorViewA(KsVector *vector, uint32_t) {
  Drawing *const drawing = DrawingOf(vector);
  if (drawing == nullptr) return ERROR_INVALID_VALUE;
  return Guarded([&] {
    drawing->hasExtent = ksvect::BoundsOf(*drawing, drawing->extent);
    return SUCCESS;
  });
}

int32_t KsVectorViewB(KsVector *vector, uint32_t) {
  return TellDrawing(vector);
}

int32_t KsVectorViewC(KsVector *vector, uint32_t, uint32_t) {
  return TellDrawing(vector);
}

int32_t KsVectorPaint(KsDeviceContext *context, KsVector *vector, int32_t, int32_t, int32_t, int32_t,
                      const KsRect *rectangle, const KsRect *, uint32_t) {
  if (context == nullptr || vector == nullptr || rectangle == nullptr) return ERROR_INVALID_VALUE;
  const Drawing *const drawing = DrawingOf(vector);
  if (drawing == nullptr) return SUCCESS;
  return Guarded([&] {
    return ksvect::PaintDrawing(*drawing, {Sorted(*rectangle), vector->mode == KS_VECTOR_UPWARDS}, *context->bitmap);
  });
}

int32_t KsVectorWindowOnBounds(const KsVector *vector, const KsRect *bounds, KsVectorPoint *low, KsVectorPoint *high) {
  const Drawing *const drawing = DrawingOf(vector);
  if (drawing == nullptr || bounds == nullptr || low == nullptr || high == nullptr) return ERROR_INVALID_VALUE;
  const ksvect::Box window = ksvect::WindowOn(*drawing, *bounds);
  *low = {window.low.x, window.low.y};
  *high = {window.high.x, window.high.y};
  return SUCCESS;
}

int32_t KsVectorPaintOnBounds(KsDeviceContext *context, const KsVector *vector, const KsRect *bounds,
                              const KsRect *rectangle) {
  if (context == nullptr || vector == nullptr || bounds == nullptr || rectangle == nullptr) return ERROR_INVALID_VALUE;
  const Drawing *const drawing = DrawingOf(vector);
  if (drawing == nullptr) return SUCCESS;
  return Guarded([&] {
    const ksvect::Box window = ksvect::WindowOn(*drawing, *bounds);
    const bool upwards = vector->mode == KS_VECTOR_UPWARDS;
    return ksvect::PaintDrawing(*drawing, {Sorted(*rectangle), upwards, &window}, *context->bitmap);
  });
}

int32_t KsVectorLoadMemory(const void *buffer, KsVector *vector, uint64_t size, const KsLoadOptions *, void *) {
  if (vector == nullptr) return ERROR_INVALID_VALUE;
  KsVectorFree(vector);
  if (buffer == nullptr || size == 0) return ERROR_FILE_FORMAT;
  return WithDrawing(vector, [&](Drawing &drawing) {
    return ksvect::ReadCgm({static_cast<const std::uint8_t *>(buffer), static_cast<std::size_t>(size)}, drawing);
  });
}

int32_t KsVectorFindSkipped(const void *buffer, uint64_t size, KsVectorSkippedCallback callback, void *userData) {
  if (buffer == nullptr || callback == nullptr) return ERROR_INVALID_VALUE;
  return Guarded([&]() -> Status {
    Drawing drawing;
    ksvect::cgm::SkippedElements skipped;
    // A metafile without anything to draw has skipped elements all the same.
    static_cast<void>(ksvect::ReadCgm({static_cast<const std::uint8_t *>(buffer), size}, drawing, &skipped));
    for (const ksvect::cgm::SkippedElement &element : skipped.elements) {
      const KsVectorSkipped reported = {element.group, element.number, element.offset, TextOf(element.reason)};
      callback(&reported, userData);
    }
    return static_cast<std::int32_t>(std::min<std::size_t>(skipped.count, INT32_MAX));
  });
}

int32_t KsVectorSaveMemory(void **handle, const KsVector *vector, uint32_t format, uint64_t *size,
                           const KsSaveOptions *) {
  const Drawing *const drawing = DrawingOf(vector);
  if (handle == nullptr || size == nullptr || drawing == nullptr) return ERROR_INVALID_VALUE;
  if (format != KS_FORMAT_CGM) return ERROR_NOT_SUPPORTED;
  return Guarded([&] {
    std::vector<std::uint8_t> data;
    const Status status = Encode(*drawing, vector->hasViewport != 0 ? &vector->viewport : nullptr, data);
    return status == SUCCESS ? HandOver(data, handle, size) : status;
  });
}
