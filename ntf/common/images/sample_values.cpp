#include "images/sample_values.h"

#include <cmath>
#include <cstring>

namespace ksntfx {

namespace {

template <class Sample>
void ReadNumbers(const std::uint8_t *samples, std::uint64_t count, double *values) {
  for (std::uint64_t at = 0; at < count; ++at, samples += sizeof(Sample)) {
    Sample sample;
    std::memcpy(&sample, samples, sizeof sample);
    values[at] = static_cast<double>(sample);
  }
}

void ReadMagnitudes(const std::uint8_t *samples, std::uint64_t count, double *values) {
  for (std::uint64_t at = 0; at < count; ++at, samples += 2 * sizeof(float)) {
    float parts[2];
    std::memcpy(parts, samples, sizeof parts);
    values[at] = std::hypot(static_cast<double>(parts[0]), static_cast<double>(parts[1]));
  }
}

/** In the order of SampleType. */
constexpr ReadValues kReaders[] = {ReadNumbers<std::uint8_t>,
                                   ReadNumbers<std::uint16_t>,
                                   ReadNumbers<std::uint32_t>,
                                   ReadNumbers<std::uint64_t>,
                                   ReadNumbers<std::int8_t>,
                                   ReadNumbers<std::int16_t>,
                                   ReadNumbers<std::int32_t>,
                                   ReadNumbers<std::int64_t>,
                                   ReadNumbers<float>,
                                   ReadNumbers<double>,
                                   ReadMagnitudes};

}  // namespace

ReadValues ChooseValues(SampleType type) {
  return kReaders[static_cast<std::uint8_t>(type)];
}

}  // namespace ksntfx
