// The parameters of an element, by their types.
#pragma once

#include "ksvect/cgm/skipped.h"
#include "ksvect/model/drawing.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ksvect::cgm {

/** The colour model of direct colours. */
enum class ColorModel : std::uint8_t { Rgb, Cmyk };

/** The components of a direct colour: the first ones, as many as the model has. */
constexpr unsigned kMostComponents = 4;
using Components = std::array<std::uint32_t, kMostComponents>;
constexpr unsigned ComponentsOf(ColorModel model) {
  return model == ColorModel::Cmyk ? 4 : 3;
}

/** Least and greatest values of the components of direct colours. */
struct ColorExtent {
  Components least = {};
  Components greatest = {};
};

/** The colour of components within an extent; components beyond it are its ends. */
Color ColorOf(const Components &components, const ColorExtent &extent, ColorModel model);

/** The extent of components of `bits` bits where the metafile has none. */
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
  ColorModel colorModel = ColorModel::Rgb;
  std::optional<ColorExtent> colorExtent;

  unsigned DirectColorBytes() const { return ComponentsOf(colorModel) * colorBytes; }

  ColorExtent Extent() const { return colorExtent.value_or(FullExtent(8 * colorBytes)); }
};

/** A colour as it was written: a direct one, or an index into the colour table. */
struct ColorValue {
  bool direct = false;
  std::uint32_t value = 0;
};

/**
 * Reads parameters from the front on. After one that is missing or invalid, it and all further ones are zero, and the
 * element is to be skipped.
 */
class Parameters {
 public:
  Parameters(std::span<const std::uint8_t> bytes, const Coding &valueCoding) : data(bytes), coding(valueCoding) {}

  bool Good() const { return !failure; }
  /** The first reason counts. */
  void Fail(SkipReason reason) {
    if (!failure) failure = reason;
  }
  /** Only where not Good. */
  SkipReason Failure() const { return *failure; }
  std::size_t BytesLeft() const { return Good() ? data.size() - position : 0; }
  std::size_t Position() const { return position; }
  std::span<const std::uint8_t> All() const { return data; }

  std::int32_t Enumeration() { return Signed(2); }
  std::int32_t Integer() { return Signed(coding.integerBytes); }
  std::int32_t Index() { return Signed(coding.indexBytes); }
  std::uint32_t ColorIndex() { return Unsigned(coding.colorIndexBytes); }
  Components ColorComponents();
  Color DirectColor() { return ColorOf(ColorComponents(), coding.Extent(), coding.colorModel); }
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
  std::optional<SkipReason> failure;
};

}  // namespace ksvect::cgm
