#include "table/fields.h"

#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>

namespace ksntfx {

namespace {

/** The date of a segment that is appended to a file without one. */
constexpr std::string_view kDateForUndatedFile = "50020530010101";

enum DatePartIndex { kCentury, kYear, kMonth, kDay, kHour, kMinute, kSecond };

bool IsWhiteSpace(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

std::string_view WithoutLeadingSpace(std::string_view text) {
  while (!text.empty() && IsWhiteSpace(text.front())) text.remove_prefix(1);
  return text;
}

DateParts SplitDateTime(std::string_view date) {
  DateParts parts{};
  for (std::size_t part = 0; part < parts.size(); ++part) {
    for (std::size_t digit = 0; digit < 2; ++digit) parts[part][digit] = date[2 * part + digit];
  }
  return parts;
}

void SetLocationHalf(char *half, std::int32_t value) {
  char rendered[kLocationHalf + 1];
  FormatBounded(rendered, sizeof rendered, "%d", value);
  std::string_view digits = rendered;
  if (digits.starts_with('-')) digits.remove_prefix(1);
  std::memset(half, '0', kLocationHalf);
  std::memcpy(half + kLocationHalf - digits.size(), digits.data(), digits.size());
  if (value < 0) half[0] = '-';
}

bool WriteFill(KsHandle out, char fill, std::uint32_t count) {
  for (std::uint32_t written = 0; written < count; ++written) {
    if (KsWrite(out, &fill, 1) != 1) return false;
  }
  return true;
}

}  // namespace

int FormatBounded(char *buffer, std::size_t size, const char *format, ...) {
  if (buffer == nullptr || size == 0) return -1;
  buffer[0] = '\0';
  if (format == nullptr) return -1;
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(buffer, size, format, arguments);
  va_end(arguments);
  if (length >= 0 && static_cast<std::size_t>(length) < size) return length;
  buffer[0] = '\0';
  return -1;
}

int FormatFraction(char *buffer, std::size_t size, double value, int decimals) {
  buffer[0] = '\0';
  const std::to_chars_result written = std::to_chars(buffer, buffer + size, value, std::chars_format::fixed, decimals);
  if (written.ec != std::errc() || written.ptr == buffer + size) {
    buffer[0] = '\0';
    return -1;
  }
  *written.ptr = '\0';
  return static_cast<int>(written.ptr - buffer);
}

std::int64_t ParseLongNumber(std::string_view text) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / 10 - 1;
  text = WithoutLeadingSpace(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  std::int64_t value = 0;
  for (const char digit : text) {
    if (digit < '0' || digit > '9') break;
    value = std::min(value * 10 + (digit - '0'), kMost);
  }
  return negative ? -value : value;
}

std::int32_t ParseAnyNumber(std::string_view text) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(ParseLongNumber(text), Limits::min(), Limits::max()));
}

double ParseFraction(std::string_view text) {
  text = WithoutLeadingSpace(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

Status SetField(char *target, std::uint32_t width, const char *text) {
  if (target == nullptr || text == nullptr) return ERROR_INVALID_VALUE;
  const std::size_t length = std::strlen(text);
  if (length > width) return ERROR_INVALID_VALUE;
  std::memset(target, ' ', width);
  target[width] = '\0';
  std::memcpy(target, text, length);
  return SUCCESS;
}

void SetNumberField(char *target, std::uint32_t width, std::uint32_t value) {
  std::array<char, 12> digits{};
  const std::size_t room = std::min<std::size_t>(digits.size(), width + std::size_t{1});
  const int length = FormatBounded(digits.data(), room, "%d", static_cast<std::int32_t>(value));
  std::memset(target, '0', width);
  target[width] = '\0';
  if (length > 0) std::memcpy(target + width - length, digits.data(), static_cast<std::size_t>(length));
}

void SetLocationField(char *target, std::int32_t row, std::int32_t column) {
  SetLocationHalf(target, row);
  SetLocationHalf(target + kLocationHalf, column);
  target[2 * kLocationHalf] = '\0';
}

Status WriteField(const void *, KsHandle out, const char *text, std::uint32_t width, const char *fill) {
  const auto length = static_cast<std::uint32_t>(strnlen(text, width));
  const bool textFirst = std::string_view(fill) == " ";
  if (!textFirst && !WriteFill(out, fill[0], width - length)) return ERROR_FILE_WRITE;
  if (length != 0 && KsWrite(out, text, length) != length) return ERROR_FILE_WRITE;
  if (textFirst && !WriteFill(out, ' ', width - length)) return ERROR_FILE_WRITE;
  return SUCCESS;
}

void CopyOutString(char **target, std::string_view text) {
  auto *copy = static_cast<char *>(KsCalloc(text.size() + 1, 1, __LINE__, __FILE__));
  if (copy != nullptr && !text.empty()) std::memcpy(copy, text.data(), text.size());
  *target = copy;
}

void FormatDateTime(char *target, const DateParts &p) {
  FormatBounded(target, 15, "%c%c%c%c%c%c%c%c%c%c%c%c%c%c", p[0][0], p[0][1], p[1][0], p[1][1], p[2][0], p[2][1],
                p[3][0], p[3][1], p[4][0], p[4][1], p[5][0], p[5][1], p[6][0], p[6][1]);
}

DateParts EarlierDate(const char *date, bool secondsToo) {
  if (date[0] == '\0') return SplitDateTime(kDateForUndatedFile);
  DateParts parts = SplitDateTime(std::string_view(date, 14));
  for (int part = secondsToo ? kSecond : kMinute; part >= kCentury; --part) {
    DatePart &digits = parts[static_cast<std::size_t>(part)];
    const std::int32_t value = ParseNumber(digits.data());
    if (value <= 1) continue;
    SetNumberField(digits.data(), 2, static_cast<std::uint32_t>(value - 1));
    break;
  }
  return parts;
}

}  // namespace ksntfx
