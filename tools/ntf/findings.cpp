#include "findings.h"

#include "digits.h"
#include "field_rules.h"
#include "segment_choice.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace ntf {
namespace {

/** A kind of segments, and the marker that each of them starts with. */
struct CheckedKind {
  SegmentKind kind;
  const char *marker;
};

constexpr CheckedKind kKinds[] = {
    {SegmentKind::Image, "IM"}, {SegmentKind::Graphic, "SY"},       {SegmentKind::Label, "LA"},
    {SegmentKind::Text, "TE"},  {SegmentKind::DataExtension, "DE"},
};

/** What a compliance level allows (MIL-STD-2500C, table A-10). */
struct LevelBounds {
  std::string_view name;
  std::uint64_t pixels; /* rows, and columns, of an image */
  std::uint64_t bytes;  /* of the file */
};

constexpr LevelBounds kLevels[] = {
    {"03", 2048, 52428799}, {"05", 8192, 1073741823}, {"06", 65536, 2147483647}, {"07", 99999999, 10737418239}};

/** The bounds of the file's level; none of a level without bounds, and of NITF 02.00, whose levels are others. */
LevelBounds BoundsOf(const FileView &file) {
  constexpr LevelBounds kUnbounded = {"", UINT64_MAX, UINT64_MAX};
  if (file.Numbers().isNitf20) return kUnbounded;
  const std::string name = file.FieldText({}, "CLEVEL");
  const auto *const bounds =
      std::find_if(std::begin(kLevels), std::end(kLevels), [&](const LevelBounds &one) { return one.name == name; });
  return bounds == std::end(kLevels) ? kUnbounded : *bounds;
}

/** A header with the offsets of its fields. */
class Header {
 public:
  Header(const FileView &file, const HeaderChoice &chosen, std::uint64_t startsAt, std::string named)
      : choice(chosen), start(startsAt), name(std::move(named)), layout(file.Layout(chosen)) {}

  const HeaderChoice choice;
  const std::uint64_t start;

  std::uint64_t Length() const { return layout.length; }
  Finding FoundAt(const std::string &field, std::uint64_t offset, std::string words) const {
    return {name.empty() ? field : name + " " + field, offset, std::move(words)};
  }
  Finding Found(const std::string &field, std::string words) const {
    const auto place = layout.offsets.find(field);
    return FoundAt(field, start + (place == layout.offsets.end() ? 0 : place->second), std::move(words));
  }

 private:
  std::string name;
  HeaderLayout layout;
};

std::string Number(std::uint64_t number) {
  return std::to_string(number);
}

class Checker {
 public:
  Checker(const FileView &source, const std::vector<HeaderChoice> &cutSegments)
      : file(source), unread(cutSegments), size(source.SourceBytes()), bounds(BoundsOf(source)) {}

  std::vector<Finding> Run();

 private:
  void CheckFileHeader();
  void CheckSegment(const CheckedKind &kind, std::uint32_t index);
  void CheckTexts(const Header &header);
  void CheckText(const Header &header, const Field &field);
  void CheckImage(const Header &header, std::uint32_t index);
  void CheckBlocks(const Header &header, const ImageNumbers &image);
  void CheckRate(const Header &header);
  void CheckDrawing(const Header &header, std::uint32_t index);
  void CheckMask(const Header &header, const ImageNumbers &image);
  void CheckDataLength(const Header &header, const ImageNumbers &image);
  void CheckLevels();
  void Add(const Header &header, const std::string &field, std::string words) {
    findings.push_back(header.Found(field, std::move(words)));
  }

  /** A display level, and where it is stored. */
  struct DisplayPlace {
    std::uint32_t level;
    std::uint32_t attachment;
    Finding levelPlace;
    Finding attachmentPlace;
  };

