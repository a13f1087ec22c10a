#include "findings.h"

#include "fields.h"
#include "handlimg.h"
#include "headerwriter.h"
#include "samples.h"
#include "segment_choice.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

namespace ntf {
namespace {

/** What the rules know of a kind of segments. */
struct CheckedKind {
  SegmentKind kind;
  const char *marker;
};

constexpr CheckedKind kKinds[] = {
    {SegmentKind::Image, "IM"},
    {SegmentKind::Graphic, "SY"},
    {SegmentKind::Text, "TE"},
    {SegmentKind::DataExtension, "DE"},
};

/** What a compliance level allows (MIL-STD-2500C, table A-10). */
constexpr std::uint64_t kLevel3Pixels = 2048;
constexpr std::uint64_t kLevel3Bytes = 52428799;

/** A header with the places of its fields. */
class Header {
 public:
  Header(NitfFile &source, const HeaderTable &format, const void *held, std::uint64_t startsAt, std::string named)
      : table(format), record(held), start(startsAt), name(std::move(named)) {
    length = VisitFields(table, record, source,
                         [&](const std::string &field, std::uint64_t offset) { places[field] = start + offset; });
  }

  const HeaderTable &table;
  const void *const record;
  const std::uint64_t start;

  std::uint64_t Length() const { return length; }
  Finding FoundAt(const std::string &field, std::uint64_t offset, std::string words) const {
    return {name.empty() ? field : name + " " + field, offset, std::move(words)};
  }
  Finding Found(const std::string &field, std::string words) const {
    const auto place = places.find(field);
    return FoundAt(field, place == places.end() ? start : place->second, std::move(words));
  }

 private:
  std::string name;
  std::uint64_t length = 0;
  std::map<std::string, std::uint64_t> places;
};

std::string Number(std::uint64_t number) {
  return std::to_string(number);
}

class Checker {
 public:
  explicit Checker(NitfFile &source) : file(source), size(KsSeek(source.fileHandle, 0, KS_SEEK_END)) {}

  std::vector<Finding> Run();

 private:
  void CheckFileHeader();
  void CheckSegment(const CheckedKind &kind, std::uint32_t index);
  void CheckTexts(const Header &header);
  void CheckText(const Header &header, const FieldView &field);
  void CheckImage(const Header &header, std::uint32_t index);
  void CheckBlocks(const Header &header, const ImageSubheader &image);
  void CheckMask(const Header &header, const ImageSubheader &image, std::uint32_t dataLength);
  void CheckDataLength(const Header &header, const ImageSubheader &image, std::uint32_t dataLength);
  void CheckLevels();
  void Add(const Header &header, const std::string &field, std::string words) {
    findings.push_back(header.Found(field, std::move(words)));
  }

  /** A display level, and where it is told. */
  struct Level {
    std::uint32_t level;
    std::uint32_t attachment;
    Finding levelPlace;
    Finding attachmentPlace;
  };

  NitfFile &file;
  std::int64_t size;
  std::vector<Finding> findings;
  std::vector<Level> levels;
};

// ---- texts --------------------------------------------------------------------------------------------------------

bool IsBlank(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char character) { return character == ' '; });
}

/** The format's extended character set: printable ASCII, and the upper half of Latin-1. */
bool IsCharacter(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return (byte >= 0x20 && byte < 0x7F) || byte >= 0xA0;
}

/** Year, month and day, and the time of day where the text goes on. Parts that are not known are hyphens. */
bool IsDate(std::string_view text) {
  struct Part {
    std::size_t width;
    int least;
    int most;
  };
  constexpr Part kParts[] = {{4, 0, 9999}, {2, 1, 12}, {2, 1, 31}, {2, 0, 23}, {2, 0, 59}, {2, 0, 60}};
  for (const Part &part : kParts) {
    if (text.empty()) return true;
    const std::string_view digits = text.substr(0, part.width);
    text.remove_prefix(digits.size());
    if (std::all_of(digits.begin(), digits.end(), [](char character) { return character == '-'; })) continue;
    const std::int32_t value = ParseNumber(digits);
    if (!IsAllDigits(digits) || value < part.least || value > part.most) return false;
  }
  return true;
}

