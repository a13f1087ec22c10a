// What the tests of raw samples share: streams opened in different ways, and windows read from them.
#pragma once

#include "../service_test.h"
#include "kssamples.h"

#include <algorithm>
#include <memory>

struct CloseSamples {
  void operator()(KsSamples *stream) const { KsSamplesClose(stream); }
};
using OpenedSamples = std::unique_ptr<KsSamples, CloseSamples>;

inline int32_t OpenSamples(const Bytes &stream, OpenedSamples *opened, KsSamplesOptions options = {}) {
  KsSamples *made = nullptr;
  const int32_t status = KsSamplesOpenMemory(stream.data(), stream.size(), &options, &made);
  EXPECT_EQ(made != nullptr, status == SUCCESS);
  opened->reset(made);
  return status;
}

/** A stream that is read piece by piece. */
struct PieceSource {
  const Bytes &bytes;
  int64_t readsLeft = INT64_MAX; /**< until reads fail */
  uint64_t bytesRead = 0;

  static int64_t Read(void *user, uint64_t offset, void *buffer, uint64_t count) {
    auto &source = *static_cast<PieceSource *>(user);
    EXPECT_TRUE(offset <= source.bytes.size() && count <= source.bytes.size() - offset) << offset << ", " << count;
    if (source.readsLeft-- <= 0) return -1;
    std::memcpy(buffer, source.bytes.data() + offset, count);
    source.bytesRead += count;
    return static_cast<int64_t>(count);
  }
};

inline int32_t OpenPieces(PieceSource *source, OpenedSamples *opened, KsSamplesOptions options = {}) {
  const KsSampleSource pieces = {PieceSource::Read, source, source->bytes.size()};
  KsSamples *made = nullptr;
  const int32_t status = KsSamplesOpen(&pieces, &options, &made);
  EXPECT_EQ(made != nullptr, status == SUCCESS);
  opened->reset(made);
  return status;
}

/** The samples of some components, each of them row by row. */
struct Samples {
  uint32_t rows = 0;
  uint32_t columns = 0;
  std::vector<std::vector<int64_t>> planes = {};

  int64_t At(size_t plane, uint32_t row, uint32_t column) const {
    return planes[plane][size_t{row} * columns + column];
  }
  bool operator==(const Samples &) const = default;
};

inline Samples Cropped(const Samples &whole, const KsSamplesWindow &window, const std::vector<uint32_t> &components) {
  Samples crop = {window.rows, window.columns};
  for (const uint32_t component : components) {
    std::vector<int64_t> &plane = crop.planes.emplace_back();
    for (uint32_t row = 0; row < window.rows; ++row) {
      for (uint32_t column = 0; column < window.columns; ++column) {
        plane.push_back(whole.At(component, window.firstRow + row, window.firstColumn + column));
      }
    }
  }
  return crop;
}

inline int32_t ReadSamples(KsSamples *stream, const KsSamplesWindow &window, const std::vector<uint32_t> &components,
                           Samples *samples) {
  const uint64_t pixels = uint64_t{window.rows} * window.columns;
  std::vector<int64_t> all(pixels * components.size(), INT64_MIN);
  const KsSamplesTarget target = {all.data(), int64_t{window.columns} * 8, 8, static_cast<int64_t>(pixels) * 8,
                                  KS_SAMPLES_I64};
  const int32_t status =
      KsSamplesRead(stream, &window, components.data(), static_cast<uint32_t>(components.size()), &target);
  *samples = {window.rows, window.columns};
  for (size_t i = 0; i < components.size(); ++i) {
    const auto first = all.begin() + static_cast<std::ptrdiff_t>(i * pixels);
    samples->planes.emplace_back(first, first + static_cast<std::ptrdiff_t>(pixels));
  }
  return status;
}

inline uint32_t AtLevel(uint32_t size, uint32_t level) {
  return static_cast<uint32_t>((uint64_t{size} + (1U << level) - 1) >> level);
}

inline KsSamplesWindow WholeWindow(const KsSamples *stream, uint32_t level = 0) {
  const KsSamplesInfo &info = *KsSamplesDescribe(stream);
  return {0, 0, AtLevel(info.rows, level), AtLevel(info.columns, level), level};
}

inline std::vector<uint32_t> AllComponents(const KsSamples *stream) {
  std::vector<uint32_t> all(KsSamplesDescribe(stream)->components);
  for (uint32_t i = 0; i < all.size(); ++i) all[i] = i;
  return all;
}

inline Samples ReadWhole(KsSamples *stream, uint32_t level = 0) {
  Samples whole;
  EXPECT_EQ(ReadSamples(stream, WholeWindow(stream, level), AllComponents(stream), &whole), SUCCESS);
  return whole;
}

/** Any window of some components must be that part of the whole. */
inline void ExpectWindowsOf(KsSamples *stream, const Samples &whole, uint32_t level, int count, uint32_t seed = 1) {
  std::mt19937 random(seed);
  const auto below = [&](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
  for (int i = 0; i < count; ++i) {
    KsSamplesWindow window = {below(whole.rows), below(whole.columns), 0, 0, level};
    window.rows = 1 + below(whole.rows - window.firstRow);
    window.columns = 1 + below(whole.columns - window.firstColumn);
    std::vector<uint32_t> components(1 + below(3));
    for (uint32_t &component : components) component = below(static_cast<uint32_t>(whole.planes.size()));
    Samples part;
    ASSERT_EQ(ReadSamples(stream, window, components, &part), SUCCESS);
    ASSERT_EQ(part == Cropped(whole, window, components), true)
        << "level " << level << ", row " << window.firstRow << " column " << window.firstColumn << ", " << window.rows
        << " x " << window.columns << ", first component " << components[0];
  }
}

/** Reads a little of a stream that may be damaged in any way: there is a status, or samples. */
inline void ReadDamaged(const Bytes &stream, KsSamplesOptions options = {}) {
  KsSamples *made = nullptr;
  if (stream.empty() || KsSamplesOpenMemory(stream.data(), stream.size(), &options, &made) != SUCCESS) return;
  const OpenedSamples opened(made);
  KsSamplesWindow window = WholeWindow(made);
  window.firstRow = window.rows / 2;
  window.rows = std::min(window.rows - window.firstRow, 20u);
  window.columns = std::min(window.columns, 100u);
  Samples samples;
  const int32_t status = ReadSamples(made, window, {0}, &samples);
  EXPECT_TRUE(status == SUCCESS || status == ERROR_FILE_FORMAT || status == ERROR_NO_MEMORY ||
              status == ERROR_NOT_SUPPORTED)
      << status;
}
