#include "ksvect/cgm/values.h"

#include "ksvect/cgm/elements.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace ksvect::cgm {
namespace {

std::uint32_t Component(std::uint32_t value, std::uint32_t least, std::uint32_t greatest) {
  if (greatest <= least || value <= least) return 0;
  if (value >= greatest) return 255;
  const std::uint64_t range = greatest - least;
  return static_cast<std::uint32_t>((std::uint64_t{value - least} * 255 + range / 2) / range);
}

}  // namespace

Color ColorOf(const Components &components, const ColorExtent &extent, ColorModel model) {
  Components full = {};
  for (unsigned i = 0; i < ComponentsOf(model); ++i) {
    full[i] = Component(components[i], extent.least[i], extent.greatest[i]);
  }
  // Inks take light away, and black takes it from all three.
  if (model == ColorModel::Cmyk) {
    for (unsigned i = 0; i < 3; ++i) full[i] = ((255 - full[i]) * (255 - full[3]) + 127) / 255;
  }
  return full[0] | full[1] << 8 | full[2] << 16;
}

ColorExtent FullExtent(unsigned bits) {
  const auto greatest = static_cast<std::uint32_t>((std::uint64_t{1} << bits) - 1);
  return {{}, {greatest, greatest, greatest, greatest}};
}

bool Parameters::Has(std::size_t bytes) {
  if (Good() && data.size() - position < bytes) Fail(SkipReason::TooShort);
  return Good();
}

std::uint32_t Parameters::Unsigned(unsigned bytes) {
  if (!Has(bytes)) return 0;
  std::uint32_t value = 0;
  for (unsigned i = 0; i < bytes; ++i) value = value << 8 | data[position++];
  return value;
}

std::int32_t Parameters::Signed(unsigned bytes) {
  const unsigned unused = 32 - 8 * bytes;
  return static_cast<std::int32_t>(Unsigned(bytes) << unused) >> unused;
}

double Parameters::RealOf(RealForm form) {
  double value = 0;
  switch (form) {
    case RealForm::Float32:
      value = std::bit_cast<float>(Unsigned(4));
      break;
    case RealForm::Float64: {
      const std::uint64_t high = Unsigned(4);
      value = std::bit_cast<double>(high << 32 | Unsigned(4));
      break;
    }
    case RealForm::Fixed32:
      value = Signed(2);
      value += Unsigned(2) / 65536.0;
      break;
    case RealForm::Fixed64:
      value = Signed(4);
      value += Unsigned(4) / 4294967296.0;
      break;
  }
  if (!(std::fabs(value) <= kGreatestNumber)) Fail(SkipReason::BadValue);
  return Good() ? value : 0;
}

Components Parameters::ColorComponents() {
  Components components = {};
  for (unsigned i = 0; i < ComponentsOf(coding.colorModel); ++i) components[i] = Unsigned(coding.colorBytes);
  return components;
}

ColorValue Parameters::AnyColor() {
  return {coding.directColor, coding.directColor ? DirectColor() : ColorIndex()};
}

Point Parameters::Point() {
  const double x = Vdc();
  return {x, Vdc()};
}

std::size_t Parameters::PointBytes() const {
  if (!coding.vdcIsReal) return 2 * coding.vdcIntegerBytes;
  return coding.vdcReal == RealForm::Float64 || coding.vdcReal == RealForm::Fixed64 ? 16 : 8;
}

std::vector<Point> Parameters::Points() {
  std::vector<ksvect::Point> points(BytesLeft() / PointBytes());
  for (ksvect::Point &point : points) point = Point();
  return points;
}

std::string Parameters::String() {
  std::uint32_t length = Unsigned(1);
  const bool isLong = length == kLongString;
  bool more = isLong;
  std::string text;
  do {
    if (isLong) {
      const std::uint32_t word = Unsigned(2);
      more = (word & kMoreFollows) != 0;
      length = word & ~kMoreFollows;
    }
    if (!Has(length)) return {};
    const auto part = data.subspan(position, length);
    text.append(part.begin(), part.end());
    position += length;
  } while (more);
  return text;
}

}  // namespace ksvect::cgm
