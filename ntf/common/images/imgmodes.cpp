#include "images/imgmodes.h"

#include "images/block_places.h"
#include "images/block_starts.h"
#include "images/image_target.h"

#include <algorithm>
#include <new>

namespace ksntfx {

namespace {

/**
 * Bytes of a row of one band in the data. The rows of a single block of one bit are as long as those of its bitmap, or
 * as the block is wide where that is less.
 */
std::uint64_t StoredRowBytes(const ImageSubheader &image, const BlockGrid &grid) {
  const std::uint64_t bytes = RowBytes(image.bitsPerPixel, grid.width);
  if (image.bitsPerPixel != 1 || image.bandCount > 1 || !grid.IsSingle()) return bytes;
  constexpr std::uint64_t kAlignment = 4;
  return std::min<std::uint64_t>((bytes + kAlignment - 1) / kAlignment * kAlignment, grid.width);
}

class PlainReader final : public ImageReader {
 public:
  PlainReader(const ImageSource &data, const BandSelection &selection)
      : source(data),
        image(*data.image),
        selected(selection),
        grid(image),
        mask(image, data.dataLength),
        rowBytes(StoredRowBytes(image, grid)),
        places(image, grid, mask, rowBytes),
        layout(places.Layout()),
        starts(grid) {}

  Status Open() override {
    shape = ShapeOf(grid, TargetDepth(image));
    shape.stripBytes = kStripBytes;
    const std::uint64_t blocks = grid.IsSingle() ? grid.count : mask.Visited(grid.count);
    for (std::uint64_t block = 0; block < blocks; ++block) {
      const std::int64_t start = places.StartOf(block);
      if (start != BlockPlaces::kAbsent && !Holds(start + image.maskDataOffset)) return ERROR_FILE_READ;
    }
    places.Rewind();
    return SUCCESS;
  }

  Status MakeBitmap(KsBitmap *bitmap, std::uint64_t rows) override {
    return CreateTarget(bitmap, image, shape.Width(), rows);
  }

  Status Read(const BlockRows &which, const StripPlace &place, StoredRows *stored) override {
    const Status located = starts.Locate(places, which.block);
    if (located != SUCCESS) return located;
    const std::int64_t start = starts.Of(which.block);
    *stored = {};
    if (start == BlockPlaces::kAbsent) return SUCCESS;
    const std::int64_t from = start + image.maskDataOffset + layout.row * which.first;
    return HasRuns() ? ReadRuns(from, which.rows, stored) : ReadPlanes(from, which.rows, place, stored);
  }

 private:
  std::uint32_t LastSelected() const { return *std::max_element(selected.bands, selected.bands + selected.count); }

  /** Whether the rows of all bands are read in one go: they lie side by side, and most of them are wanted. */
  bool HasRuns() const {
    const bool sideBySide = image.mode == kRowInterleaved && image.bandCount == 3;
    return image.bandCount > 1 && (layout.pixel != 1 || (sideBySide && selected.count == 3));
  }

  /** Whether the file holds all that is shown of the block at `start`. */
  bool Holds(std::int64_t start) const {
    if (layout.pixel > 1) return HoldsPixels(start);
    const auto selection = selected.Selected();
    return std::all_of(selection.begin(), selection.end(), [&](std::uint32_t band) {
      const std::int64_t lastRow = start + band * layout.band + layout.row * (grid.height - std::int64_t{1});
      return source.Holds(lastRow + static_cast<std::int64_t>(rowBytes));
    });
  }

  /** The last row of three bands isn't shown, but for its first pixel. */
  bool HoldsPixels(std::int64_t start) const {
    if (selected.count == 1) return source.Holds(start + layout.row * grid.height);
    const std::int64_t end = start + layout.row * (grid.height - std::int64_t{1}) + LastSelected();
    return grid.height == 1 || source.Holds(end);
  }

  Status ReadRuns(std::int64_t from, std::uint32_t rows, StoredRows *stored) {
    const auto runBytes = static_cast<std::uint64_t>(layout.row);
    std::uint8_t *const samples = buffer.AtLeast(runBytes * rows);
    if (samples == nullptr) return ERROR_NO_MEMORY;
    stored->form = StoredRows::Form::Samples;
    stored->rowStep = runBytes;
    stored->sampleStep = layout.pixel;
    for (std::uint32_t band = 0; band < selected.count; ++band) {
      stored->bands[band] = samples + selected.bands[band] * static_cast<std::uint64_t>(layout.band);
    }
    // Behind the last row, nothing is asked for that isn't shown.
    const std::uint64_t lastRow = layout.pixel > 1 ? runBytes : (LastSelected() + std::uint64_t{1}) * rowBytes;
    return source.Read(from, samples, runBytes * (rows - std::uint64_t{1}) + lastRow);
  }

  /** One band after the other; a single one right into its place, where rows follow each other there too. */
  Status ReadPlanes(std::int64_t from, std::uint32_t rows, const StripPlace &place, StoredRows *stored) {
    const std::uint64_t planeBytes = rowBytes * rows;
    const bool fits = place.depth == image.bitsPerPixel && place.step == rowBytes;
    const bool inPlace = selected.count == 1 && fits;
    std::uint8_t *const samples = inPlace ? place.bytes : buffer.AtLeast(planeBytes * selected.count);
    if (samples == nullptr) return ERROR_NO_MEMORY;
    stored->form = StoredRows::Form::Samples;
    stored->rowStep = rowBytes;
    stored->sampleStep = 1;
    for (std::uint32_t band = 0; band < selected.count; ++band) {
      std::uint8_t *const plane = samples + planeBytes * band;
      const Status status = ReadPlane(from + selected.bands[band] * layout.band, rows, plane);
      if (status != SUCCESS) return status;
      stored->bands[band] = plane;
    }
    return SUCCESS;
  }

  Status ReadPlane(std::int64_t from, std::uint32_t rows, std::uint8_t *plane) const {
    if (layout.row == static_cast<std::int64_t>(rowBytes)) return source.Read(from, plane, rowBytes * rows);
    for (std::uint32_t row = 0; row < rows; ++row) {
      const Status status = source.Read(from + layout.row * row, plane + row * rowBytes, rowBytes);
      if (status != SUCCESS) return status;
    }
    return SUCCESS;
  }

  const ImageSource &source;
  ImageSubheader &image;
  BandSelection selected;
  BlockGrid grid;
  BlockMask mask;
  std::uint64_t rowBytes; /**< of one band's row of a block */
  BlockPlaces places;
  const ModeLayout &layout;
  BlockStarts starts;
  RowBuffer buffer;
};

}  // namespace

std::unique_ptr<ImageReader> MakePlainReader(const ImageSource &source, const BandSelection &bands) {
  return std::unique_ptr<ImageReader>(new (std::nothrow) PlainReader(source, bands));
}

}  // namespace ksntfx
