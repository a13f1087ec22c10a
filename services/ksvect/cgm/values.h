// The parameters of an element, by their types.
#pragma once

#include "ksvect/model/drawing.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ksvect::cgm {

/** Least and greatest values of the components of direct colours. */
struct ColorExtent {
  std::array<std::uint32_t, 3> least = {};
  std::array<std::uint32_t, 3> greatest = {};
};

/** A colour of three components of an extent; components beyond it are its ends. */
Color ColorOf(const std::array<std::uint32_t, 3> &components, const ColorExtent &extent);

/** The extent that components of so many bits have where none is told. */
ColorExtent FullExtent(unsigned bits);

enum class RealForm : std::uint8_t { Float32, Float64, Fixed32, Fixed64 };

/** How numbers and colours are written at a place of a metafile. */
struct Coding {
  unsigned integerBytes = 2;
  unsigned indexBytes = 2;
  unsigned colorBytes = 1;
  unsigned colorIndexBytes = 1;
  unsigned vdcIntegerBytes = 2;
  RealForm real = RealForm::Fixed32;
  RealForm vdcReal = RealForm::Fixed32;
  bool vdcIsReal = false;
  bool directColor = false;
  std::optional<ColorExtent> colorExtent;

  ColorExtent Extent() const { return colorExtent.value_or(FullExtent(8 * colorBytes)); }
};

/** A colour as it was written: a direct one, or a place in the colour table. */
struct ColorValue {
  bool direct = false;
  std::uint32_t value = 0;
};

/**
 * Reads parameters from the front on. One that isn't there or no number leaves this bad: it and all further ones are
 * zero, and the element is malformed.
 */
class Parameters {
 public:
  Parameters(std::span<const std::uint8_t> bytes, const Coding &valueCoding) : data(bytes), coding(valueCoding) {}

  bool Good() const { return good; }
  void Fail() { good = false; }
  std::size_t BytesLeft() const { return good ? data.size() - position : 0; }
  std::size_t Position() const { return position; }
  std::span<const std::uint8_t> All() const { return data; }

  std::int32_t Enumeration() { return Signed(2); }
  std::int32_t Integer() { return Signed(coding.integerBytes); }
  std::int32_t Index() { return Signed(coding.indexBytes); }
  std::uint32_t ColorIndex() { return Unsigned(coding.colorIndexBytes); }
  std::array<std::uint32_t, 3> ColorComponents();
  Color DirectColor() { return ColorOf(ColorComponents(), coding.Extent()); }
  /** As the colour selection mode has it. */
  ColorValue AnyColor();
  double Real() { return RealOf(coding.real); }
  double Vdc() { return coding.vdcIsReal ? RealOf(coding.vdcReal) : Signed(coding.vdcIntegerBytes); }
  ksvect::Point Point();
  /** All points that are left. */
  std::vector<ksvect::Point> Points();
  /** The bytes of a string of any length. */
  std::string String();

  std::size_t PointBytes() const;

 private:
  bool Has(std::size_t bytes);
  std::uint32_t Unsigned(unsigned bytes);
  std::int32_t Signed(unsigned bytes);
  double RealOf(RealForm form);

  std::span<const std::uint8_t> data;
  const Coding &coding;
  std::size_t position = 0;
  bool good = true;
};

}  // namespace ksvect::cgm