  FileView file;
  const std::vector<HeaderChoice> &unread;
  std::uint64_t size;
  LevelBounds bounds;
  std::vector<Finding> findings;
  std::vector<DisplayPlace> levels;
};

// ---- texts --------------------------------------------------------------------------------------------------------

void Checker::CheckText(const Header &header, const Field &field) {
  if (const std::optional<std::string> fault = FaultOf(field, file.Numbers().isNitf20)) Add(header, field.name, *fault);
}

/** Fields whose data isn't text. */
bool HasOwnForm(const std::string &name) {
  constexpr std::string_view kOwn[] = {"UDHD", "XHD", "UDID", "IXSHD", "SXSHD", "TXSHD", "DESSHF"};
  return std::find(std::begin(kOwn), std::end(kOwn), name) != std::end(kOwn);
}

void Checker::CheckTexts(const Header &header) {
  file.ListFields(header.choice, [&](const Field &field) {
    if (!HasOwnForm(field.name)) CheckText(header, field);
  });
}

// ---- lengths ------------------------------------------------------------------------------------------------------

std::uint64_t SegmentSum(const FileView &file) {
  const FileNumbers numbers = file.Numbers();
  std::uint64_t sum = numbers.headerLength + numbers.reservedExtensionSum;
  for (const CheckedKind &kind : kKinds) {
    const std::uint32_t count = file.Count(kind.kind);
    for (std::uint32_t index = 0; index < count; ++index) {
      const SegmentPlace place = file.Place(kind.kind, index);
      sum += std::uint64_t{place.subheaderLength} + place.dataLength;
    }
  }
  return sum;
}

void Checker::CheckFileHeader() {
  const Header header(file, {}, 0, {});
  const FileNumbers numbers = file.Numbers();
  if (numbers.fileLength != size) {
    Add(header, "FL", "is " + Number(numbers.fileLength) + ", but the file has " + Number(size) + " bytes");
  }
  if (numbers.headerLength != header.Length()) {
    Add(header, "HL",
        "is " + Number(numbers.headerLength) + ", but the header has " + Number(header.Length()) + " bytes");
  }
  const std::uint64_t sum = SegmentSum(file);
  if (sum != size) {
    Add(header, "NUMI",
        "the lengths of header and segments add up to " + Number(sum) + " bytes, but the file has " + Number(size));
  }
  if (size > bounds.bytes) {
    Add(header, "CLEVEL", "the file is longer than compliance level " + std::string(bounds.name) + " allows");
  }
  CheckTexts(header);
}

void Checker::CheckSegment(const CheckedKind &kind, std::uint32_t index) {
  const bool isUnread = std::any_of(unread.begin(), unread.end(), [&](const HeaderChoice &cut) {
    return cut.kind == kind.kind && cut.index == index;
  });
  if (isUnread || !file.Has(kind.kind, index)) return;
  const SegmentPlace place = file.Place(kind.kind, index);
  const Header header(file, {kind.kind, index}, place.subheader, KindWord(kind.kind) + (" " + std::to_string(index)));
  if (place.subheaderLength != header.Length()) {
    Add(header, kind.marker,
        "the subheader has " + Number(header.Length()) + " bytes, but the file header says " +
            Number(place.subheaderLength));
  }
  CheckTexts(header);
  const bool isImage = kind.kind == SegmentKind::Image;
  if (isImage) CheckImage(header, index);
  if (!isImage && kind.kind != SegmentKind::Graphic) return;
  if (kind.kind == SegmentKind::Graphic) CheckDrawing(header, index);
  const DisplayLevel shown = file.LevelOf(kind.kind, index);
  const std::string prefix = isImage ? "I" : "S";
  levels.push_back(
      {shown.level, shown.attachment, header.Found(prefix + "DLVL", {}), header.Found(prefix + "ALVL", {})});
}

// ---- images -------------------------------------------------------------------------------------------------------

void Checker::CheckImage(const Header &header, std::uint32_t index) {
  const ImageNumbers image = file.Image(index);
  const std::string allowed = " are more than compliance level " + std::string(bounds.name) + " allows";
  if (image.rows > bounds.pixels) Add(header, "NROWS", Number(image.rows) + " rows" + allowed);
  if (image.columns > bounds.pixels) Add(header, "NCOLS", Number(image.columns) + " columns" + allowed);
  CheckBlocks(header, image);
  CheckRate(header);
  CheckMask(header, image);
  if (!image.compressed) CheckDataLength(header, image);
}

void Checker::CheckBlocks(const Header &header, const ImageNumbers &image) {
  struct Axis {
    const char *field;
    std::uint32_t blocks;
    std::uint32_t block;
    std::uint32_t size;
  };
  const Axis axes[] = {{"NBPR", image.blocksPerRow, image.blockWidth, image.columns},
                       {"NBPC", image.blocksPerColumn, image.blockHeight, image.rows}};
  for (const Axis &axis : axes) {
    const std::uint64_t needed = axis.block == 0 ? 0 : (std::uint64_t{axis.size} + axis.block - 1) / axis.block;
    if (axis.blocks == needed) continue;
    Add(header, axis.field,
        Number(axis.blocks) + " blocks of " + Number(axis.block) + " pixels, but " + Number(axis.size) +
            " pixels need " + Number(needed));
  }
  if (image.actualBits > image.bitsPerPixel) {
    Add(header, "ABPP", Number(image.actualBits) + " bits of " + Number(image.bitsPerPixel));
  }
}

/** COMRAT of JPEG 2000: N or V and three digits, or bits per pixel as four digits. */
void Checker::CheckRate(const Header &header) {
  const std::string code = file.FieldText(header.choice, "IC");
  if (code != "C8" && code != "M8") return;
  const std::string rate = file.FieldText(header.choice, "COMRAT");
  const std::string_view digits = std::string_view(rate).substr(rate.starts_with('N') || rate.starts_with('V') ? 1 : 0);
  if (IsAllDigits(digits)) return;
  Add(header, "COMRAT", "is '" + rate + "', not Nnnn, Vnnn or nnnn, as IC " + code + " requires");
}

void Checker::CheckMask(const Header &header, const ImageNumbers &image) {
  if (!image.mask) return;
  const ImageMask &mask = *image.mask;
  const SegmentPlace place = file.Place(SegmentKind::Image, header.choice.index);
  const auto add = [&](const char *field, std::uint64_t offset, std::string words) {
    findings.push_back(header.FoundAt(field, place.data + offset, std::move(words)));
  };
  if (mask.blockRecordLength != 0 && mask.blockRecordLength != kMaskRecordBytes) {
    add("BMRLNTH", 4, "is " + Number(mask.blockRecordLength));
  }
  if (mask.padRecordLength != 0 && mask.padRecordLength != kMaskRecordBytes) {
    add("TMRLNTH", 6, "is " + Number(mask.padRecordLength));
  }
  // Only bands that are stored one after the other have separate records.
  const std::uint64_t records =
      std::uint64_t{image.blocksPerRow} * image.blocksPerColumn * (image.bandSequential ? image.bands : 1);
  const std::uint64_t tables = (mask.blockRecordLength != 0 ? 1 : 0) + (mask.padRecordLength != 0 ? 1 : 0);
  const std::uint64_t bytes = kMaskHeaderBytes + mask.padCodeBytes + tables * records * kMaskRecordBytes;
  // Of quantised images, the tables of the codes are in front of the offset too.
  const bool isQuantised = file.FieldText(header.choice, "IC") == "M4";
  if (isQuantised ? mask.dataOffset < bytes : mask.dataOffset != bytes) {
    add("IMDATOFF", 0, "is " + Number(mask.dataOffset) + ", but the mask table has " + Number(bytes) + " bytes");
  }
  const std::uint64_t data = place.dataLength > mask.dataOffset ? place.dataLength - mask.dataOffset : 0;
  const std::vector<std::uint32_t> offsets = file.BlockOffsets(header.choice.index);
  for (std::uint64_t block = 0; block < std::min<std::uint64_t>(records, offsets.size()); ++block) {
    if (offsets[block] == kBlockNotRecorded || offsets[block] < data) continue;
    add("BMR", kMaskHeaderBytes + mask.padCodeBytes + block * kMaskRecordBytes,
        "block " + Number(block) + " is beyond the data, at " + Number(offsets[block]) + " of " + Number(data));
    break;
  }
}

void Checker::CheckDataLength(const Header &header, const ImageNumbers &image) {
  const std::uint64_t dataLength = file.Place(SegmentKind::Image, header.choice.index).dataLength;
  const std::uint64_t paddedRows = std::uint64_t{image.blocksPerColumn} * image.blockHeight;
  const std::uint64_t pixels = std::uint64_t{image.blocksPerRow} * image.blockWidth * paddedRows;
  const std::uint64_t bits = pixels * image.bands * image.bitsPerPixel;
  const std::uint64_t most = (bits + 7) / 8 + paddedRows * image.blocksPerRow * image.bands;
  if (dataLength >= (bits + 7) / 8 && dataLength <= most) return;
  Add(header, "IC",
      "the uncompressed data needs " + Number((bits + 7) / 8) + " bytes, but LI is " + Number(dataLength));
}

// ---- drawings -----------------------------------------------------------------------------------------------------

/** Elements with unusable parameters, which are skipped when the drawing is read. */
void Checker::CheckDrawing(const Header &header, std::uint32_t index) {
  std::string data;
  if (file.FieldText(header.choice, "SFMT") != "C") return;
  if (file.ReadData(SegmentKind::Graphic, index, data) != SUCCESS || data.empty()) return;
  struct Found {
    Checker *checker;
    const Header *header;
    std::uint64_t start;
  } found = {this, &header, file.Place(SegmentKind::Graphic, index).data};
  const auto report = [](const KsVectorSkipped *skipped, void *userData) {
    const auto &[checker, subheader, start] = *static_cast<const Found *>(userData);
    const std::string element = "CGM element " + Number(skipped->elementClass) + "." + Number(skipped->element);
    checker->findings.push_back(
        subheader->FoundAt("data", start + skipped->offset, element + " is skipped: " + skipped->reason));
  };
  static_cast<void>(KsVectorFindSkipped(data.data(), data.size(), report, &found));
}

// ---- levels -------------------------------------------------------------------------------------------------------

void Checker::CheckLevels() {
  std::map<std::uint32_t, int> used;
  for (const DisplayPlace &level : levels) {
    if (level.level == 0) {
      findings.push_back({level.levelPlace.field, level.levelPlace.offset, "is 0, but display levels start at 1"});
    }
    if (++used[level.level] == 2) {
      findings.push_back(
          {level.levelPlace.field, level.levelPlace.offset, "display level " + Number(level.level) + " is used twice"});
    }
  }
  for (const DisplayPlace &level : levels) {
    if (level.attachment != 0 && level.attachment == level.level) {
      findings.push_back({level.attachmentPlace.field, level.attachmentPlace.offset,
                          "is attached to its own level " + Number(level.level)});
    }
    if (level.attachment == 0 || used.contains(level.attachment)) continue;
    findings.push_back({level.attachmentPlace.field, level.attachmentPlace.offset,
                        "is attached to level " + Number(level.attachment) + ", which no segment has"});
  }
}

std::vector<Finding> Checker::Run() {
  CheckFileHeader();
  for (const CheckedKind &kind : kKinds) {
    const std::uint32_t count = file.Count(kind.kind);
    for (std::uint32_t index = 0; index < count; ++index) CheckSegment(kind, index);
  }
  CheckLevels();
  std::stable_sort(findings.begin(), findings.end(),
                   [](const Finding &one, const Finding &other) { return one.offset < other.offset; });
  return std::move(findings);
}

}  // namespace

std::vector<Finding> FindFaults(const FileView &file, const std::vector<HeaderChoice> &unread) {
  return Checker(file, unread).Run();
}

}  // namespace ntf
