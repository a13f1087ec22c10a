#include "images/strips.h"

#include <algorithm>

namespace ksntfx {

namespace {

/** As many whole units of rows as the bytes of a strip hold, at least one, and at most a row of blocks. */
std::uint32_t RowsPerStrip(const ImageShape &shape) {
  if (shape.stripBytes == 0) return shape.blockHeight;
  const std::uint64_t unitBytes = shape.Width() * shape.depth / 8 * shape.rowUnit;
  const std::uint64_t units = std::max<std::uint64_t>(shape.stripBytes / std::max<std::uint64_t>(unitBytes, 1), 1);
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(units * shape.rowUnit, shape.blockHeight));
}

/** A whole bitmap, which is lent out strip by strip. */
class BitmapSink final : public ImageSink {
 public:
  explicit BitmapSink(KsBitmap *bitmap) : target(bitmap) {}

  /** Nothing comes here: every strip is lent. */
  Status Place(KsBitmap *, std::uint32_t, std::uint32_t) override { return ERROR_INVALID_VALUE; }

  bool Lend(KsBitmap *view, std::uint32_t top, std::uint32_t rows, std::uint32_t) override {
    return KsBitmapView(view, sizeof *view, target, 0, top, target->width, rows) == SUCCESS;
  }

 private:
  KsBitmap *target;
};

/** Fills one strip after the other and hands them on. */
class StripPass {
 public:
  StripPass(ImageReader &imageReader, ShownImage &shownImage, ImageSink &imageSink)
      : reader(imageReader), shape(imageReader.Shape()), shown(shownImage), sink(imageSink) {}

  Status Run() {
    if (shape.isWhole) return RunWhole();
    const std::uint32_t step = RowsPerStrip(shape);
    for (std::uint32_t blockRow = 0; blockRow < shape.down; ++blockRow) {
      for (std::uint32_t first = 0; first < shape.blockHeight; first += step) {
        const Status status = Pass(blockRow, first, std::min(step, shape.blockHeight - first));
        if (status != SUCCESS) return status;
      }
    }
    return SUCCESS;
  }

 private:
  Status RunWhole() {
    Status status = reader.MakeBitmap(strip.Get(), shape.Height());
    if (status == SUCCESS) status = shown.FillStrip(strip.Get(), 0, 0, shape.blockHeight);
    return status == SUCCESS ? sink.Place(strip.Get(), 0, strip->height) : status;
  }

  Status Pass(std::uint32_t blockRow, std::uint32_t first, std::uint32_t rows) {
    const std::uint32_t top = blockRow * shape.blockHeight + first;
    KsLocalBitmap lent;
    if (sink.Lend(lent.Get(), top, rows, shape.depth)) return shown.FillStrip(lent.Get(), blockRow, first, rows);
    Status status = PrepareStrip();
    if (status == SUCCESS) status = shown.FillStrip(strip.Get(), blockRow, first, rows);
    return status == SUCCESS ? sink.Place(strip.Get(), top, rows) : status;
  }

  Status PrepareStrip() {
    if ((strip->flags & KS_BITMAP_ALLOCATED) != 0) return SUCCESS;
    const Status status = reader.MakeBitmap(strip.Get(), RowsPerStrip(shape));
    return status == SUCCESS ? KsBitmapAccess(strip.Get(), 0) : status;
  }

  ImageReader &reader;
  const ImageShape &shape;
  ShownImage &shown;
  ImageSink &sink;
  KsLocalBitmap strip{};
};

Status FillWhole(ImageReader &reader, ShownImage &shown, KsBitmap *target) {
  const ImageShape &shape = reader.Shape();
  Status status = reader.MakeBitmap(target, shape.Height());
  if (status != SUCCESS) return status;
  if (shape.isWhole) return shown.FillStrip(target, 0, 0, shape.blockHeight);
  status = KsBitmapAccess(target, 0);
  if (status != SUCCESS) return status;
  BitmapSink sink(target);
  status = StripPass(reader, shown, sink).Run();
  KsBitmapRelease(target, 1, 1);
  return status;
}

}  // namespace

Status PassInStrips(ImageReader &reader, ShownImage &shown, ImageSink &sink) {
  return StripPass(reader, shown, sink).Run();
}

Status PassWhole(ImageReader &reader, ShownImage &shown, KsBitmap *target) {
  const Status status = FillWhole(reader, shown, target);
  if (status != SUCCESS && (target->flags & KS_BITMAP_ALLOCATED) != 0) KsBitmapFree(target);
  return status;
}

}  // namespace ksntfx