constexpr std::string_view kDateTimes[] = {"FDT", "IDATIM", "TXTDT"};
/** The ends of the names of the dates among the security fields. */
constexpr std::string_view kSecurityDates[] = {"SDCDT", "SDGDT", "SSRDT"};

bool IsSecurityDate(const std::string &name) {
  return std::any_of(std::begin(kSecurityDates), std::end(kSecurityDates),
                     [&](std::string_view end) { return name.ends_with(end); });
}

bool IsLocation(const std::string &name) {
  return name.ends_with("LOC") || name.starts_with("SBND");
}

bool IsLocationText(std::string_view text) {
  for (const std::string_view half : {text.substr(0, kLocationHalf), text.substr(kLocationHalf)}) {
    const std::string_view digits = half.starts_with('-') ? half.substr(1) : half;
    if (!IsAllDigits(digits)) return false;
  }
  return true;
}

void Checker::CheckText(const Header &header, const FieldView &field) {
  if (field.content == FieldContent::Binary) return;
  if (std::find(std::begin(kDateTimes), std::end(kDateTimes), field.name) != std::end(kDateTimes)) {
    if (!IsDate(field.text)) Add(header, field.name, "is no date: '" + std::string(field.text) + "'");
  } else if (IsSecurityDate(field.name)) {
    if (!IsBlank(field.text) && !IsDate(field.text)) {
      Add(header, field.name, "is no date: '" + std::string(field.text) + "'");
    }
  } else if (IsLocation(field.name)) {
    if (!IsLocationText(field.text)) Add(header, field.name, "is no location: '" + std::string(field.text) + "'");
  } else if (field.content == FieldContent::Digits) {
    if (!IsAllDigits(field.text)) {
      Add(header, field.name, "is no number: '" + std::string(field.text) + "'");
    }
  } else if (!std::all_of(field.text.begin(), field.text.end(), IsCharacter)) {
    Add(header, field.name, "has characters outside the format's set");
  }
}

/** Data of other forms than text have no character set. */
bool HasOwnForm(const std::string &name) {
  constexpr std::string_view kOwn[] = {"UDHD", "XHD", "UDID", "IXSHD", "SXSHD", "TXSHD", "DESSHF"};
  return std::find(std::begin(kOwn), std::end(kOwn), name) != std::end(kOwn);
}

void Checker::CheckTexts(const Header &header) {
  ListFields(header.table, header.record, file.nitf20Layout != 0, [&](const FieldView &field) {
    if (!HasOwnForm(field.name)) CheckText(header, field);
  });
}

// ---- lengths ------------------------------------------------------------------------------------------------------

std::uint64_t SegmentSum(const NitfFile &file) {
  std::uint64_t sum = file.header.headerLength;
  for (const CheckedKind &kind : kKinds) {
    const std::uint32_t count = CountSegments(&file, kind.kind);
    for (std::uint32_t index = 0; index < count; ++index) {
      sum += std::uint64_t{SubheaderLength(&file, kind.kind, index)} + DataLength(&file, kind.kind, index);
    }
  }
  for (std::uint32_t index = 0; index < file.reservedExtensionCount; ++index) {
    sum += std::uint64_t{file.header.reservedSubheaderLengths[index]} + file.header.reservedDataLengths[index];
  }
  return sum;
}

void Checker::CheckFileHeader() {
  const Header header(file, kFileHeaderTable, &file.header, 0, {});
  const auto actual = static_cast<std::uint64_t>(size);
  const auto told = static_cast<std::uint64_t>(ParseLongNumber(file.header.FL));
  if (told != actual) Add(header, "FL", "is " + Number(told) + ", the file has " + Number(actual) + " bytes");
  if (file.header.headerLength != header.Length()) {
    Add(header, "HL",
        "is " + Number(file.header.headerLength) + ", the header has " + Number(header.Length()) + " bytes");
  }
  const std::uint64_t sum = SegmentSum(file);
  if (sum != actual) {
    Add(header, "NUMI", "the lengths of header and segments come to " + Number(sum) + " bytes of " + Number(actual));
  }
  if (actual > kLevel3Bytes) Add(header, "CLEVEL", "the file is longer than level 03 allows");
  CheckTexts(header);
}

