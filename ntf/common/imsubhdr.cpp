#include "imsubhdr.h"

#include "fields.h"
#include "headerreader.h"
#include "headerwriter.h"
#include "image_codes.h"
#include "internal/ksclasses_.h"
#include "ksntfx.h"
#include "nitffile.h"
#include "platform.h"
#include "savenitf.h"
#include "strmfhdr.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

ImageSubheader &Image(HeaderReader &reader) {
  return reader.As<ImageSubheader>();
}

/** Replaces an array of the record by a zeroed one of `count` items. False without memory. */
template <class Item>
bool Renew(Item *&array, std::uint64_t count) {
  KsFreeAndClear(array);
  array = static_cast<Item *>(KsCalloc(count, sizeof(Item), __LINE__, __FILE__));
  return array != nullptr;
}

std::int32_t Refuse(const char *message, std::int32_t status) {
  platform::MessageBoxA(nullptr, message, "Error", platform::MB_OK);
  return status;
}

std::int32_t CheckMarker(HeaderReader &reader, std::string_view text) {
  if (text != "IM") return ERROR_FILE_FORMAT;
  Image(reader).headerRead = 1;
  return SUCCESS;
}

std::int32_t DecodePixelValueType(HeaderReader &reader, std::string_view text) {
  if (text[0] != 'B' && text[0] != 'I') return Refuse("Unsupported PVTYPE", NITF_UNSUPPORTED_PVTYPE);
  Image(reader).pixelValueType = text[0] == 'B' ? 1 : 0;
  return SUCCESS;
}

std::int32_t DecodeRepresentation(HeaderReader &reader, std::string_view text) {
  DecodeImageCode(kRepresentations, text, &Image(reader).representation);
  return SUCCESS;
}

std::int32_t DecodeJustification(HeaderReader &reader, std::string_view text) {
  Image(reader).rightJustified = text == "L" ? 0 : 1;
  return SUCCESS;
}

std::int32_t DecodeCompression(HeaderReader &reader, std::string_view text) {
  DecodeImageCode(kCompressions, text, &Image(reader).compression);
  return SUCCESS;
}

std::int32_t DecodeRate(HeaderReader &reader, std::string_view text) {
  DecodeImageCode(kRates, text, &Image(reader).rateKind);
  return SUCCESS;
}

std::int32_t DecodeBandField(HeaderReader &reader, std::string_view) {
  ImageSubheader &image = Image(reader);
  if (reader.Nitf20() && (image.bandField < 1 || image.bandField > 9)) return ERROR_FILE_FORMAT;
  image.bandCount = image.bandField;
  return SUCCESS;
}

std::int32_t DecodeMode(HeaderReader &reader, std::string_view text) {
  return DecodeImageCode(kModes, text, &Image(reader).mode) ? SUCCESS : ERROR_FILE_FORMAT;
}

std::int32_t DecodeBlockWidth(HeaderReader &reader, std::string_view) {
  ImageSubheader &image = Image(reader);
  if (image.blockWidth == 0) image.blockWidth = image.columns;
  return SUCCESS;
}

std::int32_t DecodeBlockHeight(HeaderReader &reader, std::string_view) {
  ImageSubheader &image = Image(reader);
  if (image.blockHeight == 0) image.blockHeight = image.rows;
  return SUCCESS;
}

std::int32_t CheckBitsPerPixel(HeaderReader &reader, std::string_view) {
  const ImageSubheader &image = Image(reader);
  if (image.bitsPerPixel == 16 && image.bandCount > 1) return Refuse("Unsupported BPP", NITF_UNSUPPORTED_BPP);
  return SUCCESS;
}

std::int32_t DecodeMagnification(HeaderReader &reader, std::string_view text) {
  Image(reader).magnification = ParseMagnification(text);
  return SUCCESS;
}

bool HasCoordinates(const void *record, bool nitf20) {
  const char system = static_cast<const ImageSubheader *>(record)->ICORDS[0];
  return nitf20 ? system != 'N' : system != ' ';
}

