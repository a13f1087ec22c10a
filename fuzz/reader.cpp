// The wide reader over bytes in memory: fields, notes, data, samples, pictures, the composition.
#include "ksntfx_reader.h"
#include "target.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

constexpr std::uint64_t kMostImages = 4;
constexpr std::uint32_t kMostBands = 4;
constexpr std::uint64_t kMostSide = 16;
/** Bytes of samples and pixels that one picture may have. */
constexpr std::uint64_t kMostBytes = std::uint64_t{8} << 20;
constexpr std::uint64_t kMostPixels = std::uint64_t{4} << 20;
constexpr std::uint8_t kUntouched = 0xA5;

class OpenReader {
 public:
  explicit OpenReader(Input input) { status = NitfReaderOpenMemory(input.data(), input.size(), &reader); }
  OpenReader(const OpenReader &) = delete;
  OpenReader &operator=(const OpenReader &) = delete;
  ~OpenReader() { NitfReaderClose(reader); }

  NitfReader *Get() const { return reader; }
  bool IsOpen() const { return status == SUCCESS; }

 private:
  NitfReader *reader = nullptr;
  std::int32_t status;
};

bool Succeeds(std::int32_t status) {
  Require(status == SUCCESS || status < 0, "a call returns SUCCESS or a negative status");
  return status == SUCCESS;
}

std::int32_t CountField(const char *name, const char *value, std::uint64_t bytes, void *sum) {
  for (std::uint64_t at = 0; at < bytes; ++at)
    *static_cast<std::uint32_t *>(sum) += static_cast<unsigned char>(value[at]);
  return name != nullptr ? SUCCESS : ERROR_INVALID_VALUE;
}

void ReadSegments(NitfReader *reader) {
  std::uint32_t sum = 0;
  Succeeds(NitfReaderListFields(reader, NITF_SEGMENT_FILE, 0, CountField, &sum));
  for (std::uint32_t kind = 0; kind <= NITF_SEGMENT_DATA_EXTENSION; ++kind) {
    for (std::uint32_t index = 0; index < NitfReaderCount(reader, kind); ++index) {
      Succeeds(NitfReaderListFields(reader, kind, index, CountField, &sum));
      NitfPlace place{};
      Require(NitfReaderGetPlace(reader, kind, index, &place) == SUCCESS, "each segment has a place");
      std::uint8_t bytes[8];
      const std::uint64_t wanted = std::min<std::uint64_t>(place.dataBytes, sizeof bytes);
      Succeeds(NitfReaderReadData(reader, kind, index, place.dataBytes - wanted, bytes, wanted));
    }
  }
}

void ReadNotes(NitfReader *reader) {
  for (std::uint32_t index = 0; index < NitfReaderNoteCount(reader); ++index) {
    NitfNote note{};
    Require(NitfReaderGetNote(reader, index, &note) == SUCCESS, "there are as many notes as counted");
    Require(note.status < 0 && note.text[0] != '\0', "a note has a status and words");
  }
}

/** Samples of a window, pixel after pixel. Returns none where they can't be read. */
std::vector<std::uint8_t> ReadWindow(NitfReader *reader, std::uint32_t image, const NitfImageShape &shape,
                                     const NitfWindow &window) {
  const std::uint32_t bands = std::min(shape.bands, kMostBands);
  std::vector<std::uint32_t> chosen;
  for (std::uint32_t band = 0; band < bands; ++band) chosen.push_back(shape.bands - 1 - band);
  const std::uint64_t pixelBytes = std::uint64_t{bands} * shape.sampleBytes;
  std::vector<std::uint8_t> samples(window.rows * window.columns * pixelBytes, kUntouched);
  const NitfSampleTarget target = {samples.data(), static_cast<std::int64_t>(window.columns * pixelBytes),
                                   static_cast<std::int64_t>(pixelBytes), shape.sampleBytes};
  if (!Succeeds(NitfReaderReadSamples(reader, image, &window, chosen.data(), bands, &target))) samples.clear();
  return samples;
}

/** A part of a window has the samples of the window. */
void ReadParts(NitfReader *reader, std::uint32_t image, const NitfImageShape &shape, const NitfWindow &window) {
  const std::vector<std::uint8_t> all = ReadWindow(reader, image, shape, window);
  const NitfWindow corner = {window.firstRow + window.rows - 1, window.firstColumn + window.columns / 2, 1,
                             window.columns - window.columns / 2};
  const std::vector<std::uint8_t> part = ReadWindow(reader, image, shape, corner);
  if (all.empty() || part.empty()) return;
  Require(std::equal(part.rbegin(), part.rend(), all.rbegin()), "a part of a window has the same samples");
}