void Checker::CheckSegment(const CheckedKind &kind, std::uint32_t index) {
  const void *const record = FindSubheader(&file, kind.kind, index);
  if (record == nullptr) return;
  const std::uint32_t told = SubheaderLength(&file, kind.kind, index);
  const auto start = static_cast<std::uint64_t>(SeekSegmentData(&file, kind.kind, index)) - told;
  const Header header(file, SubheaderTable(kind.kind), record, start,
                      KindWord(kind.kind) + (" " + std::to_string(index)));
  const bool isImage = kind.kind == SegmentKind::Image;
  // The mask table belongs to the data.
  const std::uint64_t length = header.Length() - (isImage ? MaskTableBytes(*FindImage(&file, index)) : 0);
  if (told != length) {
    Add(header, kind.marker, "the subheader has " + Number(length) + " bytes, the file header says " + Number(told));
  }
  CheckTexts(header);
  if (isImage) CheckImage(header, index);
  if (kind.kind == SegmentKind::Graphic) {
    const GraphicSubheader &graphic = *FindGraphic(&file, index);
    levels.push_back(
        {graphic.displayLevel, graphic.attachmentLevel, header.Found("SDLVL", {}), header.Found("SALVL", {})});
  }
}

// ---- images -------------------------------------------------------------------------------------------------------

void Checker::CheckImage(const Header &header, std::uint32_t index) {
  const ImageSubheader &image = *FindImage(&file, index);
  const std::uint32_t dataLength = DataLength(&file, SegmentKind::Image, index);
  levels.push_back({image.displayLevel, image.attachmentLevel, header.Found("IDLVL", {}), header.Found("IALVL", {})});
  if (image.rows > kLevel3Pixels) Add(header, "NROWS", Number(image.rows) + " rows are more than level 03 allows");
  if (image.columns > kLevel3Pixels) {
    Add(header, "NCOLS", Number(image.columns) + " columns are more than level 03 allows");
  }
  CheckBlocks(header, image);
  CheckMask(header, image, dataLength);
  if (image.compression == kNC) CheckDataLength(header, image, dataLength);
}

void Checker::CheckBlocks(const Header &header, const ImageSubheader &image) {
  struct Axis {
    const char *field;
    std::uint32_t blocks;
    std::uint32_t block;
    std::uint32_t size;
  };
  const Axis axes[] = {{"NBPR", image.blocksPerRow, BlockWidth(image), image.columns},
                       {"NBPC", image.blocksPerColumn, BlockHeight(image), image.rows}};
  for (const Axis &axis : axes) {
    const std::uint64_t needed = axis.block == 0 ? 0 : (std::uint64_t{axis.size} + axis.block - 1) / axis.block;
    if (axis.blocks == needed) continue;
    Add(header, axis.field,
        Number(axis.blocks) + " blocks of " + Number(axis.block) + " pixels, " + Number(axis.size) + " pixels need " +
            Number(needed));
  }
  if (image.actualBits > image.bitsPerPixel) {
    Add(header, "ABPP", Number(image.actualBits) + " bits of " + Number(image.bitsPerPixel));
  }
}

