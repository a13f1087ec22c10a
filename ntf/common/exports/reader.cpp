// The doors of the wide reader.
#include "compose/wide_compose.h"
#include "headers/note_words.h"
#include "images/shown_image.h"
#include "images/wide_image.h"
#include "internal/ksclasses_.h"
#include "ksntfx_reader.h"
#include "table/fields.h"

#include <algorithm>
#include <map>
#include <memory>
#include <new>
#include <numeric>

using namespace ksntfx;

struct NitfReader {
  WideFile file;
  bool isOpen = false;
  bool keepsGoing = false;
  std::string problem;
  std::vector<FileNote> undrawn; /**< segments that were left out of pictures */
  std::string noteText;
  std::map<std::uint32_t, std::unique_ptr<RawImage>> images; /**< that are open */
  std::unique_ptr<WideShown> shown; /**< the image that was shown last, with its range measured */
  RawImage *shownImage = nullptr;
  NitfShowOptions shownOptions{};

  /** Keeps the words for an error; the status as a number. */
  std::int32_t Fail(Status status, std::string words) {
    if (status != SUCCESS) problem = std::move(words);
    return status.Code();
  }
  std::int32_t FailSegment(SegmentKind kind, std::uint32_t index, Status status) {
    return status == SUCCESS ? SUCCESS : Fail(status, WordsOf(file, kind, index, status));
  }
};

