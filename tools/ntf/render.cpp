#include "render.h"

#include "bitmap_picture.h"
#include "host.h"
#include "input_file.h"
#include "internal/ksclasses_.h"
#include "ksntfx.h"
#include "load_headers.h"
#include "output_file.h"
#include "picture.h"
#include "progress.h"
#include "saving.h"
#include "segment_drawing.h"
#include "segment_image.h"
#include "wide_render.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ntf {
namespace {

/** Writes the rows of a bitmap to the output as they arrive. */
class PictureSink {
 public:
  PictureSink(const RenderOptions &options, OutputFile &output)
      : source(options.file), writer(MakePictureWriter(output, options.compression)) {}

  /** Starts the picture of the upper left `width` by `height` pixels. */
  Outcome Begin(const KsBitmap &bitmap, std::uint32_t width, std::uint32_t height) {
    const std::optional<PictureShape> known = ShapeOfBitmap(bitmap, width, height);
    if (!known) return StatusProblem(source, ERROR_BITS_PER_PIXEL);
    shape = *known;
    pictureRow.resize(shape.RowBytes());
    return writer->Begin(shape);
  }

  Outcome Row(const KsBitmap &bitmap, const void *row) {
    ConvertRow(bitmap, static_cast<const std::uint8_t *>(row), shape, pictureRow.data());
    return writer->WriteRow(pictureRow.data());
  }

  Outcome End() { return writer->End(); }

 private:
  std::string source;
  std::unique_ptr<PictureWriter> writer;
  PictureShape shape;
  std::vector<std::uint8_t> pictureRow;
};

/** The state of the row callback. */
struct Delivery {
  PictureSink sink;
  Progress progress;
  Outcome problem;
  bool complete = false;

  Outcome Take(const KsBitmap &canvas, const void *row, std::uint32_t rowFlags, std::uint32_t rowIndex) {
    if ((rowFlags & NITF_ROW_FIRST) != 0) {
      if (Outcome begun = sink.Begin(canvas, canvas.width, canvas.height)) return begun;
    }
    if (Outcome written = sink.Row(canvas, row)) return written;
    progress.Advance(rowIndex + 1, canvas.height);
    complete = (rowFlags & NITF_ROW_LAST) != 0;
    return complete ? sink.End() : Outcome();
  }
};

std::int32_t TakeRow(std::uint64_t, KsBitmap *canvas, void *row, std::uint32_t rowFlags, std::uint32_t rowIndex,
                     std::uint32_t, std::uint64_t delivery) {
  // The request carries the address as a number.
  auto *target = reinterpret_cast<Delivery *>(delivery);  // NOLINT(performance-no-int-to-ptr)
  target->problem = target->Take(*canvas, row, rowFlags, rowIndex);
  return target->problem ? target->problem->status : SUCCESS;
}

/** The words of a load that fails with the same status, or else those of the status. */
Problem CompositionProblem(const std::string &fileName, std::int32_t status) {
  LoadedFile file;
  const Outcome failed = LoadHeaders(fileName, file, Door::Strict);
  return failed && failed->status == status ? *failed : StatusProblem(fileName, status);
}

Outcome WriteComposition(const RenderOptions &options, OutputFile &output) {
  const std::u16string name = Widen(options.file);
  Delivery delivery{PictureSink(options, output), Progress("composing"), {}, false};
  FilterTargetInfo target = {};
  target.bitsPerPixel = options.depth;
  KsLoadOptions loadOptions = {};
  loadOptions.loadFlags = options.loadFlags;

  FilterLoadRecord request = {};
  request.fileName = name.c_str();
  request.targetInfo = &target;
  request.rowCallback = TakeRow;
  request.rowUserData = reinterpret_cast<std::uint64_t>(&delivery);
  request.loadOptions = &loadOptions;
  request.loadFromMemory = KsLoadMemory;
  request.setRedirect = KsSetRedirect;
  request.requiredEntry = [] {};

  const std::int32_t status = fltLoad(&request);
  delivery.progress.Stop();
  if (delivery.problem) return delivery.problem;
  if (status != SUCCESS) return CompositionProblem(options.file, status);
  if (!delivery.complete) return Problem{options.file, "the picture is empty", ERROR_FILE_FORMAT};
  return {};
}

/** Writes the upper left `width` by `height` pixels of a bitmap that was decoded from the file. */
Outcome WriteBitmap(const RenderOptions &options, const KsBitmap &bitmap, std::uint32_t width, std::uint32_t height,
                    OutputFile &output) {
  PictureSink sink(options, output);
  Progress progress("writing");
  if (Outcome begun = sink.Begin(bitmap, width, height)) return begun;
  std::vector<std::uint8_t> row(bitmap.bytesPerLine);
  for (std::uint32_t y = 0; y < height; ++y) {
    if (KsBitmapGetRow(&bitmap, row.data(), y, row.size()) < 0) return StatusProblem(options.file, ERROR_NO_STORAGE);
    if (Outcome written = sink.Row(bitmap, row.data())) return written;
    progress.Advance(y + 1, height);
  }
  return sink.End();
}

Outcome WriteSegment(const RenderOptions &options, OutputFile &output) {
  SegmentImage image;
  if (Outcome decoded = DecodeSegment(options.file, *options.image, image)) return decoded;
  const KsBitmap &bitmap = *image.bitmap.Get();
  // The bitmap has whole blocks. One that a codec made may be smaller than the subheader says.
  const std::uint32_t width = options.padded ? bitmap.width : std::min(image.columns, bitmap.width);
  const std::uint32_t height = options.padded ? bitmap.height : std::min(image.rows, bitmap.height);
  if (width == 0 || height == 0) return Problem{options.file, "the image is empty", ERROR_FILE_FORMAT};
  return WriteBitmap(options, bitmap, width, height, output);
}

Outcome WriteDrawing(const RenderOptions &options, OutputFile &output) {
  KsLocalBitmap picture;
  if (Outcome failed = DrawSegment(options.file, options.door, *options.graphic, picture)) return failed;
  return WriteBitmap(options, *picture.Get(), picture->width, picture->height, output);
}

Outcome Write(const RenderOptions &options, OutputFile &output) {
  if (options.graphic) return WriteDrawing(options, output);
  if (options.door == Door::Wide) return RenderWide(options, output);
  return options.image ? WriteSegment(options, output) : WriteComposition(options, output);
}

}  // namespace

Outcome Render(const RenderOptions &options) {
  if (Outcome unreadable = CheckInput(options.file)) return unreadable;
  if (options.output == "-") {
    if (StandardOutputIsTerminal()) {
      return Problem{"standard output", "is a terminal, which can't show a picture", ERROR_FILE_WRITE, true};
    }
  } else {
    if (Outcome same = CheckNotInput(options.output, {options.file})) return same;
    if (Outcome taken = CheckFree(options.output, options.force)) return taken;
  }
  OutputFile output(options.output);
  if (Outcome unopened = output.Open()) return unopened;
  const Outcome failed = Write(options, output);
  return failed ? failed : output.Commit();
}

}  // namespace ntf
