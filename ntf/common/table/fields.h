// The fixed-width text fields of all headers: how a number becomes text, how a short text fills its field, what a date
// looks like. A field in memory is a buffer of its width plus one byte for a NUL; a field on file has no terminator.
#pragma once

#include "internal/status.h"
#include "kskernel.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace ksntfx {

/** Characters of each of the two numbers of a location: row and column (ILOC, SLOC, SBND1, SBND2). */
constexpr std::size_t kLocationHalf = 5;

/** One two-character part of a date, with room for the NUL of SetNumberField. */
using DatePart = std::array<char, 3>;

/** Century, year, month, day, hour, minute, second. */
using DateParts = std::array<DatePart, 7>;

/**
 * Formats like the C library into `buffer`, never past `size` bytes with the NUL. The characters written, or -1 with an
 * empty buffer where the text doesn't fit. Fractions are for FormatFraction: the C library writes them as the user's
 * locale does.
 */
[[gnu::format(printf, 3, 4)]] int FormatBounded(char *buffer, std::size_t size, const char *format, ...);

/** The same for a number with `decimals` digits behind a point, whatever the locale. */
int FormatFraction(char *buffer, std::size_t size, double value, int decimals);

/** ParseNumber for what isn't all digits, or longer than 32 bits can hold. */
std::int32_t ParseAnyNumber(std::string_view text);

/**
 * The decimal number at the front of a text: white space is skipped, a sign taken, digits run up to the first other
 * character. No digit gives 0, and a value beyond 32 bits stays at its limit. There is no error.
 */
[[gnu::always_inline]] inline std::int32_t ParseNumber(std::string_view text) {
  constexpr std::size_t kAlwaysFit = 9;
  if (text.size() > kAlwaysFit) return ParseAnyNumber(text);
  std::uint32_t value = 0;
  std::uint32_t others = 0;  // most fields are digits and nothing else, so a look at each for all is quickest
  for (const char character : text) {
    const std::uint32_t digit = static_cast<std::uint32_t>(character) - '0';
    others |= digit > 9 ? 1U : 0U;
    value = value * 10 + digit;
  }
  return others == 0 ? static_cast<std::int32_t>(value) : ParseAnyNumber(text);
}

/** The same for the lengths of files; 17 digits and more stay at a limit. */
std::int64_t ParseLongNumber(std::string_view text);

/** The same for a fraction, as in IMAG; 0 where there is none. */
double ParseFraction(std::string_view text);

/**
 * Stores a text at the front of a field of `width` bytes plus NUL, spaces behind it. SUCCESS, or ERROR_INVALID_VALUE
 * with the field as it was: null target, text longer than the field.
 */
Status SetField(char *target, std::uint32_t width, const char *text);

/**
 * Stores a number, taken as signed, at the back of a field, zeros in front. One with more digits than the field leaves
 * it all zeros.
 */
void SetNumberField(char *target, std::uint32_t width, std::uint32_t value);

/**
 * Stores a location in a field of 10 characters, five each for row and column, a minus sign in the first place of its
 * half. A number of more characters has its digits at 0.
 */
void SetLocationField(char *target, std::int32_t row, std::int32_t column);

/**
 * Writes a field at its exact width. With the fill " " the text stands at the front and spaces follow; with any other
 * fill its first character goes in front and the text stands at the back. A longer text is cut to the width. The first
 * argument has no effect. SUCCESS or ERROR_FILE_WRITE.
 */
Status WriteField(const void *, KsHandle out, const char *text, std::uint32_t width, const char *fill);

/** Stores a new copy of `text` from KsCalloc in `*target`, or null without memory. The caller frees it with KsFree. */
void CopyOutString(char **target, std::string_view text);

/** Whether nothing but decimal digits is in a text. */
inline bool IsAllDigits(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char character) { return character >= '0' && character <= '9'; });
}

/** The text in a buffer, up to its NUL or to the end of the buffer. */
inline std::string_view BufferText(const char *buffer, std::size_t capacity) {
  return {buffer, strnlen(buffer, capacity)};
}

/** Joins the seven parts of a date into `target`, 15 bytes. */
void FormatDateTime(char *target, const DateParts &parts);

/**
 * The date that is written into a segment appended to a file dated `date` (14 characters): one part of it goes down by
 * one, the first of second (with `secondsToo`), minute, hour, day, month, year, century that is above 1. An empty date
 * gives a fixed one.
 */
DateParts EarlierDate(const char *date, bool secondsToo);

}  // namespace ksntfx
