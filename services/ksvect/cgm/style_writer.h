// From styles to the attributes of a metafile.
#pragma once

#include "ksvect/cgm/encoder.h"

#include <array>
#include <optional>
#include <span>
#include <vector>

namespace ksvect::cgm {

/** Cells of a row or a column; rows may be written twice. */
constexpr std::uint32_t kMostCellsOfSide = 0x3FFFFFFF;

/** The parts of a style that an object shows, as bits. */
std::uint32_t UsesOf(const Shape &shape, const Style &style);

/** A face of the font list: its family, whether it is bold and whether it is oblique. */
using Face = std::uint32_t;
const char *NameOf(Face face);

/** Lines, edges and markers have measures whose modes are of their own. */
constexpr std::size_t kMeasuredThings = 3;
/** Whether measures are scaled at the beginning of a picture; empty for things that it does not contain. */
using Modes = std::array<std::optional<bool>, kMeasuredThings>;
void WriteMode(Encoder &encoder, std::size_t thing, bool scaled);

/** Whether a pattern or an array has its cells, and they can be counted. */
template <typename Cells>
bool HasAllCells(const Cells &cells) {
  return cells.columns > 0 && cells.rows > 0 && cells.columns <= kMostCellsOfSide && cells.rows <= kMostCellsOfSide &&
         cells.colors.size() == std::uint64_t{cells.columns} * cells.rows;
}

/** Writes the attributes that an object needs and that aren't in force yet. */
class StyleWriter {
 public:
  /** Modes that aren't known yet are collected. The drawing and the encoder must outlive this. */
  StyleWriter(Encoder &target, const Drawing &source, const Modes &known);

  /** A style by its number in the drawing, and what an object uses of it. */
  void Write(std::uint32_t number, std::uint32_t uses);

  const Modes &BeginsWith() const { return modes; }
  bool ChangesModes() const { return changesModes; }
  /** In the order of their numbers, from 1 on. */
  const std::vector<Face> &Faces() const { return faces; }

  // Parameters that depend on what was written before.
  void FontIndex(const TextStyle &text);
  void PatternVectors(const FillStyle &fill);
  void PatternIndex(const FillStyle &fill) { encoder.Index(patternNumbers[fill.pattern]); }

  Encoder &encoder;

 private:
  /** The parameters that an attribute was written with last. */
  struct InForce {
    std::array<std::uint8_t, 32> parameters = {}; /**< as many as the longest have: two vectors of 64 bits */
    std::size_t size = 0;
    bool known = false;

    /** Stores new ones. False where they are the same as before. */
    bool Changes(std::span<const std::uint8_t> given);
  };

  bool DefinePattern(std::uint32_t number);
  void EndIfChanged(std::size_t parameters, InForce &held);
  void WriteMeasure(std::size_t thing, const Measure &measure);

  const Drawing &drawing;
  Modes modes;
  Modes modesInForce;
  bool changesModes = false;
  std::vector<Face> faces;
  std::vector<int> patternNumbers; /**< 0 for those not defined yet */
  int patternsDefined = 0;
  std::vector<InForce> attributes;
  std::array<InForce, kMeasuredThings> measures;
  std::uint32_t settledStyle = 0;
  std::uint32_t settledUses = 0;
};

}  // namespace ksvect::cgm
