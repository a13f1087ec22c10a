// Where the rows of our own decoder go: into a bitmap, or to a caller's samples.
#pragma once

#include "kscodec/jpeg/picture.h"
#include "kscodec/samples.h"

#include <cstdint>
#include <vector>

namespace kscodec::jpeg {

/** Into the pixels of a bitmap of the picture's size, all of 0. */
class BitmapRows final : public RowSink {
 public:
  BitmapRows(const Frame &frame, const Plan &wanted, const KsBitmap &bitmap);

  void TakeRow(const Picture &picture, std::uint32_t row) override;
  std::uint32_t NeededRows() const override { return target.height; }

 private:
  void WriteGrayRow(const PlaneRow &plane, std::uint8_t *out) const;
  void WriteColorRow(const Picture &picture, std::uint32_t row, std::uint8_t *out) const;

  const Plan &plan;
  const KsBitmap &target;
  std::vector<std::uint16_t> scale; /**< by the value of a sample */
};

/** To the samples of a window. */
class SampleRows final : public RowSink {
 public:
  SampleRows(const Frame &frame, bool convertsToRgb, const SampleOrder &wanted);

  /** The components that are looked at. */
  const std::vector<std::uint32_t> &Components() const { return components; }

  void TakeRow(const Picture &picture, std::uint32_t row) override;
  std::uint32_t NeededRows() const override { return order.window.firstRow + order.window.rows; }

  /** Writes 0 to the rows that never came. */
  void WriteMissing() const;

 private:
  void ConvertRow(const Picture &picture, std::uint32_t row);

  const SampleOrder &order;
  bool converts;
  std::uint32_t bits;
  std::vector<std::uint32_t> components;
  std::vector<std::uint16_t> converted; /**< red, green and blue of each pixel of a row */
  std::uint32_t nextRow;
};

}  // namespace kscodec::jpeg
