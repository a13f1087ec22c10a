#include "field_change.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace ntf {
namespace {

/** What follows from the data and from other fields. */
constexpr std::string_view kKept[] = {"FHDR",   "FVER",   "CLEVEL",  "FL",     "HL",     "NUMI",   "NUMS",   "NUMX",
                                      "NUMT",   "NUMDES", "NUMRES",  "UDHDL",  "XHDL",   "IM",     "SY",     "TE",
                                      "NROWS",  "NCOLS",  "PVTYPE",  "IREP",   "ABPP",   "PJUST",  "ICORDS", "NICOM",
                                      "IC",     "COMRAT", "NBANDS",  "XBANDS", "IMODE",  "NBPR",   "NBPC",   "NPPBH",
                                      "NPPBV",  "NBPP",   "IMAG",    "UDIDL",  "IXSHDL", "SFMT",   "SCOLOR", "SXSHDL",
                                      "TXSHDL", "UDHOFL", "XHDLOFL", "UDOFL",  "IXSOFL", "SXSOFL", "TXSOFL"};

/** Three bytes as six hexadecimal digits: red, green, blue. */
bool StoreBackground(const FileView &file, const std::string &value) {
  const bool known = value.size() == 6 && value.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  if (!known) return false;
  file.StoreBackground(static_cast<std::uint32_t>(std::stoul(value, nullptr, 16)));
  return true;
}

}  // namespace

Outcome ChangeField(const std::string &fileName, const FileView &file, const HeaderChoice &header,
                    const std::string &name, const std::string &value) {
  const Problem refused = {fileName, name + " can't hold '" + value + "'", ERROR_INVALID_VALUE};
  if (std::find(std::begin(kKept), std::end(kKept), name) != std::end(kKept)) {
    return Problem{fileName, name + " follows from the data and can't be changed", ERROR_INVALID_VALUE};
  }
  if (!header.kind && name == "FBKGC") return StoreBackground(file, value) ? Outcome() : Outcome(refused);
  switch (file.Store(header, name, value)) {
    case FieldChange::Stored:
      return {};
    case FieldChange::NoSuchField:
      return Problem{fileName, "there is no field " + name + " here", ERROR_INVALID_VALUE};
    case FieldChange::Refused:
      break;
  }
  return refused;
}

}  // namespace ntf
