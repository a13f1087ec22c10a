#include "images/band_choice.h"

#include <algorithm>
#include <iterator>

namespace ksntfx {

namespace {

/** The tags that belong together for the three channels, in the order of preference. */
struct BandGroup {
  std::uint32_t tags[3];
  bool keepsStart; /**< a missing tag leaves the caller's number; else it means the last band */
};

constexpr BandGroup kBandGroups[] = {
    {{kBandRed, kBandGreen, kBandBlue}, true},
    {{kBandY, kBandCb, kBandCr}, false},
    {{kBandLut, kBandLut, kBandLut}, false},
    {{kBandMono, kBandMono, kBandMono}, false},
};

/** The first band with a tag, or the band count. */
std::uint32_t FindBand(const ImageSubheader &image, std::uint32_t tag) {
  for (std::uint32_t band = 0; band < image.bandsHeld; ++band) {
    if (image.bandRepresentation[band] == tag) return band;
  }
  return image.bandCount;
}

bool TakeGroup(const ImageSubheader &image, const BandGroup &group, std::uint32_t (&bands)[3]) {
  std::uint32_t found[3];
  std::transform(group.tags, group.tags + 3, found, [&](std::uint32_t tag) { return FindBand(image, tag); });
  if (std::all_of(found, found + 3, [&](std::uint32_t band) { return band >= image.bandCount; })) return false;
  for (std::size_t channel = 0; channel < 3; ++channel) {
    if (found[channel] < image.bandCount || !group.keepsStart) bands[channel] = found[channel];
  }
  return true;
}

/** The bands of an image without tags: those that were stored, or the first three. */
void TakeUntagged(const ImageSubheader &image, std::uint32_t (&bands)[3]) {
  const bool stored =
      std::all_of(image.displayBands, image.displayBands + 3, [](std::int32_t band) { return band >= 0; });
  for (std::uint32_t channel = 0; channel < 3; ++channel) {
    bands[channel] = stored ? static_cast<std::uint32_t>(image.displayBands[channel]) : channel;
  }
}

}  // namespace

bool FindTaggedBands(const ImageSubheader &image, const BandOrder &tags, BandOrder *order) {
  *order = {FindBand(image, tags.first), FindBand(image, tags.second), FindBand(image, tags.third)};
  return std::max({order->first, order->second, order->third}) < image.bandCount;
}

void ChooseBands(ImageSubheader &image, BandOrder *order) {
  std::uint32_t bands[3] = {order->first, order->second, order->third};
  const bool tagged = std::any_of(std::begin(kBandGroups), std::end(kBandGroups),
                                  [&](const BandGroup &group) { return TakeGroup(image, group, bands); });
  if (!tagged) TakeUntagged(image, bands);
  const std::uint32_t last = image.bandCount == 0 ? 0 : image.bandCount - 1;
  for (std::uint32_t &band : bands) band = std::min(band, last);
  *order = {bands[0], bands[1], bands[2]};
  const bool different = bands[0] != bands[1] && bands[1] != bands[2] && bands[0] != bands[2];
  if (tagged && !different) std::copy(bands, bands + 3, image.displayBands);
}

}  // namespace ksntfx
