#include "field_change.h"

#include "field_rules.h"
#include "printable.h"
#include "segment_choice.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

namespace ntf {
namespace {

/** Fields that depend on the data or on other fields. */
constexpr std::string_view kKept[] = {"FHDR",   "FVER",   "CLEVEL",  "FL",     "HL",     "NUMI",   "NUMS",   "NUMX",
                                      "NUMT",   "NUMDES", "NUMRES",  "UDHDL",  "XHDL",   "IM",     "SY",     "TE",
                                      "NROWS",  "NCOLS",  "PVTYPE",  "IREP",   "ABPP",   "PJUST",  "ICORDS", "NICOM",
                                      "IC",     "COMRAT", "NBANDS",  "XBANDS", "IMODE",  "NBPR",   "NBPC",   "NPPBH",
                                      "NPPBV",  "NBPP",   "IMAG",    "UDIDL",  "IXSHDL", "SFMT",   "SCOLOR", "SXSHDL",
                                      "TXSHDL", "UDHOFL", "XHDLOFL", "UDOFL",  "IXSOFL", "SXSOFL", "TXSOFL"};

/** Red, green and blue as six hexadecimal digits. */
bool StoreBackground(const FileView &file, const std::string &value) {
  const bool known = value.size() == 6 && value.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  if (!known) return false;
  std::string color;
  for (std::size_t at = 0; at < value.size(); at += 2) {
    color += static_cast<char>(std::stoul(value.substr(at, 2), nullptr, 16));
  }
  return file.Store({}, "FBKGC", color) == FieldChange::Stored;
}

std::string NoSuchField(const HeaderChoice &header, const std::string &name) {
  if (!header.kind) return "the file header has no field " + name + "; --image, --graphic or --text choose a subheader";
  return KindWord(*header.kind) + (" " + std::to_string(header.index)) + " has no field " + name;
}

/** Display levels start at 1. */
bool IsLevelZero(const std::string &name, std::string_view text) {
  return name.ends_with("DLVL") && text.find_first_not_of('0') == std::string_view::npos;
}

/** What a value is not that a field refuses. */
std::string WhatFits(const FileView &file, const HeaderChoice &header, const std::string &name) {
  std::string words;
  file.ListFields(header, [&](const Field &field) {
    if (field.name != name) return;
    const std::string width = std::to_string(field.text.size());
    if (IsLocation(name)) {
      words = "it is not ROW,COLUMN, from -9999 to 99999 each";
    } else if (field.content == FieldContent::Digits) {
      words = "it is not a number of up to " + width + " digits";
    } else {
      words = "it has more than " + width + " characters";
    }
  });
  return words;
}

/** A field that holds a value may still not allow it. */
Outcome CheckStored(const std::string &fileName, const FileView &file, const HeaderChoice &header,
                    const std::string &name) {
  std::optional<std::string> fault;
  file.ListFields(header, [&](const Field &field) {
    if (field.name != name) return;
    fault = FaultOf(field, file.Numbers().isNitf20);
    if (IsLevelZero(name, field.text)) fault = "is 0, but display levels start at 1";
  });
  if (!fault) return {};
  return Problem{fileName, name + " " + Latin1ToUtf8(*fault), ERROR_INVALID_VALUE, true};
}

}  // namespace

Outcome ChangeField(const std::string &fileName, const FileView &file, const HeaderChoice &header,
                    const std::string &name, const std::string &value) {
  const auto refused = [&](const std::string &why) {
    return Problem{fileName, name + " can't hold '" + value + "': " + why, ERROR_INVALID_VALUE, true};
  };
  if (const std::optional<std::string> strange = StrangeCharacter(value)) {
    return refused("header fields can't have " + *strange);
  }
  const std::optional<std::string> text = Utf8ToLatin1(value);
  if (std::find(std::begin(kKept), std::end(kKept), name) != std::end(kKept)) {
    return Problem{fileName, name + " depends on the data and can't be changed", ERROR_INVALID_VALUE, true};
  }
  if (!header.kind && name == "FBKGC") {
    return StoreBackground(file, value) ? Outcome() : Outcome(refused("it is not RRGGBB, in hexadecimal digits"));
  }
  switch (file.Store(header, name, *text)) {
    case FieldChange::Stored:
      return CheckStored(fileName, file, header, name);
    case FieldChange::NoSuchField:
      return Problem{fileName, NoSuchField(header, name), ERROR_INVALID_VALUE, true};
    case FieldChange::Refused:
      break;
  }
  return refused(WhatFits(file, header, name));
}

Outcome CheckAttachment(const std::string &fileName, const FileView &file, const HeaderChoice &header,
                        const std::string &changedField) {
  const bool isDisplayed = header.kind == SegmentKind::Image || header.kind == SegmentKind::Graphic;
  if (!isDisplayed || !changedField.ends_with("LVL")) return {};
  const DisplayLevel place = file.LevelOf(*header.kind, header.index);
  if (place.attachment == 0 || place.attachment != place.level) return {};
  return Problem{
      fileName, changedField + " attaches " + NameIn(header, "to its own display level " + std::to_string(place.level)),
      ERROR_INVALID_VALUE, true};
}

}  // namespace ntf
