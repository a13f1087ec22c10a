#include "field_rules.h"

#include "digits.h"
#include "printable.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace ntf {
namespace {

bool IsBlank(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char character) { return character == ' '; });
}

/** Year, month and day, optionally followed by the time of day. Unknown parts are hyphens. */
bool IsDate(std::string_view text) {
  struct Part {
    std::size_t width;
    std::uint64_t least;
    std::uint64_t most;
  };
  constexpr Part kParts[] = {{4, 0, 9999}, {2, 1, 12}, {2, 1, 31}, {2, 0, 23}, {2, 0, 59}, {2, 0, 60}};
  for (const Part &part : kParts) {
    if (text.empty()) return true;
    const std::string_view digits = text.substr(0, part.width);
    text.remove_prefix(digits.size());
    if (std::all_of(digits.begin(), digits.end(), [](char character) { return character == '-'; })) continue;
    if (!IsAllDigits(digits) || NumberOf(digits) < part.least || NumberOf(digits) > part.most) return false;
  }
  return true;
}

/** Day, time, Z, month and year, such as 06165926ZAPR93 (MIL-STD-2500A). */
bool IsOldDate(std::string_view text) {
  constexpr std::string_view kMonths = "JAN FEB MAR APR MAY JUN JUL AUG SEP OCT NOV DEC";
  constexpr std::size_t kTime = 8;
  if (text.size() != kTime + 6 || text[kTime] != 'Z') return false;
  const std::string_view month = text.substr(kTime + 1, 3);
  return IsAllDigits(text.substr(0, kTime)) && IsAllDigits(text.substr(kTime + 4)) &&
         month.find(' ') == std::string_view::npos && kMonths.find(month) != std::string_view::npos;
}

constexpr std::string_view kDateTimes[] = {"FDT", "IDATIM", "TXTDT"};
/** The ends of the names of the dates among the security fields. */
constexpr std::string_view kSecurityDates[] = {"SDCDT", "SDGDT", "SSRDT"};

bool IsSecurityDate(const std::string &name) {
  return std::any_of(std::begin(kSecurityDates), std::end(kSecurityDates),
                     [&](std::string_view end) { return name.ends_with(end); });
}

bool IsLocationText(std::string_view text) {
  for (const std::string_view half : {text.substr(0, kLocationHalf), text.substr(kLocationHalf)}) {
    const std::string_view digits = half.starts_with('-') ? half.substr(1) : half;
    if (!IsAllDigits(digits)) return false;
  }
  return true;
}

bool IsDateField(const std::string &name) {
  return std::find(std::begin(kDateTimes), std::end(kDateTimes), name) != std::end(kDateTimes);
}

/** The classifications of the file and of segments: FSCLAS, ISCLAS and others. */
bool IsClassification(const std::string &name) {
  return name.size() == 6 && name.ends_with("SCLAS");
}

std::string NotA(const char *what, std::string_view text) {
  return std::string("is not a ") + what + ": '" + std::string(text) + "'";
}

}  // namespace

bool IsLocation(const std::string &name) {
  return name.ends_with("LOC") || name.starts_with("SBND");
}

std::optional<std::string> FaultOf(const Field &field, bool isNitf20) {
  if (field.content == FieldContent::Binary) return std::nullopt;
  const bool mayBeBlank = IsSecurityDate(field.name);
  if (IsDateField(field.name) || mayBeBlank) {
    const bool isDate = (mayBeBlank && IsBlank(field.text)) || (isNitf20 ? IsOldDate(field.text) : IsDate(field.text));
    return isDate ? std::nullopt : std::optional(NotA("date", field.text));
  }
  if (IsLocation(field.name)) {
    return IsLocationText(field.text) ? std::nullopt : std::optional(NotA("location", field.text));
  }
  if (field.content == FieldContent::Digits) {
    return IsAllDigits(field.text) ? std::nullopt : std::optional(NotA("number", field.text));
  }
  if (IsClassification(field.name) && std::string_view("TSCRU").find(field.text) == std::string_view::npos) {
    return "is '" + std::string(field.text) + "', not one of T, S, C, R, U";
  }
  const auto strange = std::find_if_not(field.text.begin(), field.text.end(), IsHeaderCharacter);
  if (strange == field.text.end()) return std::nullopt;
  char words[64];
  std::snprintf(words, sizeof words, "has the byte 0x%02X, which is no character of the format",
                static_cast<unsigned>(*strange & 0xFF));
  return words;
}

}  // namespace ntf
