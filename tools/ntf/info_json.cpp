#include "info_json.h"

#include "headertable.h"
#include "printable.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace ntf {
namespace {

bool IsNumber(std::string_view text) {
  const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
  return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

Json ByteArray(std::string_view bytes) {
  Json array = Json::array();
  for (const char byte : bytes) array.push_back(static_cast<unsigned char>(byte));
  return array;
}

Json TextValue(std::string_view text) {
  return Latin1ToUtf8(Trim(text));
}

Json FieldValue(const FieldView &field) {
  if (field.content == FieldContent::Binary) return ByteArray(field.text);
  const std::string_view text = Trim(field.text);
  // No decimal field has more than 12 digits.
  if (field.content == FieldContent::Digits && IsNumber(text)) return std::stoull(std::string(text));
  return TextValue(text);
}

void AddFields(const HeaderTable &table, const void *record, bool nitf20, Json &object) {
  ListFields(table, record, nitf20, [&](const FieldView &field) { object[field.name] = FieldValue(field); });
}

Json DescribeBand(const ImageSubheader &image, std::uint32_t band) {
  Json object;
  object["IREPBAND"] = BandRepresentationText(image.bandRepresentation[band]);
  object["ISUBCAT"] = TextValue(image.bandSubcategories[band]);
  object["IFC"] = TextValue(image.bandFilterConditions[band]);
  object["IMFLT"] = TextValue(image.bandFilterCodes[band]);
  object["NLUTS"] = image.bandLutCounts[band];
  const bool hasTable = image.bandLutCounts[band] != 0 && image.bandLutEntries != nullptr;
  if (hasTable) object["NELUT"] = image.bandLutEntries[band];
  return object;
}

/** The numbers in front of the mask tables; the tables themselves are one entry a block, too long to read. */
Json DescribeMask(const ImageSubheader &image) {
  if (!HasMaskTable(image.compression)) return nullptr;
  Json object;
  object["IMDATOFF"] = image.maskDataOffset;
  object["BMRLNTH"] = image.blockMaskLength;
  object["TMRLNTH"] = image.padMaskLength;
  object["TPXCDLNTH"] = image.padCodeBits;
  if (image.padCode != nullptr) {
    object["TPXCD"] = ByteArray({reinterpret_cast<const char *>(image.padCode), PadCodeBytes(image)});
  }
  return object;
}

void AddImageGroups(const void *record, Json &object) {
  const auto &image = *static_cast<const ImageSubheader *>(record);
  Json comments = Json::array();
  for (std::uint32_t comment = 0; comment < image.commentsHeld; ++comment) {
    comments.push_back(TextValue(image.comments[comment]));
  }
  Json bands = Json::array();
  for (std::uint32_t band = 0; band < image.bandsHeld; ++band) bands.push_back(DescribeBand(image, band));
  object["ICOM"] = std::move(comments);
  object["bands"] = std::move(bands);
  object["mask"] = DescribeMask(image);
}

/** How the segments of a kind are told. */
struct SegmentListing {
  SegmentKind kind;
  const char *name;
  void (*addGroups)(const void *record, Json &object); /* for what is not in the format's table; may be null */
};

constexpr SegmentListing kListings[] = {
    {SegmentKind::Image, "images", AddImageGroups},
    {SegmentKind::Graphic, "graphics", nullptr},
    {SegmentKind::Text, "texts", nullptr},
    {SegmentKind::Label, "labels", nullptr},
    {SegmentKind::DataExtension, "dataExtensions", nullptr},
};

Json DescribeSegments(const NitfFile &file, const SegmentListing &listing) {
  Json segments = Json::array();
  const std::uint32_t count = CountSegments(&file, listing.kind);
  for (std::uint32_t index = 0; index < count; ++index) {
    Json object;
    object["index"] = index;
    object["subheaderLength"] = SubheaderLength(&file, listing.kind, index);
    object["dataLength"] = DataLength(&file, listing.kind, index);
    const void *record = FindSubheader(&file, listing.kind, index);
    if (record != nullptr) {
      AddFields(SubheaderTable(listing.kind), record, file.nitf20Layout != 0, object);
      if (listing.addGroups != nullptr) listing.addGroups(record, object);
    }
    segments.push_back(std::move(object));
  }
  return segments;
}

}  // namespace

Json DescribeHeaders(const NitfFile &file) {
  Json description;
  Json &header = description["file"];
  AddFields(kFileHeaderTable, &file.header, file.nitf20Layout != 0, header);
  for (const SegmentListing &listing : kListings) description[listing.name] = DescribeSegments(file, listing);
  return description;
}

}  // namespace ntf