namespace {

/** Exceptions end here. */
template <class Action>
std::int32_t Guard(Action &&action) {
  try {
    return action();
  } catch (const std::bad_alloc &) {
    return ERROR_NO_MEMORY;
  } catch (const std::length_error &) {
    return ERROR_NO_MEMORY;
  }
}

static_assert(static_cast<int>(SegmentKind::DataExtension) == NITF_SEGMENT_DATA_EXTENSION);
static_assert(static_cast<int>(SampleType::Complex64) == NITF_SAMPLE_COMPLEX64);
static_assert(static_cast<int>(StretchKind::None) == NITF_STRETCH_NONE);

std::int32_t OpenHandle(KsHandle handle, NitfReader **reader) {
  if (reader == nullptr) {
    if (handle != KS_INVALID_HANDLE) KsClose(handle);
    return ERROR_INVALID_VALUE;
  }
  *reader = new (std::nothrow) NitfReader;
  if (*reader == nullptr) {
    if (handle != KS_INVALID_HANDLE) KsClose(handle);
    return ERROR_NO_MEMORY;
  }
  return Guard([&]() -> std::int32_t {
    NitfReader &opened = **reader;
    if (handle == KS_INVALID_HANDLE) return opened.Fail(ERROR_NO_FILE, "can't be opened");
    const Status status = opened.file.Open(handle);
    opened.isOpen = status == SUCCESS;
    return opened.Fail(status, status == ERROR_FILE_FORMAT ? "not a NITF file" : MeaningOf(status.Code()));
  });
}

bool HasSegment(const NitfReader *reader, std::uint32_t kind, std::uint32_t index) {
  return reader != nullptr && reader->isOpen && kind <= NITF_SEGMENT_DATA_EXTENSION &&
         index < reader->file.Spans().Of(static_cast<SegmentKind>(kind)).size();
}

const SegmentSpan &SpanOf(const NitfReader *reader, std::uint32_t kind, std::uint32_t index) {
  return reader->file.Spans().Of(static_cast<SegmentKind>(kind))[index];
}

/** An open image, which stays open for later calls; null with the status of the failure. */
RawImage *OpenImage(NitfReader *reader, std::uint32_t index, std::int32_t *status) {
  *status = ERROR_INVALID_VALUE;
  if (!HasSegment(reader, NITF_SEGMENT_IMAGE, index)) {
    if (reader != nullptr) reader->problem = "there is no image " + std::to_string(index);
    return nullptr;
  }
  std::unique_ptr<RawImage> &image = reader->images[index];
  *status = SUCCESS;
  if (image != nullptr) return image.get();
  const bool isCut = !SpanOf(reader, NITF_SEGMENT_IMAGE, index).hasSubheader;
  auto opened = std::make_unique<RawImage>(DataOfImage(reader->file, index, reader->keepsGoing));
  *status = reader->FailSegment(SegmentKind::Image, index, isCut ? Status(ERROR_FILE_READ) : opened->Open());
  if (*status != SUCCESS) return nullptr;
  image = std::move(opened);
  return image.get();
}

bool IsWithin(std::uint64_t first, std::uint64_t count, std::uint64_t end) {
  return first <= end && count <= end - first;
}

/** The window that is meant, or all of the image; false for one that isn't within it. */
bool FindWindow(const RawImage &image, const NitfWindow *window, PixelWindow *found) {
  const SampleShape &shape = image.Shape();
  *found = {0, 0, shape.rows, shape.columns};
  if (window == nullptr) return true;
  *found = {window->firstRow, window->firstColumn, window->rows, window->columns};
  return window->rows != 0 && window->columns != 0 && IsWithin(window->firstRow, window->rows, shape.rows) &&
         IsWithin(window->firstColumn, window->columns, shape.columns);
}

ShowChoice ChoiceOf(const NitfShowOptions *options) {
  ShowChoice choice;
  if (options == nullptr) return choice;
  choice.stretch.kind = static_cast<StretchKind>(std::min<std::uint32_t>(options->stretch, NITF_STRETCH_NONE));
  choice.stretchesAll = options->stretchesAll != 0;
  if (options->high > 0) {
    choice.stretch.low = std::clamp(options->low, 0.0, 100.0);
    choice.stretch.high = std::clamp(options->high, 0.0, 100.0);
  }
  if (options->hasBands != 0) choice.bands = {options->bands[0], options->bands[1], options->bands[2]};
  return choice;
}

bool AreEqual(const NitfShowOptions &one, const NitfShowOptions &other) {
  return one.stretch == other.stretch && one.stretchesAll == other.stretchesAll && one.low == other.low &&
         one.high == other.high && one.hasBands == other.hasBands &&
         std::equal(std::begin(one.bands), std::end(one.bands), std::begin(other.bands));
}

/** Prepares to show an image; one that is shown window by window is measured once. */
Status ShowWith(NitfReader *reader, RawImage *image, const NitfShowOptions *options) {
  const NitfShowOptions chosen = options == nullptr ? NitfShowOptions{} : *options;
  if (reader->shown != nullptr && reader->shownImage == image && AreEqual(chosen, reader->shownOptions)) return SUCCESS;
  reader->shown = std::make_unique<WideShown>(*image, ChoiceOf(options));
  const Status status = reader->shown->Open();
  reader->shownImage = status == SUCCESS ? image : nullptr;
  reader->shownOptions = chosen;
  return status;
}

template <std::size_t size>
void CopyText(char (&to)[size], std::string_view text) {
  const std::size_t bytes = std::min(text.size(), size - 1);
  std::copy_n(text.data(), bytes, to);
  to[bytes] = '\0';
}

/** Calls `visit` with each field of a header. */
template <class Visit>
std::int32_t VisitHeader(NitfReader *reader, std::uint32_t kind, std::uint32_t index, Visit &&visit) {
  const bool isFile = kind == NITF_SEGMENT_FILE && index == 0;
  if (reader == nullptr || !reader->isOpen || (!isFile && !HasSegment(reader, kind, index))) return ERROR_INVALID_VALUE;
  NitfFile *const file = reader->file.Get();
  if (!isFile && !SpanOf(reader, kind, index).hasSubheader) {
    return reader->FailSegment(static_cast<SegmentKind>(kind), index, ERROR_FILE_READ);
  }
  const HeaderTable &table = isFile ? kFileHeaderTable : SubheaderTable(file, static_cast<SegmentKind>(kind));
  const void *const record = isFile ? &file->header : FindSubheader(file, static_cast<SegmentKind>(kind), index);
  ListFields(table, record, file->nitf20Layout != 0, visit);
  return SUCCESS;
}

WideComposition MakeComposition(NitfReader *reader, const NitfShowOptions *options) {
  const auto leaveOut = [reader](const UndrawnSegment &segment) {
    reader->problem = WordsOf(reader->file, segment.kind, segment.index, segment.status);
    if (!reader->keepsGoing) return false;
    const std::uint64_t offset = reader->file.Spans().Of(segment.kind)[segment.index].data;
    reader->undrawn.push_back({segment.kind, segment.index, {"", "", offset, segment.status.Code()}});
    return true;
  };
  reader->undrawn.clear();
  return WideComposition(reader->file, ChoiceOf(options), reader->keepsGoing, leaveOut);
}

/** Passes on a canvas in strips of red, green and blue. */
std::int32_t PassRows(const KsBitmap &canvas, NitfRowsCallback callback, void *userData) {
  constexpr std::uint64_t kStripRows = 64;
  const std::uint64_t rowBytes = std::uint64_t{canvas.width} * 3;
  std::vector<std::uint8_t> strip(kStripRows * rowBytes);
  for (std::uint64_t row = 0; row < canvas.height; row += kStripRows) {
    const std::uint64_t rows = std::min<std::uint64_t>(kStripRows, canvas.height - row);
    for (std::uint64_t at = 0; at < rows; ++at) {
      const std::uint8_t *from = canvas.pixels + (row + at) * canvas.bytesPerLine;
      std::uint8_t *to = strip.data() + at * rowBytes;
      for (std::uint64_t byte = 0; byte < rowBytes; byte += 3) {
        to[byte] = from[byte + 2];
        to[byte + 1] = from[byte + 1];
        to[byte + 2] = from[byte];
      }
    }
    const std::int32_t status = callback(strip.data(), row, rows, canvas.width, userData);
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

}  // namespace

// ---- opening ------------------------------------------------------------------------------------------------------

std::int32_t NitfReaderOpen(const char *path, NitfReader **reader) {
  if (reader != nullptr) *reader = nullptr;
  if (path == nullptr) return ERROR_INVALID_VALUE;
  char16_t *const wide = KsToWide(path);
  const KsHandle handle = wide == nullptr ? KS_INVALID_HANDLE : KsOpen(wide, KS_OPEN_READ, KS_MODE_READ);
  KsToWideFree(wide);
  return OpenHandle(handle, reader);
}

std::int32_t NitfReaderOpenUtf16(const char16_t *path, NitfReader **reader) {
  if (reader != nullptr) *reader = nullptr;
  return path == nullptr ? ERROR_INVALID_VALUE : OpenHandle(KsOpen(path, KS_OPEN_READ, KS_MODE_READ), reader);
}

std::int32_t NitfReaderOpenMemory(const void *bytes, std::uint64_t size, NitfReader **reader) {
  if (reader != nullptr) *reader = nullptr;
  return bytes == nullptr ? ERROR_INVALID_VALUE : OpenHandle(KsOpenMemory(bytes, size), reader);
}

void NitfReaderClose(NitfReader *reader) {
  delete reader;
}

const char *NitfReaderProblem(const NitfReader *reader) {
  return reader == nullptr ? "" : reader->problem.c_str();
}

void NitfReaderSetOptions(NitfReader *reader, std::uint32_t options) {
  if (reader == nullptr) return;
  reader->keepsGoing = (options & NITF_READER_KEEP_GOING) != 0;
  reader->shown.reset();
  reader->shownImage = nullptr;
  reader->images.clear();
}

// ---- headers ------------------------------------------------------------------------------------------------------

std::uint32_t NitfReaderCount(const NitfReader *reader, std::uint32_t kind) {
  if (reader == nullptr || !reader->isOpen || kind > NITF_SEGMENT_DATA_EXTENSION) return 0;
  return static_cast<std::uint32_t>(reader->file.Spans().Of(static_cast<SegmentKind>(kind)).size());
}

std::uint32_t NitfReaderNoteCount(const NitfReader *reader) {
  if (reader == nullptr) return 0;
  return static_cast<std::uint32_t>(reader->file.Notes().size() + reader->undrawn.size());
}

std::int32_t NitfReaderGetNote(NitfReader *reader, std::uint32_t index, NitfNote *note) {
  if (note == nullptr || index >= NitfReaderNoteCount(reader)) return ERROR_INVALID_VALUE;
  return Guard([&]() -> std::int32_t {
    const std::size_t ofFile = reader->file.Notes().size();
    const bool isUndrawn = index >= ofFile;
    const FileNote &found = isUndrawn ? reader->undrawn[index - ofFile] : reader->file.Notes()[index];
    reader->noteText = isUndrawn ? WordsOf(reader->file, *found.kind, found.index, found.note.status) : WordsOf(found);
    *note = {found.kind ? static_cast<std::uint32_t>(*found.kind) : std::uint32_t{NITF_SEGMENT_FILE},
             found.index,
             found.note.field.c_str(),
             found.note.value.c_str(),
             found.note.offset,
             found.note.status,
             reader->noteText.c_str()};
    return SUCCESS;
  });
}

std::int32_t NitfReaderListFields(NitfReader *reader, std::uint32_t kind, std::uint32_t index,
                                  NitfFieldCallback callback, void *userData) {
  if (callback == nullptr) return ERROR_INVALID_VALUE;
  return Guard([&]() -> std::int32_t {
    std::int32_t status = SUCCESS;
    const std::int32_t listed = VisitHeader(reader, kind, index, [&](const FieldView &field) {
      if (status == SUCCESS) status = callback(field.name.c_str(), field.text.data(), field.text.size(), userData);
    });
    return listed == SUCCESS ? status : listed;
  });
}

std::int32_t NitfReaderGetField(NitfReader *reader, std::uint32_t kind, std::uint32_t index, const char *name,
                                char *value, std::uint64_t capacity) {
  if (name == nullptr || value == nullptr) return ERROR_INVALID_VALUE;
  return Guard([&]() -> std::int32_t {
    bool isFound = false;
    const std::int32_t listed = VisitHeader(reader, kind, index, [&](const FieldView &field) {
      if (isFound || field.name != name || field.text.size() >= capacity) return;
      value[field.text.copy(value, field.text.size())] = '\0';
      isFound = true;
    });
    if (listed != SUCCESS) return listed;
    return isFound ? SUCCESS : ERROR_INVALID_VALUE;
  });
}

std::int32_t NitfReaderGetPlace(const NitfReader *reader, std::uint32_t kind, std::uint32_t index, NitfPlace *place) {
  if (place == nullptr || !HasSegment(reader, kind, index)) return ERROR_INVALID_VALUE;
  const SegmentSpan &span = SpanOf(reader, kind, index);
  *place = {span.subheader, span.subheaderBytes, span.data, span.dataBytes};
  return SUCCESS;
}

std::int32_t NitfReaderReadData(NitfReader *reader, std::uint32_t kind, std::uint32_t index, std::uint64_t offset,
                                void *buffer, std::uint64_t bytes) {
  if (!HasSegment(reader, kind, index) || (buffer == nullptr && bytes != 0)) return ERROR_INVALID_VALUE;
  return Guard([&]() -> std::int32_t {
    const SegmentSpan &span = SpanOf(reader, kind, index);
    if (!IsWithin(offset, bytes, span.dataBytes)) return ERROR_INVALID_VALUE;
    const auto position = static_cast<std::int64_t>(span.data + offset);
    const bool isWhole = bytes == 0 || KsReadAt(reader->file.Get()->fileHandle, position, buffer, bytes) == bytes;
    return reader->FailSegment(static_cast<SegmentKind>(kind), index, isWhole ? SUCCESS : ERROR_FILE_READ);
  });
}

// ---- samples ------------------------------------------------------------------------------------------------------

std::int32_t NitfReaderGetImage(NitfReader *reader, std::uint32_t image, NitfImageShape *shape) {
  if (shape == nullptr) return ERROR_INVALID_VALUE;
  return Guard([&]() -> std::int32_t {
    std::int32_t status = SUCCESS;
    const RawImage *const opened = OpenImage(reader, image, &status);
    if (opened == nullptr) return status;
    const ImageSubheader &header = opened->Header();
    const SampleShape &samples = opened->Shape();
    *shape = {};
    shape->rows = samples.rows;
    shape->columns = samples.columns;
    shape->bands = samples.bands;
    shape->sampleType = static_cast<std::uint32_t>(samples.type);
    shape->sampleBytes = BytesOf(samples.type);
    shape->bits = samples.bits;
    shape->actualBits = header.actualBits;
    shape->blockRows = samples.blockHeight;
    shape->blockColumns = samples.blockWidth;
    CopyText(shape->compression, header.IC);
    CopyText(shape->representation, header.IREP);
    CopyText(shape->mode, header.IMODE);
    shape->displayLevel = header.displayLevel;
    shape->attachmentLevel = header.attachmentLevel;
    shape->locationRow = header.locationRow;
    shape->locationColumn = header.locationColumn;
    return SUCCESS;
  });
}

std::int32_t NitfReaderGetBand(NitfReader *reader, std::uint32_t image, std::uint32_t band, NitfBand *description) {
  if (description == nullptr || !HasSegment(reader, NITF_SEGMENT_IMAGE, image)) return ERROR_INVALID_VALUE;
  const ImageSubheader &header = *FindImage(reader->file.Get(), image);
  if (band >= header.bandsHeld) return ERROR_INVALID_VALUE;
  *description = {};
  CopyText(description->representation, BandRepresentationText(header.bandRepresentation[band]));
  CopyText(description->subcategory, BufferText(header.bandSubcategories[band], 6));
  description->tableColumns = header.bandLutCounts[band];
  description->tableEntries = header.bandLutEntries != nullptr ? header.bandLutEntries[band] : 0;
  return SUCCESS;
}

std::int32_t NitfReaderGetTable(NitfReader *reader, std::uint32_t image, std::uint32_t band, std::uint8_t *red,
                                std::uint8_t *green, std::uint8_t *blue, std::uint64_t capacity) {
  NitfBand description;
  if (red == nullptr || green == nullptr || blue == nullptr) return ERROR_INVALID_VALUE;
  const std::int32_t status = NitfReaderGetBand(reader, image, band, &description);
  if (status != SUCCESS) return status;
  if (description.tableColumns == 0) return ERROR_INVALID_VALUE;
  const ImageSubheader &header = *FindImage(reader->file.Get(), image);
  const auto hasTable = [](std::uint32_t columns) { return columns != 0; };
  const bool isLast = std::none_of(header.bandLutCounts + band + 1, header.bandLutCounts + header.bandsHeld, hasTable);
  const bool isColor = description.tableColumns == 1 || description.tableColumns == 3;
  if (!isLast || !isColor || header.lut == nullptr) return ERROR_NOT_SUPPORTED;
  for (std::uint64_t entry = 0; entry < capacity; ++entry) {
    const std::uint32_t color = entry < header.lutCount ? header.lut[entry] : 0;
    red[entry] = static_cast<std::uint8_t>(color >> 16);
    green[entry] = static_cast<std::uint8_t>(color >> 8);
    blue[entry] = static_cast<std::uint8_t>(color);
  }
  return SUCCESS;
}

std::int32_t NitfReaderReadSamples(NitfReader *reader, std::uint32_t image, const NitfWindow *window,
                                   const std::uint32_t *bands, std::uint32_t bandCount,
                                   const NitfSampleTarget *target) {
  if (target == nullptr || target->samples == nullptr) return ERROR_INVALID_VALUE;
  return Guard([&]() -> std::int32_t {
    std::int32_t status = SUCCESS;
    RawImage *const opened = OpenImage(reader, image, &status);
    if (opened == nullptr) return status;
    PixelWindow found{};
    if (!FindWindow(*opened, window, &found)) return reader->Fail(ERROR_INVALID_VALUE, "the window isn't in the image");
    std::vector<std::uint32_t> chosen(bands == nullptr ? opened->Shape().bands : bandCount);
    if (bands == nullptr) {
      std::iota(chosen.begin(), chosen.end(), 0U);
    } else {
      std::copy_n(bands, bandCount, chosen.begin());
    }
    const std::uint32_t all = opened->Shape().bands;
    if (chosen.empty() || *std::max_element(chosen.begin(), chosen.end()) >= all) {
      return reader->Fail(ERROR_INVALID_VALUE, "there is no such band");
    }
    const SampleTarget to = {static_cast<std::uint8_t *>(target->samples), target->columnStep, target->rowStep,
                             target->bandStep};
    return reader->FailSegment(SegmentKind::Image, image, opened->Read(found, chosen, to));
  });
}

// ---- pictures -----------------------------------------------------------------------------------------------------

std::int32_t NitfReaderShowImage(NitfReader *reader, std::uint32_t image, const NitfShowOptions *options,
                                 const NitfWindow *window, void *pixels, std::uint64_t rowStep) {
  if (pixels == nullptr) return ERROR_INVALID_VALUE;
  return Guard([&]() -> std::int32_t {
    std::int32_t status = SUCCESS;
    RawImage *const opened = OpenImage(reader, image, &status);
    if (opened == nullptr) return status;
    PixelWindow found{};
    if (!FindWindow(*opened, window, &found)) return reader->Fail(ERROR_INVALID_VALUE, "the window isn't in the image");
    Status drawn = ShowWith(reader, opened, options);
    if (drawn != SUCCESS) return reader->FailSegment(SegmentKind::Image, image, drawn);
    WideShown &shown = *reader->shown;
    const std::uint64_t step = shown.RowsOfStrip();
    for (std::uint64_t row = 0; row < found.rows && drawn == SUCCESS;) {
      const std::uint64_t first = found.firstRow + row;
      const std::uint64_t rows = std::min((first / step + 1) * step - first, found.rows - row);
      drawn = shown.Draw({first, found.firstColumn, rows, found.columns},
                         static_cast<std::uint8_t *>(pixels) + row * rowStep, rowStep);
      row += rows;
    }
    return reader->FailSegment(SegmentKind::Image, image, drawn);
  });
}

std::int32_t NitfReaderGetCanvas(NitfReader *reader, std::uint64_t *rows, std::uint64_t *columns) {
  if (reader == nullptr || !reader->isOpen || rows == nullptr || columns == nullptr) return ERROR_INVALID_VALUE;
  return Guard([&]() -> std::int32_t {
    WideComposition composition = MakeComposition(reader, nullptr);
    const Status status = composition.Measure();
    *rows = composition.Rows();
    *columns = composition.Columns();
    return status.Code();
  });
}

std::int32_t NitfReaderCompose(NitfReader *reader, const NitfShowOptions *options, std::uint32_t background,
                               NitfRowsCallback callback, void *userData) {
  if (reader == nullptr || !reader->isOpen || callback == nullptr) return ERROR_INVALID_VALUE;
  return Guard([&]() -> std::int32_t {
    WideComposition composition = MakeComposition(reader, options);
    Status status = composition.Measure();
    if (status != SUCCESS) return status.Code();
    if (composition.Rows() == 0 || composition.Columns() == 0) {
      return reader->Fail(ERROR_INVALID_VALUE, "there is nothing to draw");
    }
    KsLocalBitmap canvas;
    status = composition.Draw(background, canvas.Get());
    return status == SUCCESS ? PassRows(*canvas.Get(), callback, userData) : status.Code();
  });
}
