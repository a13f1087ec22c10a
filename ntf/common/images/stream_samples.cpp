#include "images/stream_samples.h"

#include "images/open_stream.h"
#include "internal/ksclasses_.h"
#include "table/big_endian.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace ksntfx {

namespace {

class StreamSamples final : public SampleReader {
 public:
  explicit StreamSamples(const ImageData &source) : data(source), image(*source.image) {}

  Status Open() override {
    const Status status = stream.Open(data, FindStream());
    if (status != SUCCESS) return status;
    const KsSamplesInfo &info = stream.Info();
    if (info.components < image.bandCount) return ERROR_FILE_FORMAT;
    shape.rows = image.rows;
    shape.columns = image.columns;
    shape.bands = image.bandCount;
    if (shape.rows == 0 || shape.columns == 0 || shape.bands == 0) return ERROR_FILE_FORMAT;
    if (IsFarLarger(image.rows, info.rows) || IsFarLarger(image.columns, info.columns)) return ERROR_FILE_FORMAT;
    if (!stream.FindType(&shape.type, &shape.bits)) return ERROR_NOT_SUPPORTED;
    shape.blockWidth = image.columns;
    // Rows of tiles that begin above the picture don't line up with blocks from its corner.
    const bool linesUp = info.tileTop == 0 && info.tileRows != 0 && !IsEnlarged();
    shape.blockHeight = linesUp ? std::min(info.tileRows, image.rows) : image.rows;
    shape.readsWholeBlocks = true;
    shape.isRgb = info.isConverted != 0 || info.isMixed != 0 || info.color == KS_SAMPLES_COLOR_RGB;
    shape.isYcc = !shape.isRgb && info.color == KS_SAMPLES_COLOR_YCBCR;
    return SUCCESS;
  }

  Status Read(const BlockPart &part, std::span<const std::uint32_t> bands, const SampleTarget &target,
              bool *recorded) override {
    *recorded = true;
    const std::uint64_t top = part.block * shape.blockHeight + part.firstRow;
    const KsSamplesWindow window = {static_cast<std::uint32_t>(top), part.firstColumn, part.rows, part.columns, 0};
    return IsEnlarged() ? ReadEnlarged(window, bands, target) : ReadStored(window, bands, target);
  }

 private:
  /** The data of masked images may begin with a table that says where the stream begins, or with the stream. */
  StreamPlace FindStream() const {
    constexpr std::uint8_t kCodestream[] = {0xFF, 0x4F, 0xFF, 0x51};
    constexpr std::uint8_t kFile[] = {0x00, 0x00, 0x00, 0x0C};
    std::uint8_t start[4] = {};
    const StreamPlace whole = {0, data.SampleBytes()};
    if (KindOf(image).hasMaskTable || data.Read(0, start, sizeof start) != SUCCESS) return whole;
    if (KindOf(image).layout != ImageLayout::OneStream) return whole;
    const bool isStream =
        std::memcmp(start, kCodestream, sizeof start) == 0 || std::memcmp(start, kFile, sizeof start) == 0;
    const std::uint64_t offset = BigEndian32(start);
    return isStream || offset >= whole.bytes ? whole : StreamPlace{offset, whole.bytes - offset};
  }

  /** The header's size is that of the stream, so that a small stream can't ask for much memory. */
  static bool IsFarLarger(std::uint32_t size, std::uint32_t streamSize) {
    constexpr std::uint64_t kMostReduction = 16;
    return size > kMostReduction * streamSize;
  }

  /** The stream holds the picture made smaller; each of its pixels covers several of the image. */
  bool IsEnlarged() const {
    const KsSamplesInfo &info = stream.Info();
    return KindOf(image).isReduced && (info.rows != image.rows || info.columns != image.columns);
  }

  /** What the stream has of the window; the rest is 0. */
  Status ReadStored(const KsSamplesWindow &window, std::span<const std::uint32_t> bands, const SampleTarget &target) {
    const KsSamplesInfo &info = stream.Info();
    KsSamplesWindow held = window;
    held.rows = window.firstRow < info.rows ? std::min(window.rows, info.rows - window.firstRow) : 0;
    held.columns = window.firstColumn < info.columns ? std::min(window.columns, info.columns - window.firstColumn) : 0;
    if (held.rows < window.rows || held.columns < window.columns)
      ClearSamples(target, bands.size(), window.rows, window.columns, shape.type);
    return held.rows == 0 || held.columns == 0 ? SUCCESS : stream.Read(held, bands, target, shape.type);
  }

  Status ReadEnlarged(const KsSamplesWindow &window, std::span<const std::uint32_t> bands, const SampleTarget &target) {
    const KsSamplesInfo &info = stream.Info();
    const std::uint64_t bytes = BytesOf(shape.type);
    const std::uint64_t rowBytes = bytes * info.columns;
    KsArray<std::uint8_t> reduced;
    if (!reduced.Allocate(rowBytes * info.rows * bands.size())) return ERROR_NO_MEMORY;
    const SampleTarget held = {reduced.Get(), static_cast<std::int64_t>(bytes), static_cast<std::int64_t>(rowBytes),
                               static_cast<std::int64_t>(rowBytes * info.rows)};
    const Status status = stream.Read({0, 0, info.rows, info.columns, 0}, bands, held, shape.type);
    if (status != SUCCESS) return status;
    for (std::size_t band = 0; band < bands.size(); ++band) {
      for (std::uint32_t row = 0; row < window.rows; ++row) {
        const std::uint8_t *const from =
            held.Row(band, (std::uint64_t{window.firstRow} + row) * info.rows / image.rows);
        std::uint8_t *to = target.Row(band, row);
        for (std::uint32_t column = 0; column < window.columns; ++column, to += target.columnStep) {
          const std::uint64_t at = (std::uint64_t{window.firstColumn} + column) * info.columns / image.columns;
          std::memcpy(to, from + at * bytes, bytes);
        }
      }
    }
    return SUCCESS;
  }

  const ImageData &data;
  const ImageSubheader &image;
  OpenStream stream;
};

}  // namespace

std::unique_ptr<SampleReader> MakeStreamSamples(const ImageData &data) {
  return std::unique_ptr<SampleReader>(new (std::nothrow) StreamSamples(data));
}

}  // namespace ksntfx
