#include "cgm_builder.h"

#include "bit_writer.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace {

constexpr unsigned kLongForm = 31;
constexpr unsigned kLongestPartition = 32766;

}  // namespace

CgmParameters &CgmParameters::Number(std::int64_t value, unsigned bits) {
  PutBigEndian(bytes, static_cast<std::uint64_t>(value), static_cast<int>(bits / 8));
  return *this;
}

CgmParameters &CgmParameters::Direct(std::uint32_t color) {
  for (unsigned i = 0; i < 3; ++i) {
    const std::uint64_t component = color >> (8 * i) & 0xFF;
    const std::uint64_t greatest = (std::uint64_t{1} << coding.color) - 1;
    Number(static_cast<std::int64_t>(component * greatest / 255), coding.color);
  }
  return *this;
}

CgmParameters &CgmParameters::Real(double value, CgmReal form) {
  const double whole = std::floor(value);
  switch (form) {
    case CgmReal::Float32:
      return Number(std::bit_cast<std::int32_t>(static_cast<float>(value)), 32);
    case CgmReal::Float64:
      return Number(std::bit_cast<std::int64_t>(value), 64);
    case CgmReal::Fixed32:
      return Number(static_cast<std::int64_t>(whole), 16)
          .Number(static_cast<std::int64_t>(std::ldexp(value - whole, 16)), 16);
    case CgmReal::Fixed64:
      return Number(static_cast<std::int64_t>(whole), 32)
          .Number(static_cast<std::int64_t>(std::ldexp(value - whole, 32)), 32);
  }
  return *this;
}

CgmParameters &CgmParameters::Vdc(double value) {
  return coding.vdcIsReal ? Real(value, coding.vdcReal) : Number(static_cast<std::int64_t>(value), coding.vdcInteger);
}

CgmParameters &CgmParameters::Points(const std::vector<std::pair<double, double>> &points) {
  for (const auto &[x, y] : points) Vdc(x).Vdc(y);
  return *this;
}

CgmParameters &CgmParameters::String(std::string_view text) {
  if (text.size() < 255) {
    Number(static_cast<std::int64_t>(text.size()), 8);
  } else {
    // Two parts, of which the first says that another one follows.
    Number(255, 8).Number(0x8000 | 200, 16).Raw(Bytes(text.begin(), text.begin() + 200));
    text.remove_prefix(200);
    Number(static_cast<std::int64_t>(text.size()), 16);
  }
  return Raw(Bytes(text.begin(), text.end()));
}

CgmParameters &CgmParameters::Raw(const Bytes &more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
  return *this;
}

CgmParameters &CgmParameters::Align() {
  if (bytes.size() % 2 != 0) bytes.push_back(0);
  return *this;
}

CgmBuilder::CgmBuilder(const CgmCoding &numbers, Corner first, Corner second) {
  coding.partition = numbers.partition;
  Add(0, 1, New().String("metafile"));
  Add(1, 3, New().Enumeration(numbers.vdcIsReal ? 1 : 0));
  Precision(1, 4, numbers.integer, &CgmCoding::integer);
  RealForm(1, 5, &CgmCoding::real, numbers.real);
  Precision(1, 6, numbers.index, &CgmCoding::index);
  Precision(1, 7, numbers.color, &CgmCoding::color);
  Precision(1, 8, numbers.colorIndex, &CgmCoding::colorIndex);
  Precision(3, 1, numbers.vdcInteger, &CgmCoding::vdcInteger);
  RealForm(3, 2, &CgmCoding::vdcReal, numbers.vdcReal);
  coding = numbers;
  Add(0, 3, New().String("picture"));
  Add(2, 2, New().Enumeration(coding.directColor ? 1 : 0));
  Add(2, 6, New().Points({first, second}));
  Add(0, 4);
}

void CgmBuilder::Precision(unsigned group, unsigned number, unsigned bits, unsigned CgmCoding::*member) {
  Add(group, number, New().Integer(bits));
  coding.*member = bits;
}

void CgmBuilder::RealForm(unsigned group, unsigned number, CgmReal CgmCoding::*member, CgmReal form) {
  static constexpr int kForms[][3] = {{0, 9, 23}, {0, 12, 52}, {1, 16, 16}, {1, 32, 32}};
  const int *bits = kForms[static_cast<int>(form)];
  Add(group, number, New().Enumeration(bits[0]).Integer(bits[1]).Integer(bits[2]));
  coding.*member = form;
}

CgmBuilder &CgmBuilder::Add(unsigned group, unsigned number, const CgmParameters &parameters) {
  const Bytes &data = parameters.Data();
  const unsigned partition = coding.partition != 0 ? coding.partition : kLongestPartition;
  const bool isLong = data.size() >= kLongForm || data.size() > partition;
  const auto length = static_cast<unsigned>(isLong ? kLongForm : data.size());
  PutBigEndian(bytes, group << 12 | number << 5 | length, 2);
  std::size_t at = 0;
  do {
    const std::size_t part = std::min<std::size_t>(data.size() - at, partition);
    const bool more = at + part < data.size();
    if (isLong) PutBigEndian(bytes, (more ? 0x8000U : 0U) | part, 2);
    bytes.insert(bytes.end(), data.begin() + static_cast<std::ptrdiff_t>(at),
                 data.begin() + static_cast<std::ptrdiff_t>(at + part));
    at += part;
  } while (at < data.size());
  if (bytes.size() % 2 != 0) bytes.push_back(0);
  return *this;
}

Bytes CgmBuilder::Finish() const {
  CgmBuilder whole = *this;
  whole.Add(0, 5).Add(0, 2);
  return whole.bytes;
}
