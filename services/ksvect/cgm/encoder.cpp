#include "ksvect/cgm/encoder.h"

#include "ksvect/cgm/profile.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace ksvect::cgm {
namespace {

constexpr std::size_t kWord = 2;
/** Bytes in front of an element's parameters while it grows: room for the long form of its header. */
constexpr std::size_t kLongHeader = 2 * kWord;
constexpr std::size_t kGreatestLength = 0x7FFF;
/** Of a part of a longer element: the greatest even one, so that no part but the last can want filling up. */
constexpr std::size_t kPartLength = 0x7FFE;
constexpr double kFixedOne = 65536;

/** The greatest component that a scaled direction has in each form; whole, and in none of them at an end of a range. */
constexpr double kDirectionLength[] = {32767, 1 << 30, 1 << 30, 0x1p40};

void SetWord(std::uint8_t *at, std::size_t value) {
  at[0] = static_cast<std::uint8_t>(value >> 8);
  at[1] = static_cast<std::uint8_t>(value);
}

constexpr std::uint32_t kNoCharacter = std::numeric_limits<std::uint32_t>::max();

/** The character that begins at `at`, which moves behind it. */
std::uint32_t NextCharacter(std::string_view utf8, std::size_t &at) {
  const auto first = static_cast<std::uint8_t>(utf8[at++]);
  if (first < 0x80) return first;
  const int following = std::countl_one(first) - 1;
  if (following < 1 || following > 3) return kNoCharacter;
  std::uint32_t character = first & (0x3FU >> following);
  for (int i = 0; i < following; ++i) {
    if (at == utf8.size() || (static_cast<std::uint8_t>(utf8[at]) & 0xC0) != 0x80) {
      return kNoCharacter;
    }
    character = character << 6 | (static_cast<std::uint8_t>(utf8[at++]) & 0x3F);
  }
  return character;
}

}  // namespace

std::size_t Encoder::Begin(ElementCode code) {
  Put(code.group << 12 | code.number << 5, kWord);
  Put(0, kWord);
  return data.size();
}

void Encoder::End(std::size_t parameters) {
  const std::size_t size = data.size() - parameters;
  std::uint8_t *header = data.data() + (parameters - kLongHeader);
  const unsigned code = static_cast<unsigned>(header[0] << 8 | header[1]);
  seen.beyondProfile = seen.beyondProfile || !IsInProfile({code >> 12, code >> 5 & 0x7F});
  if (size < kLongForm) {
    header[1] = static_cast<std::uint8_t>(header[1] | size);
    std::memmove(header + kWord, header + kLongHeader, size);
    data.resize(data.size() - kWord);
  } else {
    header[1] = static_cast<std::uint8_t>(header[1] | kLongForm);
    if (size <= kGreatestLength) {
      SetWord(header + kWord, size);
    } else {
      Partition(parameters, size);
    }
  }
  if (size % kWord != 0) data.push_back(0);
}

void Encoder::Partition(std::size_t parameters, std::size_t size) {
  const std::size_t parts = (size + kPartLength - 1) / kPartLength;
  data.resize(data.size() + kWord * (parts - 1));
  std::uint8_t *first = data.data() + parameters;
  std::size_t length = size - kPartLength * (parts - 1);
  std::size_t flag = 0;
  for (std::size_t part = parts; part-- > 0; length = kPartLength, flag = kMoreFollows) {
    std::uint8_t *to = first + part * (kPartLength + kWord);
    std::memmove(to, first + part * kPartLength, length);
    SetWord(to - kWord, flag | length);
  }
}

void Encoder::Drop(std::size_t parameters) {
  data.resize(parameters - kLongHeader);
}

void Encoder::Put(std::uint64_t value, unsigned bytes) {
  for (unsigned shift = 8 * bytes; shift > 0;) {
    shift -= 8;
    data.push_back(static_cast<std::uint8_t>(value >> shift));
  }
}

void Encoder::Fixed(double value) {
  Put(static_cast<std::uint32_t>(std::llround(value * kFixedOne)), 4);
}

void Encoder::Float64(double value) {
  Put(std::bit_cast<std::uint64_t>(value + 0.0), 8);  // so that there is one zero only
}

void Encoder::Integer(std::uint32_t value) {
  if (value > static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max())) return Refuse();
  seen.integer = std::max(seen.integer, static_cast<std::int32_t>(value));
  Put(value, forms.longIntegers ? 4 : 2);
}

void Encoder::Real(double value) {
  seen.encodable = seen.encodable && std::abs(value) <= kGreatestNumber;
  seen.real = std::max(seen.real, std::abs(value));
  forms.floatingReals ? Float64(value) : Fixed(value);
}

