#include "kscodec/jpeg/picture.h"

#include <algorithm>

namespace kscodec::jpeg {

namespace {

constexpr std::uint64_t kMostSampleBytes = std::uint64_t{4} << 30;

std::uint32_t DivideUp(std::uint32_t value, std::uint32_t by) {
  return (value + by - 1) / by;
}

}  // namespace

Picture::Picture(const Frame &source, std::uint32_t unit, std::span<const std::uint32_t> wanted, RowSink &rows)
    : frame(source), unitSide(unit), sink(rows), planes(source.components) {
  for (std::size_t i = 0; i < planes.size(); ++i) {
    const Component component = frame.ComponentAt(i);
    Plane &plane = planes[i];
    plane.id = component.id;
    plane.across = component.across;
    plane.down = component.down;
    plane.quantisation = component.quantisation;
    plane.isWanted = std::find(wanted.begin(), wanted.end(), i) != wanted.end();
    mostAcross = std::max(mostAcross, plane.across);
    mostDown = std::max(mostDown, plane.down);
  }
  // One component is coded as if it had one sample for each pixel, whatever its factors.
  if (planes.size() == 1) planes[0].across = planes[0].down = mostAcross = mostDown = 1;
}

Status Picture::MakePlanes(bool inOneScan) {
  isInOneScan = inOneScan;
  const std::uint32_t unitsAcross = DivideUp(frame.width, unitSide * mostAcross);
  const std::uint32_t unitsDown = DivideUp(frame.height, unitSide * mostDown);
  std::uint64_t bytes = 0;
  for (Plane &plane : planes) {
    plane.width = DivideUp(frame.width * plane.across, mostAcross);
    plane.height = DivideUp(frame.height * plane.down, mostDown);
    plane.stride = unitsAcross * plane.across * unitSide;
    // A row of units, and the one before it, which samples are predicted from.
    const std::uint32_t rowsOfUnits = inOneScan || !plane.isWanted ? 2 : unitsDown;
    plane.heldRows = rowsOfUnits * plane.down * unitSide;
    const std::uint64_t samples = std::uint64_t{plane.stride} * plane.heldRows;
    bytes += samples * sizeof(std::uint16_t);
    if (bytes > kMostSampleBytes || !plane.samples.Allocate(samples)) return ERROR_NO_MEMORY;
  }
  neutral.assign(frame.width, static_cast<std::uint16_t>(1U << (frame.bits - 1)));
  return SUCCESS;
}

Units Picture::UnitsOf(const Scan &scan) const {
  if (scan.IsInterleaved()) {
    return {DivideUp(frame.width, unitSide * mostAcross), DivideUp(frame.height, unitSide * mostDown)};
  }
  const Plane &plane = *scan.parts.front().plane;
  return {DivideUp(plane.width, unitSide), DivideUp(plane.height, unitSide)};
}

std::uint32_t Picture::DecodedRows() const {
  std::uint32_t least = frame.height;
  std::uint32_t most = 0;
  for (const Plane &plane : planes) {
    if (!plane.isWanted) continue;
    const std::uint32_t rows = std::min<std::uint32_t>(plane.decodedRows * mostDown / plane.down, frame.height);
    least = std::min(least, rows);
    most = std::max(most, rows);
  }
  return isInOneScan ? least : most;
}

void Picture::WriteRows() {
  const std::uint32_t rows = std::min(DecodedRows(), sink.NeededRows());
  for (; writtenRows < rows; ++writtenRows) sink.TakeRow(*this, writtenRows);
}

PlaneRow Picture::RowOf(std::uint32_t component, std::uint32_t row) const {
  const Plane &plane = planes[component];
  const std::uint32_t sampleRow = row * plane.down / mostDown;
  const bool isDecoded = sampleRow < plane.decodedRows;
  return {.samples = isDecoded ? plane.Row(sampleRow) : neutral.data(),
          .shift = isDecoded ? plane.shift : 0,
          .greatest = (1U << frame.bits) - 1,
          .across = plane.across,
          .mostAcross = mostAcross};
}

}  // namespace kscodec::jpeg
