#include "headers/image_bands.h"

#include "internal/ksclasses_.h"
#include "table/fields.h"
#include "table/header_reader.h"
#include "table/header_writer.h"

#include <algorithm>
#include <utility>

namespace ksntfx {

namespace {

/** A band group that is being read. It takes the place of a record's once it is whole. */
class NewBands {
 public:
  explicit NewBands(HeaderReader &source) : reader(source) {}
  NewBands(const NewBands &) = delete;
  NewBands &operator=(const NewBands &) = delete;
  ~NewBands() { FreeBands(&bands); }

  Status Read(std::uint32_t count) {
    constexpr std::uint32_t kLeastBytesPerBand = 2 + 6 + 1 + 3 + 1;
    if (count == 0) return SUCCESS;
    if (!reader.Holds(count, kLeastBytesPerBand)) return ERROR_FILE_READ;
    if (!RenewBands(&bands, count)) return ERROR_NO_MEMORY;
    for (std::uint32_t band = 0; band < count; ++band) {
      const Status status = ReadBand(band);
      if (status != SUCCESS) return status;
    }
    return SUCCESS;
  }

  void SwapWith(ImageSubheader &image) {
    std::swap(image.bandsHeld, bands.bandsHeld);
    std::swap(image.bandRepresentation, bands.bandRepresentation);
    std::swap(image.bandSubcategories, bands.bandSubcategories);
    std::swap(image.bandFilterConditions, bands.bandFilterConditions);
    std::swap(image.bandFilterCodes, bands.bandFilterCodes);
    std::swap(image.bandLutCounts, bands.bandLutCounts);
    std::swap(image.bandLutEntries, bands.bandLutEntries);
    std::swap(image.lut, bands.lut);
    std::swap(image.lutCount, bands.lutCount);
  }

 private:
  Status ReadBand(std::uint32_t band) {
    char representation[2];
    Status status = reader.Take(representation, 2);
    if (status != SUCCESS) return status;
    DecodeImageCode(kBandRepresentations, {representation, 2}, &bands.bandRepresentation[band]);
    status = reader.Take(bands.bandSubcategories[band], 6);
    if (status == SUCCESS) status = reader.Take(bands.bandFilterConditions[band], 1);
    if (status == SUCCESS) status = reader.Take(bands.bandFilterCodes[band], 3);
    return status == SUCCESS ? ReadBandLut(band) : status;
  }

  Status ReadBandLut(std::uint32_t band) {
    Status status = reader.TakeNumber(1, false, &bands.bandLutCounts[band]);
    if (status != SUCCESS || bands.bandLutCounts[band] == 0) return status;
    if (bands.bandLutEntries == nullptr) {
      KsArray<std::uint32_t> entries;
      if (!entries.Allocate(bands.bandsHeld)) return ERROR_NO_MEMORY;
      bands.bandLutEntries = entries.Release();
    }
    status = reader.TakeNumber(5, false, &bands.bandLutEntries[band]);
    if (status != SUCCESS || bands.bandLutEntries[band] == 0) return status;
    const std::uint32_t tables = bands.bandLutCounts[band];
    const bool countsAsStored = reader.Notes() != nullptr;
    const std::uint32_t channels = tables == 1 || (countsAsStored && tables == 2) ? 1 : 3;
    status = ReadLut(channels, bands.bandLutEntries[band]);
    const bool hasMore = countsAsStored && tables > channels;
    return status == SUCCESS && hasMore ? SkipLuts(tables - channels, bands.bandLutEntries[band]) : status;
  }

  /** Tables beyond those that make a color: the low bytes of a gray table of 16 bits, for one. */
  Status SkipLuts(std::uint32_t tables, std::uint32_t entries) {
    char *skipped = nullptr;
    const Status status = reader.TakeNew(&skipped, std::uint64_t{tables} * entries);
    KsFreeAndClear(skipped);
    return status;
  }

