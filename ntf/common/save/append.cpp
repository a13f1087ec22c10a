#include "save/append.h"

#include "access/image_setters.h"
#include "headers/display_levels.h"
#include "headers/held_data.h"
#include "headers/length_tables.h"
#include "internal/ksclasses_.h"
#include "save/encoded_data.h"
#include "table/fields.h"
#include "table/header_writer.h"

#include <algorithm>

namespace ksntfx {

namespace {

/** What the kinds differ in where a segment is added. */
struct AppendedKind {
  SegmentKind kind;
  std::uint32_t NitfFile::*count;
  std::uint32_t mostDataBytes; /**< what the field of the data's length can tell, and the writer can count */
};

constexpr AppendedKind kImages = {SegmentKind::Image, &NitfFile::imageCount, 2147483647};
constexpr AppendedKind kGraphics = {SegmentKind::Graphic, &NitfFile::graphicCount, 999999};
constexpr AppendedKind kTexts = {SegmentKind::Text, &NitfFile::textCount, 99999};

bool IsFull(const NitfFile *file, const AppendedKind &kind) {
  return file->*kind.count + 1 > kMostSegments;
}

/** A segment that isn't in its list yet, and never gets there where something fails. */
template <class Record>
class NewSegment {
 public:
  NewSegment(NitfFile *target, const AppendedKind &appended)
      : file(target), kind(appended), node(NewSegmentNode(target, appended.kind, target->*appended.count)) {}
  NewSegment(const NewSegment &) = delete;
  NewSegment &operator=(const NewSegment &) = delete;
  ~NewSegment() { ReleaseSegmentNode(kind.kind, node); }

  explicit operator bool() const { return node != nullptr; }
  Record *operator->() const { return static_cast<Record *>(node->subheader); }
  Record *Get() const { return static_cast<Record *>(node->subheader); }

  /** The length of the subheader, which is counted in the 2.1 layout whatever that of the file is. */
  std::uint64_t SubheaderBytes() const {
    return VisitFields(SubheaderTable(file, kind.kind), Get(), HeaderSink{}, [](auto &&, auto) {});
  }

  /** The last step: puts the segment into its list and its lengths into the header, or fails with nothing changed. */
  Status Commit(std::uint64_t subheaderBytes, std::uint64_t dataBytes) {
    const Status status = GrowLengths(&file->header, LengthsOf(kind.kind));
    if (status != SUCCESS) return status;
    LinkSegmentNode(file, kind.kind, node);
    node = nullptr;
    file->*kind.count += 1;
    AddLengths(&file->header, LengthsOf(kind.kind), static_cast<std::uint32_t>(subheaderBytes),
               static_cast<std::uint32_t>(dataBytes));
    return SUCCESS;
  }

