// The public record of the image subheader.
#include "access/header_info.h"
#include "access/image_setters.h"
#include "headers/imsubhdr.h"
#include "headers/mask_table.h"
#include "internal/ksclasses_.h"
#include "ksntfx.h"
#include "table/fields.h"

#include <algorithm>
#include <limits>

namespace ksntfx {

namespace {

using Info = NitfImageHeaderInfo;
using Record = ImageSubheader;

static_assert(sizeof(Info) == 420);
static_assert(offsetof(Info, IDATIM) == 16 && offsetof(Info, ISDGDT) == 118 && offsetof(Info, ENCRYP) == 174);
static_assert(offsetof(Info, NICOM) == 246 && offsetof(Info, NBANDS) == 274 && offsetof(Info, ISYNC) == 314);
static_assert(offsetof(Info, locationA) == 354 && offsetof(Info, UDID) == 378 && offsetof(Info, IXSHD) == 394);
static_assert(offsetof(Info, IMDATOFF) == 402 && offsetof(Info, TPXCDLNTH) == 410 && offsetof(Info, TPXCD) == 412);
static_assert(offsetof(Info, ISCLAS) + sizeof(SegmentSecurityInfo) == offsetof(Info, ENCRYP));

Record &Image(void *record) {
  return *static_cast<Record *>(record);
}
const Record &Image(const void *record) {
  return *static_cast<const Record *>(record);
}

// ---- comments: NICOM, and behind it the pointer to the array

constexpr std::size_t kCommentWidth = sizeof(*Record::comments) - 1;

Status GetComments(const void *record, char *info) {
  const Record &image = Image(record);
  const auto count = static_cast<std::uint32_t>(std::max(ParseNumber({image.NICOM, 1}), 0));
  KsArray<char *> texts;
  if (count != 0 && texts.Allocate(count)) {
    for (std::uint32_t i = 0; i < count; ++i) {
      const bool held = i < image.commentsHeld;
      CopyOutString(&texts[i], held ? BufferText(image.comments[i], kCommentWidth) : std::string_view());
    }
  }
  StoreInfo(info + sizeof count, texts.Release());
  return SUCCESS;
}

/** Overwrites comments that the image has, and can't add any. */
Status SetComments(void *record, const char *info) {
  const auto count = LoadInfo<std::uint32_t>(info);
  const auto *const texts = LoadInfo<const char *const *>(info + sizeof count);
  for (std::uint32_t i = 0; i < count; ++i) {
    if (i >= Image(record).commentsHeld) return ERROR_INVALID_VALUE;
    if (texts == nullptr || texts[i] == nullptr) continue;
    const Status status = SetField(Image(record).comments[i], kCommentWidth, texts[i]);
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

/** Releases an array of texts and the texts. */
void FreeTexts(char *place, std::uint32_t count) {
  auto **const texts = LoadInfo<char **>(place);
  for (std::uint32_t i = 0; texts != nullptr && i < count; ++i) KsFreeAndClear(texts[i]);
  FreeInfoBlock(place);
}

void FreeComments(char *info) {
  FreeTexts(info + sizeof(std::uint32_t), LoadInfo<std::uint32_t>(info));
}

/** The texts of the bands, which only a caller can have put there. They stand behind NBANDS and XBANDS. */
void FreeBandTexts(char *info) {
  constexpr std::size_t kArrays = offsetof(Info, IREPBAND) - offsetof(Info, NBANDS);
  for (std::size_t array = 0; array < 4; ++array) {
    FreeTexts(info + kArrays + array * sizeof(char **), LoadInfo<std::uint32_t>(info));
  }
}

// ---- the mask table's header: IMDATOFF to TPXCD

Status GetMask(const void *record, char *info) {
  constexpr std::uint32_t kMost = std::numeric_limits<std::int32_t>::max();
  const Record &image = Image(record);
  StoreInfo(info, std::min(image.maskDataOffset, kMost));
  StoreInfo(info + 4, image.blockMaskLength);
  StoreInfo(info + 6, image.padMaskLength);
  StoreInfo(info + 8, image.padCodeBits);
  KsArray<std::uint8_t> code;
  if (image.padCodeBits != 0 && code.Allocate(image.padCodeBits) && image.padCode != nullptr) {
    std::copy_n(image.padCode, std::min(PadCodeBytes(image), image.padCodeHeld), code.Get());
  }
  StoreInfo(info + 10, code.Release());
  return SUCCESS;
}

Status SetMask(void *record, const char *info) {
  Record &image = Image(record);
  image.maskDataOffset = LoadInfo<std::uint32_t>(info);
  image.blockMaskLength = LoadInfo<std::uint16_t>(info + 4);
  image.padMaskLength = LoadInfo<std::uint16_t>(info + 6);
  const auto bits = LoadInfo<std::uint16_t>(info + 8);
  const auto *const code = LoadInfo<const std::uint8_t *>(info + 10);
  image.padCodeBits = bits;
  return code == nullptr ? SUCCESS : ImageSetPadCode(&image, code);
}

void FreeMask(char *info) {
  FreeInfoBlock(info + 10);
}

#define BOTH(member) INFO_BOTH(Info, Record, member)

constexpr InfoRow kRows[] = {
    InfoText(BOTH(IM)),
    InfoText(BOTH(IID1)),
    InfoText(BOTH(TGTID)),
    InfoText(BOTH(IID2)),
    InfoGroup(offsetof(Info, ISCLAS), offsetof(Record, security), kSecurityTexts<SegmentSecurityInfo>),
    InfoText(BOTH(ISORCE)),
    InfoText(BOTH(PVTYPE), AnyRecord<ImageSetPixelValueType>::Call),
    InfoText(BOTH(IREP), AnyRecord<ImageSetRepresentation>::Call),
    InfoText(BOTH(ICAT)),
    InfoText(BOTH(PJUST), AnyRecord<ImageSetJustification>::Call),
    InfoText(BOTH(ICORDS), AnyRecord<ImageSetCoordinates>::Call),
    InfoText(BOTH(IC), AnyRecord<ImageSetCompression>::Call),
    InfoText(BOTH(COMRAT), AnyRecord<ImageSetRate>::Call),
    InfoText(BOTH(IGEOLO)),
    InfoDate(BOTH(IDATIM)),
    InfoGroup(offsetof(Info, ISCLAS), offsetof(Record, security), kSecurityDates),
    InfoNumber(BOTH(ENCRYP)),
    InfoNumber(BOTH(NROWS)).Also(offsetof(Record, rows)),
    InfoNumber(BOTH(NCOLS)).Also(offsetof(Record, columns)),
    InfoNumber(BOTH(ABPP)).Also(offsetof(Record, actualBits)),
    InfoNumber(BOTH(NICOM)),
    InfoSpecial(offsetof(Info, NICOM), GetComments, SetComments, FreeComments),
    InfoNumber(BOTH(NBANDS), AnyRecord<ImageSetBandCount>::Call),
    InfoSpecial(offsetof(Info, NBANDS), nullptr, nullptr, FreeBandTexts),
    InfoNumber(BOTH(XBANDS)),
    InfoNumber(BOTH(ISYNC)),
    InfoText(BOTH(IMODE), AnyRecord<ImageSetMode>::Call),
    InfoNumber(BOTH(NBPR)).Also(offsetof(Record, blocksPerRow)),
    InfoNumber(BOTH(NBPC)).Also(offsetof(Record, blocksPerColumn)),
    InfoNumber(BOTH(NPPBH)).Also(offsetof(Record, blockWidth)).Within(0, kWidestBlock),
    InfoNumber(BOTH(NPPBV)).Also(offsetof(Record, blockHeight)).Within(0, kWidestBlock),
    InfoNumber(BOTH(NBPP)).Also(offsetof(Record, bitsPerPixel)),
    InfoNumber(BOTH(IDLVL)).Also(offsetof(Record, displayLevel)).Within(1, kHighestLevel),
    InfoNumber(BOTH(IALVL)).Also(offsetof(Record, attachmentLevel)),
    InfoLocation(offsetof(Info, locationA), offsetof(Record, ILOC), sizeof(Record::ILOC), true,
                 AnyRecord<ImageSetLocation>::Call),
    InfoText(BOTH(IMAG), AnyRecord<ImageSetMagnification>::Call),
    InfoExtension(offsetof(Info, UDIDL), offsetof(Record, UDIDL), offsetof(Record, UDOFL), offsetof(Record, userData),
                  2),
    InfoExtension(offsetof(Info, IXSHDL), offsetof(Record, IXSHDL), offsetof(Record, IXSOFL),
                  offsetof(Record, extendedData), 0),
    InfoSpecial(offsetof(Info, IMDATOFF), GetMask, SetMask, FreeMask),
};

}  // namespace

const InfoTable kImageInfo = {kRows};

}  // namespace ksntfx