void Encoder::Vdc(double value) {
  seen.encodable = seen.encodable && std::abs(value) <= kGreatestNumber;
  const double fraction = std::abs(value - std::round(value));
  seen.whole = seen.whole && fraction == 0;
  seen.nearlyWhole = seen.nearlyWhole && fraction < 0.5 / kFixedOne;
  seen.vdc = std::max(seen.vdc, std::abs(value));
  switch (forms.vdc) {
    case VdcForm::Integer16:
      return Put(static_cast<std::uint64_t>(std::llround(value)), 2);
    case VdcForm::Integer32:
      return Put(static_cast<std::uint64_t>(std::llround(value)), 4);
    case VdcForm::Fixed32:
      return Fixed(value);
    case VdcForm::Float64:
      return Float64(value);
  }
}

void Encoder::Place(Point point) {
  Vdc(point.x);
  Vdc(point.y * ySign);
}

bool Encoder::IsExact(double value) const {
  const double size = std::abs(value);
  switch (forms.vdc) {
    case VdcForm::Integer16:
      return value == std::round(value) && size <= 0x7FFF;
    case VdcForm::Integer32:
      return value == std::round(value) && size <= 0x7FFFFFFF;
    case VdcForm::Fixed32:
      return value * kFixedOne == std::round(value * kFixedOne) && size < 0x7FFF;
    case VdcForm::Float64:
      return true;
  }
  return false;
}

void Encoder::ScaledDirection(double component, double scale) {
  const double scaled = std::round(component * scale);
  switch (forms.vdc) {
    case VdcForm::Integer16:
      return Put(static_cast<std::uint64_t>(static_cast<std::int64_t>(scaled)), 2);
    case VdcForm::Integer32:
    case VdcForm::Fixed32:
      return Put(static_cast<std::uint64_t>(static_cast<std::int64_t>(scaled)), 4);
    case VdcForm::Float64:
      return Float64(scaled);
  }
}

void Encoder::Directions(std::initializer_list<Point> vectors) {
  double greatest = 0;
  bool exact = true;
  for (const Point vector : vectors) {
    if (!std::isfinite(vector.x) || !std::isfinite(vector.y)) return Refuse();
    greatest = std::max({greatest, std::abs(vector.x), std::abs(vector.y)});
    exact = exact && IsExact(vector.x) && IsExact(vector.y);
  }
  const double asTheyAre = forms.vdc == VdcForm::Fixed32 ? kFixedOne : 1;
  const double longest = kDirectionLength[static_cast<unsigned>(forms.vdc)];
  for (const Point vector : vectors) {
    if (forms.vdc == VdcForm::Float64) {
      Float64(vector.x);
      Float64(vector.y * ySign);
    } else {
      ScaledDirection(vector.x, exact ? asTheyAre : longest / greatest);
      ScaledDirection(vector.y * ySign, exact ? asTheyAre : longest / greatest);
    }
  }
}

void Encoder::Ray(Point vector) {
  const double greatest = std::max(std::abs(vector.x), std::abs(vector.y));
  if (!std::isfinite(vector.x) || !std::isfinite(vector.y)) return Refuse();
  const double longest = kDirectionLength[static_cast<unsigned>(forms.vdc)];
  // Divided first, so that neither the smallest nor the greatest numbers leave the range of a double.
  ScaledDirection(greatest > 0 ? vector.x / greatest : 0, longest);
  ScaledDirection(greatest > 0 ? vector.y / greatest * ySign : 0, longest);
}

void Encoder::DirectColor(Color color) {
  data.push_back(static_cast<std::uint8_t>(color));
  data.push_back(static_cast<std::uint8_t>(color >> 8));
  data.push_back(static_cast<std::uint8_t>(color >> 16));
}

void Encoder::Rows(std::span<const Color> colors, std::size_t columns) {
  for (std::size_t row = 0; row < colors.size(); row += columns) {
    for (const Color color : colors.subspan(row, columns)) DirectColor(color);
    if (columns % 2 != 0) data.push_back(0);
  }
}

void Encoder::Bytes(std::string_view bytes) {
  if (bytes.size() < kLongString) {
    Put(bytes.size(), 1);
  } else {
    Put(kLongString, 1);
    for (; bytes.size() > kGreatestLength; bytes.remove_prefix(kPartLength)) {
      Put(kMoreFollows | kPartLength, kWord);
      data.insert(data.end(), bytes.begin(), bytes.begin() + kPartLength);
    }
    Put(bytes.size(), kWord);
  }
  data.insert(data.end(), bytes.begin(), bytes.end());
}

void Encoder::Text(std::string_view text) {
  characters.clear();
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t from = at;
    const std::uint32_t character = NextCharacter(text, at);
    const bool beyondLatin1 = character > 0xFF && character != kNoCharacter;
    seen.beyondAscii = seen.beyondAscii || (character > 0x7F && character <= 0xFF);
    seen.beyondLatin1 = seen.beyondLatin1 || beyondLatin1;
    if (character == kNoCharacter || (beyondLatin1 && !forms.utf8)) {
      characters.push_back('?');
    } else if (forms.utf8) {
      characters.append(text.substr(from, at - from));
    } else {
      characters.push_back(static_cast<char>(character));
    }
  }
  Bytes(characters);
}

}  // namespace ksvect::cgm
