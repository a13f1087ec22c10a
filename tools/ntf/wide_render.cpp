#include "wide_render.h"

#include "file_reader.h"
#include "picture.h"
#include "progress.h"
#include "segment_choice.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <vector>

namespace ntf {
namespace {

/** Reads a number from the front of a text, and removes it. */
template <class Number>
bool TakeNumber(std::string_view &text, Number &number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return false;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return true;
}

bool TakeComma(std::string_view &text) {
  if (!text.starts_with(',')) return false;
  text.remove_prefix(1);
  return true;
}

/** Writes the rows of a picture as they arrive. */
class RowWriter {
 public:
  RowWriter(OutputFile &output, const RenderOptions &options, const char *doing)
      : writer(MakePictureWriter(output, options.compression)), progress(doing) {}

  Outcome Begin(std::uint64_t rows, std::uint64_t columns, PixelKind kind) {
    shape.width = static_cast<std::uint32_t>(columns);
    shape.height = static_cast<std::uint32_t>(rows);
    shape.kind = kind;
    return writer->Begin(shape);
  }

  Outcome Write(const std::uint8_t *pixels, std::uint64_t rows) {
    for (std::uint64_t row = 0; row < rows; ++row, pixels += shape.RowBytes()) {
      if (Outcome failed = writer->WriteRow(pixels)) return failed;
      progress.Advance(++written, shape.height);
    }
    return {};
  }

  Outcome End() {
    progress.Stop();
    return writer->End();
  }

