#include "info_json.h"

#include "digits.h"
#include "printable.h"

#include <optional>
#include <string>
#include <string_view>

namespace ntf {
namespace {

Json ByteArray(std::string_view bytes) {
  Json array = Json::array();
  for (const char byte : bytes) array.push_back(static_cast<unsigned char>(byte));
  return array;
}

Json TextValue(std::string_view text) {
  return Latin1ToUtf8(Trim(text));
}

Json FieldValue(const Field &field) {
  if (field.content == FieldContent::Binary) return ByteArray(field.text);
  const std::string_view text = Trim(field.text);
  // No decimal field has more than 12 digits.
  if (field.content == FieldContent::Digits && !text.empty() && IsAllDigits(text)) return NumberOf(text);
  return TextValue(text);
}

void AddFields(const FileView &file, const HeaderChoice &header, Json &object) {
  file.ListFields(header, [&](const Field &field) { object[field.name] = FieldValue(field); });
}

Json DescribeBand(const ImageBand &band) {
  Json object;
  object["IREPBAND"] = band.representation;
  object["ISUBCAT"] = TextValue(band.subcategory);
  object["IFC"] = TextValue(band.filterCondition);
  object["IMFLT"] = TextValue(band.filterCode);
  object["NLUTS"] = band.tables;
  if (band.tableEntries) object["NELUT"] = *band.tableEntries;
  return object;
}

/** The fields before the mask tables. The tables have an entry for each block, too many to list. */
Json DescribeMask(const std::optional<ImageMask> &mask) {
  if (!mask) return nullptr;
  Json object;
  object["IMDATOFF"] = mask->dataOffset;
  object["BMRLNTH"] = mask->blockRecordLength;
  object["TMRLNTH"] = mask->padRecordLength;
  object["TPXCDLNTH"] = mask->padCodeBits;
  if (mask->padCode) object["TPXCD"] = ByteArray(*mask->padCode);
  return object;
}

void AddImageGroups(const FileView &file, std::uint32_t index, Json &object) {
  Json comments = Json::array();
  for (const std::string_view comment : file.ImageComments(index)) comments.push_back(TextValue(comment));
  Json bands = Json::array();
  for (const ImageBand &band : file.ImageBands(index)) bands.push_back(DescribeBand(band));
  object["ICOM"] = std::move(comments);
  object["bands"] = std::move(bands);
  object["mask"] = DescribeMask(file.Image(index).mask);
}

/** The segments of a kind in the description. */
struct SegmentListing {
  SegmentKind kind;
  const char *name;
  void (*addGroups)(const FileView &file, std::uint32_t index,
                    Json &object); /* fields outside the table; may be null */
};

constexpr SegmentListing kListings[] = {
    {SegmentKind::Image, "images", AddImageGroups},
    {SegmentKind::Graphic, "graphics", nullptr},
    {SegmentKind::Text, "texts", nullptr},
    {SegmentKind::Label, "labels", nullptr},
    {SegmentKind::DataExtension, "dataExtensions", nullptr},
};

Json DescribeSegments(const FileView &file, const SegmentListing &listing) {
  Json segments = Json::array();
  const std::uint32_t count = file.Count(listing.kind);
  for (std::uint32_t index = 0; index < count; ++index) {
    const SegmentPlace place = file.Place(listing.kind, index);
    Json object;
    object["index"] = index;
    object["subheaderLength"] = place.subheaderLength;
    object["dataLength"] = place.dataLength;
    if (file.Has(listing.kind, index)) {
      AddFields(file, {listing.kind, index}, object);
      if (listing.addGroups != nullptr) listing.addGroups(file, index, object);
    }
    segments.push_back(std::move(object));
  }
  return segments;
}

}  // namespace

Json DescribeHeaders(const FileView &file) {
  Json description;
  AddFields(file, {}, description["file"]);
  for (const SegmentListing &listing : kListings) description[listing.name] = DescribeSegments(file, listing);
  return description;
}

bool IsDrawn(const Json &description) {
  return !description["images"].empty() || !description["graphics"].empty() || !description["labels"].empty();
}

std::string TextOf(const Json &json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace ntf