void Show(NitfReader *reader, std::uint32_t image, const NitfWindow &window, std::uint8_t choice) {
  NitfShowOptions options{};
  options.stretch = choice % 3;
  options.stretchesAll = choice >> 2 & 1;
  std::vector<std::uint8_t> pixels(window.rows * window.columns * 4, kUntouched);
  if (!Succeeds(NitfReaderShowImage(reader, image, &options, &window, pixels.data(), window.columns * 4))) return;
  for (std::size_t at = 3; at < pixels.size(); at += 4) {
    Require(pixels[at] == 0 || pixels[at] == 255, "each pixel is drawn, and opaque or not");
  }
}

void ReadImage(NitfReader *reader, std::uint32_t image, std::uint8_t choice) {
  NitfImageShape shape{};
  if (!Succeeds(NitfReaderGetImage(reader, image, &shape))) return;
  Require(shape.rows != 0 && shape.columns != 0 && shape.bands != 0, "an open image has samples");
  NitfBand band{};
  Require(NitfReaderGetBand(reader, image, shape.bands - 1, &band) == SUCCESS, "each band is described");
  const std::uint64_t rows = std::min(shape.rows, kMostSide);
  const std::uint64_t columns = std::min(shape.columns, kMostSide);
  const bool atEnd = (choice & 0x10) != 0;
  const NitfWindow window = {atEnd ? shape.rows - rows : 0, atEnd ? shape.columns - columns : 0, rows, columns};
  // A codec decodes whole blocks.
  if (std::uint64_t{shape.blockRows} * shape.blockColumns * shape.sampleBytes > kMostBytes) return;
  ReadParts(reader, image, shape, window);
  if (shape.rows * shape.columns * shape.sampleBytes <= kMostBytes) Show(reader, image, window, choice);
}

struct Delivery {
  std::uint64_t rows = 0;
  std::uint64_t columns = 0;
};

std::int32_t TakeRows(const std::uint8_t *pixels, std::uint64_t firstRow, std::uint64_t rows, std::uint64_t columns,
                      void *userData) {
  auto &delivery = *static_cast<Delivery *>(userData);
  Require(pixels != nullptr && firstRow == delivery.rows && rows != 0, "rows are delivered in order");
  Require(columns == delivery.columns, "rows are as wide as the canvas");
  delivery.rows += rows;
  return SUCCESS;
}

void ComposeAll(NitfReader *reader) {
  Delivery delivery;
  std::uint64_t rows = 0;
  if (!Succeeds(NitfReaderGetCanvas(reader, &rows, &delivery.columns))) return;
  if (rows == 0 || delivery.columns == 0 || rows > kMostPixels / delivery.columns) return;
  if (Succeeds(NitfReaderCompose(reader, nullptr, 0x102030, TakeRows, &delivery))) {
    Require(delivery.rows == rows, "all rows of the canvas are delivered");
  }
}

/** Whether each image can be shown without much memory and time. */
bool AreSmall(NitfReader *reader) {
  for (std::uint32_t image = 0; image < NitfReaderCount(reader, NITF_SEGMENT_IMAGE); ++image) {
    NitfImageShape shape{};
    if (NitfReaderGetImage(reader, image, &shape) != SUCCESS) continue;
    if (shape.rows * shape.columns * shape.sampleBytes > kMostBytes) return false;
    if (std::uint64_t{shape.blockRows} * shape.blockColumns * shape.sampleBytes > kMostBytes) return false;
  }
  return true;
}

}  // namespace

void FuzzOne(Input input) {
  KsSetBitmapLimit(kBitmapLimit);
  const OpenReader file(input);
  NitfReader *const reader = file.Get();
  // The last byte of the file chooses among options.
  const std::uint8_t choice = input.empty() ? 0 : input.back();
  NitfReaderSetOptions(reader, choice >> 5 & NITF_READER_KEEP_GOING);
  ReadNotes(reader);
  if (!file.IsOpen()) return;
  ReadSegments(reader);
  const std::uint64_t images = std::min<std::uint64_t>(NitfReaderCount(reader, NITF_SEGMENT_IMAGE), kMostImages);
  for (std::uint32_t image = 0; image < images; ++image) ReadImage(reader, image, choice);
  if (AreSmall(reader)) ComposeAll(reader);
  ReadNotes(reader);
}
