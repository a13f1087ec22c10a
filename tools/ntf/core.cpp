#include "core.h"

#include "drawings/handlgfx.h"
#include "headers/image_codes.h"
#include "headers/imsubhdr.h"
#include "headers/mask_table.h"
#include "headers/nitffile.h"
#include "headers/note_words.h"
#include "headers/segment_data.h"
#include "headers/wide_file.h"
#include "images/block_grid.h"
#include "images/handlimg.h"
#include "internal/status.h"
#include "save/splice.h"
#include "table/fields.h"
#include "table/header_writer.h"

#include <algorithm>
#include <cstring>

using namespace ksntfx;

namespace ntf {
namespace {

using CoreKind = ksntfx::SegmentKind;

CoreKind Core(SegmentKind kind) {
  static_assert(static_cast<int>(CoreKind::Image) == static_cast<int>(SegmentKind::Image));
  static_assert(static_cast<int>(CoreKind::Graphic) == static_cast<int>(SegmentKind::Graphic));
  static_assert(static_cast<int>(CoreKind::Label) == static_cast<int>(SegmentKind::Label));
  static_assert(static_cast<int>(CoreKind::Text) == static_cast<int>(SegmentKind::Text));
  static_assert(static_cast<int>(CoreKind::DataExtension) == static_cast<int>(SegmentKind::DataExtension));
  return static_cast<CoreKind>(kind);
}

FieldContent ContentOf(ksntfx::FieldContent content) {
  static_assert(static_cast<int>(ksntfx::FieldContent::Text) == static_cast<int>(FieldContent::Text));
  static_assert(static_cast<int>(ksntfx::FieldContent::Digits) == static_cast<int>(FieldContent::Digits));
  static_assert(static_cast<int>(ksntfx::FieldContent::Binary) == static_cast<int>(FieldContent::Binary));
  return static_cast<FieldContent>(content);
}

static_assert(kMaskHeaderBytes == ksntfx::kMaskHeaderBytes && kBlockNotRecorded == ksntfx::kNotRecorded &&
              kLocationHalf == ksntfx::kLocationHalf);

const HeaderTable &TableFor(const NitfFile *file, const HeaderChoice &header) {
  return header.kind ? SubheaderTable(file, Core(*header.kind)) : kFileHeaderTable;
}

void *RecordOf(NitfFile &file, const HeaderChoice &header) {
  return header.kind ? FindSubheader(&file, Core(*header.kind), header.index) : &file.header;
}

template <std::size_t size>
std::string_view TextIn(const char (&buffer)[size]) {
  return BufferText(buffer, size);
}

// ---- storing a field ----------------------------------------------------------------------------------------------

/** A row of a table, and the record that its offsets count from. */
struct FieldPlace {
  const HeaderRow *row = nullptr;
  char *base = nullptr;
};

FieldPlace FindRow(std::span<const HeaderRow> rows, char *base, std::string_view prefix, std::string_view name) {
  for (const HeaderRow &row : rows) {
    if (row.kind == HeaderRow::Kind::Security) {
      const FieldPlace found = FindRow(row.fields->rows, base + row.place, row.name, name);
      if (found.row != nullptr) return found;
    } else if (row.kind == HeaderRow::Kind::Text && row.width21 != 0 && std::string(prefix).append(row.name) == name) {
      return {&row, base};
    }
  }
  return {};
}

/** Digits, with or without a minus sign. */
bool IsSignedNumber(const std::string &text) {
  const std::string digits = text.substr(text.starts_with('-') ? 1 : 0);
  return !digits.empty() && IsAllDigits(digits);
}

/** Two numbers of five characters, "ROW,COLUMN" or as the field holds them. */
bool StoreHalves(const FieldPlace &place, const std::string &value) {
  const std::size_t comma = value.find(',');
  const bool split = comma != std::string::npos;
  if (!split && value.size() != 2 * kLocationHalf) return false;
  const std::string parts[] = {value.substr(0, split ? comma : kLocationHalf),
                               value.substr(split ? comma + 1 : kLocationHalf)};
  if (!std::all_of(std::begin(parts), std::end(parts), IsSignedNumber)) return false;
  const std::int32_t halves[] = {ParseNumber(parts[0]), ParseNumber(parts[1])};
  std::string text;
  for (const std::int32_t half : halves) {
    char digits[16];
    FormatBounded(digits, sizeof digits, half < 0 ? "-%04d" : "%05d", half < 0 ? -half : half);
    text += digits;
  }
  if (text.size() != 2 * kLocationHalf) return false;
  std::memcpy(place.base + place.row->place, text.data(), text.size());
  std::memcpy(place.base + place.row->halves, halves, sizeof halves);
  return true;
}

bool StoreDigits(const FieldPlace &place, const std::string &value) {
  if (value.empty() || value.size() > place.row->width21 || !IsAllDigits(value)) return false;
  const std::string text = std::string(place.row->width21 - value.size(), '0') + value;
  std::memcpy(place.base + place.row->place, text.data(), text.size());
  if (place.row->number == HeaderRow::kNowhere) return true;
  const std::int32_t number = ParseNumber(value);
  std::memcpy(place.base + place.row->number, &number, sizeof number);
  return true;
}

/** Three bytes: red, green and blue. */
FieldChange StoreBackground(NitfFile *file, const std::string &value) {
  if (value.size() != 3) return FieldChange::Refused;
  const auto byte = [&](std::size_t at) { return static_cast<std::uint32_t>(static_cast<unsigned char>(value[at])); };
  std::memcpy(file->header.FBKGC, value.data(), value.size());
  file->backgroundColor = file->header.backgroundColorValue = byte(0) | byte(1) << 8 | byte(2) << 16;
  return FieldChange::Stored;
}

bool StoreText(const FieldPlace &place, const std::string &value) {
  if (place.row->halves != HeaderRow::kNowhere) return StoreHalves(place, value);
  if (place.row->content == ksntfx::FieldContent::Digits) return StoreDigits(place, value);
  return SetField(place.base + place.row->place, place.row->width21, value.c_str()) == SUCCESS;
}

ImageMask MaskOf(const ImageSubheader &image) {
  ImageMask mask;
  mask.dataOffset = image.maskDataOffset;
  mask.blockRecordLength = image.blockMaskLength;
  mask.padRecordLength = image.padMaskLength;
  mask.padCodeBits = image.padCodeBits;
  mask.padCodeBytes = PadCodeBytes(image);
  if (image.padCode != nullptr) {
    const std::uint32_t held = std::min(mask.padCodeBytes, image.padCodeHeld);
    mask.padCode = {reinterpret_cast<const char *>(image.padCode), held};
  }
  return mask;
}

}  // namespace

// ---- segments -----------------------------------------------------------------------------------------------------

std::uint32_t FileView::Count(SegmentKind kind) const {
  return CountSegments(file, Core(kind));
}

std::uint32_t FileView::CountInSource(SegmentKind kind) const {
  return CountInFile(file, Core(kind));
}

bool FileView::Has(SegmentKind kind, std::uint32_t index) const {
  return FindSubheader(file, Core(kind), index) != nullptr;
}

SegmentPlace FileView::Place(SegmentKind kind, std::uint32_t index) const {
  SegmentPlace place;
  place.subheaderLength = SubheaderLength(file, Core(kind), index);
  place.dataLength = LongDataLength(file, Core(kind), index);
  const std::int64_t data = SeekSegmentData(file, Core(kind), index);
  place.data = static_cast<std::uint64_t>(std::max<std::int64_t>(data, 0));
  place.subheader = static_cast<std::uint64_t>(std::max<std::int64_t>(data - place.subheaderLength, 0));
  return place;
}

// ---- headers ------------------------------------------------------------------------------------------------------

LoadFault FileView::Fault() const {
  const HeaderFault &fault = file->fault;
  LoadFault described = {
      .header = {}, .field = std::string(fault.group).append(fault.name), .text = fault.text, .offset = fault.offset};
  if (file->faultyKind == kFileHeaderFailed) return described;
  described.header = {static_cast<SegmentKind>(file->faultyKind), file->faultyIndex};
  return described;
}

FileNumbers FileView::Numbers() const {
  const NitfHeader &header = file->header;
  FileNumbers numbers;
  numbers.headerRead = header.valid != 0;
  numbers.isNitf20 = file->nitf20Layout != 0;
  numbers.fileLength = static_cast<std::uint64_t>(ParseLongNumber(header.FL));
  numbers.headerLength = header.headerLength;
  numbers.reservedExtensions = file->reservedExtensionCount;
  for (std::uint32_t index = 0; index < file->reservedExtensionCount; ++index) {
    numbers.reservedExtensionSum +=
        std::uint64_t{header.reservedSubheaderLengths[index]} + header.reservedDataLengths[index];
  }
  return numbers;
}

void FileView::ListFields(const HeaderChoice &header, const std::function<void(const Field &)> &visit) const {
  const void *const record = RecordOf(*file, header);
  if (record == nullptr) return;
  ksntfx::ListFields(TableFor(file, header), record, file->nitf20Layout != 0, [&](const FieldView &field) {
    visit({field.name, field.text, ContentOf(field.content)});
  });
}

std::string FileView::FieldText(const HeaderChoice &header, std::string_view name) const {
  std::string text;
  ListFields(header, [&](const Field &field) {
    if (field.name == name) text = field.text;
  });
  return text;
}

HeaderLayout FileView::Layout(const HeaderChoice &header) const {
  HeaderLayout layout;
  const void *const record = RecordOf(*file, header);
  if (record == nullptr) return layout;
  layout.length = VisitFields(TableFor(file, header), record, SinkFor(file, KS_INVALID_HANDLE),
                              [&](const std::string &field, std::uint64_t offset) { layout.offsets[field] = offset; });
  // The mask table is part of the data.
  if (header.kind == SegmentKind::Image) layout.length -= MaskTableBytes(*FindImage(file, header.index));
  return layout;
}

FieldChange FileView::Store(const HeaderChoice &header, const std::string &name, const std::string &value) const {
  if (!header.kind && name == "FBKGC") return StoreBackground(file, value);
  const FieldPlace place = FindRow(TableFor(file, header).rows, static_cast<char *>(RecordOf(*file, header)), {}, name);
  if (place.row == nullptr) return FieldChange::NoSuchField;
  return StoreText(place, value) ? FieldChange::Stored : FieldChange::Refused;
}

// ---- images and graphics ------------------------------------------------------------------------------------------

ImageNumbers FileView::Image(std::uint32_t index) const {
  const ImageSubheader &image = *FindImage(file, index);
  ImageNumbers numbers = {.rows = image.rows,
                          .columns = image.columns,
                          .blocksPerRow = image.blocksPerRow,
                          .blocksPerColumn = image.blocksPerColumn,
                          .blockWidth = BlockWidth(image),
                          .blockHeight = BlockHeight(image),
                          .bands = image.bandCount,
                          .bitsPerPixel = image.bitsPerPixel,
                          .actualBits = image.actualBits,
                          .compressed = image.compression != kNC,
                          .bandSequential = image.mode == kBandSequential};
  if (KindOf(image).hasMaskTable) numbers.mask = MaskOf(image);
  return numbers;
}

std::vector<ImageBand> FileView::ImageBands(std::uint32_t index) const {
  const ImageSubheader &image = *FindImage(file, index);
  std::vector<ImageBand> bands(image.bandsHeld);
  for (std::uint32_t band = 0; band < image.bandsHeld; ++band) {
    bands[band] = {.representation = std::string(BandRepresentationText(image.bandRepresentation[band])),
                   .subcategory = TextIn(image.bandSubcategories[band]),
                   .filterCondition = TextIn(image.bandFilterConditions[band]),
                   .filterCode = TextIn(image.bandFilterCodes[band]),
                   .tables = image.bandLutCounts[band],
                   .tableEntries = std::nullopt};
    const bool hasEntries = image.bandLutCounts[band] != 0 && image.bandLutEntries != nullptr;
    if (hasEntries) bands[band].tableEntries = image.bandLutEntries[band];
  }
  return bands;
}

std::vector<std::string_view> FileView::ImageComments(std::uint32_t index) const {
  const ImageSubheader &image = *FindImage(file, index);
  std::vector<std::string_view> comments(image.commentsHeld);
  for (std::uint32_t comment = 0; comment < image.commentsHeld; ++comment) {
    comments[comment] = TextIn(image.comments[comment]);
  }
  return comments;
}

std::vector<std::uint32_t> FileView::BlockOffsets(std::uint32_t index) const {
  const ImageSubheader &image = *FindImage(file, index);
  if (image.blockMask == nullptr) return {};
  std::vector<std::uint32_t> offsets(image.maskEntries);
  for (std::size_t block = 0; block < offsets.size(); ++block) {
    for (const std::uint8_t byte : image.blockMask[block]) offsets[block] = offsets[block] << 8 | byte;
  }
  return offsets;
}

DisplayLevel FileView::LevelOf(SegmentKind kind, std::uint32_t index) const {
  if (kind == SegmentKind::Graphic) {
    const GraphicSubheader &graphic = *FindGraphic(file, index);
    return {graphic.displayLevel, graphic.attachmentLevel};
  }
  const ImageSubheader &image = *FindImage(file, index);
  return {image.displayLevel, image.attachmentLevel};
}

std::int32_t FileView::DecodeImage(std::uint32_t index, KsBitmap *target) const {
  const Status status = DecodeImageSegment(nullptr, file, index, target);
  return status.Code();
}

std::int32_t FileView::PlaceGraphic(std::uint32_t index, KsRect *place) const {
  const Status status = ksntfx::PlaceGraphic(file, index, place);
  return status.Code();
}

std::int32_t FileView::DrawGraphic(std::uint32_t index, KsDeviceContext *context, std::int32_t row,
                                   std::int32_t column) const {
  const Status status = ksntfx::DrawGraphic(context, file, index, {row, column});
  return status.Code();
}

// ---- bytes --------------------------------------------------------------------------------------------------------

std::uint64_t FileView::SourceBytes() const {
  return static_cast<std::uint64_t>(KsSeek(file->fileHandle, 0, KS_SEEK_END));
}

std::uint64_t FileView::ReadAt(std::uint64_t offset, void *buffer, std::uint64_t bytes) const {
  const std::int64_t position = KsSeek(file->fileHandle, static_cast<std::int64_t>(offset), KS_SEEK_START);
  return position < 0 ? 0 : KsRead(file->fileHandle, buffer, bytes);
}

std::int32_t FileView::ReadData(SegmentKind kind, std::uint32_t index, std::string &data) const {
  SegmentData held;
  const Status status = ReadSegmentData(file, Core(kind), index, &held);
  if (status == SUCCESS) data.assign(held.bytes.Get(), held.length);
  return status.Code();
}

// ---- rewriting ----------------------------------------------------------------------------------------------------

struct FileRewrite::Held {
  Splice splice;
};

FileRewrite::FileRewrite(const FileView &file)
    : source(file), held(std::make_unique<Held>(Held{Splice(file.file->fileHandle)})) {}
FileRewrite::~FileRewrite() = default;

void FileRewrite::Replace(std::uint64_t offset, const std::string &bytes) {
  held->splice.Replace(offset, bytes);
}

std::int32_t FileRewrite::Append(const FileView &added, std::string &field) {
  std::string_view full;
  const Status status = SpliceSegments(source.file, added.file, &held->splice, &full);
  field = full;
  return status.Code();
}

std::int32_t FileRewrite::Write(const char16_t *name) const {
  const KsHandle out = KsOpen(name, KS_OPEN_CREATE, KS_MODE_CREATE);
  if (out == KS_INVALID_HANDLE) return ERROR_FILE_WRITE;
  const Status status = held->splice.WriteTo(out);
  const std::int32_t closed = KsClose(out);
  return status == SUCCESS ? closed : status.Code();
}

std::int32_t FileRewrite::Compare(const char16_t *name) const {
  const KsHandle written = KsOpen(name, KS_OPEN_READ, KS_MODE_READ);
  if (written == KS_INVALID_HANDLE) return ERROR_FILE_READ;
  const Status status = held->splice.CompareWith(written);
  KsClose(written);
  return status.Code();
}

// ---- loading ------------------------------------------------------------------------------------------------------

struct LoadedFile::Held {
  LocalNitfFile strict;
  WideFile wide;
  bool isWide = false;

  NitfFile *File() { return isWide ? wide.Get() : strict.Get(); }
};

LoadedFile::LoadedFile() : held(std::make_unique<Held>()) {
  held->strict->longPlaces = 1;
}
LoadedFile::~LoadedFile() = default;

std::int32_t LoadedFile::Load(const char16_t *name, Door door) {
  held->isWide = door == Door::Wide;
  const Status status =
      held->isWide ? held->wide.Open(KsOpen(name, KS_OPEN_READ, KS_MODE_READ)) : ksntfx::Load(held->strict.Get(), name);
  return status.Code();
}

FileView LoadedFile::View() const {
  return FileView(held->File());
}

std::vector<FileNote> LoadedFile::Notes() const {
  std::vector<FileNote> notes;
  for (const ksntfx::FileNote &found : held->wide.Notes()) {
    HeaderChoice header;
    if (found.kind) header = {static_cast<SegmentKind>(*found.kind), found.index};
    notes.push_back({header, found.note.field, found.note.offset, WordsOf(found), FaultOf(found.note),
                     found.note.field.empty() && found.note.value.empty()});
  }
  return notes;
}

}  // namespace ntf