bool HasRate(const void *record, bool) {
  return static_cast<const ImageSubheader *>(record)->compression > kNM;
}

bool CountsInExtendedField(const void *record, bool) {
  return static_cast<const ImageSubheader *>(record)->bandField == 0;
}

std::int32_t ReadComments(HeaderReader &reader) {
  ImageSubheader &image = Image(reader);
  image.commentsHeld = 0;
  KsFreeAndClear(image.comments);
  if (image.commentCount == 0) return SUCCESS;
  if (!reader.Holds(image.commentCount, 80)) return ERROR_FILE_READ;
  if (!Renew(image.comments, image.commentCount)) return ERROR_NO_MEMORY;
  image.commentsHeld = image.commentCount;
  for (std::uint32_t comment = 0; comment < image.commentCount; ++comment) {
    const std::int32_t status = reader.Take(image.comments[comment], 80);
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

/** One row of a lookup table: its bytes go to the channels of `mask` in all entries. */
std::int32_t ReadLutRow(HeaderReader &reader, std::uint8_t *row, std::uint32_t channels) {
  const ImageSubheader &image = Image(reader);
  const std::int32_t status = reader.Take(row, image.lutCount);
  if (status != SUCCESS) return status;
  for (std::uint32_t entry = 0; entry < image.lutCount; ++entry) image.lut[entry] |= row[entry] * channels;
  return SUCCESS;
}

/** One table gives gray; any other number is read as three, for red, green and blue. */
std::int32_t ReadLut(HeaderReader &reader, std::uint32_t tables, std::uint32_t entries) {
  ImageSubheader &image = Image(reader);
  image.lutCount = 0;
  if (!reader.Holds(tables == 1 ? 1 : 3, entries)) return ERROR_FILE_READ;
  std::uint8_t *row = nullptr;
  if (!Renew(image.lut, entries) || !Renew(row, entries)) return ERROR_NO_MEMORY;
  image.lutCount = entries;
  std::int32_t status = SUCCESS;
  if (tables == 1) {
    status = ReadLutRow(reader, row, 0x010101);
  } else {
    for (const std::uint32_t channel : {0x010000U, 0x000100U, 0x000001U}) {
      if (status == SUCCESS) status = ReadLutRow(reader, row, channel);
    }
  }
  KsFreeAndClear(row);
  return status;
}

std::int32_t ReadBandLut(HeaderReader &reader, std::uint32_t band) {
  ImageSubheader &image = Image(reader);
  std::int32_t status = reader.TakeNumber(1, false, &image.bandLutCounts[band]);
  if (status != SUCCESS || image.bandLutCounts[band] == 0) return status;
  if (image.bandLutEntries == nullptr && !Renew(image.bandLutEntries, image.bandCount)) return ERROR_NO_MEMORY;
  status = reader.TakeNumber(5, false, &image.bandLutEntries[band]);
  if (status != SUCCESS || image.bandLutEntries[band] == 0) return status;
  return ReadLut(reader, image.bandLutCounts[band], image.bandLutEntries[band]);
}

std::int32_t ReadBand(HeaderReader &reader, std::uint32_t band) {
  ImageSubheader &image = Image(reader);
  char representation[2];
  std::int32_t status = reader.Take(representation, 2);
  if (status != SUCCESS) return status;
  DecodeImageCode(kBandRepresentations, {representation, 2}, &image.bandRepresentation[band]);
  status = reader.Take(image.bandSubcategories[band], 6);
  if (status == SUCCESS) status = reader.Take(image.bandFilterConditions[band], 1);
  if (status == SUCCESS) status = reader.Take(image.bandFilterCodes[band], 3);
  return status == SUCCESS ? ReadBandLut(reader, band) : status;
}

void DropBands(ImageSubheader &image) {
  image.bandsHeld = image.lutCount = 0;
  KsFreeAndClear(image.lut);
  KsFreeAndClear(image.bandRepresentation);
  image.bandSubcategories = nullptr;
  image.bandFilterConditions = nullptr;
  image.bandFilterCodes = nullptr;
  image.bandLutCounts = nullptr;
  KsFreeAndClear(image.bandLutEntries);
}

std::int32_t ReadBands(HeaderReader &reader) {
  constexpr std::uint32_t kLeastBytesPerBand = 2 + 6 + 1 + 3 + 1;
  ImageSubheader &image = Image(reader);
  DropBands(image);
  const std::uint32_t count = image.bandCount;
  if (count == 0) return SUCCESS;
  if (!reader.Holds(count, kLeastBytesPerBand)) return ERROR_FILE_READ;
  if (!RenewBands(&image, count)) return ERROR_NO_MEMORY;
  for (std::uint32_t band = 0; band < count; ++band) {
    const std::int32_t status = ReadBand(reader, band);
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

template <class Number>
std::int32_t TakeBigEndian(HeaderReader &reader, Number *number) {
  std::uint8_t bytes[sizeof(Number)];
  const std::int32_t status = reader.Take(bytes, sizeof bytes);
  if (status != SUCCESS) return status;
  std::uint64_t value = 0;
  for (const std::uint8_t byte : bytes) value = value << 8 | byte;
  *number = static_cast<Number>(value);
  return SUCCESS;
}

std::int32_t ReadPadCode(HeaderReader &reader) {
  ImageSubheader &image = Image(reader);
  const std::uint32_t bytes = PadCodeBytes(image);
  KsFreeAndClear(image.padCode);
  if (bytes == 0) return SUCCESS;
  char *code = nullptr;
  const std::int32_t status = reader.TakeNew(&code, bytes);
  image.padCode = reinterpret_cast<std::uint8_t *>(code);
  return status;
}

std::int32_t ReadMaskHeader(HeaderReader &reader) {
  ImageSubheader &image = Image(reader);
  std::int32_t status = TakeBigEndian(reader, &image.maskDataOffset);
  if (status == SUCCESS) status = TakeBigEndian(reader, &image.blockMaskLength);
  if (status == SUCCESS) status = TakeBigEndian(reader, &image.padMaskLength);
  if (status == SUCCESS) status = TakeBigEndian(reader, &image.padCodeBits);
  return status == SUCCESS ? ReadPadCode(reader) : status;
}

std::int32_t ReadMask(HeaderReader &reader, std::uint8_t (*&mask)[4], std::uint64_t entries) {
  if (!reader.Holds(entries, 4)) return ERROR_FILE_READ;
  if (!Renew(mask, entries + 1)) return ERROR_NO_MEMORY;
  return entries == 0 ? static_cast<std::int32_t>(SUCCESS) : reader.Take(mask, entries * 4);
}

std::int32_t ReadMaskTable(HeaderReader &reader) {
  ImageSubheader &image = Image(reader);
  image.maskEntries = 0;
  KsFreeAndClear(image.blockMask);
  KsFreeAndClear(image.padMask);
  std::int32_t status = HasMaskTable(image.compression) ? ReadMaskHeader(reader) : static_cast<std::int32_t>(SUCCESS);
  // The counts are up to 9999, 9999 and 99999, or anything where the file writes a minus sign: the product is checked
  // factor by factor, so that it can't pass the file's own size.
  const std::uint64_t blocks = std::uint64_t{image.blocksPerRow} * image.blocksPerColumn;
  if (image.blockMaskLength == 0 && image.padMaskLength == 0) return status;
  if (status == SUCCESS && image.bandCount != 0 && !reader.Holds(blocks, std::uint64_t{image.bandCount} * 4)) {
    return ERROR_FILE_READ;
  }
  const std::uint64_t entries = blocks * image.bandCount;
  if (status == SUCCESS && image.blockMaskLength != 0) status = ReadMask(reader, image.blockMask, entries);
  if (status == SUCCESS && image.padMaskLength != 0) status = ReadMask(reader, image.padMask, entries);
  if (status == SUCCESS) image.maskEntries = static_cast<std::uint32_t>(entries);
  return status;
}

// ---- writing ------------------------------------------------------------------------------------------------------

const ImageSubheader &Image(const HeaderWriter &writer) {
  return writer.As<ImageSubheader>();
}

/** Writes the text that stands for a number; blanks where there is none. */
std::int32_t WriteCode(HeaderWriter &writer, std::string_view text, std::uint32_t width) {
  char field[16] = {};
  text.copy(field, sizeof field - 1);
  return writer.Text(field, width, ' ');
}

std::int32_t WritePixelValueType(HeaderWriter &writer) {
  const std::uint32_t type = Image(writer).pixelValueType;
  if (type > 1) return Refuse("Unsupported PVTYPE", NITF_UNSUPPORTED_PVTYPE);
  return WriteCode(writer, type == 0 ? "INT" : "B", 3);
}

std::int32_t WriteRepresentation(HeaderWriter &writer) {
  return WriteCode(writer, ImageCodeText(kRepresentations, Image(writer).representation), 8);
}

std::int32_t WriteJustification(HeaderWriter &writer) {
  return WriteCode(writer, Image(writer).rightJustified == 0 ? "L" : "R", 1);
}

std::int32_t WriteCoordinateSystem(HeaderWriter &writer) {
  return writer.Text(Image(writer).ICORDS, 1, ' ');
}

std::int32_t WriteComments(HeaderWriter &writer) {
  const ImageSubheader &image = Image(writer);
  const std::int32_t count = ParseNumber({image.NICOM, 1});
  for (std::int32_t comment = 0; comment < count; ++comment) {
    const bool held = comment < static_cast<std::int32_t>(image.commentsHeld);
    const std::int32_t status = writer.Text(held ? image.comments[comment] : "", 80, ' ');
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

std::int32_t WriteCompression(HeaderWriter &writer) {
  return WriteCode(writer, ImageCodeText(kCompressions, Image(writer).compression), 2);
}

std::int32_t WriteRate(HeaderWriter &writer) {
  const std::string_view text = ImageCodeText(kRates, Image(writer).rateKind);
  return WriteCode(writer, text.empty() ? "00.0" : text, 4);
}

/** One channel of a lookup table. */
std::int32_t WriteLutRow(HeaderWriter &writer, std::uint32_t entries, unsigned shift) {
  const ImageSubheader &image = Image(writer);
  for (std::uint32_t entry = 0; entry < entries; ++entry) {
    const std::uint32_t color = image.lut != nullptr && entry < image.lutCount ? image.lut[entry] : 0;
    const std::int32_t status = writer.BigEndian(color >> shift, 1);
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

/** A gray table goes out once, any other as red, green and blue. */
std::int32_t WriteBandLut(HeaderWriter &writer, std::uint32_t band) {
  const ImageSubheader &image = Image(writer);
  const std::uint32_t tables = band < image.bandsHeld ? image.bandLutCounts[band] : 0;
  std::int32_t status = writer.Number(static_cast<std::int32_t>(tables), 1);
  if (status != SUCCESS || tables == 0) return status;
  const std::uint32_t entries = image.bandLutEntries != nullptr ? image.bandLutEntries[band] : 0;
  status = writer.Number(static_cast<std::int32_t>(entries), 5);
  if (status == SUCCESS) status = WriteLutRow(writer, entries, 16);
  if (tables == 1) return status;
  if (status == SUCCESS) status = WriteLutRow(writer, entries, 8);
  return status == SUCCESS ? WriteLutRow(writer, entries, 0) : status;
}

std::int32_t WriteBand(HeaderWriter &writer, std::uint32_t band) {
  const ImageSubheader &image = Image(writer);
  const bool held = band < image.bandsHeld;
  std::int32_t status = WriteCode(writer, ImageCodeText(kBandRepresentations, BandTag(image, band)), 2);
  if (status == SUCCESS) status = writer.Text(held ? image.bandSubcategories[band] : "", 6, ' ');
  if (status == SUCCESS) status = writer.Text(held ? image.bandFilterConditions[band] : "", 1, held ? '0' : ' ');
  if (status == SUCCESS) status = writer.Text(held ? image.bandFilterCodes[band] : "", 3, ' ');
  return status == SUCCESS ? WriteBandLut(writer, band) : status;
}

std::int32_t WriteBands(HeaderWriter &writer) {
  const ImageSubheader &image = Image(writer);
  std::int32_t count = static_cast<std::int32_t>(image.bandField);
  if (count == 0 && !writer.Nitf20()) count = ParseNumber({image.XBANDS, 5});
  for (std::int32_t band = 0; band < count; ++band) {
    const std::int32_t status = WriteBand(writer, static_cast<std::uint32_t>(band));
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

std::int32_t WriteMode(HeaderWriter &writer) {
  return WriteCode(writer, ImageCodeText(kModes, Image(writer).mode), 1);
}

/** A block as wide or high as the image is written as 0 where its size has more digits than the field. */
std::int32_t WriteBlockSize(HeaderWriter &writer, std::uint32_t size, std::uint32_t imageSize) {
  const bool isWhole = size == imageSize && size > kWidestBlockField;
  return writer.Number(isWhole ? 0 : static_cast<std::int32_t>(size), 4);
}

std::int32_t WriteBlockWidth(HeaderWriter &writer) {
  return WriteBlockSize(writer, Image(writer).blockWidth, Image(writer).columns);
}

std::int32_t WriteBlockHeight(HeaderWriter &writer) {
  return WriteBlockSize(writer, Image(writer).blockHeight, Image(writer).rows);
}

/** Three characters of the factor as a decimal fraction. */
std::int32_t WriteMagnification(HeaderWriter &writer) {
  char text[512];
  FormatBounded(text, sizeof text, "%f", Image(writer).magnification);
  text[3] = '\0';
  return writer.Text(text, 4, ' ');
}

std::int32_t WriteMaskHeader(HeaderWriter &writer) {
  const ImageSubheader &image = Image(writer);
  std::int32_t status = writer.BigEndian(image.maskDataOffset, 4);
  if (status == SUCCESS) status = writer.BigEndian(image.blockMaskLength, 2);
  if (status == SUCCESS) status = writer.BigEndian(image.padMaskLength, 2);
  if (status == SUCCESS) status = writer.BigEndian(image.padCodeBits, 2);
  return status == SUCCESS ? writer.Bytes(image.padCode, PadCodeBytes(image)) : status;
}

std::int32_t WriteMaskTable(HeaderWriter &writer) {
  const ImageSubheader &image = Image(writer);
  const std::uint64_t before = writer.Written();
  const std::uint64_t bytes = std::uint64_t{image.maskEntries} * 4;
  std::int32_t status = HasMaskTable(image.compression) ? WriteMaskHeader(writer) : static_cast<std::int32_t>(SUCCESS);
  if (status == SUCCESS && image.blockMaskLength != 0) status = writer.Bytes(image.blockMask, bytes);
  if (status == SUCCESS && image.padMaskLength != 0) status = writer.Bytes(image.padMask, bytes);
  writer.Save().maskBytes = static_cast<std::uint32_t>(writer.Written() - before);
  return status;
}

using Record = ImageSubheader;

constexpr HeaderRow kRows[] = {
    TextRow(NITF_TEXT(Record, IM), 2).Default("IM").Then(CheckMarker),
    TextRow(NITF_TEXT(Record, IID1), 10).Default("Missing ID"),
    TextRow(NITF_TEXT(Record, IDATIM), 14).FillZeros().Blank(),
    TextRow(NITF_TEXT(Record, TGTID), 17).Blank(),
    TextRow(NITF_TEXT(Record, IID2), 80).Blank(),
    SecurityRow("I", offsetof(Record, security), kCheckClassification),
    TextRow(NITF_TEXT(Record, ENCRYP), 1).FillZeros().Digits(),
    TextRow(NITF_TEXT(Record, ISORCE), 42).Blank(),
    TextRow(NITF_TEXT(Record, NROWS), 8).Rendered(offsetof(Record, rows)).AllNinesUnknown(),
    TextRow(NITF_TEXT(Record, NCOLS), 8).Rendered(offsetof(Record, columns)).AllNinesUnknown(),
    TextRow(NITF_TEXT(Record, PVTYPE), 3).Blank().Then(DecodePixelValueType).Writes(WritePixelValueType),
    TextRow(NITF_TEXT(Record, IREP), 8).Blank().Then(DecodeRepresentation).Writes(WriteRepresentation),
    TextRow(NITF_TEXT(Record, ICAT), 8).Default("VIS"),
    TextRow(NITF_TEXT(Record, ABPP), 2).Rendered(offsetof(Record, actualBits)),
    TextRow(NITF_TEXT(Record, PJUST), 1).Blank().Then(DecodeJustification).Writes(WriteJustification),
    TextRow(NITF_TEXT(Record, ICORDS), 1).Blank().Writes(WriteCoordinateSystem),
    TextRow(NITF_TEXT(Record, IGEOLO), 60).FillZeros().Blank().If(HasCoordinates),
    TextRow(NITF_TEXT(Record, NICOM), 1).FillZeros().Number(offsetof(Record, commentCount)),
    GroupRow(ReadComments, WriteComments),
    TextRow(NITF_TEXT(Record, IC), 2).Blank().Then(DecodeCompression).Writes(WriteCompression),
    TextRow(NITF_TEXT(Record, COMRAT), 4).Blank().If(HasRate).Then(DecodeRate).Writes(WriteRate),
    TextRow(NITF_TEXT(Record, NBANDS), 1).Rendered(offsetof(Record, bandField)).Then(DecodeBandField),
    TextRow(NITF_TEXT(Record, XBANDS), 5)
        .FillZeros()
        .Only21()
        .Number(offsetof(Record, bandCount))
        .If(CountsInExtendedField),
    GroupRow(ReadBands, WriteBands),
    TextRow(NITF_TEXT(Record, ISYNC), 1).FillZeros().Digits(),
    TextRow(NITF_TEXT(Record, IMODE), 1).Default("P").Then(DecodeMode).Writes(WriteMode),
    TextRow(NITF_TEXT(Record, NBPR), 4).Rendered(offsetof(Record, blocksPerRow)).AllNinesUnknown(),
    TextRow(NITF_TEXT(Record, NBPC), 4).Rendered(offsetof(Record, blocksPerColumn)).AllNinesUnknown(),
    TextRow(NITF_TEXT(Record, NPPBH), 4)
        .Number(offsetof(Record, blockWidth))
        .AllNinesUnknown()
        .Then(DecodeBlockWidth)
        .Writes(WriteBlockWidth),
    TextRow(NITF_TEXT(Record, NPPBV), 4)
        .Number(offsetof(Record, blockHeight))
        .AllNinesUnknown()
        .Then(DecodeBlockHeight)
        .Writes(WriteBlockHeight),
    TextRow(NITF_TEXT(Record, NBPP), 2).Rendered(offsetof(Record, bitsPerPixel)).Then(CheckBitsPerPixel),
    TextRow(NITF_TEXT(Record, IDLVL), 3).Rendered(offsetof(Record, displayLevel)),
    TextRow(NITF_TEXT(Record, IALVL), 3).Rendered(offsetof(Record, attachmentLevel)),
    TextRow(NITF_TEXT(Record, ILOC), 10).FillZeros().Halves(offsetof(Record, locationRow)),
    TextRow(NITF_TEXT(Record, IMAG), 4).Blank().Then(DecodeMagnification).Writes(WriteMagnification),
    TextRow(NITF_TEXT(Record, UDIDL), 5).FillZeros().Digits(),
    TextRow(NITF_TEXT(Record, UDOFL), 3).FillZeros().Digits().CountedBy(offsetof(Record, UDIDL)),
    BytesRow("UDID", offsetof(Record, userData), offsetof(Record, UDIDL), 3),
    TextRow(NITF_TEXT(Record, IXSHDL), 5).FillZeros().Digits(),
    TextRow(NITF_TEXT(Record, IXSOFL), 3).FillZeros().Digits().CountedBy(offsetof(Record, IXSHDL)),
    BytesRow("IXSHD", offsetof(Record, extendedData), offsetof(Record, IXSHDL), 3, 3),
    GroupRow(ReadMaskTable, WriteMaskTable),
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
  DropBands(*record);
  record->commentsHeld = record->maskEntries = 0;
  KsFreeAndClear(record->comments);
  KsFreeAndClear(record->userData);
  KsFreeAndClear(record->extendedData);
  KsFreeAndClear(record->padCode);
  KsFreeAndClear(record->blockMask);
  KsFreeAndClear(record->padMask);
  KsFreeAndClear(record->memoryData);
}

bool RenewBands(ImageSubheader *record, std::uint32_t bands) {
  constexpr std::size_t kBytesPerBand = sizeof *record->bandRepresentation + sizeof *record->bandLutCounts +
                                        sizeof *record->bandSubcategories + sizeof *record->bandFilterConditions +
                                        sizeof *record->bandFilterCodes;
  auto *const block = static_cast<std::uint32_t *>(KsCalloc(bands, kBytesPerBand, __LINE__, __FILE__));
  if (block == nullptr) return false;
  KsFreeAndClear(record->bandRepresentation);
  record->bandsHeld = bands;
  record->bandRepresentation = block;
  record->bandLutCounts = record->bandRepresentation + bands;
  record->bandSubcategories = reinterpret_cast<char(*)[7]>(record->bandLutCounts + bands);
  record->bandFilterConditions = reinterpret_cast<char(*)[2]>(record->bandSubcategories + bands);
  record->bandFilterCodes = reinterpret_cast<char(*)[4]>(record->bandFilterConditions + bands);
  return true;
}

std::int32_t ImageSubheaderRead(ImageSubheader *record, NitfFile &file, StreamFileHeader &stream, bool replay) {
  const std::int64_t start = KsSeek(file.fileHandle, 0, KS_SEEK_CURRENT);
  HeaderReader reader(file, record);
  std::int32_t status = ReadSubheader(reader, kImageTable, file, stream, replay);
  // A replay whose own bytes are marked as unknown ends here: reading it again would give the same bytes.
  if (status != SUCCESS || replay || !reader.SawUnknown()) return status;
  status = SeekReplacementData(file, stream);
  if (status != SUCCESS) return status;
  ImageSubheaderRead(record, file, stream, true);
  KsSeek(file.fileHandle, start, KS_SEEK_START);
  return SUCCESS;
}

double ParseMagnification(std::string_view text) {
  return text.starts_with('/') ? 1.0 / ParseNumber(text.substr(1)) : ParseFraction(text);
}

bool HasMaskTable(std::uint32_t compression) {
  return compression == kNM || compression == kM0 || compression == kM1 || compression == kM3 || compression == kM4 ||
         compression == kM5;
}

std::string_view BandRepresentationText(std::uint32_t representation) {
  return ImageCodeText(kBandRepresentations, representation);
}

std::uint64_t MaskTableBytes(const ImageSubheader &image) {
  const std::uint64_t entries = std::uint64_t{image.maskEntries} * 4;
  const std::uint64_t tables = (image.blockMaskLength != 0 ? entries : 0) + (image.padMaskLength != 0 ? entries : 0);
  return HasMaskTable(image.compression) ? kMaskHeaderBytes + PadCodeBytes(image) + tables : 0;
}
