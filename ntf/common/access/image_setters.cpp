#include "access/image_setters.h"

#include "headers/image_bands.h"
#include "headers/imsubhdr.h"
#include "headers/mask_table.h"
#include "headers/nitffile.h"
#include "internal/ksclasses_.h"
#include "table/fields.h"

#include <algorithm>
#include <cstring>

namespace ksntfx {

namespace {

/** Bytes of the fields that are there or not, by another field's value. */
constexpr std::int32_t kGeolocationBytes = 60;
constexpr std::int32_t kRateBytes = 4;

/** The most bands that XBANDS can count. */
constexpr std::uint32_t kMostBands = 99999;

/** Stores a text and the number that it begins with; neither where there is no such number or no room. */
template <std::size_t count>
Status SetCode(const ImageCode (&codes)[count], const char *text, char *field, std::uint32_t width,
               std::uint32_t *value) {
  std::uint32_t decoded = 0;
  if (!DecodeImageCode(codes, text, &decoded)) return ERROR_INVALID_VALUE;
  const Status status = SetField(field, width, text);
  if (status == SUCCESS) *value = decoded;
  return status;
}

/** Carries another length of an image's subheader into the file header. */
void ChangeLength(const ImageSubheader &image, std::int32_t bytes) {
  ChangeSubheaderLength(&image.file->header, kImageLengths, image.index, bytes);
}

/** What a file's length changes by where a field of `bytes` bytes was there and is there. */
std::int32_t Difference(bool was, bool is, std::int32_t bytes) {
  return (is ? bytes : 0) - (was ? bytes : 0);
}

}  // namespace

Status ImageSetRepresentation(ImageSubheader *record, const char *text) {
  return SetCode(kRepresentations, text, record->IREP, 8, &record->representation);
}

Status ImageSetPixelValueType(ImageSubheader *record, const char *text) {
  static constexpr ImageCode kTypes[] = {{"I", 0}, {"B", 1}};
  return SetCode(kTypes, text, record->PVTYPE, 3, &record->pixelValueType);
}

Status ImageSetJustification(ImageSubheader *record, const char *text) {
  static constexpr ImageCode kSides[] = {{"L", 0}, {"R", 1}};
  return SetCode(kSides, text, record->PJUST, 1, &record->rightJustified);
}

Status ImageSetMode(ImageSubheader *record, const char *text) {
  return SetCode(kModes, text, record->IMODE, 1, &record->mode);
}

Status ImageSetCoordinates(ImageSubheader *record, const char *text) {
  const bool had = record->ICORDS[0] != ' ';
  const Status status = SetField(record->ICORDS, 1, text);
  if (status == SUCCESS) {
    ChangeLength(*record, Difference(had, record->ICORDS[0] != ' ', kGeolocationBytes));
  }
  return status;
}

Status ImageSetCompression(ImageSubheader *record, const char *text) {
  if (std::strlen(text) != 2) return ERROR_INVALID_VALUE;
  const ImageKind *const kind = FindImageKind(text);
  if (kind == nullptr) return ERROR_INVALID_VALUE;
  ChangeLength(*record, Difference(KindOf(*record).hasRate, kind->hasRate, kRateBytes));
  record->compression = kind->compression;
  return SetField(record->IC, 2, text);
}

Status ImageSetRate(ImageSubheader *record, const char *text) {
  const std::size_t length = std::strlen(text);
  if (length >= sizeof record->COMRAT) return ERROR_INVALID_VALUE;
  if (!DecodeImageCode(kRates, text, &record->rateKind)) record->rateKind = kRateOther;
  std::memcpy(record->COMRAT, text, length + 1);
  return SUCCESS;
}

Status ImageSetMagnification(ImageSubheader *record, const char *text) {
  const Status status = SetField(record->IMAG, 4, text);
  if (status == SUCCESS) record->magnification = ParseMagnification(text);
  return status;
}

void ImageSetLocation(ImageSubheader *record, std::int32_t row, std::int32_t column) {
  record->locationRow = row;
  record->locationColumn = column;
  SetLocationField(record->ILOC, row, column);
}

Status ImageSetBandCount(ImageSubheader *record, std::uint32_t count) {
  const std::int32_t extended = ParseNumber(BufferText(record->XBANDS, 5));
  const std::uint32_t bands = std::max(count, static_cast<std::uint32_t>(std::max(extended, 0)));
  if (bands > kMostBands) return ERROR_INVALID_VALUE;
  // The lookup table stays the segment's, so the lengths of the bands' tables stay too.
  KsArray<std::uint32_t> lutEntries;
  if (record->bandLutEntries != nullptr && bands != 0) {
    if (!lutEntries.Allocate(bands)) return ERROR_NO_MEMORY;
    std::copy_n(record->bandLutEntries, std::min(bands, record->bandsHeld), lutEntries.Get());
  }
  if (!RenewBands(record, bands)) return ERROR_NO_MEMORY;
  for (std::uint32_t band = 0; band < bands; ++band) {
    record->bandFilterConditions[band][0] = 'N';
    std::memset(record->bandFilterCodes[band], ' ', 3);
  }
  KsFreeAndClear(record->bandLutEntries);
  record->bandLutEntries = lutEntries.Release();
  record->bandField = count;
  record->bandCount = bands;
  SetNumberField(record->NBANDS, 1, count);
  return SUCCESS;
}

Status ImageSetBandRepresentation(ImageSubheader *record, std::uint32_t band, const char *text) {
  if (band >= record->bandsHeld) return ERROR_INVALID_VALUE;
  return DecodeImageCode(kBandRepresentations, text, &record->bandRepresentation[band]) ? SUCCESS : ERROR_INVALID_VALUE;
}

Status ImageSetPadCode(ImageSubheader *record, const void *code) {
  const std::uint32_t bytes = PadCodeBytes(*record);
  KsArray<std::uint8_t> fresh;
  const bool made = fresh.Allocate(bytes + 1);
  if (made) std::memcpy(fresh.Get(), code, bytes);
  KsFreeAndClear(record->padCode);
  record->padCode = fresh.Release();
  record->padCodeHeld = made ? bytes : 0;
  return made ? SUCCESS : ERROR_NO_MEMORY;
}

}  // namespace ksntfx
