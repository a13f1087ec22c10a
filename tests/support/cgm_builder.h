// Makes metafiles element by element, in any coding, without the library under test.
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

enum class CgmReal { Float32, Float64, Fixed32, Fixed64 };

/** How numbers are written, in bits. */
struct CgmCoding {
  unsigned integer = 16;
  unsigned index = 16;
  unsigned color = 8;
  unsigned colorIndex = 8;
  unsigned vdcInteger = 16;
  CgmReal real = CgmReal::Fixed32;
  CgmReal vdcReal = CgmReal::Fixed32;
  bool vdcIsReal = false;
  bool directColor = false;
  unsigned partition = 0; /**< bytes of a partition, an even number; 0: each element in one */
};

/** The parameters of one element. */
class CgmParameters {
 public:
  explicit CgmParameters(const CgmCoding &valueCoding) : coding(valueCoding) {}

  CgmParameters &Enumeration(int value) { return Number(value, 16); }
  CgmParameters &Integer(std::int64_t value) { return Number(value, coding.integer); }
  CgmParameters &Index(int value) { return Number(value, coding.index); }
  CgmParameters &ColorIndex(int value) { return Number(value, coding.colorIndex); }
  /** A direct colour of 0x00BBGGRR. */
  CgmParameters &Direct(std::uint32_t color);
  CgmParameters &Real(double value) { return Real(value, coding.real); }
  CgmParameters &Vdc(double value);
  CgmParameters &Points(const std::vector<std::pair<double, double>> &points);
  CgmParameters &String(std::string_view text);
  CgmParameters &Raw(const Bytes &more);
  CgmParameters &Number(std::int64_t value, unsigned bits);
  /** Goes on at a word. */
  CgmParameters &Align();

  const Bytes &Data() const { return bytes; }

 private:
  CgmParameters &Real(double value, CgmReal form);

  const CgmCoding &coding;
  Bytes bytes;
};

/** A metafile whose first picture has the given extent, and is open for its elements. */
class CgmBuilder {
 public:
  using Corner = std::pair<double, double>;
  explicit CgmBuilder(const CgmCoding &numbers = {}, Corner first = {0, 0}, Corner second = {100, 100});

  CgmCoding coding;

  CgmParameters New() const { return CgmParameters(coding); }
  CgmBuilder &Add(unsigned group, unsigned number, const CgmParameters &parameters);
  CgmBuilder &Add(unsigned group, unsigned number) { return Add(group, number, New()); }
  /** The bytes so far, and the end of the picture. */
  Bytes Finish() const;

  Bytes bytes;

 private:
  void Precision(unsigned group, unsigned number, unsigned bits, unsigned CgmCoding::*member);
  void RealForm(unsigned group, unsigned number, CgmReal CgmCoding::*member, CgmReal form);
};
