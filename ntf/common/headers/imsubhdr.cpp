#include "headers/imsubhdr.h"

#include "headers/image_bands.h"
#include "headers/mask_table.h"
#include "internal/ksclasses_.h"
#include "ksntfx.h"
#include "platform.h"
#include "table/fields.h"
#include "table/header_reader.h"
#include "table/header_writer.h"

#include <algorithm>
#include <iterator>

namespace ksntfx {

namespace {

ImageSubheader &Image(HeaderReader &reader) {
  return reader.As<ImageSubheader>();
}

/** With a message box, unless the value is noted and read past. */
Status Refuse(const HeaderReader &reader, const char *message, std::int32_t status) {
  if (reader.Notes() == nullptr) platform::MessageBoxA(nullptr, message, "Error", platform::MB_OK);
  return status;
}

Status DecodePixelValueType(HeaderReader &reader, std::string_view text) {
  // The strict interfaces look at the first letter alone, and have no samples but integers and bits.
  const std::string_view compared = reader.Notes() == nullptr ? text.substr(0, 1) : text;
  const std::size_t known = reader.Notes() == nullptr ? kStrictPixelValueTypes : std::size(kPixelValueTypes);
  const ImageCode *const end = kPixelValueTypes + known;
  const ImageCode *const type = std::find_if(
      kPixelValueTypes, end, [&](const ImageCode &code) { return code.text.substr(0, compared.size()) == compared; });
  if (type == end) return Refuse(reader, "Unsupported PVTYPE", NITF_UNSUPPORTED_PVTYPE);
  Image(reader).pixelValueType = type->value;
  return SUCCESS;
}

Status DecodeRepresentation(HeaderReader &reader, std::string_view text) {
  DecodeImageCode(kRepresentations, text, &Image(reader).representation);
  return SUCCESS;
}

Status DecodeJustification(HeaderReader &reader, std::string_view text) {
  Image(reader).rightJustified = text == "L" ? 0 : 1;
  return SUCCESS;
}

Status DecodeCompression(HeaderReader &reader, std::string_view text) {
  const ImageKind *const kind = FindImageKind(text, reader.Notes() != nullptr);
  if (kind != nullptr) Image(reader).compression = kind->compression;
  return SUCCESS;
}

Status DecodeRate(HeaderReader &reader, std::string_view text) {
  DecodeImageCode(kRates, text, &Image(reader).rateKind);
  return SUCCESS;
}

Status DecodeBandField(HeaderReader &reader, std::string_view) {
  ImageSubheader &image = Image(reader);
  if (reader.Nitf20() && (image.bandField < 1 || image.bandField > 9)) return ERROR_FILE_FORMAT;
  image.bandCount = image.bandField;
  return SUCCESS;
}

Status DecodeMode(HeaderReader &reader, std::string_view text) {
  return DecodeImageCode(kModes, text, &Image(reader).mode) ? SUCCESS : ERROR_FILE_FORMAT;
}

Status DecodeBlockWidth(HeaderReader &reader, std::string_view) {
  ImageSubheader &image = Image(reader);
  if (image.blockWidth == 0) image.blockWidth = image.columns;
  return SUCCESS;
}

Status DecodeBlockHeight(HeaderReader &reader, std::string_view) {
  ImageSubheader &image = Image(reader);
  if (image.blockHeight == 0) image.blockHeight = image.rows;
  return SUCCESS;
}

Status CheckBitsPerPixel(HeaderReader &reader, std::string_view) {
  const ImageSubheader &image = Image(reader);
  if (reader.Notes() != nullptr || image.bitsPerPixel != 16 || image.bandCount <= 1) return SUCCESS;
  return Refuse(reader, "Unsupported BPP", NITF_UNSUPPORTED_BPP);
}

Status DecodeMagnification(HeaderReader &reader, std::string_view text) {
  Image(reader).magnification = ParseMagnification(text);
  return SUCCESS;
}

bool HasCoordinates(const void *record, bool nitf20) {
  const char system = static_cast<const ImageSubheader *>(record)->ICORDS[0];
  return nitf20 ? system != 'N' : system != ' ';
}

bool HasRate(const void *record, bool) {
  return KindOf(*static_cast<const ImageSubheader *>(record)).hasRate;
}

bool CountsInExtendedField(const void *record, bool) {
  return static_cast<const ImageSubheader *>(record)->bandField == 0;
}

/** A list of comments that is whole takes the place of the one before. */
Status ReadComments(HeaderReader &reader) {
  ImageSubheader &image = Image(reader);
  KsArray<char[81]> comments;
  if (image.commentCount != 0) {
    if (!reader.Holds(image.commentCount, 80)) return ERROR_FILE_READ;
    if (!comments.Allocate(image.commentCount)) return ERROR_NO_MEMORY;
  }
  for (std::uint32_t comment = 0; comment < image.commentCount; ++comment) {
    const Status status = reader.Take(comments[comment], 80);
    if (status != SUCCESS) return status;
  }
  KsFreeAndClear(image.comments);
  image.comments = comments.Release();
  image.commentsHeld = image.commentCount;
  return SUCCESS;
}

// ---- writing ------------------------------------------------------------------------------------------------------

const ImageSubheader &Image(const HeaderWriter &writer) {
  return writer.As<ImageSubheader>();
}

/** Writes the text that stands for a number; blanks where there is none. */
Status WriteCode(HeaderWriter &writer, std::string_view text, std::uint32_t width) {
  char field[16] = {};
  text.copy(field, sizeof field - 1);
  return writer.Text(field, width, ' ');
}

Status WritePixelValueType(HeaderWriter &writer) {
  const std::uint32_t type = Image(writer).pixelValueType;
  const std::size_t known = writer.Sink().isWide ? std::size(kPixelValueTypes) : kStrictPixelValueTypes;
  if (type < known) return WriteCode(writer, kPixelValueTypes[type].text, 3);
  platform::MessageBoxA(nullptr, "Unsupported PVTYPE", "Error", platform::MB_OK);
  return NITF_UNSUPPORTED_PVTYPE;
}

Status WriteRepresentation(HeaderWriter &writer) {
  return WriteCode(writer, ImageCodeText(kRepresentations, Image(writer).representation), 8);
}

Status WriteJustification(HeaderWriter &writer) {
  return WriteCode(writer, Image(writer).rightJustified == 0 ? "L" : "R", 1);
}

Status WriteCoordinateSystem(HeaderWriter &writer) {
  return writer.Text(Image(writer).ICORDS, 1, ' ');
}

Status WriteComments(HeaderWriter &writer) {
  const ImageSubheader &image = Image(writer);
  const std::int32_t count = ParseNumber({image.NICOM, 1});
  for (std::int32_t comment = 0; comment < count; ++comment) {
    const bool held = comment < static_cast<std::int32_t>(image.commentsHeld);
    const Status status = writer.Text(held ? image.comments[comment] : "", 80, ' ');
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

/** A code that isn't known goes out as it was read, and so does its rate. */
Status WriteCompression(HeaderWriter &writer) {
  if (Image(writer).compression == kUnknownCompression) return writer.Text(Image(writer).IC, 2, ' ');
  return WriteCode(writer, KindOf(Image(writer)).text, 2);
}

Status WriteRate(HeaderWriter &writer) {
  if (Image(writer).compression == kUnknownCompression) return writer.Text(Image(writer).COMRAT, 4, ' ');
  const std::string_view text = ImageCodeText(kRates, Image(writer).rateKind);
  return WriteCode(writer, text.empty() ? "00.0" : text, 4);
}

Status WriteMode(HeaderWriter &writer) {
  return WriteCode(writer, ImageCodeText(kModes, Image(writer).mode), 1);
}

/** A block as wide or high as the image is written as 0 where its size has more digits than the field. */
Status WriteBlockSize(HeaderWriter &writer, std::uint32_t size, std::uint32_t imageSize) {
  const bool isWhole = size == imageSize && size > kWidestBlockField;
  return writer.Number(isWhole ? 0 : static_cast<std::int32_t>(size), 4);
}

Status WriteBlockWidth(HeaderWriter &writer) {
  return WriteBlockSize(writer, Image(writer).blockWidth, Image(writer).columns);
}

Status WriteBlockHeight(HeaderWriter &writer) {
  return WriteBlockSize(writer, Image(writer).blockHeight, Image(writer).rows);
}

/** Three characters of the factor as a decimal fraction. */
Status WriteMagnification(HeaderWriter &writer) {
  char text[512];
  FormatFraction(text, sizeof text, Image(writer).magnification, 6);
  text[3] = '\0';
  return writer.Text(text, 4, ' ');
}

using Record = ImageSubheader;

constexpr HeaderRow kRows[] = {
    MarkerRow(NITF_TEXT(Record, IM), "IM", NITF_MEMBER(Record, headerRead)),
    TextRow(NITF_TEXT(Record, IID1), 10).Default("Missing ID"),
    TextRow(NITF_TEXT(Record, IDATIM), 14).FillZeros().Blank(),
    TextRow(NITF_TEXT(Record, TGTID), 17).Blank(),
    TextRow(NITF_TEXT(Record, IID2), 80).Blank(),
    SecurityRow("I", offsetof(Record, security), kCheckClassification),
    TextRow(NITF_TEXT(Record, ENCRYP), 1).FillZeros().Digits(),
    TextRow(NITF_TEXT(Record, ISORCE), 42).Blank(),
    TextRow(NITF_TEXT(Record, NROWS), 8).Rendered(NITF_MEMBER(Record, rows)).AllNinesUnknown(),
    TextRow(NITF_TEXT(Record, NCOLS), 8).Rendered(NITF_MEMBER(Record, columns)).AllNinesUnknown(),
    TextRow(NITF_TEXT(Record, PVTYPE), 3).Blank().Then(DecodePixelValueType).Writes(WritePixelValueType),
    TextRow(NITF_TEXT(Record, IREP), 8).Blank().Then(DecodeRepresentation).Writes(WriteRepresentation),
    TextRow(NITF_TEXT(Record, ICAT), 8).Default("VIS"),
    TextRow(NITF_TEXT(Record, ABPP), 2).Rendered(NITF_MEMBER(Record, actualBits)),
    TextRow(NITF_TEXT(Record, PJUST), 1).Blank().Then(DecodeJustification).Writes(WriteJustification),
    TextRow(NITF_TEXT(Record, ICORDS), 1).Blank().Writes(WriteCoordinateSystem),
    TextRow(NITF_TEXT(Record, IGEOLO), 60).FillZeros().Blank().If(HasCoordinates),
    TextRow(NITF_TEXT(Record, NICOM), 1).FillZeros().Number(NITF_MEMBER(Record, commentCount)),
    GroupRow("ICOM", ReadComments, WriteComments),
    TextRow(NITF_TEXT(Record, IC), 2).Blank().Then(DecodeCompression).Writes(WriteCompression),
    TextRow(NITF_TEXT(Record, COMRAT), 4).Blank().If(HasRate).Then(DecodeRate).Writes(WriteRate),
    TextRow(NITF_TEXT(Record, NBANDS), 1).Rendered(NITF_MEMBER(Record, bandField)).Then(DecodeBandField),
    TextRow(NITF_TEXT(Record, XBANDS), 5)
        .FillZeros()
        .Only21()
        .Number(NITF_MEMBER(Record, bandCount))
        .If(CountsInExtendedField),
    GroupRow("IREPBAND", ReadBands, WriteBands),
    TextRow(NITF_TEXT(Record, ISYNC), 1).FillZeros().Digits(),
    TextRow(NITF_TEXT(Record, IMODE), 1).Default("P").Then(DecodeMode).Writes(WriteMode),
    TextRow(NITF_TEXT(Record, NBPR), 4).Rendered(NITF_MEMBER(Record, blocksPerRow)).AllNinesUnknown(),
    TextRow(NITF_TEXT(Record, NBPC), 4).Rendered(NITF_MEMBER(Record, blocksPerColumn)).AllNinesUnknown(),
    TextRow(NITF_TEXT(Record, NPPBH), 4)
        .Number(NITF_MEMBER(Record, blockWidth))
        .AllNinesUnknown()
        .Then(DecodeBlockWidth)
        .Writes(WriteBlockWidth),
    TextRow(NITF_TEXT(Record, NPPBV), 4)
        .Number(NITF_MEMBER(Record, blockHeight))
        .AllNinesUnknown()
        .Then(DecodeBlockHeight)
        .Writes(WriteBlockHeight),
    TextRow(NITF_TEXT(Record, NBPP), 2).Rendered(NITF_MEMBER(Record, bitsPerPixel)).Then(CheckBitsPerPixel),
    TextRow(NITF_TEXT(Record, IDLVL), 3).Rendered(NITF_MEMBER(Record, displayLevel)),
    TextRow(NITF_TEXT(Record, IALVL), 3).Rendered(NITF_MEMBER(Record, attachmentLevel)),
    TextRow(NITF_TEXT(Record, ILOC), 10).FillZeros().Halves(NITF_MEMBER(Record, locationRow)),
    TextRow(NITF_TEXT(Record, IMAG), 4).Blank().Then(DecodeMagnification).Writes(WriteMagnification),
    TextRow(NITF_TEXT(Record, UDIDL), 5).FillZeros().Digits(),
    TextRow(NITF_TEXT(Record, UDOFL), 3).FillZeros().Digits().CountedBy(offsetof(Record, UDIDL)),
    BytesRow("UDID", offsetof(Record, userData), offsetof(Record, UDIDL), 3),
    TextRow(NITF_TEXT(Record, IXSHDL), 5).FillZeros().Digits(),
    TextRow(NITF_TEXT(Record, IXSOFL), 3).FillZeros().Digits().CountedBy(offsetof(Record, IXSHDL)),
    BytesRow("IXSHD", offsetof(Record, extendedData), offsetof(Record, IXSHDL), 3, 3),
    GroupRow("IMDATOFF", ReadMaskTable, WriteMaskTable),
};

}  // namespace

const HeaderTable kImageTable = TableOf<kRows>(' ');

namespace {

ImageSubheader DefaultImage() {
  ImageSubheader image{};
  SetDefaults(kImageTable, &image);
  image.representation = kRgb;
  image.actualBits = image.bitsPerPixel = image.displayLevel = 1;
  image.rightJustified = 1;
  image.compression = kUnknownCompression;
  image.mode = kPixelInterleaved;
  image.magnification = 1.0;
  image.rateKind = kRateOther;
  std::fill(std::begin(image.displayBands), std::end(image.displayBands), -1);
  return image;
}

}  // namespace

void ImageSubheaderInit(ImageSubheader *record, NitfFile *file) {
  static const ImageSubheader fresh = DefaultImage();
  *record = fresh;
  record->file = file;
}

void ImageSubheaderFree(ImageSubheader *record) {
  FreeBands(record);
  record->commentsHeld = record->maskEntries = 0;
  KsFreeAndClear(record->comments);
  KsFreeAndClear(record->userData);
  KsFreeAndClear(record->extendedData);
  KsFreeAndClear(record->padCode);
  KsFreeAndClear(record->blockMask);
  KsFreeAndClear(record->padMask);
  KsFreeAndClear(record->memoryData);
}

double ParseMagnification(std::string_view text) {
  return text.starts_with('/') ? 1.0 / ParseNumber(text.substr(1)) : ParseFraction(text);
}

std::string_view BandRepresentationText(std::uint32_t representation) {
  return ImageCodeText(kBandRepresentations, representation);
}

}  // namespace ksntfx