 private:
  std::unique_ptr<PictureWriter> writer;
  Progress progress;
  PictureShape shape;
  std::uint32_t written = 0;
};

/** The state of the callback that receives the composition. */
struct Delivery {
  RowWriter &writer;
  Outcome problem;
};

std::int32_t TakeRows(const std::uint8_t *pixels, std::uint64_t, std::uint64_t rows, std::uint64_t, void *delivery) {
  auto *const target = static_cast<Delivery *>(delivery);
  target->problem = target->writer.Write(pixels, rows);
  return target->problem ? target->problem->status : SUCCESS;
}

bool IsTooLarge(std::uint64_t rows, std::uint64_t columns) {
  return rows > UINT32_MAX || columns > UINT32_MAX;
}

Outcome WriteCanvas(const RenderOptions &options, FileReader &reader, OutputFile &output) {
  std::uint64_t rows = 0;
  std::uint64_t columns = 0;
  const std::int32_t measured = NitfReaderGetCanvas(reader.Get(), &rows, &columns);
  if (measured != SUCCESS) return reader.Failed(measured);
  if (rows == 0 || columns == 0) return Problem{options.file, "there is nothing to draw", ERROR_INVALID_VALUE};
  if (IsTooLarge(rows, columns)) return StatusProblem(options.file, ERROR_NO_MEMORY);
  RowWriter writer(output, options, "composing");
  if (Outcome failed = writer.Begin(rows, columns, PixelKind::Color)) return failed;
  Delivery delivery{writer, {}};
  const std::int32_t status = NitfReaderCompose(reader.Get(), &options.show, reader.Background(), TakeRows, &delivery);
  if (delivery.problem) return delivery.problem;
  if (status != SUCCESS) return reader.Failed(status);
  return writer.End();
}

/** Of red, green, blue and opacity, the colors, or one gray. Pixels are packed in place. */
void DropOpacity(std::vector<std::uint8_t> &pixels, std::size_t channels) {
  std::size_t to = 0;
  for (std::size_t from = 0; from < pixels.size(); from += 4) {
    for (std::size_t channel = 0; channel < channels; ++channel) pixels[to++] = pixels[from + channel];
  }
}

bool IsGray(FileReader &reader, const RenderOptions &options, const NitfImageShape &shape) {
  const auto [red, green, blue] = options.show.bands;
  if (options.show.hasBands != 0) return red == green && green == blue;
  NitfBand band = {};
  const bool known = NitfReaderGetBand(reader.Get(), *options.image, 0, &band) == SUCCESS;
  return shape.bands == 1 && known && band.tableColumns == 0;
}

Outcome WriteImage(const RenderOptions &options, FileReader &reader, OutputFile &output) {
  constexpr std::uint64_t kStripBytes = 4 << 20;
  const std::uint32_t count = NitfReaderCount(reader.Get(), NITF_SEGMENT_IMAGE);
  if (*options.image >= count) return MissingSegment(options.file, SegmentKind::Image, *options.image, count);
  NitfImageShape shape = {};
  const std::int32_t opened = NitfReaderGetImage(reader.Get(), *options.image, &shape);
  if (opened != SUCCESS) return reader.Failed(opened);
  if (IsTooLarge(shape.rows, shape.columns)) return StatusProblem(options.file, ERROR_NO_MEMORY);
  const bool isGray = IsGray(reader, options, shape);
  RowWriter writer(output, options, "writing");
  if (Outcome failed = writer.Begin(shape.rows, shape.columns, isGray ? PixelKind::Gray : PixelKind::Color))
    return failed;
  // Strips of whole blocks, so that no block is decoded twice.
  const std::uint64_t fitting = std::max<std::uint64_t>(kStripBytes / (shape.columns * 4), 1);
  const std::uint64_t step = (fitting + shape.blockRows - 1) / shape.blockRows * shape.blockRows;
  std::vector<std::uint8_t> pixels;
  for (std::uint64_t row = 0; row < shape.rows; row += step) {
    const NitfWindow window = {row, 0, std::min(step, shape.rows - row), shape.columns};
    pixels.resize(window.rows * window.columns * 4);
    const std::int32_t status =
        NitfReaderShowImage(reader.Get(), *options.image, &options.show, &window, pixels.data(), window.columns * 4);
    if (status != SUCCESS) return reader.Failed(status);
    DropOpacity(pixels, isGray ? 1 : 3);
    if (Outcome failed = writer.Write(pixels.data(), window.rows)) return failed;
  }
  return writer.End();
}

}  // namespace

Outcome RenderWide(const RenderOptions &options, OutputFile &output) {
  FileReader reader;
  if (Outcome failed = reader.Open(options.file)) return failed;
  NitfReaderSetOptions(reader.Get(), options.keepsGoing ? NITF_READER_KEEP_GOING : 0);
  Outcome failed = options.image ? WriteImage(options, reader, output) : WriteCanvas(options, reader, output);
  if (failed && failed->status == ERROR_INVALID_VALUE && options.show.hasBands != 0) failed->isUsage = true;
  if (!failed) reader.WarnOfNotes();
  return failed;
}

bool ParseStretch(const std::string &text, NitfShowOptions &show) {
  constexpr std::string_view kPercent = "percent:";
  show.stretchesAll = 1;
  if (text == "none" || text == "minmax") {
    show.stretch = text == "none" ? NITF_STRETCH_NONE : NITF_STRETCH_MINMAX;
    return true;
  }
  if (!text.starts_with(kPercent)) return false;
  std::string_view numbers = std::string_view(text).substr(kPercent.size());
  show.stretch = NITF_STRETCH_PERCENT;
  const bool isRead = TakeNumber(numbers, show.low) && TakeComma(numbers) && TakeNumber(numbers, show.high);
  return isRead && numbers.empty() && show.low >= 0 && show.low < show.high && show.high <= 100;
}

bool ParseBands(const std::string &text, NitfShowOptions &show) {
  std::string_view numbers = text;
  show.hasBands = 1;
  return TakeNumber(numbers, show.bands[0]) && TakeComma(numbers) && TakeNumber(numbers, show.bands[1]) &&
         TakeComma(numbers) && TakeNumber(numbers, show.bands[2]) && numbers.empty();
}

}  // namespace ntf
