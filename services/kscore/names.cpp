#include "kscore/names.h"

namespace kscore {
namespace {

constexpr char32_t kNotACharacter = 0xFFFFFFFF;
constexpr char32_t kFirstBeyondOneUnit = 0x10000;
constexpr char32_t kLastCharacter = 0x10FFFF;

bool IsHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}
/** A byte of a name that is not UTF-8. */
bool IsEscapedByte(char32_t unit) {
  return unit >= 0xDC80 && unit <= 0xDCFF;
}
bool IsSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit <= 0xDFFF;
}

/** Removes one character from the front of a UTF-16 text and returns it. */
char32_t NextOfWide(const char16_t *&text) {
  const char32_t unit = *text++;
  if (!IsSurrogate(unit)) return unit;
  if (!IsHighSurrogate(unit) || !IsLowSurrogate(*text)) return kNotACharacter;
  const char32_t low = *text++;
  return kFirstBeyondOneUnit + ((unit - 0xD800) << 10) + (low - 0xDC00);
}

/** How a lead byte of UTF-8 begins a character, and the least character that may be written in that length. */
struct LeadByte {
  unsigned char mask;
  unsigned char value;
  int following;
  char32_t least;
};

constexpr LeadByte kLeadBytes[] = {
    {0x80, 0x00, 0, 0}, {0xE0, 0xC0, 1, 0x80}, {0xF0, 0xE0, 2, 0x800}, {0xF8, 0xF0, 3, kFirstBeyondOneUnit}};

/** Removes one character from the front of a UTF-8 text and returns it. Overlong forms and surrogates are no
 * characters. */
char32_t NextOfNarrow(const char *&text) {
  const auto first = static_cast<unsigned char>(*text++);
  for (const LeadByte &lead : kLeadBytes) {
    if ((first & lead.mask) != lead.value) continue;
    char32_t character = first & static_cast<unsigned char>(~lead.mask);
    for (int i = 0; i < lead.following; ++i) {
      const auto next = static_cast<unsigned char>(*text);
      if ((next & 0xC0) != 0x80) return kNotACharacter;
      character = (character << 6) | (next & 0x3F);
      ++text;
    }
    const bool valid = character >= lead.least && character <= kLastCharacter && !IsSurrogate(character);
    return valid ? character : kNotACharacter;
  }
  return kNotACharacter;
}

/** Writes a character as UTF-8 and returns the place behind it. */
char *PutNarrow(char *target, char32_t character) {
  int following = 0;
  while (following < 3 && character >= kLeadBytes[following + 1].least) ++following;
  *target++ = static_cast<char>(kLeadBytes[following].value | (character >> (6 * following)));
  while (following-- > 0) *target++ = static_cast<char>(0x80 | ((character >> (6 * following)) & 0x3F));
  return target;
}

/** Writes a character as UTF-16 and returns the place behind it. */
char16_t *PutWide(char16_t *target, char32_t character) {
  if (character < kFirstBeyondOneUnit) {
    *target++ = static_cast<char16_t>(character);
    return target;
  }
  *target++ = static_cast<char16_t>(0xD800 + ((character - kFirstBeyondOneUnit) >> 10));
  *target++ = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
  return target;
}

template <class Unit>
std::uint64_t LengthOf(const Unit *text) {
  std::uint64_t length = 0;
  while (text[length] != 0) ++length;
  return length;
}

}  // namespace

NarrowName NarrowFromWide(const char16_t *name) {
  constexpr std::uint64_t kMostBytesPerUnit = 3;
  NarrowName narrow(LengthOf(name) * kMostBytesPerUnit + 1);
  if (!narrow) return {};
  char *end = narrow.Get();
  while (*name != 0) {
    if (IsEscapedByte(*name)) {
      *end++ = static_cast<char>(*name++ & 0xFF);
      continue;
    }
    const char32_t character = NextOfWide(name);
    if (character == kNotACharacter) return {};
    end = PutNarrow(end, character);
  }
  *end = 0;
  return narrow;
}

}  // namespace kscore

char16_t *KsToWide(const char *name) {
  if (name == nullptr) return nullptr;
  kscore::Block<char16_t, KS_MEMORY_BLOCK> wide(kscore::LengthOf(name) + 1);
  if (!wide) return nullptr;
  char16_t *end = wide.Get();
  while (*name != 0) {
    const char32_t character = kscore::NextOfNarrow(name);
    if (character == kscore::kNotACharacter) return nullptr;
    end = kscore::PutWide(end, character);
  }
  *end = 0;
  return wide.Release();
}

void KsToWideFree(char16_t *name) {
  kscore::Release(KS_MEMORY_BLOCK, name);
}
