// From decoded samples to the array of a caller.
#pragma once

#include "kssamples.h"

#include <cstdint>
#include <cstring>

namespace kscodec {

/** A run of samples in one row of the window. */
struct SampleRun {
  std::uint64_t place;  /**< of the component in the list of the read */
  std::uint32_t row;    /**< of the window */
  std::uint32_t column; /**< of the window */
  std::uint32_t count;
};

/** Stores runs in the container of the target. */
class SampleWriter {
 public:
  explicit SampleWriter(const KsSamplesTarget &wanted) : target(wanted) {}

  /** Stores `sampleAt(i)` for each i below the count of the run. The container has room for these values. */
  template <class SampleAt>
  void Put(const SampleRun &run, const SampleAt &sampleAt) const {
    switch (target.container) {
      case KS_SAMPLES_U8:
        return PutAs<std::uint8_t>(run, sampleAt);
      case KS_SAMPLES_I8:
        return PutAs<std::int8_t>(run, sampleAt);
      case KS_SAMPLES_U16:
        return PutAs<std::uint16_t>(run, sampleAt);
      case KS_SAMPLES_I16:
        return PutAs<std::int16_t>(run, sampleAt);
      case KS_SAMPLES_U32:
        return PutAs<std::uint32_t>(run, sampleAt);
      case KS_SAMPLES_I32:
        return PutAs<std::int32_t>(run, sampleAt);
      case KS_SAMPLES_U64:
        return PutAs<std::uint64_t>(run, sampleAt);
      default:
        return PutAs<std::int64_t>(run, sampleAt);
    }
  }

  std::uint8_t *PlaceOf(const SampleRun &run) const {
    return static_cast<std::uint8_t *>(target.samples) + static_cast<std::int64_t>(run.row) * target.rowStep +
           static_cast<std::int64_t>(run.column) * target.columnStep +
           static_cast<std::int64_t>(run.place) * target.componentStep;
  }

  const KsSamplesTarget &Target() const { return target; }

 private:
  template <class Stored, class SampleAt>
  void PutAs(const SampleRun &run, const SampleAt &sampleAt) const {
    std::uint8_t *to = PlaceOf(run);
    const auto put = [](std::uint8_t *place, auto sample) {
      const auto stored = static_cast<Stored>(sample);
      std::memcpy(place, &stored, sizeof stored);
    };
    if (target.columnStep == sizeof(Stored)) {
      for (std::uint32_t i = 0; i < run.count; ++i) put(to + std::uint64_t{i} * sizeof(Stored), sampleAt(i));
      return;
    }
    for (std::uint32_t i = 0; i < run.count; ++i, to += target.columnStep) put(to, sampleAt(i));
  }

  KsSamplesTarget target;
};

}  // namespace kscodec