void Checker::CheckMask(const Header &header, const ImageSubheader &image, std::uint32_t dataLength) {
  if (!HasMaskTable(image.compression)) return;
  constexpr std::uint32_t kRecordBytes = 4;
  const auto add = [&](const char *field, std::uint64_t offset, std::string words) {
    findings.push_back(header.FoundAt(
        field, header.start + SubheaderLength(&file, SegmentKind::Image, image.index) + offset, std::move(words)));
  };
  if (image.blockMaskLength != 0 && image.blockMaskLength != kRecordBytes) {
    add("BMRLNTH", 4, "is " + Number(image.blockMaskLength));
  }
  if (image.padMaskLength != 0 && image.padMaskLength != kRecordBytes) {
    add("TMRLNTH", 6, "is " + Number(image.padMaskLength));
  }
  // Only bands that are stored one after the other have records of their own.
  const std::uint64_t records =
      std::uint64_t{image.blocksPerRow} * image.blocksPerColumn * (image.mode == kBandSequential ? image.bandCount : 1);
  const std::uint64_t tables = (image.blockMaskLength != 0 ? 1 : 0) + (image.padMaskLength != 0 ? 1 : 0);
  const std::uint64_t bytes = kMaskHeaderBytes + PadCodeBytes(image) + tables * records * kRecordBytes;
  if (image.maskDataOffset != bytes) {
    add("IMDATOFF", 0, "is " + Number(image.maskDataOffset) + ", the mask table has " + Number(bytes) + " bytes");
  }
  const std::uint64_t data = dataLength > image.maskDataOffset ? dataLength - image.maskDataOffset : 0;
  for (std::uint64_t block = 0;
       image.blockMask != nullptr && block < std::min<std::uint64_t>(records, image.maskEntries); ++block) {
    const std::uint32_t offset = BigEndian32(image.blockMask[block]);
    if (offset == kNotRecorded || offset < data) continue;
    add("BMR", kMaskHeaderBytes + PadCodeBytes(image) + block * kRecordBytes,
        "block " + Number(block) + " lies behind the data, at " + Number(offset) + " of " + Number(data));
    break;
  }
}

void Checker::CheckDataLength(const Header &header, const ImageSubheader &image, std::uint32_t dataLength) {
  const std::uint64_t pixels = PaddedWidth(image) * PaddedHeight(image);
  const std::uint64_t bits = pixels * image.bandCount * image.bitsPerPixel;
  const std::uint64_t most = (bits + 7) / 8 + PaddedHeight(image) * image.blocksPerRow * image.bandCount;
  if (dataLength >= (bits + 7) / 8 && dataLength <= most) return;
  Add(header, "IC", "uncompressed data of " + Number((bits + 7) / 8) + " bytes, LI is " + Number(dataLength));
}

// ---- levels -------------------------------------------------------------------------------------------------------

void Checker::CheckLevels() {
  std::map<std::uint32_t, int> used;
  for (const Level &level : levels) {
    if (++used[level.level] == 2) {
      findings.push_back(
          {level.levelPlace.field, level.levelPlace.offset, "display level " + Number(level.level) + " is used twice"});
    }
  }
  for (const Level &level : levels) {
    if (level.attachment == 0 || used.contains(level.attachment)) continue;
    findings.push_back({level.attachmentPlace.field, level.attachmentPlace.offset,
                        "attached to level " + Number(level.attachment) + ", which nothing has"});
  }
}

std::vector<Finding> Checker::Run() {
  CheckFileHeader();
  for (const CheckedKind &kind : kKinds) {
    const std::uint32_t count = CountSegments(&file, kind.kind);
    for (std::uint32_t index = 0; index < count; ++index) CheckSegment(kind, index);
  }
  CheckLevels();
  std::stable_sort(findings.begin(), findings.end(),
                   [](const Finding &one, const Finding &other) { return one.offset < other.offset; });
  return std::move(findings);
}

}  // namespace

std::vector<Finding> FindFaults(NitfFile &file) {
  return Checker(file).Run();
}

std::vector<Finding> FindWrongMarkers(NitfFile &file) {
  std::vector<Finding> findings;
  if (file.header.valid == 0) return findings;
  for (const CheckedKind &kind : kKinds) {
    const std::uint32_t count = CountSegments(&file, kind.kind);
    for (std::uint32_t index = 0; index < count; ++index) {
      std::array<char, 2> marker = {};
      const std::int64_t data = SeekSegmentData(&file, kind.kind, index);
      const std::int64_t start =
          KsSeek(file.fileHandle, data - SubheaderLength(&file, kind.kind, index), KS_SEEK_START);
      const bool whole = KsRead(file.fileHandle, marker.data(), marker.size()) == marker.size();
      if (whole && std::string_view(marker.data(), marker.size()) == kind.marker) continue;
      findings.push_back({KindWord(kind.kind) + (" " + std::to_string(index)) + " " + kind.marker,
                          static_cast<std::uint64_t>(std::max<std::int64_t>(start, 0)),
                          whole ? "the segment doesn't begin with its mark" : "the file ends before the segment"});
    }
  }
  return findings;
}

}  // namespace ntf