 private:
  NitfFile *file;
  const AppendedKind &kind;
  SegmentNode *node;
};

void SetEarlierDate(const NitfFile *file, char *date, bool secondsToo) {
  FormatDateTime(date, EarlierDate(file->header.FDT, secondsToo));
}

template <std::size_t size>
void SetNumber(char (&text)[size], std::uint32_t *number, std::uint32_t value) {
  SetNumberField(text, size - 1, value);
  *number = value;
}

/** The level of a new object is above all others; the first one has 1. */
std::uint32_t NextLevel(const DisplayLevels &levels) {
  return levels.any ? levels.highest + 1 : 1;
}

// ---- images -------------------------------------------------------------------------------------------------------

constexpr std::uint32_t kColorBits = 24;
constexpr std::uint32_t kGrayBits = 8;

Status CheckImage(const NitfFile *file, const KsBitmap *bitmap, std::uint32_t format, std::uint32_t bits,
                  std::uint32_t quality) {
  constexpr std::uint32_t kBestQuality = 2;
  constexpr std::uint32_t kSmallestQuality = 255;
  constexpr std::uint32_t kMostPixels = 65535;
  if (bitmap == nullptr || (bitmap->flags & KS_BITMAP_ALLOCATED) == 0) return ERROR_NO_STORAGE;
  if (IsFull(file, kImages)) return NITF_TOO_MANY_SEGMENTS;
  if (bits != kGrayBits && bits != kColorBits) return ERROR_BITS_PER_PIXEL;
  if (quality < kBestQuality || quality > kSmallestQuality) return ERROR_QUALITY;
  if (format != KS_FORMAT_JPEG && format != KS_FORMAT_JPEG_RGB) return ERROR_FILE_FORMAT;
  return bitmap->width > kMostPixels || bitmap->height > kMostPixels ? ERROR_BITMAP_SIZE : SUCCESS;
}

/** Encodes a picture, whose stream is the segment's body: its bytes go to `size`. */
Status EncodeImage(ImageSubheader *image, const KsBitmap *bitmap, std::uint32_t format, std::uint32_t bits,
                   std::uint32_t quality, std::uint64_t *size) {
  KsSaveOptions options = {};
  options.structureSize = sizeof options;
  options.saveFlags |= 1;
  EncodedData data;
  const Status status = data.Take(KsSaveMemory(data.Handle(), bitmap, format, bits, quality, data.Size(), &options));
  if (status != SUCCESS) return status;
  if (data.Count() > kImages.mostDataBytes) return ERROR_INVALID_VALUE;
  *size = data.Count();
  return HoldInMemory(image, data.Bytes(), static_cast<std::uint32_t>(data.Count()));
}

/** How the bands of a picture are told. */
struct BandLayout {
  const char *representation; /**< IREP */
  const char *mode;           /**< IMODE */
  std::uint32_t count;
  const char *bands[3]; /**< IREPBAND */
};

constexpr BandLayout kGray = {"MONO", "B", 1, {"M"}};
constexpr BandLayout kYCbCr = {"YCbCr601", "P", 3, {"Y", "Cb", "Cr"}};
constexpr BandLayout kRgbBands = {"RGB", "P", 3, {"R", "G", "B"}};

Status SetBands(ImageSubheader *image, const BandLayout &layout) {
  Status status = ImageSetBandCount(image, layout.count);
  for (std::uint32_t band = 0; band < layout.count && status == SUCCESS; ++band) {
    status = ImageSetBandRepresentation(image, band, layout.bands[band]);
  }
  if (status == SUCCESS) status = ImageSetRepresentation(image, layout.representation);
  return status == SUCCESS ? ImageSetMode(image, layout.mode) : status;
}

/** One block, in samples of 8 bits; one as wide or high as the limit is told as 0, which means the whole image. */
void SetSize(ImageSubheader *image, const KsBitmap &bitmap) {
  constexpr std::uint32_t kSampleBits = 8;
  SetNumber(image->ABPP, &image->actualBits, kSampleBits);
  SetNumber(image->NBPP, &image->bitsPerPixel, kSampleBits);
  SetNumber(image->NBPR, &image->blocksPerRow, 1);
  SetNumber(image->NBPC, &image->blocksPerColumn, 1);
  SetNumber(image->NROWS, &image->rows, bitmap.height);
  SetNumber(image->NCOLS, &image->columns, bitmap.width);
  SetNumber(image->NPPBH, &image->blockWidth, bitmap.width < kWidestBlock ? bitmap.width : 0);
  SetNumber(image->NPPBV, &image->blockHeight, bitmap.height < kWidestBlock ? bitmap.height : 0);
}

Status SetForm(ImageSubheader *image, const BandLayout &layout) {
  Status status = ImageSetJustification(image, "R");
  if (status == SUCCESS) status = ImageSetCompression(image, "C3");
  if (status == SUCCESS) status = ImageSetPixelValueType(image, "INT");
  return status == SUCCESS ? SetBands(image, layout) : status;
}

// ---- drawings -----------------------------------------------------------------------------------------------------

/** Whether a drawing, y downwards, stays within five digits to the right, the top and the bottom. */
bool FitsCoordinates(const KsVectorPoint &low, const KsVectorPoint &high) {
  constexpr double kBeyond = 100000;
  return -high.y < kBeyond && high.x < kBeyond && -low.y < kBeyond;
}

Status CheckDrawing(const KsVector *vector) {
  if (vector == nullptr) return NITF_NULL_DATA;
  if (KsVectorIsEmpty(vector) != 0) return NITF_EMPTY_DRAWING;
  return SUCCESS;
}

Status CheckGraphic(const NitfFile *file, const KsVector *vector, KsVectorPoint *low, KsVectorPoint *high) {
  if (IsFull(file, kGraphics)) return NITF_TOO_MANY_SEGMENTS;
  const Status status = CheckDrawing(vector);
  if (status != SUCCESS) return status;
  if (KsVectorExtents(vector, low, high) != SUCCESS) return NITF_EMPTY_DRAWING;
  return FitsCoordinates(*low, *high) ? SUCCESS : ERROR_INVALID_VALUE;
}

/** Brings a drawing below the x axis, where the canvas is, and lays it onto the rectangle. */
void PlaceDrawing(KsVector *vector, double top, const KsRect &rectangle) {
  if (top > 0.0) {
    const KsVectorPoint offset = {0, -top - 1.0};
    KsVectorMove(vector, &offset, 0, 0);
    KsVectorApply(vector);
    KsVectorViewC(vector, 0, 0);
  }
  KsVectorSetViewport(vector, &rectangle);
  KsVectorViewC(vector, 0, 0);
  KsVectorViewA(vector, 0);
  KsVectorViewB(vector, 0);
}

Status EncodeDrawing(const KsVector *vector, EncodedData *data) {
  KsSaveOptions options = {};
  KsSaveOptionsInit(&options, sizeof options);
  options.saveFlags |= 1;
  const Status status = data->Take(KsVectorSaveMemory(data->Handle(), vector, KS_FORMAT_CGM, data->Size(), &options));
  if (status != SUCCESS) return status;
  return data->Count() > kGraphics.mostDataBytes ? ERROR_INVALID_VALUE : SUCCESS;
}

// ---- texts --------------------------------------------------------------------------------------------------------

/** Reads a file as it is: its bytes, and how many there are. */
Status ReadTextFile(const char16_t *path, KsArray<char> *bytes, std::uint32_t *count) {
  const KsHandle in = path == nullptr ? KS_INVALID_HANDLE : KsOpen(path, KS_OPEN_READ, KS_MODE_READ);
  if (in == KS_INVALID_HANDLE) return NITF_NO_TEXT_FILE;
  const std::int64_t size = KsSeek(in, 0, KS_SEEK_END);
  KsSeek(in, 0, KS_SEEK_START);
  Status status = SUCCESS;
  if (size < 0) {
    status = NITF_NO_TEXT_FILE;
  } else if (size > kTexts.mostDataBytes) {
    status = ERROR_INVALID_VALUE;
  } else if (!bytes->Allocate(static_cast<std::uint64_t>(size) + 1)) {
    status = ERROR_NO_MEMORY;
  } else {
    // What isn't there any more is left as zeros.
    KsRead(in, bytes->Get(), static_cast<std::uint64_t>(size));
    *count = static_cast<std::uint32_t>(size);
  }
  KsClose(in);
  return status;
}

}  // namespace

Status AppendImage(NitfFile *file, const KsBitmap *bitmap, std::uint32_t format, std::uint32_t bits,
                   std::uint32_t quality) {
  Status status = CheckImage(file, bitmap, format, bits, quality);
  if (status != SUCCESS) return status;
  NewSegment<ImageSubheader> image(file, kImages);
  if (!image) return ERROR_NO_MEMORY;
  std::uint64_t size = 0;
  status = EncodeImage(image.Get(), bitmap, format, bits, quality, &size);
  if (status != SUCCESS) return status;
  SetEarlierDate(file, image->IDATIM, true);
  SetSize(image.Get(), *bitmap);
  const BandLayout &colors = format == KS_FORMAT_JPEG ? kYCbCr : kRgbBands;
  const BandLayout &layout = bits == kGrayBits ? kGray : colors;
  status = SetForm(image.Get(), layout);
  if (status != SUCCESS) return status;
  const std::uint32_t level = NextLevel(LevelsOf(file));
  if (level >= 1 && level <= kHighestLevel) SetNumber(image->IDLVL, &image->displayLevel, level);
  const std::uint64_t subheaderBytes = image.SubheaderBytes();
  if (file->nitf20Layout != 0) status = ImageSetCoordinates(image.Get(), "N");
  if (status != SUCCESS) return status;
  return image.Commit(subheaderBytes, size);
}

Status AppendGraphic(NitfFile *file, KsVector *vector, const KsRect &rectangle) {
  KsVectorPoint low{};
  KsVectorPoint high{};
  Status status = CheckGraphic(file, vector, &low, &high);
  if (status != SUCCESS) return status;
  NewSegment<GraphicSubheader> graphic(file, kGraphics);
  if (!graphic) return ERROR_NO_MEMORY;
  PlaceDrawing(vector, high.y, rectangle);
  EncodedData data;
  status = EncodeDrawing(vector, &data);
  if (status == SUCCESS) {
    status = GraphicSetData(graphic.Get(), data.Bytes(), static_cast<std::uint32_t>(data.Count()));
  }
  if (status != SUCCESS) return status;
  const DisplayLevels levels = LevelsOf(file);
  SetNumber(graphic->SDLVL, &graphic->displayLevel, NextLevel(levels));
  if (levels.any) SetNumber(graphic->SALVL, &graphic->attachmentLevel, levels.lowest);
  GraphicSetBound1(graphic.Get(), rectangle.left, rectangle.top);
  GraphicSetBound2(graphic.Get(), rectangle.right, rectangle.bottom);
  return graphic.Commit(graphic.SubheaderBytes(), data.Count());
}

Status AppendText(NitfFile *file, const char16_t *path) {
  if (IsFull(file, kTexts)) return NITF_TOO_MANY_SEGMENTS;
  NewSegment<TextSubheader> text(file, kTexts);
  if (!text) return ERROR_NO_MEMORY;
  KsArray<char> bytes;
  std::uint32_t count = 0;
  Status status = ReadTextFile(path, &bytes, &count);
  if (status == SUCCESS) status = TextSubheaderSetData(text.Get(), bytes.Get(), count);
  if (status != SUCCESS) return status;
  SetEarlierDate(file, text->TXTDT, false);
  const DisplayLevels levels = LevelsOf(file);
  if (levels.any) SetNumber(text->TXTALVL, &text->attachmentLevel, levels.lowest);
  return text.Commit(text.SubheaderBytes(), count);
}

Status ReplaceDrawing(NitfFile *file, std::uint32_t index, const KsVector *vector) {
  GraphicSubheader *const graphic = index < file->graphicCount ? FindGraphic(file, index) : nullptr;
  if (graphic == nullptr) return ERROR_INVALID_VALUE;
  Status status = CheckDrawing(vector);
  if (status != SUCCESS) return status;
  EncodedData data;
  status = EncodeDrawing(vector, &data);
  const auto size = static_cast<std::uint32_t>(data.Count());
  if (status == SUCCESS) status = GraphicSetData(graphic, data.Bytes(), size);
  // The record's own drawing, changed and set again, needs no copy.
  if (status == SUCCESS && vector != &graphic->vector) {
    if (KsVectorIsEmpty(&graphic->vector) == 0) KsVectorFree(&graphic->vector);
    status = KsVectorCopy(&graphic->vector, vector, 0);
  }
  if (status != SUCCESS) return status;
  ReplaceDataLength(&file->header, kGraphicLengths, index, size);
  return SUCCESS;
}

}  // namespace ksntfx