  /** One table is gray; three are red, green and blue. The last band's table is kept. */
  Status ReadLut(std::uint32_t tables, std::uint32_t entries) {
    if (!reader.Holds(tables == 1 ? 1 : 3, entries)) return ERROR_FILE_READ;
    KsArray<std::uint32_t> lut;
    KsArray<std::uint8_t> row;
    if (!lut.Allocate(entries) || !row.Allocate(entries)) return ERROR_NO_MEMORY;
    for (const std::uint32_t channels : {tables == 1 ? 0x010101U : 0x010000U, 0x000100U, 0x000001U}) {
      const Status status = reader.Take(row.Get(), entries);
      if (status != SUCCESS) return status;
      for (std::uint32_t entry = 0; entry < entries; ++entry) lut[entry] |= row[entry] * channels;
      if (tables == 1) break;
    }
    KsFreeAndClear(bands.lut);
    bands.lut = lut.Release();
    bands.lutCount = entries;
    return SUCCESS;
  }

  HeaderReader &reader;
  ImageSubheader bands{};
};

// ---- writing ------------------------------------------------------------------------------------------------------

const ImageSubheader &Image(const HeaderWriter &writer) {
  return writer.As<ImageSubheader>();
}

/** One channel of a lookup table. */
Status WriteLutRow(HeaderWriter &writer, std::uint32_t entries, unsigned shift) {
  const ImageSubheader &image = Image(writer);
  for (std::uint32_t entry = 0; entry < entries; ++entry) {
    const std::uint32_t color = image.lut != nullptr && entry < image.lutCount ? image.lut[entry] : 0;
    const Status status = writer.BigEndian(color >> shift, 1);
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

/** A gray table goes out once, any other as red, green and blue. */
Status WriteBandLut(HeaderWriter &writer, std::uint32_t band) {
  const ImageSubheader &image = Image(writer);
  const std::uint32_t tables = band < image.bandsHeld ? image.bandLutCounts[band] : 0;
  Status status = writer.Number(static_cast<std::int32_t>(tables), 1);
  if (status != SUCCESS || tables == 0) return status;
  const std::uint32_t entries = image.bandLutEntries != nullptr ? image.bandLutEntries[band] : 0;
  status = writer.Number(static_cast<std::int32_t>(entries), 5);
  if (status == SUCCESS) status = WriteLutRow(writer, entries, 16);
  if (tables == 1) return status;
  if (status == SUCCESS) status = WriteLutRow(writer, entries, 8);
  return status == SUCCESS ? WriteLutRow(writer, entries, 0) : status;
}

Status WriteRepresentation(HeaderWriter &writer, std::uint32_t representation) {
  char text[3] = {};
  ImageCodeText(kBandRepresentations, representation).copy(text, 2);
  return writer.Text(text, 2, ' ');
}

Status WriteBand(HeaderWriter &writer, std::uint32_t band) {
  const ImageSubheader &image = Image(writer);
  const bool held = band < image.bandsHeld;
  Status status = WriteRepresentation(writer, BandTag(image, band));
  if (status == SUCCESS) status = writer.Text(held ? image.bandSubcategories[band] : "", 6, ' ');
  if (status == SUCCESS) status = writer.Text(held ? image.bandFilterConditions[band] : "", 1, held ? '0' : ' ');
  if (status == SUCCESS) status = writer.Text(held ? image.bandFilterCodes[band] : "", 3, ' ');
  return status == SUCCESS ? WriteBandLut(writer, band) : status;
}

}  // namespace

Status WriteBands(HeaderWriter &writer) {
  const ImageSubheader &image = Image(writer);
  std::int32_t count = static_cast<std::int32_t>(image.bandField);
  if (count == 0 && !writer.Nitf20()) count = ParseNumber({image.XBANDS, 5});
  for (std::int32_t band = 0; band < count; ++band) {
    const Status status = WriteBand(writer, static_cast<std::uint32_t>(band));
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

Status ReadBands(HeaderReader &reader) {
  auto &image = reader.As<ImageSubheader>();
  NewBands bands(reader);
  const Status status = bands.Read(image.bandCount);
  if (status == SUCCESS) bands.SwapWith(image);
  return status;
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

void FreeBands(ImageSubheader *record) {
  record->bandsHeld = record->lutCount = 0;
  KsFreeAndClear(record->lut);
  KsFreeAndClear(record->bandRepresentation);
  record->bandSubcategories = nullptr;
  record->bandFilterConditions = nullptr;
  record->bandFilterCodes = nullptr;
  record->bandLutCounts = nullptr;
  KsFreeAndClear(record->bandLutEntries);
}

}  // namespace ksntfx
